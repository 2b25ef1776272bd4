// Match records: the path joined by "/", the value as a byte or a wide text by version.

#include <gtest/gtest.h>

#include <sstream>

#include "compiler/PcfWriter.h"
#include "definitions/DefinitionFile.h"
#include "definitions/MatchDefn.h"
#include "definitions/PcfMessages.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {
namespace {

TEST(MatchDefnTest, PathAndValueByVersion) {
  struct Case {
    int version;
    const char* path;
    std::u16string value;
    const char* heldPath;
    std::u16string heldValue;
  } cases[] = {
      {512, "MSH.9.1", u"ADT", "MSH/9/1", u"ADT"},
      {831, "PID/3", u"\uFFE9", "PID/3", u"\uFFE9"},  // a byte text widens 0xE9 by its sign
      {832, "A.B/C", u"\u00E9x", "A/B/C", u"\u00E9x"},
      {883, "MSH.9", u"", "MSH/9", u""},
      {883, "", u"X", "", u"X"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path);
    compiler::PcfWriter w;
    w.text8(c.path).textv(c.value, c.version).i32(0x5E5E5E5E);
    const auto bytes = w.take();
    std::istringstream source(std::string(bytes.begin(), bytes.end()));
    DefinitionFile file(source);
    MatchDefn match;
    match.load(file, c.version);
    EXPECT_EQ(file.readInt(), 0x5E5E5E5E) << "the record was not read to its end";
    EXPECT_EQ(match.getFieldPath().str(), c.heldPath);
    EXPECT_EQ(match.getValue().str(), c.heldValue);
  }
}

// Segments, items and messages read their match lists alike; a negative count is corruption, not
// an empty list.
TEST(MatchDefnTest, ListsReadTheirCountOfRecords) {
  struct Case {
    int32_t count;
    size_t records;  // how many records the bytes carry
    const char* error;
  } cases[] = {
      {0, 0, nullptr},
      {2, 2, nullptr},
      {-1, 0, messages::kInvalidMatchCount},
      {3, 2, messages::kUnexpectedEndOfInput},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.count);
    compiler::PcfWriter w;
    w.i32(c.count);
    for (size_t i = 0; i < c.records; ++i) w.text8("PID/" + std::to_string(i + 1)).text16(u"X");
    if (!c.error) w.i32(0x5E5E5E5E);
    const auto bytes = w.take();
    std::istringstream source(std::string(bytes.begin(), bytes.end()));
    DefinitionFile file(source);
    if (c.error) {
      try {
        MatchDefn::loadList(file, 883);
        ADD_FAILURE() << "a broken list was read";
      } catch (const InvalidFile& e) {
        EXPECT_EQ(e.message, c.error);
      }
      continue;
    }
    const auto matches = MatchDefn::loadList(file, 883);
    ASSERT_EQ(matches.size(), c.records);
    if (c.records) {
      EXPECT_EQ(matches.back()->getFieldPath().str(), "PID/" + std::to_string(c.records));
    }
    EXPECT_EQ(file.readInt(), 0x5E5E5E5E) << "the list was not read to its end";
  }
}

}  // namespace
}  // namespace vantrelia
