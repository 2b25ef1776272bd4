#include "elements/RepeatingFieldBase.h"

#include "definitions/FieldDefn.h"
#include "elements/ElementMessages.h"
#include "elements/ElementPath.h"
#include "elements/PositionedWrite.h"
#include "foundation/CheckIndex.h"
#include "foundation/IllegalOperation.h"
#include "validation/RecordedErrors.h"

namespace vantrelia {

RepeatingFieldBase::RepeatingFieldBase(const FieldDefn& fieldDefn, InternalElement* parent, int32_t index,
                                       ESeparatorType fieldSeparator)
    : FieldBase(fieldDefn, parent, index), fieldSeparator(fieldSeparator) {}

RepeatingFieldBase::~RepeatingFieldBase() = default;

// ----- the list

MessageElement* RepeatingFieldBase::appendElement(const char*) {
  items.push_back(makeItem(static_cast<int32_t>(items.size())));
  setChanged(true);
  return items.back().get();
}

void RepeatingFieldBase::eraseItem(int at) {
  items.erase(items.begin() + at);
  for (size_t i = static_cast<size_t>(at); i < items.size(); ++i) items[i]->index = static_cast<int32_t>(i);
}

void RepeatingFieldBase::removeAllElements() {
  items.clear();
  items.shrink_to_fit();
  setChanged(true);
  onFieldValueChanged(-1, -1, false);
}

void RepeatingFieldBase::setEmpty() {
  removeAllElements();
  setChanged(true);
  onFieldValueChanged(-1, -1, false);
}

bool RepeatingFieldBase::isEmpty() {
  for (const auto& item : items) {
    if (!item->isEmpty()) return false;
  }
  return true;
}

bool RepeatingFieldBase::isNull() { return items.size() == 1 && items.front()->isNull(); }

void RepeatingFieldBase::setNull() {
  removeAllElements();
  appendElement(nullptr);
  items.front()->setNull();
  setChanged(true);
  onFieldValueChanged(-1, -1, false);
}

void RepeatingFieldBase::setValue(const unsigned char*, int) {
  throw IllegalOperation(messages::kSetBinaryPrimitiveValuesOnly);
}

void RepeatingFieldBase::onFieldValueChanged(int fieldIndex, int, bool) {
  // A list that is a key tells its owner which item changed.
  if (fieldDefn->isVariableTypeField() && parent) parent->onFieldValueChanged(index, fieldIndex, false);
}

// ----- paths

MessageElement* RepeatingFieldBase::getElementAt(int at) {
  checkIndex(at, getElementCount());
  return items[static_cast<size_t>(at)].get();
}

MessageElement* RepeatingFieldBase::getElementAt(const char* path) {
  return ElementPath::walkIndexed(*this, path, parent);
}

ElementCollection RepeatingFieldBase::getElementCollection(const char* spec) {
  return ElementPath::collectIndexed(*this, spec);
}

void RepeatingFieldBase::appendNumericPath(std::string& text) {
  if (parent) parent->appendNumericPath(text);
  if (!text.empty()) text += '.';
  text += std::to_string(index + 1);
}

// ----- copies

std::unique_ptr<InternalElement> RepeatingFieldBase::cloneWithParent(InternalElement* newParent) {
  std::unique_ptr<RepeatingFieldBase> copy = makeEmptyCopy(newParent);
  copyVariableTypeInto(*copy);
  copy->items.reserve(items.size());
  for (const auto& item : items) copy->items.push_back(item->cloneWithParent(copy.get()));
  return copy;
}

void RepeatingFieldBase::validateInto(SeparatorList&, ValidationErrorList&, bool, ValidationLocation&, bool) {}

void RepeatingFieldBase::forgetParserPositions(RecordedErrors& errors) {
  errors.forget(this);
  for (const auto& item : items) item->forgetParserPositions(errors);
}

// ----- text

std::u16string_view RepeatingFieldBase::setEncodedValue(std::u16string_view text) {
  setChanged(true);
  setEmpty();
  return readOwnText(text, fieldSeparator);
}

std::u16string RepeatingFieldBase::getEncodedValue() {
  return PositionedWrite::field(*this, items.size() == 1, false);
}

std::u16string RepeatingFieldBase::getEncodedValueNoTouch() {
  return PositionedWrite::field(*this, items.size() == 1, true);
}

}  // namespace vantrelia
