#include "elements/MessageElement.h"

#include "elements/ElementMessages.h"
#include "foundation/IllegalOperation.h"

namespace vantrelia {

MessageElement* MessageElement::appendElement(const char*) {
  throw IllegalOperation(messages::kAppendElementRepeatingOnly);
}

void MessageElement::removeAllElements() { throw IllegalOperation(messages::kRemoveAllElementsRepeatingOnly); }

void MessageElement::removeElementAt(int) { throw IllegalOperation(messages::kRemoveElementAtRepeatingOnly); }

bool MessageElement::isPresent() { return !isEmpty(); }

void MessageElement::setNull() {}

bool MessageElement::isNull() { return false; }

void MessageElement::setValue(const unsigned char*, int) {
  throw IllegalOperation(messages::kSetBinaryPrimitiveFieldsOnly);
}

void MessageElement::setValue(std::u16string_view text) { setEncodedValue(text); }

std::u16string MessageElement::getValue() { return getEncodedValue(); }

std::vector<unsigned char> MessageElement::getBinaryValue() {
  throw IllegalOperation(messages::kGetBinaryValuePrimitiveOnly);
}

int MessageElement::getSegmentNumber() { throw IllegalOperation(messages::kSegmentNumberInSegmentOnly); }

int MessageElement::getSegmentNumberInMessage() {
  throw IllegalOperation(messages::kSegmentNumberInMessageInSegmentOnly);
}

int MessageElement::getUnknownSegmentCount() {
  throw IllegalOperation(messages::kUnknownSegmentsMessagesAndGroupsOnly);
}

MessageElement* MessageElement::getUnknownSegment(int) {
  throw IllegalOperation(messages::kUnknownSegmentsMessagesAndGroupsOnly);
}

}  // namespace vantrelia
