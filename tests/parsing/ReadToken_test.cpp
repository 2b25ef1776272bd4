// Cutting tokens with the separator trie, on tries built the way the separator list builds them:
// a root at the level of the segment separator, one level more for each separator pushed, and a
// sequence taken out of force by adding it again at the out-of-force level.

#include <gtest/gtest.h>

#include <optional>
#include <random>
#include <string>

#include "foundation/Enumerations.h"
#include "foundation/TextConversion.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorTrieNode.h"
#include "parsing/StringParserStream.h"

namespace vantrelia {
namespace {

using namespace std::string_literals;
using Trie = SeparatorTrieNode;
constexpr int kSegmentLevel = 3;  // message and group separators stand below it

void push(Trie& root, ESeparatorType index, std::u16string_view text) {
  root.setLevel(root.getLevel() + 1);
  root.addSequence(index, text, Trie::kSeparator, root.getLevel());
}
void pop(Trie& root, ESeparatorType index, std::u16string_view text) {
  root.setLevel(root.getLevel() - 1);
  root.addSequence(index, text, Trie::kSeparator, Trie::kOutOfForce);
}

// A segment of HL7-like text while a composite field is read: "\r", "|" and "^" in force, with the
// escape sequences of "|" and "^" as replacements.
void composite(Trie& root) {
  root.setLevel(kSegmentLevel);
  root.addSequence(qxSepSegment, u"\r", Trie::kSeparator, kSegmentLevel);
  root.addSequence(qxSepField1, u"\\F\\", Trie::kReplacement, kSegmentLevel, u"|");
  root.addSequence(qxSepField2, u"\\S\\", Trie::kReplacement, kSegmentLevel, u"^");
  push(root, qxSepField1, u"|");
  push(root, qxSepField2, u"^");
}
// Back at field level after the composite: "^" was added again out of force.
void afterComposite(Trie& root) {
  composite(root);
  pop(root, qxSepField2, u"^");
}
// The same with the escape marks of a custom type, which the list adds at level 0.
void escaped(Trie& root) {
  composite(root);
  root.addSequence(qxSepUser1, u"<", Trie::kStartEscape, 0);
  root.addSequence(qxSepUser2, u">", Trie::kEndEscape, 0);
}
// One character that opens and closes an escape.
void escapedBySame(Trie& root) {
  composite(root);
  root.addSequence(qxSepUser1, u"#", Trie::kStartEscape, 0);
  root.addSequence(qxSepUser2, u"#", Trie::kEndEscape, 0);
}
// A sequence taken out of force at the level where it was in force, as the list does when one
// character serves two levels at once.
void outOfForceHere(Trie& root) {
  composite(root);
  root.addSequence(qxSepField2, u"^", Trie::kSeparator, Trie::kOutOfForce);
}
// "*" at the root's level, above it, and as the front of the two-character "*+".
void star(Trie& root) { root.addSequence(qxSepField1, u"*", Trie::kSeparator, root.getLevel()); }
void starAbove(Trie& root) { root.addSequence(qxSepField1, u"*", Trie::kSeparator, 1); }
void starPlus(Trie& root) { root.addSequence(qxSepField1, u"*+", Trie::kSeparator, 0); }
// "ab" is a prefix of "abcd".
void prefixes(Trie& root) {
  root.addSequence(qxSepField1, u"ab", Trie::kSeparator, 0);
  root.addSequence(qxSepField2, u"abcd", Trie::kSeparator, 0);
}
// CR LF standing for the segment separator "\r", as the list adds slot qxSepCrlf.
void crlf(Trie& root) {
  root.setLevel(kSegmentLevel);
  root.addSequence(qxSepSegment, u"\r", Trie::kSeparator, kSegmentLevel);
  root.addSequence(qxSepCrlf, u"\r\n", Trie::kReplacement, kSegmentLevel, u"\r")->setIsCrlf(true);
  push(root, qxSepField1, u"|");
}
void crlfSegmentOutOfForce(Trie& root) {
  crlf(root);
  root.addSequence(qxSepSegment, u"\r", Trie::kSeparator, Trie::kOutOfForce);
}

struct ReadCase {
  const char* name;
  void (*build)(Trie&);
  std::u16string text;
  int32_t maxLength;
  bool applyReplacements;
  std::string token;
  int32_t separator;
  std::string rest;     // what the stream holds afterwards
  bool copied;          // the view asked for turned into a copy
};

TEST(ReadTokenTest, CutsAtSeparatorsInForce) {
  const ReadCase cases[] = {
      {"separator in force", star, u"AB*CD", 0, true, "AB", qxSepField1, "*CD", false},
      {"separator above the level", starAbove, u"AB*CD", 0, true, "AB*CD", -1, "", false},
      {"maximum length", star, u"ABCD", 2, true, "AB", -1, "CD", false},
      {"separator behind the maximum", star, u"ABC*", 3, true, "ABC", -1, "*", false},
      {"two characters across the maximum", starPlus, u"AB*+C", 3, true, "AB", -1, "*+C", false},
      {"two characters ending at the maximum", starPlus, u"AB*+C", 4, true, "AB", qxSepField1, "*+C", false},
      {"front of a two-character separator", starPlus, u"A*B*+", 0, true, "A*B", qxSepField1, "*+", false},
      {"front at the end of the text", starPlus, u"AB*", 0, true, "AB*", -1, "", false},
      {"inner node of a longer sequence", prefixes, u"abcx", 0, true, "abcx", -1, "", false},
      {"prefix sequence", prefixes, u"xabx", 0, true, "x", qxSepField1, "abx", false},
      {"longer sequence", prefixes, u"xabcdy", 0, true, "x", qxSepField2, "abcdy", false},
      {"empty text", star, u"", 0, true, "", -1, "", false},
      {"empty token", composite, u"|x", 0, true, "", qxSepField1, "|x", false},
      {"outer separator at an inner level", composite, u"A|B", 0, true, "A", qxSepField1, "|B", false},
      {"popped separator", afterComposite, u"A^B|C", 0, true, "A^B", qxSepField1, "|C", false},
      {"out of force at its own level", outOfForceHere, u"A^B|C", 0, true, "A^B", qxSepField1, "|C", false},
      {"segment separator", afterComposite, u"A\rB", 0, true, "A", qxSepSegment, "\rB", false},
      {"replacement", composite, u"A\\F\\B^C", 0, true, "A|B", qxSepField2, "^C", true},
      {"two replacements", composite, u"\\S\\\\F\\", 0, true, "^|", -1, "", true},
      {"replacement left as it is", composite, u"A\\F\\B^C", 0, false, "A\\F\\B", qxSepField2, "^C", false},
      {"broken replacement", composite, u"A\\X\\B", 0, true, "A\\X\\B", -1, "", false},
      {"escape", escaped, u"a<b\\F\\c>d|e", 0, true, "a<b\\F\\c>d", qxSepField1, "|e", true},
      {"separator inside an escape", escaped, u"a<b|c>", 0, true, "a<b", qxSepField1, "|c>", false},
      // The end mark is looked for from the last character of the start mark on, so one character
      // for both marks closes the escape where it opens, and what follows reads as any text.
      {"one character for both escape marks", escapedBySame, u"a#\\F\\#|b", 0, true, "a#|#", qxSepField1, "|b", true},
      {"escape never closed", escaped, u"a<bc", 0, true, "a", -1, "<bc", false},
      {"CR LF with replacements", crlf, u"AB\r\nCD", 0, true, "AB", -1, "\r\nCD", true},
      {"CR LF without replacements", crlf, u"AB\r\nCD", 0, false, "AB", qxSepCrlf, "\r\nCD", false},
      {"CR alone", crlf, u"AB\rCD", 0, false, "AB", qxSepSegment, "\rCD", false},
      {"CR at the end", crlf, u"AB\r", 0, false, "AB", qxSepSegment, "\r", false},
      {"CR LF, segment out of force", crlfSegmentOutOfForce, u"AB\r\nC|D", 0, false, "AB\r\nC", qxSepField1, "|D", false},
  };
  for (const ReadCase& c : cases) {
    for (const bool view : {true, false}) {
      SCOPED_TRACE(std::string(c.name) + (view ? ", view" : ", copy"));
      Trie root;
      c.build(root);
      StringParserStream stream(c.text);
      ParserToken token;
      token.useView = view;
      token.text = u"stale text";
      stream.readToken(root, token, c.maxLength, c.applyReplacements);
      EXPECT_EQ(narrow(token.characters()), c.token);
      EXPECT_EQ(token.separator, c.separator);
      EXPECT_EQ(token.useView, view && !c.copied);
      EXPECT_EQ(narrow(stream.readRest()), c.rest);
    }
  }
}

// Levels go up and down while one trie serves a whole segment; each read sees the level of the
// moment, and characters of sequences out of force cost nothing but a failed walk.
TEST(ReadTokenTest, FollowsTheLevelsOfASegment) {
  Trie root;
  afterComposite(root);
  const std::u16string text = u"PID|A^B&C|D^E\rNEXT";
  StringParserStream stream(text);
  ParserToken token;
  token.useView = true;
  auto read = [&] {
    stream.readToken(root, token, 0, true);
    return narrow(token.characters()) + "/" + std::to_string(token.separator);
  };
  EXPECT_EQ(read(), "PID/5");
  ASSERT_TRUE(stream.consume(u"|"s));
  push(root, qxSepField2, u"^");
  EXPECT_EQ(read(), "A/6");
  ASSERT_TRUE(stream.consume(u"^"s));
  push(root, qxSepField3, u"&");
  EXPECT_EQ(read(), "B/7");
  ASSERT_TRUE(stream.consume(u"&"s));
  EXPECT_EQ(read(), "C/5");
  pop(root, qxSepField3, u"&");
  pop(root, qxSepField2, u"^");
  ASSERT_TRUE(stream.consume(u"|"s));
  EXPECT_EQ(read(), "D^E/0") << "the component separator is out of force again";
  ASSERT_TRUE(stream.consume(u"\r"s));
  EXPECT_EQ(read(), "NEXT/-1");
  EXPECT_TRUE(stream.atEnd());
}

// A root with ten children, one of them sharing its low byte with "*".
void manyChildren(Trie& root) {
  for (const char16_t c : std::u16string_view(u"ABCDEFGH\u012A")) {
    root.addSequence(qxSepUser1, {&c, 1}, Trie::kSeparator, 0);
  }
  star(root);
}

// Plain text is scanned in blocks of eight characters, or by a table when the root has many
// children: a separator must be found at every place of a block and in the tail behind the last
// whole block, and a character that only shares the low byte of one must not be taken for it.
TEST(ReadTokenTest, FindsTheSeparatorAtEveryPlace) {
  for (void (*build)(Trie&) : {star, manyChildren}) {
    for (size_t place = 0; place < 40; ++place) {
      std::u16string text(41, u'\u022A');
      text[place] = u'*';
      Trie root;
      build(root);
      StringParserStream stream(text);
      ParserToken token;
      token.useView = true;
      stream.readToken(root, token, 0, false);
      EXPECT_EQ(token.viewLength, static_cast<int32_t>(place)) << "separator at " << place;
      EXPECT_EQ(token.separator, qxSepField1);
    }
  }
}

// Whatever the trie and the text, a read stays inside the text and its limit, and without
// replacements the token is exactly the characters it moved over.
TEST(ReadTokenTest, RandomTriesAndTextsStayInBounds) {
  std::mt19937 random(20240601);
  const std::u16string_view alphabet = u"ab*+|^\r\n<>#\\F";
  auto any = [&](size_t count) { return static_cast<int32_t>(random() % count); };
  auto anyText = [&](int32_t length) {
    std::u16string text;
    while (length-- > 0) text += alphabet[static_cast<size_t>(any(alphabet.size()))];
    return text;
  };
  const uint32_t kinds[] = {Trie::kSeparator, Trie::kReplacement, Trie::kStartEscape, Trie::kEndEscape};
  for (int round = 0; round < 20000; ++round) {
    Trie root;
    root.setLevel(any(6));
    for (int i = any(8); i >= 0; --i) {
      const std::u16string replacement = anyText(any(3));
      Trie* end = root.addSequence(any(kSeparatorCount), anyText(1 + any(3)), kinds[any(4)],
                                   any(3) == 0 ? Trie::kOutOfForce : any(7),
                                   any(2) ? std::optional<std::u16string_view>(replacement) : std::nullopt);
      if (end && any(4) == 0) end->setIsCrlf(true);
    }
    const std::u16string text = anyText(any(40));
    StringParserStream stream(text);
    const bool applyReplacements = any(2);
    ParserToken token;
    while (!stream.atEnd()) {
      token.useView = any(2);
      const int32_t before = stream.getRemaining();
      const int32_t maxLength = any(3) ? 0 : any(6);
      stream.readToken(root, token, maxLength, applyReplacements);
      const int32_t taken = before - stream.getRemaining();
      ASSERT_GE(taken, 0) << "round " << round;
      if (maxLength > 0) {
        ASSERT_LE(taken, maxLength) << "round " << round;
      }
      if (!applyReplacements) {
        const std::u16string_view moved(text.data() + text.size() - before, static_cast<size_t>(taken));
        ASSERT_EQ(narrow(token.characters()), narrow(moved)) << "round " << round;
      }
      if (taken == 0) stream.readChars(1, token);
    }
  }
}

}  // namespace
}  // namespace vantrelia
