// Tagged pharmacy segments: fields found by their tags in any order, count fields followed by runs
// of repeats, the findings of unknown tags and counts that aren't numbers, and the write that puts
// the fields back in definition order with every count made true.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "elements/NCPDPSegmentImpl.h"
#include "elements/SegmentImpl.h"
#include "support/CompilerTesting.h"
#include "support/ElementTesting.h"

namespace vantrelia::testing {
namespace {

// Printable separators in place of the wire's control characters: '~' opens a segment, '|' a field.
const char* const kNcpdpDefinition = R"yaml(
arrayTypes:
  - {name: Codes, ownSeparator: "+"}
messageSets:
  - name: TAG
    separators:
      segment: {value: "~", style: initiator}
      field1: {value: "|", style: initiator}
    messageTypeFields: [HDR/1]
    segments:
      - name: HDR
        tag: "H"
        fields: [{name: Type, required: true}]
      # Two runs after their counts, the second of two fields in each repeat.
      - name: CLM
        tag: "|AM07"
        ncpdp: true
        fields:
          - {name: Qualifier, required: true, userData: {Tag: EM}}
          - {name: Number, userData: {Tag: D2}}
          - {name: ModifierCount, dataType: long, countedField: Modifier, userData: {Tag: SE}}
          - {name: Modifier, maxRepeats: 10, userData: {Tag: ER}}
          - {name: Quantity, userData: {Tag: E7}}
          - {name: OtherCount, dataType: long, countedField: OtherQualifier, userData: {Tag: H7}}
          - {name: OtherQualifier, maxRepeats: 3, userData: {Tag: H8}}
          - {name: OtherAmount, maxRepeats: 3, userData: {Tag: H9}}
          - {name: Basis, userData: {Tag: DN}}
      # A run whose repeats each open with a counter of their own, with no count before them.
      - name: DUR
        tag: "|AM08"
        ncpdp: true
        fields:
          - {name: Counter, maxRepeats: 9, userData: {Tag: 7E}}
          - {name: Reason, maxRepeats: 9, userData: {Tag: E4}}
          - {name: Service, maxRepeats: 9, userData: {Tag: E5}}
      # A run with a field that must be there: its count is written even when it is 0.
      - name: RSP
        tag: "|AM21"
        ncpdp: true
        fields:
          - {name: Status, userData: {Tag: AN}}
          - {name: RejectCount, dataType: long, countedField: RejectCode, userData: {Tag: FA}}
          - {name: RejectCode, required: true, maxRepeats: 5, userData: {Tag: FB}}
      # A run inside a run: each ingredient has its own count of modifiers, whose values stand in
      # the ingredient's item of the modifier field.
      - name: CMP
        tag: "|AM10"
        ncpdp: true
        fields:
          - {name: IngredientCount, dataType: long, countedField: Qualifier, userData: {Tag: EC}}
          - {name: Qualifier, maxRepeats: 25, userData: {Tag: RE}}
          - {name: Product, maxRepeats: 25, userData: {Tag: TE}}
          - {name: ModifierCount, dataType: long, maxRepeats: 25, countedField: Modifier, userData: {Tag: 2G}}
          - {name: Modifier, dataType: Codes, maxRepeats: 25, userData: {Tag: 2H}}
      - name: PLAIN
        tag: "|AM99"
        fields: [{name: A}, {name: B}]
    messages:
      - name: B1
        type: B1
        items:
          - {segment: HDR, required: true}
          - {segment: CLM}
          - {segment: DUR}
          - {segment: RSP}
          - {segment: CMP}
          - {segment: PLAIN}
)yaml";

class NCPDPSegment : public ElementTreeTest {
 protected:
  void SetUp() override {
    compileAndLoad(factory, kNcpdpDefinition);
    message = create("B1");
  }

  std::vector<std::pair<int, std::string>> read(const std::string& name, const std::string& text) {
    return readSegmentText(*at(*message, name), text);
  }
  std::string value(const std::string& path) { return narrow(at(*message, path)->getValue()); }
  int count(const std::string& path) { return at(*message, path)->getElementCount(); }
  std::string written(const std::string& name) { return narrow(at(*message, name)->getEncodedValue()); }

  std::unique_ptr<MessageElement> message;
};

using Findings = std::vector<std::pair<int, std::string>>;

TEST_F(NCPDPSegment, TheFactoryMakesTaggedSegmentsOfTheirOwnKind) {
  EXPECT_NE(dynamic_cast<NCPDPSegmentImpl*>(at(*message, "CLM")), nullptr);
  EXPECT_NE(dynamic_cast<NCPDPSegmentImpl*>(at(*message, "DUR")), nullptr);
  EXPECT_EQ(dynamic_cast<NCPDPSegmentImpl*>(at(*message, "PLAIN")), nullptr);
  EXPECT_NE(dynamic_cast<SegmentImpl*>(at(*message, "PLAIN")), nullptr);
  // A copy is of the same kind.
  EXPECT_NE(dynamic_cast<NCPDPSegmentImpl*>(at(*message, "CLM")->clone().get()), nullptr);
}

// Each case reads one text and checks the values a user reads back, by path in the segment.
TEST_F(NCPDPSegment, FieldsAreFoundByTheirTagsAndRunsByTheirCounts) {
  struct Case {
    const char* text;
    std::vector<std::pair<const char*, const char*>> values;
    std::vector<std::pair<const char*, int>> repeats;  // repeats each repeating field holds
  };
  const Case cases[] = {
      // Tags in any order outside runs.
      {"~|AM07|D2000447|EM1|DN01", {{"Number", "000447"}, {"Qualifier", "1"}, {"Basis", "01"}}, {}},
      // A count "3" and a run of three repeats: the field after the run is read as itself.
      {"~|AM07|EM1|SE3|ER01|ER02|ER03|E730000",
       {{"Modifier[0]", "01"}, {"Modifier[1]", "02"}, {"Modifier[2]", "03"}, {"Quantity", "30000"}},
       {{"Modifier", 3}}},
      // Two fields a repeat: a tag lower than the one before starts the next repeat.
      {"~|AM07|H72|H801|H9100{|H802|H9250{|DN01",
       {{"OtherQualifier[0]", "01"}, {"OtherAmount[0]", "100{"}, {"OtherQualifier[1]", "02"},
        {"OtherAmount[1]", "250{"}, {"Basis", "01"}},
       {{"OtherQualifier", 2}, {"OtherAmount", 2}}},
      // A repeat that lacks its second field gets an empty item there, so that the next repeat's
      // amount stays beside its qualifier.
      {"~|AM07|H73|H801|H802|H9250{|H803|H9300{",
       {{"OtherQualifier[1]", "02"}, {"OtherAmount[0]", ""}, {"OtherAmount[1]", "250{"}, {"OtherAmount[2]", "300{"}},
       {{"OtherQualifier", 3}, {"OtherAmount", 3}}},
      // A repeat that lacks its first field gets an empty item there too.
      {"~|AM07|H72|H801|H9100{|H9250{",
       {{"OtherQualifier[0]", "01"}, {"OtherQualifier[1]", ""}, {"OtherAmount[1]", "250{"}},
       {{"OtherQualifier", 2}, {"OtherAmount", 2}}},
      // A count larger than the run: the run ends at the first field behind it.
      {"~|AM07|SE5|ER01|E730000|EM1", {{"Modifier[0]", "01"}, {"Quantity", "30000"}, {"Qualifier", "1"}},
       {{"Modifier", 1}}},
      // A count of repeats followed at once by a field behind the run: an empty run.
      {"~|AM07|SE2|E75|DN01", {{"Quantity", "5"}, {"Basis", "01"}}, {{"Modifier", 0}}},
      // Repeating fields with no count before them take their values in turn.
      {"~|AM08|7E1|E4DD|E5M0|7E2|E4ER|E5R0",
       {{"Counter[0]", "1"}, {"Reason[0]", "DD"}, {"Service[1]", "R0"}, {"Counter[1]", "2"}},
       {{"Counter", 2}, {"Reason", 2}, {"Service", 2}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const std::string name = std::string(c.text).substr(4, 2) == "07" ? "CLM" : "DUR";
    EXPECT_EQ(read(name, c.text), Findings{});
    for (const auto& [path, expected] : c.values) EXPECT_EQ(value(name + "/" + path), expected) << path;
    for (const auto& [path, expected] : c.repeats) EXPECT_EQ(count(name + "/" + path), expected) << path;
  }
}

TEST_F(NCPDPSegment, UnknownTagsAndCountsThatAreNoNumbersAreReported) {
  struct Case {
    const char* text;
    Findings findings;
    std::vector<std::pair<const char*, const char*>> values;
  };
  const Case cases[] = {
      // An unknown tag: the whole value is reported, and the next field is still read.
      {"~|AM07|EM1|ZZ123|D2000447",
       {{1038, "Unable to determine field for value in tagged segment: ZZ123"}},
       {{"Qualifier", "1"}, {"Number", "000447"}}},
      // A count that isn't a number: reported, and the run is read until it ends.
      {"~|AM07|SEX|ER01|ER02|ER03|E75",
       {{1052, "Specified repeat count is not a valid integer: X"}},
       {{"Modifier[2]", "03"}, {"Quantity", "5"}}},
      // An unknown tag inside a run doesn't end the run.
      {"~|AM07|SE2|ER01|QQ9|ER02|E75",
       {{1038, "Unable to determine field for value in tagged segment: QQ9"}},
       {{"Modifier[1]", "02"}, {"Quantity", "5"}}},
      // An empty count is no number either.
      {"~|AM07|SE|ER01|E75", {{1052, "Specified repeat count is not a valid integer: "}}, {{"Modifier[0]", "01"}}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(read("CLM", c.text), c.findings);
    for (const auto& [path, expected] : c.values) EXPECT_EQ(value(std::string("CLM/") + path), expected) << path;
  }
}

// Texts no sender should write still end, take the whole segment and keep what they carry.
TEST_F(NCPDPSegment, HostileTextsEndAndKeepTheirValues) {
  struct Case {
    const char* segment;
    const char* text;
    Findings findings;
    const char* path;  // a value read after the hostile part
    const char* value;
  };
  const Case cases[] = {
      {"CLM", "~|AM07|SE99999999999999|ER01|E75", {}, "Quantity", "5"},  // a count beyond any int
      {"CLM", "~|AM07|||EM1||", {}, "Qualifier", "1"},                     // empty fields
      {"CLM", "~|AM07|EM1|SEX", {{1052, "Specified repeat count is not a valid integer: X"}}, "Qualifier", "1"},
      {"CLM", "~|AM07|H79|H801|H801|H801|H801|DN01", {}, "Basis", "01"},  // every tag goes back
      {"CMP", "~|AM10|EC9|2G9|2G9|2G9|2G9|2HAA|TE5", {}, "Product[0]", "5"},  // counts without their runs
      {"CMP", "~|AM10|2G9|2HAA|EC1|RE01", {}, "Qualifier[0]", "01"},            // a nested count outside its run
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(read(c.segment, c.text), c.findings);
    EXPECT_EQ(value(std::string(c.segment) + "/" + c.path), c.value);
  }
}

TEST_F(NCPDPSegment, ACountFieldStandsForTheRepeatsOfItsRun) {
  EXPECT_EQ(read("CLM", "~|AM07|EM1|SE1|ER01|ER02|ER03|H79|H801|H802|H9100{"), Findings{});
  // The text said one modifier and nine other amounts; the runs hold three and two.
  EXPECT_EQ(value("CLM/ModifierCount"), "3");
  EXPECT_EQ(value("CLM/OtherCount"), "2");
  EXPECT_FALSE(at(*message, "CLM/OtherCount")->isEmpty());
  EXPECT_EQ(written("CLM"), "~|AM07|EM1|SE3|ER01|ER02|ER03|H72|H801|H802|H9100{");

  // The largest repeat count of the run: three qualifiers beside two amounts.
  at(*message, "CLM/OtherQualifier")->appendElement(nullptr)->setValue(u"03");
  EXPECT_EQ(count("CLM/OtherAmount"), 2);
  EXPECT_EQ(value("CLM/OtherCount"), "3");
  at(*message, "CLM/Modifier")->removeAllElements();
  EXPECT_EQ(value("CLM/ModifierCount"), "0");
  EXPECT_EQ(written("CLM"), "~|AM07|EM1|H73|H801|H802|H9100{|H803") << "a count of nothing isn't written";
}

TEST_F(NCPDPSegment, ACountOfNothingIsWrittenOnlyForARunWithARequiredField) {
  at(*message, "RSP/Status")->setValue(u"R");
  at(*message, "CLM/Qualifier")->setValue(u"1");
  at(*message, "CLM/ModifierCount")->setValue(u"0");
  EXPECT_EQ(written("CLM"), "~|AM07|EM1");
  EXPECT_EQ(written("RSP"), "~|AM21|ANR|FA0");
}

// Texts read and written back: as they came when they are in definition order with true counts,
// else in definition order with counts made true.
TEST_F(NCPDPSegment, TextsReadAndWriteBackInDefinitionOrder) {
  struct Case {
    const char* segment;
    const char* text;
    const char* written;  // null: the same text
  };
  const Case cases[] = {
      {"CLM", "~|AM07|EM1|D2000447|SE2|ER01|ER02|E730000|DN01", nullptr},
      {"CLM", "~|AM07|DN01|D2000447|EM1", "~|AM07|EM1|D2000447|DN01"},
      {"CLM", "~|AM07|EM1|H72|H801|H9100{|H802|H9250{", nullptr},
      {"CLM", "~|AM07|EM1|H73|H801|H802|H9250{", "~|AM07|EM1|H72|H801|H802|H9250{"},
      {"CLM", "~|AM07|EM1|SE4|ER01", "~|AM07|EM1|SE1|ER01"},
      {"CLM", "~|AM07|SE0|EM1", "~|AM07|EM1"},
      {"DUR", "~|AM08|7E1|E4DD|E5M0|7E2|E4ER|E5R0", nullptr},
      {"RSP", "~|AM21|ANR|FA2|FB70|FB75", nullptr},
      {"RSP", "~|AM21|ANA", "~|AM21|ANA|FA0"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    at(*message, c.segment)->setEmpty();
    EXPECT_EQ(read(c.segment, c.text), Findings{});
    const std::string out = written(c.segment);
    EXPECT_EQ(out, c.written ? c.written : c.text);
    // What was written reads back into the same text.
    at(*message, c.segment)->setEmpty();
    EXPECT_EQ(read(c.segment, out), Findings{});
    EXPECT_EQ(written(c.segment), out);
  }
}

TEST_F(NCPDPSegment, ARunInsideARunKeepsItsValuesWithTheOuterRepeat) {
  const std::string text = "~|AM10|EC2|RE01|TE111|2G2|2HAA|2HBB|RE02|TE222|2G1|2HCC";
  EXPECT_EQ(read("CMP", text), Findings{});
  const auto modifier = [&](int ingredient, int entry) {
    return narrow(at(*message, "CMP/Modifier")->getElementAt(ingredient)->getElementAt(entry)->getValue());
  };
  EXPECT_EQ(value("CMP/Product[1]"), "222");
  EXPECT_EQ(count("CMP/Modifier"), 2);
  EXPECT_EQ(at(*message, "CMP/Modifier")->getElementAt(0)->getElementCount(), 2);
  EXPECT_EQ(modifier(0, 1), "BB");
  EXPECT_EQ(modifier(1, 0), "CC");
  // Each nested count stands for its own ingredient's modifiers.
  EXPECT_EQ(value("CMP/ModifierCount[0]"), "2");
  EXPECT_EQ(value("CMP/ModifierCount[1]"), "1");
  EXPECT_EQ(value("CMP/IngredientCount"), "2");
  EXPECT_EQ(written("CMP"), text);
  at(*message, "CMP/Modifier")->getElementAt(1)->appendElement(nullptr)->setValue(u"DD");
  EXPECT_EQ(written("CMP"), "~|AM10|EC2|RE01|TE111|2G2|2HAA|2HBB|RE02|TE222|2G2|2HCC|2HDD");
}

TEST_F(NCPDPSegment, AWholeMessageParsesAndWritesBack) {
  const std::string text =
      "~H|B1~|AM07|EM1|D2000447|SE2|ER01|ER02|H71|H801|H9100{|DN01~|AM08|7E1|E4DD|E5M0~|AM99|a|b";
  auto parsed = factory.Parse(wide(text).c_str());
  ASSERT_NE(parsed, nullptr);
  EXPECT_STREQ(parsed->getName(), "B1");
  EXPECT_EQ(narrow(parsed->getElementAt("CLM/Modifier[1]")->getValue()), "02");
  EXPECT_EQ(narrow(parsed->getElementAt("CLM/OtherAmount[0]")->getValue()), "100{");
  EXPECT_EQ(narrow(parsed->getElementAt("DUR/Reason[0]")->getValue()), "DD");
  EXPECT_EQ(narrow(parsed->getElementAt("PLAIN/B")->getValue()), "b");
  EXPECT_EQ(narrow(parsed->getEncodedValue()), text);
}

}  // namespace
}  // namespace vantrelia::testing
