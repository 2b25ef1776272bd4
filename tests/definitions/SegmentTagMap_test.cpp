// The tag map: shared entries, segments without a tag, and the walk over tag lengths.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "definitions/SegmentDefn.h"
#include "definitions/SegmentTagMap.h"
#include "parsing/StringParserStream.h"

namespace vantrelia {
namespace {

TEST(SegmentTagMapTest, EntriesAndLengths) {
  SegmentDefn first, second, untagged;
  SegmentTagMap map;
  map.add(u"AB", first);
  map.add(u"AB", second);
  map.add(u"", untagged);
  ASSERT_NE(map.lookup(u"AB"), nullptr);
  EXPECT_EQ(*map.lookup(u"AB"), (SegmentTagMap::Entry{&first, &second}));
  EXPECT_EQ(map.lookup(u"ab"), nullptr);  // case counts
  ASSERT_NE(map.lookupEmptyTag(), nullptr);
  EXPECT_EQ(*map.lookupEmptyTag(), SegmentTagMap::Entry{&untagged});
  EXPECT_EQ(map.getLengths().size(), 1u);
}

TEST(SegmentTagMapTest, MatchStreamTakesTheLongestTag) {
  SegmentDefn ab, abc, untagged;
  SegmentTagMap map;
  map.add(u"ABC", abc);
  map.add(u"AB", ab);
  map.add(u"", untagged);
  struct Case { std::u16string text; const SegmentDefn* found; } cases[] = {
      {u"ABCD", &abc}, {u"ABX", &ab}, {u"AB", &ab},  // too short for ABC: that length is skipped
      {u"A", nullptr}, {u"", nullptr},  // the untagged entry is never the answer
      {u"XABC", nullptr}, {u"abc", nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.text.begin(), c.text.end()));
    StringParserStream stream(c.text);
    const SegmentTagMap::Entry* entry = map.matchStream(stream);
    if (!c.found) {
      EXPECT_EQ(entry, nullptr);
    } else {
      ASSERT_NE(entry, nullptr);
      EXPECT_EQ(entry->front(), c.found);
    }
    EXPECT_EQ(stream.peek(8), c.text) << "the stream moved";
  }
  // A stream over part of a text sees no tag that runs past its end.
  const std::u16string longer = u"ABCD";
  StringParserStream part(longer.data(), 2);
  const SegmentTagMap::Entry* entry = map.matchStream(part);
  ASSERT_NE(entry, nullptr);
  EXPECT_EQ(entry->front(), &ab);
}

TEST(SegmentTagMapTest, ManyTagsOfEveryLengthAreFoundAsAddedAndNoOthers) {
  // Enough tags of each length that the short ones' tables grow several times and share slots.
  std::vector<std::u16string> tags;
  for (size_t length = 1; length <= 6; ++length) {
    for (char16_t i = 0; i < 300; ++i) {
      std::u16string tag(length, u'A');
      tag.back() = static_cast<char16_t>(u'0' + i);
      if (length > 1) tag.front() = static_cast<char16_t>(0xFF00 + i % 7);  // beyond one byte
      tags.push_back(tag);
    }
  }
  std::vector<SegmentDefn> segments(tags.size());
  SegmentTagMap map;
  for (size_t i = 0; i < tags.size(); ++i) map.add(tags[i], segments[i]);
  for (size_t i = 0; i < tags.size(); ++i) {
    SCOPED_TRACE(i);
    // Behind each tag a character that makes no longer tag.
    const std::u16string text = tags[i] + u'\x01';
    StringParserStream stream(text);
    const SegmentTagMap::Entry* entry = map.matchStream(stream);
    ASSERT_NE(entry, nullptr);
    EXPECT_EQ(entry->front(), &segments[i]);
    EXPECT_EQ(map.lookup(tags[i]), entry);
  }
  // Texts that begin with no tag: characters no tag has there, and a long tag's prefix alone.
  for (const std::u16string& text : {std::u16string(u"\u0001AAAAA"), std::u16string(u"\uFF07AA0"),
                                     std::u16string(u"\uFF00B0"), std::u16string(u"\uFF00AAAA")}) {
    StringParserStream stream(text);
    EXPECT_EQ(map.matchStream(stream), nullptr) << std::string(text.begin(), text.end());
  }
}

}  // namespace
}  // namespace vantrelia
