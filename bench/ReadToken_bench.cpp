// The separator list's read of field values over HL7-like text: segments cut into fields,
// components, repeats and sub-components with the list's own stack of levels, views on and
// replacements applied, as the segment parser will drive it.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "bench/Hl7Cutter.h"
#include "bench/Hl7TextGenerator.h"
#include "compiler/PcfWriter.h"
#include "definitions/DefinitionFile.h"
#include "definitions/MessageSetDefn.h"
#include "foundation/Enumerations.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorList.h"
#include "parsing/StringParserStream.h"

namespace vantrelia::bench {
namespace {

constexpr size_t kTextCharacters = 10 * 1000 * 1000;
// The file format version the separator records below are written in: styles, no variable flag.
constexpr int kRecordVersion = 800;

const std::u16string& hl7Text() {
  static const std::u16string text = Hl7TextGenerator().generate(kTextCharacters);
  return text;
}

void loadHl7Separators(MessageSetDefn& set) {
  struct Record {
    ESeparatorType index;
    std::string_view value;
    std::string_view replacement;
    int32_t style;
  };
  const Record records[] = {
      {qxSepSegment, "\r", "", SeparatorDefn::kStyleTerminator},
      {qxSepField1, "|", "\\F\\", SeparatorDefn::kStyleSeparator},
      {qxSepField2, "^", "\\S\\", SeparatorDefn::kStyleSeparator},
      {qxSepField3, "&", "\\T\\", SeparatorDefn::kStyleSeparator},
      {qxSepRepeat, "~", "\\R\\", SeparatorDefn::kStyleSeparator},
      {qxSepUser1, "\\", "\\E\\", SeparatorDefn::kStyleSeparator},
  };
  // Each record in the file's own form, so that the set is built by the loader's code.
  for (const Record& record : records) {
    compiler::PcfWriter bytes;
    bytes.i32(SeparatorDefn::kKindPreset).text8(record.value).text8(record.replacement).i32(record.style);
    std::istringstream source(std::string(bytes.bytes().begin(), bytes.bytes().end()));
    DefinitionFile file(source);
    set.getSeparator(record.index).load(file, kRecordVersion);
  }
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
  MessageSetDefn set("HL7");
  loadHl7Separators(set);
  SeparatorList list(set, false, nullptr);
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
