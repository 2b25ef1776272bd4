// What a message set works out while it loads: separator defaults, severities, header items and
// the marking of message type fields, with the failures a broken file gives.

#include <gtest/gtest.h>

#include "compiler/DefinitionCompiler.h"
#include "compiler/PcfWriter.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "foundation/MessageFactory.h"
#include "support/PcfLoad.h"

namespace vantrelia {
namespace {

// One set with an MSH segment whose third field is a composite and fourth repeats.
std::string oneSet(const std::string& typeFields, const std::string& extra = "") {
  return R"(
messageSets:
  - name: S
    messageTypeFields: )" + typeFields + extra + R"(
    composites:
      - {name: MSG, fields: [{name: Code}, {name: Event}, {name: Deep, composite: SUB}]}
      - {name: SUB, fields: [{name: Part}]}
    segments:
      - name: MSH
        fields:
          - {name: Sep}
          - {name: App}
          - {name: Type, composite: MSG}
          - {name: Ids, composite: MSG, maxRepeats: 0}
    messages:
      - {name: M, items: [{segment: MSH, required: true}]}
)";
}

const MessageSetDefn& loadSet(MessageFactory& factory, const std::string& source, int version = 883) {
  testing::loadBytes(factory, compiler::DefinitionCompiler::compile(source, {version}));
  return *factory.getWarehouse().getMessageSets().at(0);
}

std::string setLoadFailure(const std::string& source) {
  return testing::loadFailure(compiler::DefinitionCompiler::compile(source));
}

TEST(MessageSetDefnTest, MessageTypeFieldsAreMarkedRequired) {
  struct Case { const char* paths; bool type, code, event, deepPart, ids, idsCode; } cases[] = {
      {"[MSH/3]", true, false, false, false, false, false},
      {"[MSH.3.2]", false, false, true, false, false, false},
      {"[MSH/3/3/1]", false, false, false, true, false, false},
      {"[MSH/4/2]", false, false, false, false, true, false},        // a second index on a repeating field is a repetition
      {"[MSH/4/1/1]", false, true, false, false, false, false},      // ...and the one after it a component
      {"[MSH/Type/Event]", true, false, true, false, false, false},  // by name, marking on the way
      {"[msh/type]", true, false, false, false, false, false},       // names ignore case
      {"[XYZ/1, MSH, MSH/, MSH/Nothing]", false, false, false, false, false, false},
  };
  for (const Case& c : cases) {
    MessageFactory factory;
    const MessageSetDefn& set = loadSet(factory, oneSet(c.paths));
    const SegmentDefn& msh = *set.getSegments().at(0);
    const CompositeDefn& msg = *set.findCompositeByName("MSG");
    EXPECT_EQ(msh.getField(2).isRequired(), c.type) << c.paths;
    EXPECT_EQ(msg.getField(0).isRequired(), c.code || c.idsCode) << c.paths;
    EXPECT_EQ(msg.getField(1).isRequired(), c.event) << c.paths;
    EXPECT_EQ(set.findCompositeByName("SUB")->getField(0).isRequired(), c.deepPart) << c.paths;
    EXPECT_EQ(msh.getField(3).isRequired(), c.ids) << c.paths;
  }
}

TEST(MessageSetDefnTest, IndexedTypeFieldFailures) {
  EXPECT_EQ(setLoadFailure(oneSet("[MSH/5]")), "Indexed message type field has an invalid index for the first field");
  EXPECT_EQ(setLoadFailure(oneSet("[MSH/0]")), "Indexed message type field has an invalid index for the first field");
  EXPECT_EQ(setLoadFailure(oneSet("[MSH/2/1]")), "Expected the first field of an indexed message type field to be a composite");
  EXPECT_EQ(setLoadFailure(oneSet("[MSH/3/4]")), "Invalid composite index in indexed message type field");
  EXPECT_EQ(setLoadFailure(oneSet("[MSH/3/1/1]")), "Expected a nested composite in indexed message type field");
}

TEST(MessageSetDefnTest, SettingsFillUpToEveryErrorNumber) {
  MessageFactory factory;
  const auto& none = loadSet(factory, oneSet("[]")).getValidationErrorSettings();
  ASSERT_EQ(none.size(), 52u);
  for (const auto& setting : none) {
    const int number = setting.getErrorNumber();
    EXPECT_EQ(setting.getErrorType(), number >= 1043 && number <= 1050 ? qxVESIgnore : qxVESError) << number;
  }
  EXPECT_EQ(none.front().getErrorNumber(), 1001);
  EXPECT_EQ(none.back().getErrorNumber(), 1052);

  // Ten settings in the file: the set numbers the rest on from 1011.
  const auto& ten = loadSet(factory, oneSet("[]", "\n    validationErrorSettings: {1010: warning}")).getValidationErrorSettings();
  ASSERT_EQ(ten.size(), 52u);
  EXPECT_EQ(ten[9].getErrorType(), qxVESWarning);
  EXPECT_EQ(ten[10].getErrorNumber(), 1011);
}

TEST(MessageSetDefnTest, SeparatorsAndHeaderItemsByVersion) {
  MessageFactory factory;
  const MessageSetDefn& oldest = loadSet(factory, oneSet("[]", "\n    separators: {segment: \"\\r\", field1: '|'}"), 512);
  EXPECT_EQ(oldest.getHeaderItemCount(), 1);
  // Old files terminate segments and introduce the first field level, whatever the record said.
  EXPECT_EQ(oldest.getSeparator(qxSepSegment).getFlags(), SeparatorDefn::kPreset | SeparatorDefn::kTerminator);
  EXPECT_EQ(oldest.getSeparator(qxSepField1).getFlags(), SeparatorDefn::kPreset | SeparatorDefn::kInitiator);
  EXPECT_EQ(oldest.getSeparator(qxSepFiller).getValue().str(), u" ");
  EXPECT_EQ(oldest.getSeparator(qxSepFiller).getFlags(), 0x12u);

  const MessageSetDefn& newest = loadSet(factory, oneSet("[]", "\n    separators: {segment: \"\\r\", filler: '0'}"));
  EXPECT_EQ(newest.getSeparator(qxSepSegment).getFlags(), SeparatorDefn::kPreset | SeparatorDefn::kSeparator);
  EXPECT_EQ(newest.getSeparator(qxSepFiller).getValue().str(), u"0") << "a filler of its own stays";

  const MessageSetDefn& empty = loadSet(factory, "messageSets: [{name: E, headerItemCount: 3}]");
  EXPECT_EQ(empty.getHeaderItemCount(), 0) << "a set without messages has no header items";
}

TEST(MessageSetDefnTest, MoreThanTwentyTwoSeparatorsIsNoValidFile) {
  compiler::PcfWriter w;
  w.i32(512).i32(1).text8("S").boolean(false).boolean(false).boolean(false).i32(1).i32(23);
  EXPECT_EQ(testing::loadFailure(w.bytes()), "PCF is corrupt: Invalid number of separators");
}

// A whole 883 file laid out by hand: one set, segment A with one string field F, message M whose one
// item carries the situational data given, which rules and validation would need.
std::vector<uint8_t> itemWithSituationalData(const std::vector<uint8_t>& situational) {
  compiler::PcfWriter w;
  w.i32(883).text8("PCFFILE").i32(0).i32(0).boolean(false).count(0).count(0).i32(0).i32(1);
  w.text8("S").boolean(false).boolean(false).boolean(false).boolean(false).boolean(false).boolean(true).i32(1);
  w.i32(0).i32(0).i32(1).boolean(false).i32(0).i32(0);  // separators, type fields, header items, tables, composites
  w.i32(1).text8("A").text8("A").text8("").i32(qxSepAuto).boolean(false).i32(1).i32(1);
  w.text8("F").boolean(false).i32(0).i32(0).i32(0).i32(1).text16(u"").boolean(false).boolean(true);
  w.i32(0).i32(4).i32(0).text16(u"").text8("").count(0).boolean(false);  // primitive string field
  w.i32(0).boolean(false).count(0).count(0).i32(0).boolean(false).boolean(false);  // rest of the segment
  w.i32(1).text8("M").text8("").i32(1);
  w.boolean(true).i32(1).i32(1).i32(1).text8("A").boolean(false).i32(0).i32(1).raw(situational);
  w.i32(0).boolean(false).count(0).count(0).boolean(false);  // matches, syntax rules, equations, user data, rule
  w.i32(0).boolean(false).boolean(false).count(0);  // message matches, tables, state tables, user data
  w.count(0).boolean(false).i32(0);  // set user data and settings
  return w.take();
}

TEST(MessageSetDefnTest, SituationalDataThatAnnouncesNoRuleIsInvalid) {
  using compiler::PcfWriter;
  const auto noOverrides = PcfWriter().u16(0).i32(-1).bytes();
  ASSERT_EQ(testing::loadFailure(itemWithSituationalData(noOverrides)), "");
  struct Case { std::vector<uint8_t> data; const char* failure; } cases[] = {
      {PcfWriter().u16(0x0020).boolean(false).bytes(), "Invalid situational field instances data"},
      {PcfWriter().u16(0).i32(0).boolean(false).u16(0x0020).boolean(false).bytes(), "Invalid situational field instance data"},
      {PcfWriter().u16(0).i32(0).boolean(false).u16(0x0020).boolean(true).bytes(), "Situational rules are not supported yet"},
      {PcfWriter().u16(0).i32(0).boolean(false).u16(0x0040).bytes(), "Advanced validation is not supported yet"},
  };
  for (const Case& c : cases) EXPECT_EQ(testing::loadFailure(itemWithSituationalData(c.data)), c.failure);
}

}  // namespace
}  // namespace vantrelia
