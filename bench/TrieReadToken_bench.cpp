// The trie walk on its own: HL7-like text cut into its leaves with the stream's readToken, with
// the levels pushed and popped around each field as the separator list does it, views on and
// replacements applied.

#include <benchmark/benchmark.h>

#include <string>

#include "bench/Hl7TextGenerator.h"
#include "foundation/Enumerations.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorTrieNode.h"
#include "parsing/StringParserStream.h"

namespace vantrelia::bench {
namespace {

constexpr size_t kTextCharacters = 10 * 1000 * 1000;

const std::u16string& hl7Text() {
  static const std::u16string text = Hl7TextGenerator().generate(kTextCharacters);
  return text;
}

// Cuts whole segments by their shapes, keeping the trie as the separator list would: the segment
// separator and the escape replacements at the level of the segment, and one more level for each
// separator pushed while a field is read.
class Hl7TrieCutter {
 public:
  Hl7TrieCutter() {
    // Message and group separators are empty in HL7; the segment separator is the third level.
    root.setLevel(3);
    root.addSequence(qxSepSegment, u"\r", SeparatorTrieNode::kSeparator, 3);
    const std::u16string_view replacements[][2] = {
        {u"\\F\\", u"|"}, {u"\\S\\", u"^"}, {u"\\T\\", u"&"}, {u"\\R\\", u"~"}, {u"\\E\\", u"\\"}};
    for (const auto& [sequence, stands] : replacements) {
      root.addSequence(qxSepUser1, sequence, SeparatorTrieNode::kReplacement, 3, stands);
    }
  }

  // Reads the stream to its end; returns a checksum of what was read so nothing is optimised away.
  size_t cutAll(StringParserStream& stream) {
    size_t checksum = 0;
    while (!stream.atEnd()) {
      const size_t before = static_cast<size_t>(stream.getRemaining());
      checksum += cutSegment(stream);
      if (static_cast<size_t>(stream.getRemaining()) == before) return 0;  // lost its place
    }
    return checksum;
  }

 private:
  void push(ESeparatorType index, std::u16string_view text) {
    root.setLevel(root.getLevel() + 1);
    root.addSequence(index, text, SeparatorTrieNode::kSeparator, root.getLevel());
  }
  void pop(ESeparatorType index, std::u16string_view text) {
    root.setLevel(root.getLevel() - 1);
    root.addSequence(index, text, SeparatorTrieNode::kSeparator, SeparatorTrieNode::kOutOfForce);
  }

  void readLeaf(StringParserStream& stream, size_t& checksum) {
    token.useView = true;
    stream.readToken(root, token, 0, true);
    checksum += token.characters().size() + static_cast<size_t>(token.separator + 1);
  }

  size_t cutSegment(StringParserStream& stream) {
    size_t checksum = 0;
    push(qxSepField1, u"|");
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
    pop(qxSepField1, u"|");
    stream.consume(kSegment);
    return checksum;
  }

  void readField(StringParserStream& stream, const Hl7FieldShape& shape, size_t& checksum) {
    if (shape.repeats) push(qxSepRepeat, u"~");
    do {
      if (shape.components > 1) {
        push(qxSepField2, u"^");
        do {
          if (shape.subcomponents) {
            push(qxSepField3, u"&");
            do readLeaf(stream, checksum);
            while (token.separator == qxSepField3 && stream.consume(kSubcomponent));
            pop(qxSepField3, u"&");
          } else {
            readLeaf(stream, checksum);
          }
        } while (token.separator == qxSepField2 && stream.consume(kComponent));
        pop(qxSepField2, u"^");
      } else {
        readLeaf(stream, checksum);
      }
    } while (shape.repeats && token.separator == qxSepRepeat && stream.consume(kRepeat));
    if (shape.repeats) pop(qxSepRepeat, u"~");
  }

  const std::u16string kSegment = u"\r";
  const std::u16string kField = u"|";
  const std::u16string kComponent = u"^";
  const std::u16string kSubcomponent = u"&";
  const std::u16string kRepeat = u"~";
  SeparatorTrieNode root;
  ParserToken token;
};

void BM_TrieReadToken_HL7(benchmark::State& state) {
  const std::u16string& text = hl7Text();
  Hl7TrieCutter cutter;
  for (auto _ : state) {
    StringParserStream stream(text);
    const size_t checksum = cutter.cutAll(stream);
    if (checksum == 0) {
      state.SkipWithError("the cutter lost its place in the text");
      break;
    }
    benchmark::DoNotOptimize(checksum);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_TrieReadToken_HL7)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vantrelia::bench
