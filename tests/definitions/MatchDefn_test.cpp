// Match records: the path joined by "/", the value as a byte or a wide text by version.

#include <gtest/gtest.h>

#include "compiler/PcfWriter.h"
#include "definitions/MatchDefn.h"
#include "foundation/InvalidFile.h"
#include "definitions/PcfMessages.h"
#include "elements/StringValidator.h"
#include "support/DefinitionBytes.h"

namespace vantrelia {
namespace {

using testing::readExactly;

TEST(MatchDefnTest, PathAndValueByVersion) {
  struct Case { int version; const char* path; std::u16string value; const char* heldPath; std::u16string heldValue; } cases[] = {
      {512, "MSH.9.1", u"ADT", "MSH/9/1", u"ADT"},
      {831, "PID/3", u"\uFFE9", "PID/3", u"\uFFE9"},  // a byte text widens 0xE9 by its sign
      {832, "A.B/C", u"\u00E9x", "A/B/C", u"\u00E9x"},
      {883, "MSH.9", u"", "MSH/9", u""},
      {883, "", u"X", "", u"X"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path);
    MatchDefn match;
    readExactly(compiler::PcfWriter().text8(c.path).textv(c.value, c.version).bytes(),
                [&](DefinitionFile& file) { match.load(file, c.version); });
    EXPECT_EQ(match.getFieldPath().str(), c.heldPath);
    EXPECT_EQ(match.getValue().str(), c.heldValue);
  }
}

// Segments, items and messages read their match lists alike; a negative count is corruption, not
// an empty list.
TEST(MatchDefnTest, ListsReadTheirCountOfRecords) {
  // records: how many records the bytes carry
  struct Case { int32_t count; size_t records; std::string error; } cases[] = {
      {0, 0, ""},
      {2, 2, ""},
      {-1, 0, messages::kInvalidMatchCount},
      {3, 2, messages::kUnexpectedEndOfInput},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.count);
    compiler::PcfWriter w;
    w.i32(c.count);
    for (size_t i = 0; i < c.records; ++i) w.text8("PID/" + std::to_string(i + 1)).text16(u"X");
    std::vector<std::unique_ptr<MatchDefn>> matches;
    if (!c.error.empty()) {
      testing::ByteReader reader(w.bytes());  // no sentinel behind: a short list runs into the end of input
      EXPECT_EQ(testing::invalidFileMessage([&] { MatchDefn::loadList(reader.file, 883); }), c.error);
      continue;
    }
    readExactly(w.bytes(), [&](DefinitionFile& file) { matches = MatchDefn::loadList(file, 883); });
    ASSERT_EQ(matches.size(), c.records);
    if (c.records) {
      EXPECT_EQ(matches.back()->getFieldPath().str(), "PID/" + std::to_string(c.records));
    }
  }
}

// A match with both a path and a value tests the field's value against the value as a regular
// expression; without either it has no pattern, and the field need only be there.
TEST(MatchDefnTest, PathAndValueMakeAPatternThatTestsTheWholeValue) {
  struct Case {
    const char* path;
    std::u16string value;
    std::u16string text;
    bool matches;
  } cases[] = {
      {"MSH.9.1", u"ADT", u"ADT", true},
      {"MSH.9.1", u"ADT", u"ADTX", false},
      {"MSH.9.1", u"ADT", u"adt", false},
      {"MSH.9.2", u"A0[1-4]", u"A03", true},
      {"MSH.9.2", u"A0[1-4]", u"A05", false},
      {"MSH.9.2", u"A01|A04", u"A04", true},
      {"MSH.9.1", u"!ACK", u"ADT", true},
      {"MSH.9.1", u"!ACK", u"ACK", false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.value.begin(), c.value.end()) + " " + std::string(c.text.begin(), c.text.end()));
    MatchDefn match;
    readExactly(compiler::PcfWriter().text8(c.path).textv(c.value, 883).bytes(),
                [&](DefinitionFile& file) { match.load(file, 883); });
    ASSERT_NE(match.getPattern(), nullptr);
    EXPECT_EQ(match.getPattern()->matches(c.text), c.matches);
  }
  for (const auto& [path, value] : {std::pair{"MSH.9", u""}, std::pair{"", u"X"}}) {
    MatchDefn match;
    readExactly(compiler::PcfWriter().text8(path).textv(value, 883).bytes(), [&](DefinitionFile& file) { match.load(file, 883); });
    EXPECT_EQ(match.getPattern(), nullptr) << path;
  }
  // A value that doesn't compile refuses the file by name: a match list that can't be applied
  // would let any segment through.
  MatchDefn broken;
  try {
    readExactly(compiler::PcfWriter().text8("MSH.9").textv(u"(ADT", 883).bytes(),
                [&](DefinitionFile& file) { broken.load(file, 883); });
    ADD_FAILURE() << "a value that doesn't compile was taken";
  } catch (const InvalidFile& e) {
    EXPECT_EQ(e.message, messages::kInvalidMatchPattern);
  }
}

}  // namespace
}  // namespace vantrelia
