// Separator records read from bytes laid out by hand: flags by kind, style and version, the
// variable form, and the texts with their escapes.

#include <gtest/gtest.h>

#include "compiler/PcfWriter.h"
#include "definitions/PcfMessages.h"
#include "definitions/SeparatorDefn.h"
#include "support/DefinitionBytes.h"

namespace vantrelia {
namespace {

constexpr int kNone = -1000;  // the style of a record too old to carry the word

// One record as the file holds it; byte texts are given as bytes.
struct Record {
  int32_t kind = 0;
  std::string value = "", replacement = "", path = "";
  int32_t position = 0;
  int32_t style = SeparatorDefn::kStyleSeparator;
  bool variable = false;
  std::string initiator = "", terminator = "", terminatorReplacement = "";
};

// Loads the record from its bytes and checks that it consumed exactly them.
void load(SeparatorDefn& separator, const Record& r, int version) {
  compiler::PcfWriter w;
  w.i32(r.kind).text8(r.value).text8(r.replacement);
  if (r.kind == 1) w.text8(r.path).i32(r.position);
  if (version >= 784) w.i32(r.style);
  if (version >= 864) w.boolean(r.variable);
  if (version >= 864 && r.variable) w.text8(r.initiator).text8(r.terminator);
  if (version >= 867 && r.variable) w.text8(r.terminatorReplacement);
  SCOPED_TRACE(::testing::Message() << "record of kind " << r.kind << " at version " << version);
  testing::readExactly(w.bytes(), [&](DefinitionFile& file) { separator.load(file, version); });
}

TEST(SeparatorDefnTest, FlagsByKindStyleAndVersion) {
  EXPECT_EQ(SeparatorDefn().getFlags(), 0x21u) << "a separator no record touches";
  const struct { int version; int32_t kind; const char* value; const char* path; int32_t style; uint32_t flags; } cases[] = {
      {784, 0, "|", "", 0, 0x12},      {784, 0, "|", "", 1, 0x22},    {784, 0, "|", "", 2, 0x42},
      {883, 0, "|", "", 3, 0x72},      {883, 0, "|", "", 9, 0x02},    {883, 0, "|", "", -1, 0x02},
      {883, 0, "", "", 1, 0x21},       {883, 0, "", "", 2, 0x41},     {883, 1, "^", "MSH.2", 1, 0x24},
      {883, 1, "^", "MSH.2", 3, 0x74}, {883, 1, "^", "", 1, 0x22},    {883, 1, "", "", 0, 0x11},
      {883, 2, "x", "", 2, 0x61},      {883, -1, "x", "", 9, 0x21},   {883, 7, "", "", 0, 0x31},
      {883, 0, "\\u0000", "", 1, 0x22},  // emptiness is judged on the file's text, before escapes
      // Before the style word every separator is written between items.
      {783, 0, "|", "", kNone, 0x22},  {512, 0, "", "", kNone, 0x21}, {512, 1, "^", "MSH.2", kNone, 0x24},
      {512, 1, "^", "", kNone, 0x22},  {512, 5, "x", "", kNone, 0x21},
  };
  for (const auto& c : cases) {
    SeparatorDefn separator;
    load(separator, {.kind = c.kind, .value = c.value, .path = c.path, .style = c.style}, c.version);
    EXPECT_EQ(separator.getFlags(), c.flags) << "kind " << c.kind << " value '" << c.value << "' path '" << c.path
                                             << "' style " << c.style << " version " << c.version;
  }
}

TEST(SeparatorDefnTest, TextsAreStoredExpanded) {
  SeparatorDefn s;
  load(s, {.value = "\\x0D", .replacement = "\\u005Cq", .variable = true, .initiator = "\\x28",
           .terminator = "\\u0029\\q", .terminatorReplacement = "\\x5C)"}, 867);
  EXPECT_EQ(s.getValue().str(), u"\r");
  EXPECT_EQ(s.getReplacementValue().str(), u"\\q");
  EXPECT_EQ(s.getInitiator().str(), u"(");
  EXPECT_EQ(s.getTerminator().str(), u")\\q");
  EXPECT_EQ(s.getTerminatorReplacement().str(), u"\\)");
  load(s, {.value = "a\\u0000b"}, 883);
  EXPECT_EQ(s.getValue().str(), u"a") << "the stored text ends at the zero character";
  load(s, {.value = "\xE9|"}, 883);
  EXPECT_EQ(s.getValue().str(), u"\xFFE9|") << "separator texts are byte texts, sign-extended";
}

TEST(SeparatorDefnTest, KindOneWithoutPathKeepsItsReplacementOnlyWithAValue) {
  SeparatorDefn s;
  load(s, {.kind = 1, .value = "^", .replacement = "\\S\\"}, 883);
  EXPECT_EQ(s.getTerminatorReplacement().str(), u"\\S\\");
  load(s, {.kind = 1, .replacement = "\\S\\"}, 883);
  EXPECT_TRUE(s.getReplacementValue().empty() && s.getTerminatorReplacement().empty());
  load(s, {.kind = 0, .replacement = "\\S\\"}, 883);
  EXPECT_EQ(s.getReplacementValue().str(), u"\\S\\") << "kind 0 without a value keeps it";
}

TEST(SeparatorDefnTest, VariableFormByVersion) {
  const Record variable{.value = "/", .replacement = "\\R\\", .variable = true, .initiator = "(", .terminator = ")",
                        .terminatorReplacement = "\\T\\"};
  const struct { int version; uint32_t flags; const char16_t* initiator; const char16_t* terminatorReplacement; } cases[] = {
      {863, 0x22, u"", u"\\R\\"},  // no variable flag is read yet
      {864, 0xA2, u"(", u""},      // variable, but no terminator replacement yet
      {866, 0xA2, u"(", u""},
      {867, 0xA2, u"(", u"\\T\\"},
  };
  for (const auto& c : cases) {
    SeparatorDefn separator;
    load(separator, variable, c.version);
    EXPECT_EQ(separator.getFlags(), c.flags) << c.version;
    EXPECT_EQ(separator.getInitiator().str(), c.initiator) << c.version;
    EXPECT_EQ(separator.getTerminatorReplacement().str(), c.terminatorReplacement) << c.version;
  }
}

TEST(SeparatorDefnTest, VariableFromFieldFailsOnlyWithAPath) {
  SeparatorDefn separator;
  EXPECT_EQ(testing::invalidFileMessage([&] { load(separator, {.kind = 1, .value = "^", .path = "MSH.2", .variable = true}, 864); }),
            messages::kVariableSeparatorFromField);
  load(separator, {.kind = 1, .value = "^", .variable = true}, 864);
  EXPECT_EQ(separator.getFlags(), 0xA2u) << "an empty path has already cleared the field flag";
}

TEST(SeparatorDefnTest, FieldPathAndPosition) {
  SeparatorDefn s;
  load(s, {.kind = 1, .value = "^", .path = "MSH.2", .position = 3}, 883);
  EXPECT_EQ(s.getFieldPath().getIndexes(), std::vector<int32_t>{2});
  EXPECT_EQ(s.fieldPathText(), "MSH.2");
  EXPECT_EQ(s.getPosition(), 3);
  load(s, {.kind = 1, .value = "^", .path = "MSH.Encoding", .position = -1}, 883);
  EXPECT_EQ(s.fieldPathText(), "MSH/Encoding");
  load(s, {.value = "|"}, 883);
  EXPECT_EQ(s.fieldPathText(), "") << "a new record leaves nothing of the last one";
  EXPECT_EQ(s.getPosition(), 0);
}

}  // namespace
}  // namespace vantrelia
