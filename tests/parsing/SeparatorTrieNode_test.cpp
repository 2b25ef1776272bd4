// Building the separator trie: shared prefixes, levels that only count downwards for the first
// characters, which kind of sequence a node ends, and what a look-up of a child sees.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

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

// Every node below the root with all it holds, children in order: two tries that dump alike read
// alike at every level, and keep their first characters in the same order.
std::string dump(const Trie& node, const std::string& path = "") {
  std::string out;
  for (int32_t i = 0; i < node.getChildCount(); ++i) {
    const Trie& child = node.getChild(i);
    const std::string at = path + narrow(std::u16string(1, child.getCharacter()));
    out += at + " flags=" + std::to_string(child.getFlags()) + " level=" + std::to_string(child.getLevel()) +
           " min=" + std::to_string(child.getMinLevel()) + " index=" + std::to_string(child.getSeparatorIndex()) +
           " children=" + std::to_string(child.getHasChildren()) +
           " replacement=" + (child.getReplacement() ? narrow(*child.getReplacement()) : "-") + "\n";
    out += dump(child, at);
  }
  return out;
}

TEST(SeparatorTrieNodeTest, SequencesAddedForOneReadLeaveTheTrieAsItWas) {
  // A trie as an HL7-like list leaves it: separators at their levels, one popped out of force,
  // replacements that pass through the escape character.
  const auto held = [] {
    auto root = std::make_unique<Trie>();
    root->setLevel(3);
    root->addSequence(qxSepSegment, u"\r", Trie::kSeparator, 1);
    root->addSequence(qxSepField1, u"|", Trie::kSeparator, 2);
    root->addSequence(qxSepRepeat, u"~", Trie::kSeparator, 3);
    root->addSequence(qxSepField2, u"^", Trie::kSeparator, Trie::kOutOfForce);
    root->addSequence(qxSepField1, u"\\F\\", Trie::kReplacement, 0, u"|");
    root->addSequence(qxSepRepeat, u"\\R\\", Trie::kReplacement, 0, u"~");
    return root;
  };
  const struct {
    const char* name;
    std::vector<std::u16string> added;  // in the order they go in; taken out in reverse
    uint32_t kind;
  } cases[] = {
      {"a mark that is a separator in force", {u"~", u"~"}, Trie::kStartEscape},
      {"a mark on a separator out of force", {u"^"}, Trie::kStartEscape},
      {"a mark on the node replacements pass through", {u"\\", u"\\"}, Trie::kStartEscape},
      {"a mark of its own", {u"#", u"%"}, Trie::kEndEscape},
      {"a longer mark below a shared node", {u"\\X", u"|!"}, Trie::kStartEscape},
      {"a quote and its doubled form", {u"\"", u"\"\""}, Trie::kSeparator},
      {"a doubled quote over a replacement's path", {u"\\R", u"\\R\\"}, Trie::kReplacement},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    const std::unique_ptr<Trie> root = held();
    const std::string before = dump(*root);
    const std::u16string firstBefore(root->getFirstCharacters());
    std::vector<Trie::SavedSequence> saved;
    for (const std::u16string& text : c.added) {
      saved.push_back(root->saveSequence(text));
      root->addSequence(qxSepUser1, text, c.kind, 0, u"x");
    }
    ASSERT_NE(dump(*root), before) << "the sequences changed nothing to put back";
    for (auto it = saved.rbegin(); it != saved.rend(); ++it) root->restoreSequence(*it);
    EXPECT_EQ(dump(*root), before);
    EXPECT_EQ(narrow(root->getFirstCharacters()), narrow(firstBefore));
    for (const char16_t c : {u'#', u'"', u'~', u'^'}) {
      EXPECT_EQ(root->isFirstCharacter(c), firstBefore.find(c) != std::u16string::npos) << narrow(std::u16string(1, c));
    }
  }
}

}  // namespace
}  // namespace vantrelia
