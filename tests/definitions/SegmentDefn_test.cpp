// Segment records laid out by hand around fields from the field writer: tags and special records
// by version, flags, variable keys, refusals, and the sorted field names.

#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <optional>

#include "compiler/CompileContext.h"
#include "compiler/FieldWriter.h"
#include "compiler/PcfWriter.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/PcfMessages.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SegmentFieldInstancesControl.h"
#include "foundation/BadParameter.h"
#include "support/DefinitionBytes.h"
#include "support/DefinitionRecords.h"
#include "support/DefinitionSetup.h"

namespace vantrelia {
namespace {

using compiler::PcfWriter;
using Special = std::pair<int32_t, std::u16string>;

// A variable field at 883 whose key index is given as is, which the field writer can't produce.
PcfWriter variableField(int32_t keyIndex) {
  return testing::FieldRecord{.name = "V", .dataType = 11, .variable = PcfWriter().i32(keyIndex).i32(0).i32(0).take()}.write(883);
}

struct SegmentBytes {
  std::string name = "S";
  std::u16string tag = u"S";
  std::string fields = "[{name: A}]";  // field sources, written by the field writer
  std::optional<PcfWriter> rawFields;
  bool syntaxRules = false;
  int32_t equations = 0;
  int32_t flags = 0;
  std::optional<Special> presence, nameValue;

  std::vector<uint8_t> write(int version) const {
    PcfWriter w;
    w.text8(name).text8w(tag).text8w(u"").i32(qxSepField1).boolean(false).i32(9);
    if (rawFields) {
      w.i32(1).raw(rawFields->bytes());
    } else {
      compiler::CompileContext context(version);
      const compiler::SourceNode owner(YAML::Load("{fields: " + fields + "}"), "segment");
      const auto sources = compiler::FieldWriter::fieldsOf(owner);
      w.i32(static_cast<int32_t>(sources.size()));
      for (const auto& field : sources) compiler::FieldWriter::write(field, sources, context, w);
    }
    w.i32(1).text8("S.1").textv(u"X", version);
    if (version >= 848) w.boolean(syntaxRules);
    if (version >= 852) w.count(equations);
    if (version >= 855) w.count(0);
    if (version >= 857) w.i32(flags);
    if (version >= 865) {
      w.boolean(presence.has_value());
      if (presence) w.i32(presence->first).text16(presence->second);
    }
    if (version >= 866) {
      w.boolean(nameValue.has_value());
      if (nameValue) {
        w.i32(nameValue->first);
        if (nameValue->first == qxSepString) w.text16(nameValue->second);
      }
    }
    return w.take();
  }
};

const SegmentDefn& load(MessageSetDefn& set, const SegmentBytes& record, int version) {
  FieldUpdates updates;
  auto segment = std::make_unique<SegmentDefn>();
  testing::readExactly(record.write(version), [&](DefinitionFile& file) { segment->load(set, file, version, updates); });
  return testing::DefinitionSetup::addSegment(set, std::move(segment), updates);
}

std::string segmentLoadFailure(const SegmentBytes& record, int version) {
  const auto set = testing::DefinitionSetup::messageSet("SET");
  return testing::invalidFileMessage([&] { load(*set, record, version); });
}

TEST(SegmentDefnTest, RecordByVersion) {
  // flags: the file's word is 0x10; the indicator adds 0x02 from 865, name-value pairs 0x04 from 866
  struct Case { int version; std::u16string tag; std::u16string heldTag; uint32_t flags; ESegmentType type; } cases[] = {
      {512, u"", u"S", 0x00, qxSegTypeNormal},    {516, u"", u"S", 0x00, qxSegTypeNormal},
      {517, u"", u"", 0x00, qxSegTypeNormal},     {856, u"T", u"T", 0x00, qxSegTypeNormal},
      {857, u"T", u"T", 0x10, qxSegTypeNormal},   {865, u"T", u"T", 0x12, qxSegTypeFieldPresenceIndicator},
      {866, u"T", u"T", 0x16, qxSegTypeFieldPresenceIndicator}, {883, u"", u"", 0x16, qxSegTypeFieldPresenceIndicator},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.version);
    SegmentBytes record;
    record.tag = c.tag;
    record.flags = 0x10;
    record.presence = Special{qxSepUser1, u"~"};
    record.nameValue = Special{qxSepField2, u""};  // not a string: the file has no text for it
    const auto set = testing::DefinitionSetup::messageSet("SET");
    const SegmentDefn& segment = load(*set, record, c.version);
    EXPECT_EQ(segment.getTag().str(), c.heldTag);
    EXPECT_EQ(segment.getFlags(), c.flags);
    EXPECT_EQ(segment.getSegmentType(), c.type);
    EXPECT_EQ(segment.getSeparatorType(), qxSepField1);
    ASSERT_EQ(segment.getMatches().size(), 1u);
    EXPECT_EQ(segment.getMatches()[0]->getFieldPath().str(), "S/1");
    EXPECT_EQ(set->findSegmentById(9), &segment);
    // Without a tag the segment is found only as one of the untagged.
    EXPECT_EQ(set->getTagMap().lookupEmptyTag() != nullptr, c.heldTag.empty());
    EXPECT_EQ(set->getTagMap().getLengths().empty(), c.heldTag.empty());
    EXPECT_EQ(segment.getPresenceSeparator() != nullptr, c.version >= 865);
    EXPECT_EQ(segment.getNameValueSeparator() != nullptr, c.version >= 866);
    if (c.version >= 866) {
      EXPECT_EQ(segment.getNameValueSeparator()->SpecialSeparatorType, qxSepField2);
    }
  }
  // A string separator of name-value pairs carries its text; the indicator always does.
  SegmentBytes pairs;
  pairs.nameValue = Special{qxSepString, u"="};
  const auto set = testing::DefinitionSetup::messageSet("SET");
  const SegmentDefn& segment = load(*set, pairs, 883);
  EXPECT_EQ(segment.getSegmentType(), qxSegTypeNameValuePair);
  EXPECT_EQ(segment.getSpecialSeparator()->SpecialSeparatorString.str(), u"=");
}

TEST(SegmentDefnTest, VariableKeys) {
  // variableFlags: of the first variable field, at index 2
  struct Case {
    const char* fields; int version; uint32_t fileFlags; std::map<int32_t, int32_t> keys; uint32_t variableFlags;
  } cases[] = {
      // The key behind the field gives 0x04; a second field ruled by the same key isn't recorded.
      {"[{name: A}, {name: B}, {name: V, dataType: variable, variable: {keyField: F}}, {name: D}, {name: E}, {name: F},"
       " {name: W, dataType: variable, variable: {keyField: F}}]", 883, 0x01, {{5, 2}}, 0x04},
      {"[{name: A}, {name: B}, {name: V, dataType: variable, variable: {keyField: B}}]", 883, 0x01, {{1, 2}}, 0x00},
      {"[{name: A}, {name: B, maxRepeats: 0}, {name: V, maxRepeats: 3, dataType: variable, variable: {keyField: B}}]", 883,
       0x01, {{1, 2}}, 0x20},
      // Before the flag word the fields set 0x01; after it the word alone does.
      {"[{name: A}, {name: B}, {name: V, dataType: variable, variable: {keyField: A}}]", 853, 0, {{0, 2}}, 0x00},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.fields);
    SegmentBytes record;
    record.fields = c.fields;
    record.flags = static_cast<int32_t>(c.fileFlags);
    const auto set = testing::DefinitionSetup::messageSet("SET");
    const SegmentDefn& segment = load(*set, record, c.version);
    EXPECT_EQ(segment.getFlags() & SegmentDefn::kHasVariableField, SegmentDefn::kHasVariableField);
    ASSERT_NE(segment.getVariableKeys(), nullptr);
    EXPECT_EQ(*segment.getVariableKeys(), c.keys);
    EXPECT_EQ(segment.getField(2).getFlags() & (FieldDefn::kKeyBehind | FieldDefn::kRepeatsWithKey), c.variableFlags);
    EXPECT_TRUE(segment.getField(c.keys.begin()->first).isVariableTypeField());
  }
  // A file word without 0x01 leaves the keys unmade, whatever the fields.
  SegmentBytes unflagged;
  unflagged.fields = "[{name: A}, {name: V, dataType: variable, variable: {keyField: A}}]";
  const auto set = testing::DefinitionSetup::messageSet("SET");
  EXPECT_EQ(load(*set, unflagged, 883).getVariableKeys(), nullptr);
}

TEST(SegmentDefnTest, RefusedRecords) {
  SegmentBytes badKey, pastEnd, rules, tooMany, equations;
  badKey.rawFields = variableField(-1);
  badKey.flags = 0x01;
  pastEnd.rawFields = variableField(1);
  pastEnd.flags = 0x01;
  rules.syntaxRules = true;
  tooMany.equations = 2;
  equations.equations = 1;
  EXPECT_EQ(segmentLoadFailure(badKey, 883), messages::kVariableTypeFieldInvalid);
  EXPECT_EQ(segmentLoadFailure(pastEnd, 883), messages::kVariableTypeFieldInvalid);
  EXPECT_EQ(segmentLoadFailure(rules, 883), messages::kSyntaxRulesNotSupported);
  EXPECT_EQ(segmentLoadFailure(tooMany, 883), messages::kTooManyValidationEquations);
  EXPECT_EQ(segmentLoadFailure(equations, 883), messages::kValidationEquationsNotSupported);
}

TEST(SegmentDefnTest, SortedFieldNamesAndInstancesControl) {
  SegmentBytes record;
  record.fields = "[{name: ID}, {name: NAME}, {name: AGE}, {name: AB}, {name: ABC}, {name: AA}]";
  const auto set = testing::DefinitionSetup::messageSet("SET");
  const SegmentDefn& segment = load(*set, record, 883);
  std::vector<std::u16string> names;
  for (const auto& name : segment.getSortedFieldNames()) names.push_back(name.str());
  EXPECT_EQ(names, (std::vector<std::u16string>{u"NAME", u"ABC", u"AGE", u"AA", u"AB", u"ID"}));
  EXPECT_EQ(&segment.getSortedFieldNames(), &segment.getSortedFieldNames());

  const SegmentFieldInstancesControl control(segment);
  EXPECT_EQ(control.getFieldCount(), 6);
  EXPECT_EQ(&control.getFieldDefn(5), &segment.getField(5));
  EXPECT_THROW(control.getComposite(0), BadParameter);
}

}  // namespace
}  // namespace vantrelia
