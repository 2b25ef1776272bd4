// The field kinds beside plain fields and composites: custom fields with allowed separators,
// escapes and quotes; arrays on a separator of the set or their own; variable fields typed by
// their key, before or after it, and one type per repeat; composites with presence indicators.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "definitions/MessageDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "elements/ArrayFieldImpl.h"
#include "elements/CompositeImpl.h"
#include "elements/CustomFieldImpl.h"
#include "elements/ElementMessages.h"
#include "elements/FieldImpl.h"
#include "elements/MessageImpl.h"
#include "elements/RepeatFieldImpl.h"
#include "elements/SegmentImplBase.h"
#include "foundation/BadParameter.h"
#include "foundation/IllegalOperation.h"
#include "support/CompilerTesting.h"
#include "support/ElementTesting.h"

namespace vantrelia::testing {
namespace {

const char* const kFieldKinds = R"(
primitiveTypes:
  - {name: Free, allowedSeparators: [field2]}
  - {name: Escaped, escapeCharacters: {start: user1, end: user2}}
  - {name: Quoted, baseType: quoted}
  - {name: Number, baseType: long, plainAlias: true}
arrayTypes:
  - {name: Codes, separator: field3}
  - {name: Parts, ownSeparator: ","}
  - {name: QuotedParts, dataType: quoted, separator: field3}
  - {name: FreeParts, dataType: Free, ownSeparator: ";"}
messageSets:
  - name: KINDS
    trimSegments: true
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', style: initiator, replacement: '{F}'}
      field2: {value: '^', replacement: '{S}'}
      field3: '&'
      repeat: {value: '~', replacement: '{R}'}
      user1: {value: '<', replacement: '{L}'}
      user2: '>'
      "null": '""'
    composites:
      - name: CE
        fields: [{name: Code}, {name: Text}]
      - name: IND
        presenceIndicator: {separator: string, text: "#"}
        fields:
          - {name: A}
          - {name: B, fieldPresenceIndicator: true}
          - {name: C, fieldPresenceIndicator: true}
          - {name: D}
      - name: PAIR
        fields:
          - {name: Kind}
          - name: Value
            dataType: variable
            variable: {keyField: Kind, types: {AR: Codes}, basicTypes: {NM: long}}
    segments:
      - name: ZVA
        fields:
          - {name: Kind}
          - name: Value
            dataType: variable
            variable: {keyField: Kind, types: {CE: CE, AR: Codes, FR: Free, QT: Quoted}, basicTypes: {NM: long}}
      - name: ZVB
        fields:
          - name: Value
            dataType: variable
            variable: {keyField: Kind, types: {CE: CE, AR: Parts}}
          - {name: Kind}
      - name: ZVR
        fields:
          - {name: Kinds, maxRepeats: 0}
          - name: Values
            dataType: variable
            maxRepeats: 0
            variable: {keyField: Kinds, types: {CE: CE, AR: Parts}}
      - name: ZCU
        fields:
          - {name: Free, dataType: Free}
          - {name: Esc, dataType: Escaped}
          - {name: Quote, dataType: Quoted}
          - {name: Alias, dataType: Number}
          - {name: Plain}
      - name: ZAR
        fields:
          - {name: Codes, dataType: Codes}
          - {name: Parts, dataType: Parts}
          - {name: Quoted, dataType: QuotedParts}
          - {name: Free, dataType: FreeParts}
      - name: ZRQ
        fields:
          - {name: Parts, dataType: Parts}
          - {name: Needed, dataType: Parts, required: true, default: "x,y"}
      - name: ZPI
        fields: [{name: Ind, composite: IND}, {name: After}]
      - name: ZCP
        fields: [{name: Pair, composite: PAIR}]
      - name: ZAL
        fields:
          - {name: Plain}
          - {name: Coded, composite: CE}
          - {name: Many, maxRepeats: 0}
          - {name: Free, dataType: Free}
          - {name: Parts, dataType: Parts}
          - {name: Kind}
          - name: Value
            dataType: variable
            variable: {keyField: Kind, types: {CE: CE, AR: Codes}}
          - {name: Ind, composite: IND}
    messages:
      - name: ALL
        type: ALL
        items:
          - {segment: ZVA}
          - {segment: ZVB}
          - {segment: ZVR}
          - {segment: ZCU}
          - {segment: ZAR}
          - {segment: ZRQ}
          - {segment: ZPI}
          - {segment: ZCP}
          - {segment: ZAL}
)";

class FieldKinds : public ::testing::Test {
 protected:
  void SetUp() override {
    compileAndLoad(factory, kFieldKinds);
    message = factory.CreateMessage("ALL");
    ASSERT_NE(message, nullptr);
  }

  InternalElement* at(const std::string& path) {
    return static_cast<InternalElement*>(message->getElementAt(path.c_str()));
  }
  // The segment reads the text and writes it back.
  std::u16string roundTrip(const std::string& segment, const std::u16string& text) {
    InternalElement* node = at(segment);
    EXPECT_EQ(node->setEncodedValue(text), u"") << narrow(text);
    return node->getEncodedValue();
  }

  MessageFactory factory;
  std::unique_ptr<MessageElement> message;
};

// ----- the class each kind of field is made as

TEST_F(FieldKinds, EachFieldIsMadeOfTheClassItsTypeAsks) {
  EXPECT_NE(dynamic_cast<CustomFieldImpl*>(at("ZCU/Free")), nullptr);
  EXPECT_NE(dynamic_cast<CustomFieldImpl*>(at("ZCU/Esc")), nullptr);
  // A plain alias is a plain field of its base type.
  EXPECT_EQ(dynamic_cast<CustomFieldImpl*>(at("ZCU/Alias")), nullptr);
  EXPECT_NE(dynamic_cast<FieldImpl*>(at("ZCU/Alias")), nullptr);
  EXPECT_NE(dynamic_cast<ArrayFieldImpl*>(at("ZAR/Parts")), nullptr);
  EXPECT_EQ(at("ZAR/Parts")->getNodeType(), qxRepeating);
  // The items of an array of a custom type are custom fields.
  at("ZAR/Free")->appendElement(nullptr);
  EXPECT_NE(dynamic_cast<CustomFieldImpl*>(at("ZAR/Free[0]")), nullptr);
}

// ----- variable fields

TEST_F(FieldKinds, AVariableFieldTakesTheTypeItsKeyNames) {
  struct Case {
    const char* kind;
    ENodeType nodeType;
    bool custom;
  };
  const Case cases[] = {
      {"CE", qxComposite, false}, {"AR", qxRepeating, false}, {"FR", qxPrimitive, true},
      {"NM", qxPrimitive, false}, {"??", qxPrimitive, false},  // an unknown key: a string
      {"Escaped", qxPrimitive, true},                          // the bare key names a custom type
      {"Parts", qxRepeating, false},                           // ... or an array type
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.kind);
    at("ZVA/Kind")->setValue(wide(c.kind));
    InternalElement* value = at("ZVA/Value");
    EXPECT_EQ(value->getNodeType(), c.nodeType);
    EXPECT_EQ(dynamic_cast<CustomFieldImpl*>(value) != nullptr, c.custom);
  }
}

TEST_F(FieldKinds, ChangingTheKeyRetypesTheRuledFieldAndKeepsItsText) {
  at("ZVA/Kind")->setValue(u"CE");
  at("ZVA/Value/Code")->setValue(u"A");
  at("ZVA/Value/Text")->setValue(u"B");
  EXPECT_EQ(at("ZVA")->getEncodedValue(), u"ZVA|CE|A^B\r");
  // As a free text that allows "^", the value goes out as it stands.
  at("ZVA/Kind")->setValue(u"FR");
  EXPECT_NE(dynamic_cast<CustomFieldImpl*>(at("ZVA/Value")), nullptr);
  EXPECT_EQ(at("ZVA/Value")->getValue(), u"A^B");
  EXPECT_EQ(at("ZVA")->getEncodedValue(), u"ZVA|FR|A^B\r");
  // As an array on field3 the text is one item, whose "^" is replaced on the wire.
  at("ZVA/Kind")->setValue(u"AR");
  EXPECT_EQ(at("ZVA/Value")->getNodeType(), qxRepeating);
  EXPECT_EQ(at("ZVA/Value")->getElementCount(), 1);
  EXPECT_EQ(at("ZVA/Value[0]")->getValue(), u"A^B");
  EXPECT_EQ(at("ZVA")->getEncodedValue(), u"ZVA|AR|A{S}B\r");
  // A number: the text is kept as it is, though it isn't one.
  at("ZVA/Kind")->setValue(u"NM");
  EXPECT_EQ(at("ZVA/Value")->getNodeType(), qxPrimitive);
  EXPECT_EQ(at("ZVA/Value")->getValue(), u"A{S}B");
}

// Texts of variable and custom fields: each is cut by the field's type and written back the same.
TEST_F(FieldKinds, TypedTextsParseByTheirTypeAndWriteBackTheSame) {
  struct Case {
    const char* text;
    const char* path;  // a node whose value the text gives
    const char* value;
  };
  const Case cases[] = {
      {"ZVA|CE|A^B\r", "ZVA/Value/Text", "B"},
      {"ZVA|AR|A&B&C\r", "ZVA/Value[2]", "C"},
      {"ZVA|FR|A^B\r", "ZVA/Value", "A^B"},
      {"ZVA|NM|0042\r", "ZVA/Value", "0042"},
      {"ZVA|QT|\"a&b\"\r", "ZVA/Value", "a&b"},
      // The key comes after the field: the text waits until the key is read.
      {"ZVB|A^B|CE\r", "ZVB/Value/Text", "B"},
      {"ZVB|x,y|AR\r", "ZVB/Value[1]", "y"},
      {"ZVB|x{S}y|other\r", "ZVB/Value", "x^y"},
      {"ZCU|a^b\r", "ZCU/Free", "a^b"},
      {"ZCU|a{F}b\r", "ZCU/Free", "a|b"},
      // Between the escape marks the replacements stay as they came.
      {"ZCU||a<x{F}y>b\r", "ZCU/Esc", "a<x{F}y>b"},
      {"ZCU|||\"a&b\"\r", "ZCU/Quote", "a&b"},
      {"ZCU||||0042|p\r", "ZCU/Alias", "0042"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    const std::string segment = std::string(c.text, 3);
    EXPECT_EQ(roundTrip(segment, wide(c.text)), wide(c.text));
    EXPECT_EQ(at(c.path)->getValue(), wide(c.value));
  }
}

TEST_F(FieldKinds, EachRepeatOfAVariableFieldHasTheTypeOfItsKeysRepeat) {
  const std::u16string text = u"ZVR|CE~AR~X|A^B~c,d~e{S}f\r";
  EXPECT_EQ(roundTrip("ZVR", text), text);
  EXPECT_EQ(at("ZVR/Values[0]")->getNodeType(), qxComposite);
  EXPECT_EQ(at("ZVR/Values[0]/Text")->getValue(), u"B");
  EXPECT_EQ(at("ZVR/Values[1]")->getNodeType(), qxRepeating);
  EXPECT_EQ(at("ZVR/Values[1]")->getElementAt(1)->getValue(), u"d");
  EXPECT_EQ(at("ZVR/Values[2]")->getNodeType(), qxPrimitive);
  // One repeat of the key changes: the repeat beside it alone takes a new type, with its text.
  at("ZVR/Kinds[2]")->setValue(u"CE");
  EXPECT_EQ(at("ZVR/Values[2]")->getNodeType(), qxComposite);
  EXPECT_EQ(at("ZVR/Values[2]/Text")->getValue(), u"f");
  EXPECT_EQ(at("ZVR/Values[1]")->getNodeType(), qxRepeating);
  // A repeat beyond the key's repeats is a string.
  at("ZVR/Values")->appendElement(nullptr);
  EXPECT_EQ(at("ZVR/Values[3]")->getNodeType(), qxPrimitive);
  // Removing a repeat types the ones behind it by the key's repeats now beside them.
  at("ZVR/Values")->removeElementAt(0);
  EXPECT_EQ(at("ZVR/Values[0]")->getNodeType(), qxComposite);
  EXPECT_EQ(at("ZVR/Values[0]")->getValue(), u"c,d");
  EXPECT_EQ(at("ZVR/Values[1]")->getNodeType(), qxRepeating);
  EXPECT_EQ(at("ZVR/Values[1]")->getElementAt(0)->getValue(), u"e^f");
  // Emptying the key types the ruled field again as a whole: with no key repeats, strings.
  at("ZVR/Kinds")->removeAllElements();
  EXPECT_EQ(at("ZVR/Values")->getElementCount(), 2);
  EXPECT_EQ(at("ZVR/Values[0]")->getNodeType(), qxPrimitive);
  EXPECT_EQ(at("ZVR/Values[1]")->getNodeType(), qxPrimitive);
  EXPECT_EQ(at("ZVR/Values[1]")->getValue(), u"e^f");
}

TEST_F(FieldKinds, AVariableFieldInACompositeFollowsItsKeyThere) {
  const std::u16string text = u"ZCP|AR^a&b\r";
  EXPECT_EQ(roundTrip("ZCP", text), text);
  EXPECT_EQ(at("ZCP/Pair/Value")->getNodeType(), qxRepeating);
  EXPECT_EQ(at("ZCP/Pair/Value")->getElementAt(1)->getValue(), u"b");
  at("ZCP/Pair/Kind")->setValue(u"NM");
  EXPECT_EQ(at("ZCP/Pair/Value")->getNodeType(), qxPrimitive);
  EXPECT_EQ(at("ZCP/Pair/Value")->getValue(), u"a&b");
  EXPECT_EQ(at("ZCP")->getEncodedValue(), u"ZCP|NM^a&b\r");
}

TEST_F(FieldKinds, ACloneKeepsTheTypesOfItsVariableFields) {
  at("ZVA")->setEncodedValue(u"ZVA|CE|A^B\r");
  const std::unique_ptr<MessageElement> copy = at("ZVA")->clone();
  EXPECT_EQ(copy->getElementAt("Value")->getNodeType(), qxComposite);
  EXPECT_EQ(copy->getEncodedValue(), u"ZVA|CE|A^B\r");
}

// ----- custom fields

TEST_F(FieldKinds, CustomValuesGoOutByTheirTypesSeparatorsEscapesAndQuotes) {
  struct Case {
    const char* path;
    const char* value;
    const char* wire;
  };
  const Case cases[] = {
      {"ZCU/Free", "a^b", "a^b"},           // an allowed separator stands as it is
      {"ZCU/Free", "a|b", "a{F}b"},         // others are replaced
      {"ZCU/Esc", "a<x y>b", "a<x y>b"},    // between the marks, what needs no replacement stays
      {"ZCU/Esc", "a<x{F}y>b", "a<x{F}y>b"},
      // A separator between the marks would end the field when read: the marks are no escape then,
      // and the start goes out replaced like the separator.
      {"ZCU/Esc", "a<x|y>b", "a{L}x{F}y>b"},
      {"ZCU/Esc", "a|<b", "a{F}{L}b"},      // an escape left open goes out replaced
      {"ZCU/Esc", "<a<b>c<", "{L}a<b>c{L}"},
      {"ZCU/Esc", "a^b", "a{S}b"},
      {"ZCU/Quote", "a&b", "\"a&b\""},      // quoted text in quotes where there is no replacement
      {"ZCU/Quote", "a|b", "\"a{F}b\""},
      // Quotes doubled, and in quotes though there is no separator: else reading the text again
      // would keep them doubled.
      {"ZCU/Quote", "say \"hi\"", "\"say \"\"hi\"\"\""},
      {"ZCU/Plain", "a^b", "a{S}b"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.path) + " " + c.value);
    at(c.path)->setValue(wide(c.value));
    EXPECT_EQ(at(c.path)->getEncodedValue(), wide(c.wire));
    // Whatever goes out reads back as the value that was set.
    const std::u16string segment = at("ZCU")->getEncodedValue();
    at("ZCU")->setEncodedValue(segment);
    EXPECT_EQ(at(c.path)->getValue(), wide(c.value)) << narrow(segment);
    at(c.path)->setEmpty();
  }
}

// ----- arrays

TEST_F(FieldKinds, ArraysSplitOnTheirSeparator) {
  struct Case {
    const char* text;
    const char* path;
    std::vector<std::string> items;
    const char* written;  // null: the same text
  };
  const Case cases[] = {
      {"ZAR|a&b&c\r", "ZAR/Codes", {"a", "b", "c"}, nullptr},
      {"ZAR||a,b\r", "ZAR/Parts", {"a", "b"}, nullptr},
      // Runs of the separator cut once: no empty items, and the text comes back without them.
      {"ZAR||a,,b,\r", "ZAR/Parts", {"a", "b"}, "ZAR||a,b\r"},
      // Quoted items keep separators in their quotes, and two separators give an empty item.
      {"ZAR|||a&&b\r", "ZAR/Quoted", {"a", "", "b"}, nullptr},
      {"ZAR|||\"x&y\"&z\r", "ZAR/Quoted", {"x&y", "z"}, nullptr},
      // Items of a custom type that allows "^" keep it.
      {"ZAR||||a^b;c\r", "ZAR/Free", {"a^b", "c"}, nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(roundTrip("ZAR", wide(c.text)), wide(c.written ? c.written : c.text));
    InternalElement* array = at(c.path);
    ASSERT_EQ(array->getElementCount(), static_cast<int>(c.items.size()));
    for (size_t i = 0; i < c.items.size(); ++i) EXPECT_EQ(narrow(array->getElementAt(static_cast<int>(i))->getValue()), c.items[i]);
  }
}

TEST_F(FieldKinds, ArrayListOperations) {
  InternalElement* parts = at("ZAR/Parts");
  parts->setValue(u"a,b,c");
  EXPECT_EQ(parts->getElementCount(), 3);
  EXPECT_EQ(parts->getValue(), u"a,b,c");
  parts->removeElementAt(1);
  EXPECT_EQ(parts->getValue(), u"a,c");
  EXPECT_EQ(parts->getElementAt(1)->getPath(), "ZAR/Parts[1]");
  parts->appendElement(nullptr)->setValue(u"d");
  EXPECT_EQ(parts->getValue(), u"a,c,d");
  parts->setNull();
  EXPECT_TRUE(parts->isNull());
  EXPECT_EQ(parts->getElementCount(), 1);
  parts->removeAllElements();
  EXPECT_TRUE(parts->isEmpty());
  EXPECT_FALSE(parts->isNull());
  EXPECT_THROW(parts->removeElementAt(0), BadParameter);
  try {
    parts->setValue(reinterpret_cast<const unsigned char*>("ab"), 2);
    FAIL() << "binary value taken";
  } catch (const IllegalOperation& e) {
    EXPECT_STREQ(e.what(), messages::kSetBinaryPrimitiveValuesOnly);
  }
}

TEST_F(FieldKinds, AnEmptyRequiredArrayWritesItsDefault) {
  at("ZRQ/Parts")->setValue(u"a");
  EXPECT_EQ(at("ZRQ")->getEncodedValue(), u"ZRQ|a|x,y\r");
  at("ZRQ/Needed")->setValue(u"p,q,r");
  EXPECT_EQ(at("ZRQ")->getEncodedValue(), u"ZRQ|a|p,q,r\r");
}

// ----- presence indicators

TEST_F(FieldKinds, PresenceIndicatorsMarkTheChildrenThatStand) {
  struct Case {
    const char* text;
    std::vector<std::string> children;  // A, B, C, D
    const char* written;
  };
  const Case cases[] = {
      {"ZPI|a^#b^#c^d\r", {"a", "b", "c", "d"}, nullptr},
      {"ZPI|a^#b\r", {"a", "b", "", ""}, nullptr},
      // Without its mark a child with an indicator is absent, and the next child reads on.
      {"ZPI|a^d\r", {"a", "", "", "d"}, nullptr},
      // An absent child before one with a value keeps its mark, and reads back empty.
      {"ZPI|a^#^#c^d\r", {"a", "", "c", "d"}, nullptr},
      {"ZPI|a^#c|z\r", {"a", "c", "", ""}, nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    EXPECT_EQ(roundTrip("ZPI", wide(c.text)), wide(c.written ? c.written : c.text));
    const char* names[] = {"A", "B", "C", "D"};
    for (size_t i = 0; i < 4; ++i) EXPECT_EQ(narrow(at(std::string("ZPI/Ind/") + names[i])->getValue()), c.children[i]) << names[i];
  }
}

TEST_F(FieldKinds, AChildWithAnIndicatorAndNoValueWritesNothing) {
  at("ZPI/Ind/A")->setValue(u"a");
  at("ZPI/Ind/D")->setValue(u"d");
  EXPECT_EQ(at("ZPI/Ind")->getEncodedValue(), u"a^d");
  at("ZPI/Ind/C")->setValue(u"c");
  EXPECT_EQ(at("ZPI/Ind")->getEncodedValue(), u"a^#^#c^d");
}

// ----- every kind in one segment

TEST_F(FieldKinds, ASegmentOfEveryFieldKindWritesBackItsText) {
  const std::u16string texts[] = {
      u"ZAL|p|c^t|r1~r2|f^g|a,b|AR|x&y|a^#b^#c^d\r",
      u"ZAL|p|c^t|r1~r2|f^g|a,b|CE|x^y|a\r",
      u"ZAL||||||CE|x\r",
  };
  for (const std::u16string& text : texts) {
    SCOPED_TRACE(narrow(text));
    EXPECT_EQ(roundTrip("ZAL", text), text);
  }
  EXPECT_EQ(at("ZAL/Value")->getValue(), u"x");
}

}  // namespace
}  // namespace vantrelia::testing
