// Fields with a format: a number picture carries the value between its wire form and a plain
// number, a regular expression leaves the value alone and only judges it; message items may give
// a field another format or take its format away. Formats are built when the definition loads, and
// the compiler refuses those that couldn't be.

#include <gtest/gtest.h>

#include <string>

#include "definitions/PcfMessages.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "elements/FieldImplBase.h"
#include "elements/SectionedNumberFormatter.h"
#include "elements/StringValidator.h"
#include "support/CompilerTesting.h"
#include "support/ElementTesting.h"

namespace vantrelia::testing {
namespace {

// The failing cases of the load change this definition in one place each.
const char* const kFormatDefinition = R"yaml(
primitiveTypes:
  - {name: Cents, baseType: long}
  - {name: Code, regularExpression: "[A-Z]{3}"}
  - {name: Loose, regularExpression: "[A-"}
messageSets:
  - name: FMT
    trimSegments: true
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', style: initiator}
      field2: '^'
    messageTypeFields: [MSH.2]
    segments:
      - name: MSH
        fields: [{name: Sender}, {name: Type, required: true}]
      - name: AMT
        fields:
          - {name: Implied, dataType: double, format: "@0000000v00"}
          - {name: Signed, dataType: long, format: "@000000!"}
          - {name: Grouped, dataType: long, format: "@#,##0"}
          - {name: Money, dataType: float, format: "@$#,##0.00;($#,##0.00)"}
          - {name: Percent, dataType: double, format: "@0%"}
          - {name: Plain, dataType: long}
          - {name: Upper, format: "@[A-Z]+"}
          - {name: Counted, dataType: Cents, format: "@0000"}
          - {name: Strict, dataType: strictInteger, format: "@00000"}
          - {name: Blob, dataType: base64, format: "@0"}
          - {name: Loose, dataType: Loose}
    messages:
      - name: PAY
        type: PAY
        items:
          - {segment: MSH, required: true}
          - segment: AMT
            overrides:
              Plain: {format: "@0.00"}
              Grouped: {format: "99"}
)yaml";

class FieldFormat : public ElementTreeTest {
 protected:
  void SetUp() override {
    compileAndLoad(factory, kFormatDefinition);
    message = create("PAY");
  }
  InternalElement* field(const std::string& name) { return at(*message, "AMT/" + name); }

  std::unique_ptr<MessageElement> message;
};

TEST_F(FieldFormat, EachFieldGetsTheFormatterOfItsKind) {
  const auto picture = [&](const char* name) {
    return dynamic_cast<SectionedNumberFormatter*>(static_cast<FieldImplBase*>(field(name))->getFormatter());
  };
  const auto format = [&](const char* name) { return picture(name) ? narrow(picture(name)->getFormat()) : "none"; };
  EXPECT_EQ(format("Implied"), "0000000v00");
  EXPECT_EQ(format("Counted"), "0000");  // a custom type of base long has a number picture
  EXPECT_EQ(format("Plain"), "0.00");    // given by the message item
  EXPECT_EQ(static_cast<FieldImplBase*>(field("Grouped"))->getFormatter(), nullptr);  // taken away by it
  EXPECT_EQ(static_cast<FieldImplBase*>(field("Blob"))->getFormatter(), nullptr);     // binary has none
  EXPECT_EQ(static_cast<FieldImplBase*>(field("Strict"))->getFormatter(), nullptr);   // nor a strict type
  auto* upper = dynamic_cast<StringValidator*>(static_cast<FieldImplBase*>(field("Upper"))->getFormatter());
  ASSERT_NE(upper, nullptr);
  EXPECT_TRUE(upper->validate(u"ABC"));
  EXPECT_FALSE(upper->validate(u"AbC"));
}

TEST_F(FieldFormat, AValueReadFromTheWireIsTheNumberThePictureReads) {
  struct Case {
    const char* field;
    const char* wire;
    const char* value;
  } cases[] = {
      {"Implied", "000001250", "12.5"},
      // Real numbers show 40 significant digits of the double that the picture read.
      {"Implied", "000001234", "12.33999999999999985789145284797996282578"},
      {"Signed", "000012L", "-123"},
      {"Signed", "0001230", "1230"},
      {"Signed", "abc", "abc"},                  // what the picture can't read stays as it came
      {"Signed", "99999999999", "99999999999"},  // and so does a number beyond 32 bits
      {"Money", "($5.00)", "-5"},
      {"Money", "$1,234.50", "1234.5"},
      {"Money", "1,234.50", "1,234.50"},
      {"Percent", "25%", "0.25"},
      {"Plain", "12.50", "12"},  // a long field cuts the number towards zero
      {"Grouped", "1,234", "1,234"},  // no formatter at this place: the text as it came
      {"Upper", "abc", "abc"},        // an expression doesn't change a value
      {"Counted", "0042", "42"},
      {"Counted", "", ""},  // nothing to read: an empty value stays empty, not a zero
      {"Strict", "00042", "00042"},  // strict types take no picture: their zeros are validation's
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.field) + " " + c.wire);
    InternalElement* f = field(c.field);
    f->setEncodedValue(wide(c.wire));
    EXPECT_EQ(narrow(f->getValue()), c.value);
    EXPECT_EQ(narrow(static_cast<FieldImplBase*>(f)->storedValue()), c.value);  // read once, then kept
  }
}

TEST_F(FieldFormat, AValueIsWrittenInThePicturesForm) {
  struct Case {
    const char* field;
    const char* value;
    const char* wire;
  } cases[] = {
      {"Implied", "12.34", "000001234"},
      {"Signed", "-123", "000012L"},
      {"Signed", "12.5", "12.5"},  // a long field's picture takes whole numbers only
      {"Signed", "abc", "abc"},    // what isn't a number goes out as it stands
      {"Signed", "3000000000", "3000000000"},
      {"Money", "-5", "($5.00)"},
      {"Money", "1234.5", "$1,234.50"},
      {"Percent", "0.25", "25%"},
      {"Plain", "7", "7.00"},
      {"Grouped", "1234567", "1234567"},
      {"Upper", "abc", "abc"},
      {"Counted", "42", "0042"},
      {"Counted", "", ""},  // an empty value writes nothing, not a zero in the picture's form
      {"Implied", "", ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.field) + " " + c.value);
    InternalElement* f = field(c.field);
    f->setValue(wide(c.value));
    EXPECT_EQ(narrow(f->getEncodedValue()), c.wire);
    EXPECT_EQ(narrow(f->getValue()), c.value);  // the value itself stays as it was set
  }
}

TEST_F(FieldFormat, WireTextRoundTripsThroughTheSegment) {
  const std::u16string wire = u"AMT|000001234|000012L|1,234|($5.00)|25%|12.00|ABC|0042|00042|QUJD\r";
  InternalElement* amt = at(*message, "AMT");
  amt->setEncodedValue(wire);
  EXPECT_EQ(narrow(field("Money")->getValue()), "-5");
  EXPECT_EQ(narrow(field("Plain")->getValue()), "12");
  EXPECT_EQ(amt->getEncodedValue(), wire);
}

TEST_F(FieldFormat, ACustomTypesExpressionIsCompiledWhenItLoads) {
  const auto type = [&](const char* name) -> const PrimitiveTypeDefn* {
    for (const auto& [id, t] : factory.getWarehouse().getPrimitiveTypes())
      if (t->getName().view() == name) return t.get();
    return nullptr;
  };
  ASSERT_NE(type("Code"), nullptr);
  ASSERT_NE(type("Code")->getCompiledExpression(), nullptr);
  EXPECT_TRUE(type("Code")->getCompiledExpression()->matches(u"ABC"));
  EXPECT_FALSE(type("Code")->getCompiledExpression()->matches(u"ABCD"));
  EXPECT_EQ(type("Cents")->getCompiledExpression(), nullptr);  // no expression
  // One that doesn't compile leaves the type without it, and the definition loads all the same.
  ASSERT_NE(type("Loose"), nullptr);
  EXPECT_TRUE(type("Loose")->hasRegularExpression());
  EXPECT_EQ(type("Loose")->getCompiledExpression(), nullptr);
}

// A format that the engine couldn't build when it loads the file is refused by the compiler,
// which asks the engine's own builder: a picture with an empty section, an expression of a field,
// an override or a match that doesn't compile.
TEST(FieldFormatCompile, FormatsTheEngineCantBuildAreRefused) {
  constexpr const char* kNoExpression = "is a regular expression that doesn't compile";
  struct Case {
    const char* from;
    const char* to;
    std::string failure;  // a part of the compiler's text; empty: it compiles
  } cases[] = {
      {R"x(format: "@0000000v00")x", R"x(format: "@")x", messages::kEmptyNumberFormatSection},
      {R"x(format: "@000000!")x", R"x(format: "@;(0)")x", messages::kEmptyNumberFormatSection},
      {R"x(format: "@[A-Z]+")x", R"x(format: "@[A-")x", kNoExpression},
      {R"x(Plain: {format: "@0.00"})x", R"x(Plain: {format: "@0;;"})x", messages::kEmptyNumberFormatSection},
      {R"x(type: PAY)x", "type: PAY\n        matches: [{path: MSH.2, value: \"(PAY\"}]", kNoExpression},
      {R"x(format: "@0000000v00")x", R"x(format: "@0;(0)")x", ""},
      {R"x(format: "@[A-Z]+")x", R"x(format: "[A-")x", ""},  // no "@": no pattern, only text
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.to);
    std::string source = kFormatDefinition;
    const size_t at = source.find(c.from);
    ASSERT_NE(at, std::string::npos);
    source.replace(at, std::string(c.from).size(), c.to);
    const std::string failure = definitionCompileFailure(source);
    if (c.failure.empty()) {
      EXPECT_EQ(failure, "");
    } else {
      EXPECT_NE(failure.find(c.failure), std::string::npos) << failure;
    }
  }
}

}  // namespace
}  // namespace vantrelia::testing
