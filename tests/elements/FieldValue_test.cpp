// A primitive field's value in every form: text, null, defaults, alignment and width, binary
// values and their wire encodings, and what counts as a change.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "definitions/MessageDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "elements/ElementMessages.h"
#include "elements/FieldImplBase.h"
#include "elements/MessageImpl.h"
#include "foundation/Any.h"
#include "foundation/BadParameter.h"
#include "foundation/IllegalOperation.h"
#include "support/ElementTesting.h"
#include "validation/ValidationErrorList.h"
#include "validation/ValidationLocation.h"

namespace vantrelia::testing {
namespace {

class FieldValue : public ElementTreeTest {
 protected:
  std::u16string option(const char16_t* path) { return std::u16string(OptionUriPrefix) + path; }
};

TEST_F(FieldValue, TheSameTextAgainIsNoChangeThoughItEndsANullValue) {
  const MessageDefn& adt = *factory.getWarehouse().getMessageSets()[0]->getMessages()[0];
  MessageImpl message(adt, nullptr, 0);  // parsed, not built: its change mark counts
  InternalElement* text = at(message, "PID/Birth");
  text->setValue(u"1970");
  EXPECT_TRUE(message.isChanged());
  message.setChanged(false);
  text->setValue(u"1970");
  EXPECT_FALSE(message.isChanged());
  text->setNull();
  EXPECT_TRUE(text->isNull());
  message.setChanged(false);
  text->setValue(u"");
  EXPECT_FALSE(text->isNull());
  EXPECT_TRUE(text->isEmpty());
  EXPECT_FALSE(message.isChanged());
}

TEST_F(FieldValue, DefaultsShowForRequiredFieldsAndWithTheFactoryFlagOnly) {
  auto message = create("ADT");
  InternalElement* sex = at(*message, "PID/Sex");
  EXPECT_EQ(sex->getValue(), u"U");
  EXPECT_TRUE(sex->isEmpty());
  at(*message, "NTE")->appendElement(nullptr);
  InternalElement* note = at(*message, "NTE[0]");
  at(*message, "NTE[0]/Text")->setValue(u"a");
  EXPECT_EQ(at(*message, "NTE[0]/Comment")->getValue(), u"");
  EXPECT_EQ(note->getEncodedValue(), u"NTE|a\r");
  factory.SetFlag(qxOutputDefaultValuesForOptionalFields, true);
  EXPECT_EQ(at(*message, "NTE[0]/Comment")->getValue(), u"none");
  EXPECT_EQ(note->getEncodedValue(), u"NTE|a|none\r");
}

TEST_F(FieldValue, ZerosOfTheAlignmentComeOffOnReadingAndBackOnWriting) {
  auto message = create("ADT");
  InternalElement* amount = at(*message, "PID/Amount");
  struct Case {
    const char* wire;
    const char* value;
    const char* written;
  };
  const Case cases[] = {
      {"000", "0", "0000"},   {"000.5", "0.5", "00.5"}, {"-007", "-7", "-007"},
      {"0042", "42", "0042"}, {"12345", "12345", "12345"}, {"7", "7", "0007"},
  };
  for (const Case& c : cases) {
    amount->setEncodedValue(wide(c.wire));
    EXPECT_EQ(amount->getValue(), wide(c.value)) << c.wire;
    EXPECT_EQ(amount->getEncodedValue(), wide(c.written)) << c.wire;
  }
}

TEST_F(FieldValue, WidthsPadAndCutInFixedPositionsAndTheOptionCutsDelimitedOnes) {
  auto message = create("ADT");
  at(*message, "ZFX/Code")->setValue(u"abcdefg");
  at(*message, "ZFX/Count")->setValue(u"12");
  at(*message, "ZFX/Note")->setValue(u"n");
  EXPECT_EQ(at(*message, "ZFX")->getEncodedValue(), u"ZFXabc   12n\r");
  at(*message, "ZFX")->setEncodedValue(u"ZFXabc   12n\r");
  EXPECT_EQ(at(*message, "ZFX/Count")->getValue(), u"12");

  at(*message, "PID/Birth")->setValue(u"1970010199");
  EXPECT_EQ(at(*message, "PID")->getEncodedValue(), u"PID||||1970010199|U\r");
  factory.SetOption(option(u"/edi/truncateFieldsToMaxLength"), Any::any(true));
  EXPECT_EQ(at(*message, "PID")->getEncodedValue(), u"PID||||19700101|U\r");
  EXPECT_EQ(at(*message, "PID/Birth")->getValue(), u"1970010199");  // the value itself stays whole
}

TEST_F(FieldValue, BinaryValuesKeepEveryByteThroughTheirWireForm) {
  auto message = create("ADT");
  std::vector<unsigned char> bytes;
  for (int b = 0; b < 256; ++b) bytes.push_back(static_cast<unsigned char>(b));

  InternalElement* coded = at(*message, "BIN/Coded");
  coded->setValue(bytes.data(), static_cast<int>(bytes.size()));
  EXPECT_EQ(coded->getBinaryValue(), bytes);
  const std::u16string wire = at(*message, "BIN")->getEncodedValue();
  ASSERT_EQ(wire.substr(0, 7), u"BIN|||A");
  auto copy = create("ADT");
  at(*copy, "BIN")->setEncodedValue(wire);
  EXPECT_EQ(at(*copy, "BIN/Coded")->getBinaryValue(), bytes);

  // Raw binary tells its length to the field that its definition names.
  InternalElement* data = at(*message, "BIN/Data");
  const unsigned char four[] = {'a', 0, 'b', 0};
  data->setValue(four, 4);
  EXPECT_EQ(at(*message, "BIN/Length")->getValue(), u"2");
  EXPECT_EQ(data->getValue(), u"ab");
  data->setValue(u"xyz");  // text on a binary field: its units as bytes
  EXPECT_EQ(data->getBinaryValue().size(), 6u);
  EXPECT_EQ(at(*message, "BIN/Length")->getValue(), u"3");

  EXPECT_THROW(data->setValue(four, -1), BadParameter);
  try {
    data->setValue(four, -1);
  } catch (const BadParameter& e) {
    EXPECT_STREQ(e.what(), messages::kNegativeBinaryLength);
  }
  EXPECT_THROW(at(*message, "PID/Birth")->getBinaryValue(), IllegalOperation);
}

TEST_F(FieldValue, SeparatorsInAValueAreFoundUnlessTheyCanBeEncodedOrAreTheFieldsOwn) {
  auto message = create("ADT");
  const auto invalid = [&](const std::string& path, const char* value, bool includeWarnings = true) {
    auto* field = static_cast<FieldImplBase*>(at(*message, path));
    field->setValue(wide(value));
    ValidationErrorList errors;
    ValidationLocation location;
    const bool found = field->checkSeparatorsInValue(errors, includeWarnings, location);
    EXPECT_EQ(found, errors.count() == 1);
    if (found) {
      EXPECT_EQ(errors.get(0).getError(), u"Invalid characters in field");
    }
    return found;
  };
  EXPECT_FALSE(invalid("PID/Birth", "1970"));
  EXPECT_TRUE(invalid("PID/Birth", "19|70"));
  EXPECT_TRUE(invalid("PID/Birth", "19^70"));
  EXPECT_TRUE(invalid("PID/Birth", "a\rb"));
  EXPECT_TRUE(invalid("PID/Birth", "\"\""));  // as a value, the null marker would read back as null
  message->setValidationErrorSettingType(1015, qxVESWarning);
  EXPECT_TRUE(invalid("PID/Birth", "19|70"));
  EXPECT_FALSE(invalid("PID/Birth", "19|70", false));
  message->setValidationErrorSettingType(1015, qxVESIgnore);
  EXPECT_FALSE(invalid("PID/Birth", "19|70"));
}

}  // namespace
}  // namespace vantrelia::testing
