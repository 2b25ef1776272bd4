// Match records: the path joined by "/", the value as a byte or a wide text by version.

#include <gtest/gtest.h>

#include <sstream>

#include "compiler/PcfWriter.h"
#include "definitions/DefinitionFile.h"
#include "definitions/MatchDefn.h"

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

}  // namespace
}  // namespace vantrelia
