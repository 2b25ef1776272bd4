// The separator list's read of field values over HL7-like text: segments cut into fields,
// components, repeats and sub-components with the list's own stack of levels, views on and
// replacements applied, as the segment parser will drive it.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

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

// Cuts whole segments by their shapes, pushing and popping the list's levels around each field.
class Hl7ListCutter {
 public:
  explicit Hl7ListCutter(SeparatorList& list) : list(list) {}

  // Reads the stream to its end; returns a checksum of what was read so nothing is optimised away.
  size_t cutAll(StringParserStream& stream) {
    size_t checksum = 0;
    while (!stream.atEnd()) {
      const int32_t before = stream.getRemaining();
      checksum += cutSegment(stream);
      if (stream.getRemaining() == before) return 0;  // lost its place
    }
    return checksum;
  }

 private:
  void readLeaf(StringParserStream& stream, size_t& checksum) {
    token.useView = true;
    list.readToken(stream, token, 0, true, false, nullptr);
    checksum += token.characters().size() + static_cast<size_t>(token.separator + 1);
  }

  size_t cutSegment(StringParserStream& stream) {
    size_t checksum = 0;
    list.pushSeparator(qxSepField1);
    readLeaf(stream, checksum);
    const Hl7SegmentShape* shape = Hl7TextGenerator::shapeOf(token.characters());
    size_t field = 0;
    if (shape && shape->tag == u"MSH") {
      // Fields 1 and 2 are the separators themselves, read by count.
      stream.consume(kField);
      stream.readChars(4, token);
      token.separator = qxSepField1;
      field = 2;
    }
    while (token.separator == qxSepField1 && stream.consume(kField)) {
      const Hl7FieldShape simple;
      readField(stream, shape && field < shape->fields.size() ? shape->fields[field] : simple, checksum);
      ++field;
    }
    list.popSeparator();
    stream.consume(kSegment);
    return checksum;
  }

  void readField(StringParserStream& stream, const Hl7FieldShape& shape, size_t& checksum) {
    if (shape.repeats) list.pushSeparator(qxSepRepeat);
    do {
      if (shape.components > 1) {
        list.pushSeparator(qxSepField2);
        do {
          if (shape.subcomponents) {
            list.pushSeparator(qxSepField3);
            do readLeaf(stream, checksum);
            while (token.separator == qxSepField3 && stream.consume(kSubcomponent));
            list.popSeparator();
          } else {
            readLeaf(stream, checksum);
          }
        } while (token.separator == qxSepField2 && stream.consume(kComponent));
        list.popSeparator();
      } else {
        readLeaf(stream, checksum);
      }
    } while (shape.repeats && token.separator == qxSepRepeat && stream.consume(kRepeat));
    if (shape.repeats) list.popSeparator();
  }

  const std::u16string kSegment = u"\r";
  const std::u16string kField = u"|";
  const std::u16string kComponent = u"^";
  const std::u16string kSubcomponent = u"&";
  const std::u16string kRepeat = u"~";
  SeparatorList& list;
  ParserToken token;
};

void BM_ReadToken_HL7(benchmark::State& state) {
  const std::u16string& text = hl7Text();
  MessageSetDefn set("HL7");
  loadHl7Separators(set);
  SeparatorList list(set, false, nullptr);
  list.reset(true, true, true);
  Hl7ListCutter cutter(list);
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
