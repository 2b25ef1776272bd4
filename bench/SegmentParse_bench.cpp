// Whole segments of HL7-like text read into field trees (composites, sub-components and repeats
// included) and written back, through the element tree's own setEncodedValue and getEncodedValue.
// Also reports what the parsed tree takes in memory for each byte of input, text included.

#include <benchmark/benchmark.h>
#include <malloc.h>

#include <cstdio>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "bench/Hl7TextGenerator.h"
#include "compiler/DefinitionCompiler.h"
#include "elements/InternalElement.h"
#include "foundation/MessageFactory.h"
#include "foundation/NodePool.h"

namespace vantrelia::bench {
namespace {

constexpr size_t kTextCharacters = 10 * 1000 * 1000;
const char16_t* const kTags[] = {u"MSH", u"PID", u"PV1", u"ORC", u"OBR", u"OBX", u"NTE"};

std::string narrowTag(std::u16string_view tag) { return std::string(tag.begin(), tag.end()); }

// A definition with the generator's segment shapes: each component a field, a component with
// sub-components a composite of four, a repeating field repeating. Each segment kind repeats in
// the one message, so that a whole text's segments stay in one tree.
std::string definitionSource() {
  std::string yaml = R"(
messageSets:
  - name: BENCH
    trimSegments: true
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', style: initiator}
      field2: {value: '^', replacement: '\S\'}
      field3: {value: '&', replacement: '\T\'}
      repeat: {value: '~', replacement: '\R\'}
    composites:
      - name: SUB
        fields: [{name: S1}, {name: S2}, {name: S3}, {name: S4}]
)";
  for (int n = 2; n <= 7; ++n) {
    for (const bool sub : {false, true}) {
      yaml += "      - name: C" + std::to_string(n) + (sub ? "S" : "") + "\n        fields:\n";
      for (int i = 1; i <= n; ++i) {
        yaml += "          - {name: P" + std::to_string(i) + (sub && i % 2 == 1 ? ", composite: SUB}\n" : "}\n");
      }
    }
  }
  yaml += "    segments:\n";
  for (const char16_t* tag : kTags) {
    const Hl7SegmentShape& shape = *Hl7TextGenerator::shapeOf(tag);
    yaml += "      - name: " + narrowTag(tag) + "\n        fields:\n";
    int index = 0;
    for (const Hl7FieldShape& field : shape.fields) {
      yaml += "          - {name: F" + std::to_string(++index);
      if (field.components > 1) {
        yaml += ", composite: C" + std::to_string(field.components) + (field.subcomponents ? "S" : "");
      }
      if (field.repeats) yaml += ", maxRepeats: 0";
      yaml += "}\n";
    }
  }
  yaml += "    messages:\n      - name: ALL\n        items:\n";
  for (const char16_t* tag : kTags) yaml += "          - {segment: " + narrowTag(tag) + ", maxRepeats: 0}\n";
  return yaml;
}

struct Fixture {
  Fixture() {
    const std::vector<uint8_t> bytes = compiler::DefinitionCompiler::compile(definitionSource());
    factory.LoadDefinition(bytes.data(), bytes.size());
    text = Hl7TextGenerator().generate(kTextCharacters);
    // Each segment with its end mark, and the repeat item of its kind.
    size_t start = 0;
    while (start < text.size()) {
      size_t end = text.find(u'\r', start);
      end = end == std::u16string::npos ? text.size() : end + 1;
      const std::u16string_view segment(text.data() + start, end - start);
      int kind = 0;
      while (kind < 7 && segment.substr(0, 3) != kTags[kind]) ++kind;
      if (kind < 7) segments.push_back({kind, segment});
      start = end;
    }
  }

  // A message holding every segment of the text.
  std::unique_ptr<MessageElement> parseAll() {
    std::unique_ptr<MessageElement> message = factory.CreateMessage("ALL");
    MessageElement* repeats[7];
    for (int kind = 0; kind < 7; ++kind) repeats[kind] = message->getElementAt(kind);
    for (const auto& [kind, segment] : segments) repeats[kind]->appendElement(nullptr)->setEncodedValue(segment);
    return message;
  }

  MessageFactory factory;
  std::u16string text;
  std::vector<std::pair<int, std::u16string_view>> segments;
};

Fixture& fixture() {
  static Fixture instance;
  return instance;
}

void BM_SegmentParse_HL7(benchmark::State& state) {
  Fixture& f = fixture();
  for (auto _ : state) {
    std::unique_ptr<MessageElement> message = f.parseAll();
    benchmark::DoNotOptimize(message.get());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(f.text.size()));

  // Memory of one parsed tree, text included, for each character of input.
  const size_t before = mallinfo2().uordblks + NodePool::bytesInUse();
  std::unique_ptr<MessageElement> message = f.parseAll();
  const size_t after = mallinfo2().uordblks + NodePool::bytesInUse();
  state.counters["bytesPerInputByte"] = static_cast<double>(after - before) / static_cast<double>(f.text.size());
}
BENCHMARK(BM_SegmentParse_HL7)->Unit(benchmark::kMillisecond);

void BM_SegmentWrite_HL7(benchmark::State& state) {
  Fixture& f = fixture();
  std::unique_ptr<MessageElement> message = f.parseAll();
  size_t written = 0;
  for (auto _ : state) {
    const std::u16string text = message->getEncodedValue();
    written = text.size();
    benchmark::DoNotOptimize(text.data());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(f.text.size()));
  state.counters["writtenPerInput"] = static_cast<double>(written) / static_cast<double>(f.text.size());
}
BENCHMARK(BM_SegmentWrite_HL7)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vantrelia::bench
