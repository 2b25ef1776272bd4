// The separator list's read of field values over HL7-like text: segments cut into fields,
// components, repeats and sub-components with the list's own stack of levels, views on and
// replacements applied, as the segment parser will drive it.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "bench/Hl7Cutter.h"
#include "bench/Hl7TextGenerator.h"
#include "compiler/DefinitionCompiler.h"
#include "definitions/DefinitionFile.h"
#include "definitions/MessageWarehouseDefn.h"
#include "foundation/Enumerations.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorList.h"
#include "parsing/StringParserStream.h"

namespace vantrelia::bench {
namespace {

constexpr size_t kTextCharacters = 10 * 1000 * 1000;

const std::u16string& hl7Text() {
  static const std::u16string text = Hl7TextGenerator().generate(kTextCharacters);
  return text;
}

// The HL7 separators in the definition language, compiled and loaded as a host's definition is.
std::unique_ptr<MessageWarehouseDefn> loadHl7Warehouse() {
  const std::vector<uint8_t> bytes = compiler::DefinitionCompiler::compile(R"(
messageSets:
  - name: HL7
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', replacement: '\F\'}
      field2: {value: '^', replacement: '\S\'}
      field3: {value: '&', replacement: '\T\'}
      repeat: {value: '~', replacement: '\R\'}
      user1: {value: '\', replacement: '\E\'}
)");
  std::istringstream source(std::string(bytes.begin(), bytes.end()));
  DefinitionFile file(source);
  auto warehouse = std::make_unique<MessageWarehouseDefn>();
  warehouse->read(file);
  return warehouse;
}

// The list's own stack of levels; the texts are the list's business.
struct ListLevels {
  void push(ESeparatorType index, std::u16string_view) { list.pushSeparator(index); }
  void pop(ESeparatorType, std::u16string_view) { list.popSeparator(); }
  void read(StringParserStream& stream, ParserToken& token) { list.readToken(stream, token, 0, true, false, nullptr); }
  SeparatorList& list;
};

void BM_ReadToken_HL7(benchmark::State& state) {
  const std::u16string& text = hl7Text();
  const auto warehouse = loadHl7Warehouse();
  SeparatorList list(*warehouse->getMessageSets().front(), false, nullptr);
  list.reset(true, true, true);
  Hl7Cutter<ListLevels> cutter(list);
  for (auto _ : state) {
    StringParserStream stream(text);
    const size_t checksum = cutter.cutAll(stream);
    if (checksum == 0 || list.getLevels().size() != 3) {
      state.SkipWithError("the cutter lost its place in the text");
      break;
    }
    benchmark::DoNotOptimize(checksum);
  }
  // One byte per character of the text.
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_ReadToken_HL7)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vantrelia::bench
