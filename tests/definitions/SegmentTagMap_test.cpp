// The tag map: shared entries, segments without a tag, and the walk over tag lengths.

#include <gtest/gtest.h>

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

}  // namespace
}  // namespace vantrelia
