// Segments read from a whole text keep their fields in the text until something asks for them.
// Whoever asks first, and whatever changed in the tree meanwhile, the fields and the findings are
// those that cutting the fields at once would have given.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "elements/MessageImpl.h"
#include "elements/SegmentImplBase.h"
#include "foundation/MessageFactory.h"
#include "support/CompilerTesting.h"
#include "support/ElementTesting.h"
#include "validation/ValidationErrorList.h"

namespace vantrelia::testing {
namespace {

using Findings = std::vector<std::pair<int, std::string>>;

// The findings that cutting fields may make.
bool isCutFinding(int number) { return number == 1010 || number == 1022 || number == 1046 || number == 1047; }

class UncutFieldsTest : public ElementTreeTest {
 protected:
  void SetUp() override {
    ElementTreeTest::SetUp();
    // Trailing separators are ignored by default; the tests want to see them found.
    for (const char16_t* number : {u"1046", u"1047"}) {
      factory.SetOption(std::u16string(OptionUriPrefix) + u"/edi/validationErrorSeverity?ERROR=" + number,
                        Any::any(int(qxVESError)));
    }
  }

  std::unique_ptr<MessageElement> parse(const std::string& text) { return factory.Parse(wide(text).c_str()); }
  static bool uncut(MessageElement& root, const std::string& path) {
    return static_cast<SegmentImplBase*>(at(root, path))->hasUncutFields();
  }
  static std::string value(MessageElement& root, const char* path) {
    return narrow(root.getElementAt(path)->getValue());
  }
  static Findings cutFindings(const ValidationErrorList& list) {
    Findings result;
    for (const ValidationError& error : list) {
      if (isCutFinding(error.getErrorNumber())) result.emplace_back(error.getErrorNumber(), narrow(error.getError()));
    }
    return result;
  }
};

TEST_F(UncutFieldsTest, FieldsWaitInTheTextUntilSomethingAsks) {
  const std::string text = "MSH|s|ADT\rPID|1|a^b~c^d|n|19700101|M\rNTE|one\rPV1|I\rOBX|v|u\r";
  auto message = parse(text);
  ASSERT_NE(message, nullptr);
  // The header's type field chose the message, read where it stands: the header waits too.
  EXPECT_TRUE(uncut(*message, "MSH"));
  EXPECT_TRUE(uncut(*message, "PID"));
  EXPECT_TRUE(uncut(*message, "NTE[0]"));
  EXPECT_EQ(value(*message, "PID/Ids[1]/Check"), "d");
  EXPECT_FALSE(uncut(*message, "PID"));
  // Being cut is no change of the message.
  EXPECT_FALSE(static_cast<MessageImpl&>(*message).isChanged());
  EXPECT_TRUE(uncut(*message, "VISIT[0]/OBX[0]"));
  EXPECT_EQ(narrow(message->getEncodedValue()), text);
  EXPECT_EQ(value(*message, "VISIT[0]/OBX[0]/Units"), "u");
  EXPECT_EQ(value(*message, "MSH/Type"), "ADT");
  EXPECT_FALSE(uncut(*message, "MSH"));
}

// The same segment texts read on their own (their fields cut at once) and inside a parsed message
// (cut when validation asks) find the same.
TEST_F(UncutFieldsTest, ACutLateFindsWhatACutAtOnceFinds) {
  const struct {
    const char* segmentPath;
    std::string segment;
  } cases[] = {
      {"NTE[0]", "NTE|a|\r"},
      {"NTE[0]", "NTE|a|b|c\r"},
      {"PID", "PID||A^B^C&D^\r"},
      {"PID", "PID|||A^B^C^D\r"},
      {"PID", "PID|1||||M|x|y~z~w~v|0012|extra\r"},
      // A repeat of nothing but separators is dropped; what its read found stays with the segment.
      {"PID", "PID|1|^~^\r"},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(each.segment);
    auto created = create("ADT");
    if (std::string(each.segmentPath) == "NTE[0]") at(*created, "NTE")->appendElement(nullptr);
    Findings atOnce;
    for (const auto& [number, text] : readSegmentText(*at(*created, each.segmentPath), each.segment)) {
      if (isCutFinding(number)) atOnce.emplace_back(number, text);
    }
    ASSERT_FALSE(atOnce.empty()) << "a case that finds nothing tests nothing";

    const std::string before = each.segment.starts_with("NTE") ? "MSH|s|ADT\rPID|1\r" : "MSH|s|ADT\r";
    auto parsed = parse(before + each.segment + "PV1|I\r");
    ASSERT_NE(parsed, nullptr);
    EXPECT_TRUE(uncut(*parsed, each.segmentPath));
    EXPECT_EQ(cutFindings(parsed->validate()), atOnce);
    // Asked a second time, the findings are there once.
    EXPECT_EQ(cutFindings(parsed->validate()), atOnce);
  }
}

// A host that reads the findings of the parse without validating gets those of the cut too.
TEST_F(UncutFieldsTest, TheParseFindingsIncludeThoseOfTheCut) {
  auto message = parse("MSH|s|ADT\rPID|1\rNTE|a|b|c\rPV1|I\r");
  ASSERT_NE(message, nullptr);
  Findings found;
  static_cast<MessageImpl&>(*message).getParseFindings().forEach([&](MessageElement*, const ValidationError& error) {
    found.emplace_back(error.getErrorNumber(), narrow(error.getError()));
  });
  EXPECT_EQ(found, (Findings{{1022, "Extra data found at end of segment: |c"}}));
}

// Separators a host sets after the parse are for writing: fields still in the text are cut with
// those they were read with.
TEST_F(UncutFieldsTest, SeparatorsChangedAfterTheParseDoNotCutTheText) {
  auto message = parse("MSH|s|ADT\rPID|1|a^b||19700101|M\rNTE|x^y\r");
  ASSERT_NE(message, nullptr);
  ASSERT_TRUE(uncut(*message, "PID"));
  message->setSeparatorValue(qxSepField2, u"!");
  message->setSeparatorValue(qxSepField1, u"^");
  EXPECT_EQ(value(*message, "PID/Ids[0]/Check"), "b");
  EXPECT_EQ(value(*message, "PID/Sex"), "M");
  EXPECT_EQ(value(*message, "NTE[0]/Text"), "x^y");
}

// Where a value may hold the segment separator, the read can't know where the segment ends without
// cutting its fields: a binary value of a given length.
TEST_F(UncutFieldsTest, ABinaryValueIsCutAtOnce) {
  auto message = parse("MSH|s|ADT\rPID|1\rBIN|3|a\rb\r");
  ASSERT_NE(message, nullptr);
  EXPECT_FALSE(uncut(*message, "BIN"));
  EXPECT_EQ(value(*message, "BIN/Data"), "a\rb");
  EXPECT_EQ(message->getUnknownSegmentCount(), 0);
}

TEST_F(UncutFieldsTest, CopiesAndTheOriginalCutAlike) {
  auto message = parse("MSH|s|ADT\rPID|1|a^b||19700101|M\r");
  ASSERT_NE(message, nullptr);
  auto copy = message->clone();
  EXPECT_EQ(value(*copy, "PID/Birth"), "19700101");
  EXPECT_EQ(value(*message, "PID/Birth"), "19700101");
  EXPECT_EQ(narrow(copy->getEncodedValue()), narrow(message->getEncodedValue()));
}

// A header whose separators stand right behind its tag, not in a field of its own, may leave all
// its fields in the text: cut later, they start behind those separators, not at the tag.
TEST(UncutHeaderTest, FieldsOfAHeaderWithItsSeparatorsBehindTheTagStartBehindThem) {
  MessageFactory factory;
  compileAndLoad(factory, R"(
messageSets:
  - name: POS
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', style: initiator, fromField: HDR, position: 1}
      field2: {value: '^', fromField: HDR, position: 2}
      repeat: {value: '~', fromField: HDR, position: 3}
    messageTypeFields: [HDR/Type]
    segments:
      - name: HDR
        fields: [{name: From}, {name: Type}, {name: Control}]
      - name: DAT
        fields: [{name: Value}]
    messages:
      - name: M
        type: T1
        items: [{segment: HDR, required: true}, {segment: DAT, required: true}]
)");
  for (const std::string header : {"HDR|^~|A|T1|C", "HDR#!*#A#T1#C"}) {
    SCOPED_TRACE(header);
    const char f = header[3];
    const std::string text = header + "\rDAT" + f + "v\r";
    auto message = factory.Parse(wide(text).c_str());
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(narrow(message->getElementAt("HDR/From")->getValue()), "A");
    EXPECT_EQ(narrow(message->getElementAt("HDR/Control")->getValue()), "C");
    EXPECT_EQ(narrow(message->getElementAt("DAT/Value")->getValue()), "v");
    EXPECT_EQ(narrow(message->getEncodedValue()), text);
  }
}

}  // namespace
}  // namespace vantrelia::testing
