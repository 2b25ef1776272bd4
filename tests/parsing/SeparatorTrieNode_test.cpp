// Building the separator trie: shared prefixes, levels that only count downwards for the first
// characters, which kind of sequence a node ends, and what a look-up of a child sees.

#include <gtest/gtest.h>

#include <string>

#include "foundation/Enumerations.h"
#include "foundation/TextConversion.h"
#include "parsing/SeparatorTrieNode.h"

namespace vantrelia {
namespace {

using Trie = SeparatorTrieNode;

TEST(SeparatorTrieNodeTest, SharesPrefixesAndKeepsTheOrderOfInsertion) {
  Trie root;
  Trie* ab = root.addSequence(qxSepField1, u"ab", Trie::kSeparator, 2);
  root.addSequence(qxSepField2, u"x", Trie::kSeparator, 1);
  Trie* abcd = root.addSequence(qxSepField3, u"abcd", Trie::kSeparator, 5);
  EXPECT_EQ(root.addSequence(qxSepField4, u"", Trie::kSeparator, 1), nullptr);
  EXPECT_EQ(root.addSequence(qxSepField4, std::u16string_view(u"ab\0q", 4), Trie::kSeparator, 2), ab)
      << "a sequence ends at its first zero";

  ASSERT_EQ(root.getChildCount(), 2);
  const Trie& a = root.getChild(0);
  EXPECT_EQ(a.getCharacter(), u'a');
  EXPECT_EQ(root.getChild(1).getCharacter(), u'x');
  EXPECT_EQ(a.getFlags(), Trie::kInner);
  EXPECT_EQ(a.getMinLevel(), 2) << "only goes down: ab came at 2, abcd at 5";
  ASSERT_EQ(a.getChildCount(), 1);
  EXPECT_EQ(&a.getChild(0), ab);
  EXPECT_TRUE(ab->getHasChildren());
  EXPECT_EQ(ab->getSeparatorIndex(), qxSepField4) << "the last sequence added wins";
  EXPECT_FALSE(abcd->getHasChildren());
  EXPECT_EQ(abcd->getLevel(), 5);
  EXPECT_EQ(abcd->getSeparatorIndex(), qxSepField3);
}

TEST(SeparatorTrieNodeTest, KindsOfSequenceOnOneNode) {
  const struct {
    const char* name;
    uint32_t first, second;
    uint32_t flags;
  } cases[] = {
      {"replacement over separator", Trie::kSeparator, Trie::kReplacement, Trie::kReplacement},
      {"separator over replacement", Trie::kReplacement, Trie::kSeparator, Trie::kSeparator},
      {"escape keeps a separator", Trie::kStartEscape, Trie::kSeparator, Trie::kStartEscape | Trie::kSeparator},
      {"two escape marks", Trie::kStartEscape, Trie::kEndEscape, Trie::kEscapes},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Trie root;
    root.addSequence(qxSepUser1, u"<", c.first, 0, u"first");
    const Trie* node = root.addSequence(qxSepUser2, u"<", c.second, 3);
    EXPECT_EQ(node->getFlags(), c.flags);
    EXPECT_EQ(node->getLevel(), 3);
  }
  // A replacement is copied, kept when the same sequence comes again without one, and replaced.
  Trie root;
  std::u16string text = u"|";
  const Trie* node = root.addSequence(qxSepField1, u"\\F\\", Trie::kReplacement, 0, text);
  text = u"changed";
  ASSERT_TRUE(node->getReplacement().has_value());
  EXPECT_EQ(narrow(*node->getReplacement()), "|");
  root.addSequence(qxSepField1, u"\\F\\", Trie::kReplacement, Trie::kOutOfForce);
  EXPECT_EQ(narrow(*node->getReplacement()), "|");
  root.addSequence(qxSepField1, u"\\F\\", Trie::kReplacement, 0, u"!");
  EXPECT_EQ(narrow(*node->getReplacement()), "!");
}

TEST(SeparatorTrieNodeTest, FindChildSeesSequencesInForceAndPassages) {
  Trie root;
  root.addSequence(qxSepField1, u"|", Trie::kSeparator, 4);
  root.addSequence(qxSepSegment, u"\r", Trie::kSeparator, Trie::kOutOfForce);
  root.addSequence(qxSepCrlf, u"\r\n", Trie::kReplacement, 3, u"\r");
  EXPECT_EQ(root.findChild(u'|', 3), nullptr);
  EXPECT_NE(root.findChild(u'|', 4), nullptr);
  EXPECT_NE(root.findChild(u'\r', 3), nullptr) << "out of force, but CR LF passes through it";
  EXPECT_EQ(root.findChild(u'x', 100), nullptr);
}

TEST(SeparatorTrieNodeTest, FirstCharactersFollowTheRootLevel) {
  Trie root;
  root.setLevel(3);
  root.addSequence(qxSepSegment, u"\r", Trie::kSeparator, 3);
  root.addSequence(qxSepField2, u"^", Trie::kSeparator, 5);
  root.addSequence(qxSepField1, u"|", Trie::kSeparator, 4);
  EXPECT_EQ(narrow(root.getFirstCharacters()), "\r");
  root.setLevel(5);
  EXPECT_EQ(narrow(root.getFirstCharacters()), "\r^|");
  root.addSequence(qxSepField2, u"^", Trie::kSeparator, Trie::kOutOfForce);
  EXPECT_EQ(narrow(root.getFirstCharacters()), "\r^|") << "taken out of force, still listed";
  EXPECT_TRUE(root.isFirstCharacter(u'^'));
  root.setLevel(4);
  EXPECT_EQ(narrow(root.getFirstCharacters()), "\r|");
  EXPECT_FALSE(root.isFirstCharacter(u'^'));
  root.addSequence(qxSepField2, u"^", Trie::kSeparator, 4);
  EXPECT_EQ(narrow(root.getFirstCharacters()), "\r^|") << "added again at a lower level";
  EXPECT_TRUE(root.isFirstCharacter(u'^'));

  // Only the first twenty children in force count.
  Trie wide;
  for (char16_t c = u'a'; c <= u'y'; ++c) wide.addSequence(qxSepUser1, {&c, 1}, Trie::kSeparator, 0);
  EXPECT_EQ(narrow(wide.getFirstCharacters()), "abcdefghijklmnopqrst");
  EXPECT_TRUE(wide.isFirstCharacter(u't'));
  EXPECT_FALSE(wide.isFirstCharacter(u'u'));
}

}  // namespace
}  // namespace vantrelia
