#include "elements/InternalElement.h"

#include "validation/ValidationErrorList.h"

namespace vantrelia {

ValidationErrorList InternalElement::validate() {
  ValidationErrorList out;
  validateTop(out, true);
  return out;
}

ValidationErrorList InternalElement::validateWithErrorsOnly() {
  ValidationErrorList out;
  validateTop(out, false);
  return out;
}

MessageElement* InternalElement::getParent() { return parent; }

int InternalElement::getElementIndex() { return index; }

std::string InternalElement::getPath() {
  std::string text;
  appendPath(text);
  return text;
}

bool InternalElement::isRequired() { return false; }

bool InternalElement::writeField(bool, SeparatorList&, bool, int32_t&) { return false; }

bool InternalElement::writeElement(SeparatorList&, bool, int32_t&) { return false; }

bool InternalElement::hasParent() const { return parent != nullptr; }

void InternalElement::appendNumericPath(std::string&) {}

bool InternalElement::isTreeChanged() { return parent != nullptr && parent->isTreeChanged(); }

void InternalElement::setTreeChanged(bool flag) {
  if (parent) parent->setTreeChanged(flag);
}

bool InternalElement::isChanged() { return parent != nullptr && parent->isChanged(); }

// A change anywhere below is a change of the message: whatever the flag, what reaches the root
// is true. Only the message itself stores the flag as given.
void InternalElement::setChanged(bool) {
  if (parent) parent->setChanged(true);
}

std::u16string_view InternalElement::parseEncodedValue(std::u16string_view text, RecordedErrors&) { return text; }

void InternalElement::setMessageDefn(const MessageDefn*) {}

void InternalElement::onFieldValueChanged(int, int, bool) {}

bool InternalElement::hasCalculatedValue(int) { return false; }

double InternalElement::getCalculatedNumber(int) { return 0; }

std::u16string InternalElement::getCalculatedText(int) { return {}; }

// Every node of a tree is an InternalElement; MessageElement is only the face that hosts see.
InternalElement* InternalElement::getChildCreating(int childIndex) {
  return static_cast<InternalElement*>(getElementAt(childIndex));
}

void InternalElement::addUnknownSegment(SegmentElement*) {}

bool InternalElement::isPlaceholderSegment() { return false; }

bool InternalElement::isMinimizeChanges() { return parent != nullptr && parent->isMinimizeChanges(); }

}  // namespace vantrelia
