// Whole texts of many messages read with the message reader into full trees against the bundled
// definition, and those trees written back. Also reports the memory the parsed trees of a text take
// for each character of input, text included.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "bench/BundledTextGenerator.h"
#include "compiler/DefinitionCompiler.h"
#include "elements/MessageImpl.h"
#include "elements/RepeatItemImpl.h"
#include "elements/SegmentImplBase.h"
#include "foundation/MessageFactory.h"
#include "foundation/NodePool.h"
#include "parsing/MessageReader.h"

namespace vantrelia::bench {
namespace {

constexpr size_t kTextCharacters = 10 * 1000 * 1000;

MessageFactory& bundledFactory() {
  static MessageFactory* factory = [] {
    std::ifstream file(std::string(VANTRELIA_SOURCE_DIR) + "/bundled/default.yaml");
    std::stringstream source;
    source << file.rdbuf();
    const std::vector<uint8_t> bytes = compiler::DefinitionCompiler::compile(source.str());
    auto* made = new MessageFactory();
    made->LoadDefinition(bytes.data(), bytes.size());
    return made;
  }();
  return *factory;
}

// Shared with the readers, as a host holding its text would: a copy per read is no part of parsing.
const std::shared_ptr<const std::u16string>& sharedTextOf(BundledTextGenerator::Standard standard) {
  static std::shared_ptr<const std::u16string> texts[3];
  std::shared_ptr<const std::u16string>& text = texts[static_cast<int>(standard)];
  if (!text) text = std::make_shared<const std::u16string>(BundledTextGenerator().generate(standard, kTextCharacters));
  return text;
}

const std::u16string& textOf(BundledTextGenerator::Standard standard) { return *sharedTextOf(standard); }

std::vector<std::unique_ptr<MessageElement>> parseAll(const std::shared_ptr<const std::u16string>& text,
                                                      size_t& skipped) {
  std::vector<std::unique_ptr<MessageElement>> messages;
  MessageReader reader(bundledFactory().getWarehouse(), text);
  MessageReader::Item item;
  skipped = 0;
  while (reader.next(item)) {
    if (item.message) {
      messages.push_back(std::move(item.message));
    } else {
      skipped += static_cast<size_t>(item.length);
    }
  }
  return messages;
}

// Segments below `node`, and how many of them the parse left uncut; fields are not looked at, so
// counting cuts nothing.
void countSegments(InternalElement& node, size_t& segments, size_t& uncut) {
  if (auto* segment = dynamic_cast<SegmentImplBase*>(&node)) {
    ++segments;
    if (segment->hasUncutFields()) ++uncut;
    return;
  }
  if (auto* repeats = dynamic_cast<RepeatItemImpl*>(&node)) {
    for (int i = 0; i < repeats->getElementCount(); ++i) {
      countSegments(*static_cast<InternalElement*>(repeats->getElementAt(i)), segments, uncut);
    }
    return;
  }
  if (auto* container = dynamic_cast<ElementContainer*>(&node)) {
    for (const auto& child : container->getChildArray()) {
      if (child) countSegments(*child, segments, uncut);
    }
  }
}

void parseBenchmark(benchmark::State& state, BundledTextGenerator::Standard standard) {
  const std::u16string& text = textOf(standard);
  size_t skipped = 0;
  size_t count = 0;
  for (auto _ : state) {
    std::vector<std::unique_ptr<MessageElement>> messages = parseAll(sharedTextOf(standard), skipped);
    count = messages.size();
    benchmark::DoNotOptimize(messages.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
  state.counters["messages"] = static_cast<double>(count);
  state.counters["skipped"] = static_cast<double>(skipped);
  // Memory of the trees of the whole text held at once, per input character, with the text they
  // keep alive (shared here, so counted by its size).
  const size_t before = mallinfo2().uordblks + NodePool::bytesInUse();
  std::vector<std::unique_ptr<MessageElement>> held = parseAll(sharedTextOf(standard), skipped);
  const size_t after = mallinfo2().uordblks + NodePool::bytesInUse() + text.size() * sizeof(char16_t);
  state.counters["bytesPerInputByte"] = static_cast<double>(after - before) / static_cast<double>(text.size());
  size_t segments = 0;
  size_t uncut = 0;
  for (const auto& message : held) countSegments(*static_cast<InternalElement*>(message.get()), segments, uncut);
  state.counters["uncutShare"] = static_cast<double>(uncut) / static_cast<double>(segments);
}

void writeBenchmark(benchmark::State& state, BundledTextGenerator::Standard standard) {
  const std::u16string& text = textOf(standard);
  size_t skipped = 0;
  std::vector<std::unique_ptr<MessageElement>> messages = parseAll(sharedTextOf(standard), skipped);
  const auto writeAll = [&] {
    size_t written = 0;
    for (const auto& message : messages) {
      const std::u16string out = message->getEncodedValue();
      written += out.size();
      benchmark::DoNotOptimize(out.data());
    }
    return written;
  };
  // The first write cuts the fields the parse left in the text; BM_FirstWrite measures that one.
  size_t written = writeAll();
  for (auto _ : state) written = writeAll();
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
  state.counters["writtenPerInput"] = static_cast<double>(written) / static_cast<double>(text.size());
}

// The write of trees just parsed, whose fields are still in the text: cutting them is part of it.
void firstWriteBenchmark(benchmark::State& state, BundledTextGenerator::Standard standard) {
  const std::u16string& text = textOf(standard);
  size_t skipped = 0;
  for (auto _ : state) {
    state.PauseTiming();
    std::vector<std::unique_ptr<MessageElement>> messages = parseAll(sharedTextOf(standard), skipped);
    state.ResumeTiming();
    for (const auto& message : messages) {
      const std::u16string out = message->getEncodedValue();
      benchmark::DoNotOptimize(out.data());
    }
    state.PauseTiming();
    messages.clear();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}

void BM_Parse_HL7(benchmark::State& state) { parseBenchmark(state, BundledTextGenerator::Standard::Hl7); }
void BM_Parse_X12(benchmark::State& state) { parseBenchmark(state, BundledTextGenerator::Standard::X12); }
void BM_Parse_EDIFACT(benchmark::State& state) { parseBenchmark(state, BundledTextGenerator::Standard::Edifact); }
void BM_Write_HL7(benchmark::State& state) { writeBenchmark(state, BundledTextGenerator::Standard::Hl7); }
void BM_Write_X12(benchmark::State& state) { writeBenchmark(state, BundledTextGenerator::Standard::X12); }
void BM_Write_EDIFACT(benchmark::State& state) { writeBenchmark(state, BundledTextGenerator::Standard::Edifact); }
void BM_FirstWrite_HL7(benchmark::State& state) { firstWriteBenchmark(state, BundledTextGenerator::Standard::Hl7); }
void BM_FirstWrite_X12(benchmark::State& state) { firstWriteBenchmark(state, BundledTextGenerator::Standard::X12); }
void BM_FirstWrite_EDIFACT(benchmark::State& state) {
  firstWriteBenchmark(state, BundledTextGenerator::Standard::Edifact);
}

BENCHMARK(BM_Parse_HL7)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Parse_X12)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Parse_EDIFACT)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Write_HL7)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Write_X12)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Write_EDIFACT)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FirstWrite_HL7)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FirstWrite_X12)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_FirstWrite_EDIFACT)->Unit(benchmark::kMillisecond);

// Shapes a partner may send, at growing sizes: the complexity fit says whether time stays linear in
// the input.
std::u16string hostileText(int kind, size_t count) {
  std::string text = "MSH|^~\\&|SEND|FAC|RECV|FAC|20261123||ADT^A04|1|P|2.5\rPID|1||";
  switch (kind) {
    case 3:  // headers of three standards packed together, without any segment separator
      text.clear();
      for (size_t i = 0; i < count; ++i) text += "MSH|x|UNB+y+ISA*z*";
      break;
    case 4:  // interchange headers, each a segment of its own, and no message
      text.clear();
      for (size_t i = 0; i < count; ++i) text += "UNB+UNOA:1+A+B+X'";
      break;
    case 5:  // one batch of many small messages, each embedded in the batch
      text = "BHS|^~\\&|A\r";
      for (size_t i = 0; i < count; ++i) text += "MSH|^~\\&|A|B|C|D|20||ADT^A08\rEVN|A08\rPID|1\rPV1|1|I\r";
      text += "BTS|" + std::to_string(count) + "\r";
      break;
    case 0:  // many tiny segments of a tag no set knows
      text += "123\r";
      for (size_t i = 0; i < count; ++i) text += "ZZ1|x\r";
      break;
    case 1:  // one huge field
      text += std::string(count * 6, 'N') + "\r";
      break;
    default:  // thousands of repeats
      for (size_t i = 0; i < count; ++i) text += "7^^^H~";
      text += "\r";
      break;
  }
  return std::u16string(text.begin(), text.end());
}

void hostileBenchmark(benchmark::State& state, int kind) {
  const auto shared = std::make_shared<const std::u16string>(hostileText(kind, static_cast<size_t>(state.range(0))));
  const std::u16string& text = *shared;
  size_t skipped = 0;
  for (auto _ : state) {
    std::vector<std::unique_ptr<MessageElement>> messages = parseAll(shared, skipped);
    // The fields too: a parse leaves them in the text, and it is their cut that meets the shape.
    for (const auto& message : messages) static_cast<MessageImpl&>(*message).cutAllFields();
    benchmark::DoNotOptimize(messages.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
  state.SetComplexityN(static_cast<int64_t>(text.size()));
}

void BM_Hostile_TinySegments(benchmark::State& state) { hostileBenchmark(state, 0); }
void BM_Hostile_HugeSegment(benchmark::State& state) { hostileBenchmark(state, 1); }
void BM_Hostile_Repeats(benchmark::State& state) { hostileBenchmark(state, 2); }
void BM_Hostile_PackedHeaders(benchmark::State& state) { hostileBenchmark(state, 3); }
void BM_Hostile_HeadersOnly(benchmark::State& state) { hostileBenchmark(state, 4); }
void BM_Hostile_BatchOfMessages(benchmark::State& state) { hostileBenchmark(state, 5); }

BENCHMARK(BM_Hostile_TinySegments)->RangeMultiplier(4)->Range(1 << 10, 1 << 16)->Complexity(benchmark::oN);
BENCHMARK(BM_Hostile_HugeSegment)->RangeMultiplier(4)->Range(1 << 10, 1 << 18)->Complexity(benchmark::oN);
BENCHMARK(BM_Hostile_Repeats)->RangeMultiplier(4)->Range(1 << 10, 1 << 16)->Complexity(benchmark::oN);
BENCHMARK(BM_Hostile_PackedHeaders)->RangeMultiplier(4)->Range(1 << 8, 1 << 14)->Complexity(benchmark::oN);
BENCHMARK(BM_Hostile_HeadersOnly)->RangeMultiplier(4)->Range(1 << 8, 1 << 14)->Complexity(benchmark::oN);
BENCHMARK(BM_Hostile_BatchOfMessages)->RangeMultiplier(4)->Range(1 << 6, 1 << 12)->Complexity(benchmark::oN);

}  // namespace
}  // namespace vantrelia::bench
