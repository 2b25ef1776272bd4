// The trie walk on its own: HL7-like text cut into its leaves with the stream's readToken, with
// the levels pushed and popped around each field as the separator list does it, views on and
// replacements applied.

#include <benchmark/benchmark.h>

#include <string>

#include "bench/Hl7Cutter.h"
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

// Keeps the trie as the separator list would: the segment separator and the escape replacements
// at the level of the segment, and one more level for each separator pushed while a field is read.
class TrieLevels {
 public:
  TrieLevels() {
    // Message and group separators are empty in HL7; the segment separator is the third level.
    root.setLevel(3);
    root.addSequence(qxSepSegment, u"\r", SeparatorTrieNode::kSeparator, 3);
    const std::u16string_view replacements[][2] = {
        {u"\\F\\", u"|"}, {u"\\S\\", u"^"}, {u"\\T\\", u"&"}, {u"\\R\\", u"~"}, {u"\\E\\", u"\\"}};
    for (const auto& [sequence, stands] : replacements) {
      root.addSequence(qxSepUser1, sequence, SeparatorTrieNode::kReplacement, 3, stands);
    }
  }
  void push(ESeparatorType index, std::u16string_view text) {
    root.setLevel(root.getLevel() + 1);
    root.addSequence(index, text, SeparatorTrieNode::kSeparator, root.getLevel());
  }
  void pop(ESeparatorType index, std::u16string_view text) {
    root.setLevel(root.getLevel() - 1);
    root.addSequence(index, text, SeparatorTrieNode::kSeparator, SeparatorTrieNode::kOutOfForce);
  }
  void read(StringParserStream& stream, ParserToken& token) { stream.readToken(root, token, 0, true); }

 private:
  SeparatorTrieNode root;
};

void BM_TrieReadToken_HL7(benchmark::State& state) {
  const std::u16string& text = hl7Text();
  Hl7Cutter<TrieLevels> cutter;
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
