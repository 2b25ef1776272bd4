#include "elements/InternalElement.h"

#include "elements/SegmentElement.h"

#include <algorithm>

#include "definitions/FieldPathDefn.h"
#include "definitions/SeparatorDefn.h"
#include "elements/ElementMessages.h"
#include "foundation/NodePool.h"
#include "foundation/BadParameter.h"
#include "parsing/SeparatorList.h"
#include "validation/ValidationErrorList.h"
#include "validation/ValidationErrorNumbers.h"

namespace vantrelia {

void* InternalElement::operator new(size_t size) { return NodePool::allocate(size); }

void InternalElement::operator delete(void* node, size_t size) { NodePool::release(node, size); }

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

std::u16string InternalElement::getSeparatorValue(ESeparatorType separator) {
  return std::u16string(getSeparatorList()->getSeparatorValue(separator));
}

void InternalElement::setSeparatorValue(ESeparatorType separator, std::u16string_view text) {
  if (separator < 0 || separator >= SeparatorList::kSeparatorSlots) throw BadParameter(messages::kInvalidSeparator);
  SeparatorList& list = *getSeparatorList();
  list.setSeparatorValue(separator, text);

  // A separator that a header field carries is written into that field too, over the characters
  // from its position up to the next separator of the same field.
  const FieldPathDefn& path = list.getFieldLocation(separator);
  if (path.getName().length() == 0) return;
  MessageElement* element = getElementAt(path.getName().c_str());
  for (const int32_t step : path.getIndexes()) element = element->getElementAt(step - 1);
  if (element->getNodeType() != qxPrimitive) return;

  const int32_t position = list.getPosition(separator);
  if (position < 0) return;
  int32_t end = position + 1;
  bool found = false;
  for (int32_t other = 0; other < SeparatorList::kSeparatorSlots; ++other) {
    if (other == separator) continue;
    const FieldPathDefn& otherPath = list.getFieldLocation(other);
    if (otherPath.getName() != path.getName() || otherPath.getIndexes() != path.getIndexes()) continue;
    const int32_t otherPosition = list.getPosition(other);
    if (otherPosition > position && (!found || otherPosition < end)) {
      end = otherPosition;
      found = true;
    }
  }
  std::u16string value = element->getValue();
  const std::u16string_view filler = list.getSeparatorValue(qxSepFiller);
  if (value.size() < static_cast<size_t>(position) + 1) {
    value.resize(static_cast<size_t>(position) + 1, filler.empty() ? u' ' : filler.front());
  }
  const size_t rangeEnd = std::min(value.size(), static_cast<size_t>(end));
  value.replace(static_cast<size_t>(position), rangeEnd - static_cast<size_t>(position), text);
  element->setValue(std::u16string_view(value));
}

EMetaVErrSettingType InternalElement::getValidationErrorSettingType(int errorNumber) {
  checkErrorNumber(errorNumber);
  return getSeparatorList()->getValidationErrorSetting(errorNumber);
}

void InternalElement::setValidationErrorSettingType(int errorNumber, EMetaVErrSettingType type) {
  checkErrorNumber(errorNumber);
  SeparatorList& list = *getSeparatorList();
  if (list.getValidationErrorSetting(errorNumber) != type) list.setValidationErrorSetting(errorNumber, type);
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

std::unique_ptr<SegmentElement> InternalElement::releaseSegment(SegmentElement*) { return nullptr; }

bool InternalElement::isPlaceholderSegment() { return false; }

bool InternalElement::isMinimizeChanges() { return parent != nullptr && parent->isMinimizeChanges(); }

bool InternalElement::isPreservingParsedText() { return parent != nullptr && parent->isPreservingParsedText(); }

}  // namespace vantrelia
