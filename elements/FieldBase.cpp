#include "elements/FieldBase.h"

#include <algorithm>

#include "definitions/FieldDefn.h"
#include "definitions/FieldInstancesControl.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/SegmentFieldInstancesControl.h"
#include "elements/ElementMessages.h"
#include "elements/ElementUserData.h"
#include "elements/SegmentImplBase.h"
#include "elements/VariableFieldType.h"
#include "foundation/Format.h"
#include "foundation/IllegalOperation.h"
#include "parsing/SeparatorList.h"
#include "parsing/StringParserStream.h"
#include "validation/RecordedErrors.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

FieldBase::FieldBase(const FieldDefn& fieldDefn, InternalElement* parent, int32_t index)
    : InternalElement(parent, index), fieldDefn(&fieldDefn), ownerFieldIndex(static_cast<int16_t>(index)) {
  findOwner();
}

FieldBase::~FieldBase() = default;

void FieldBase::findOwner() {
  // A field's parent is a segment or another field-like node, which knows the segment already.
  if (!parent) return;
  if (parent->isFieldNode()) {
    const auto* above = static_cast<const FieldBase*>(parent);
    ownerSegment = above->ownerSegment;
    ownerFieldIndex = above->ownerFieldIndex;
    // Overrides follow the definition's composites; a composite that a key chose isn't one of them.
    if (above->getFlag(kBelowVariable) || (above->getNodeType() == qxComposite && !above->fieldDefn->isComposite())) {
      flags |= kBelowVariable;
    }
  } else {
    ownerSegment = static_cast<SegmentImplBase*>(parent);
    ownerFieldIndex = static_cast<int16_t>(index);
  }
}

SegmentImplBase* FieldBase::getOwner() {
  if (!ownerSegment) findOwner();
  return ownerSegment;
}

int32_t FieldBase::getOwnerFieldIndex() {
  getOwner();
  return ownerFieldIndex;
}

SegmentElement* FieldBase::getOwnerSegment() { return getOwner(); }

const char* FieldBase::getName() const { return fieldDefn->getName().c_str(); }

int FieldBase::getSegmentNumber() { return getOwner() ? ownerSegment->getSegmentNumber() : -1; }

int FieldBase::getSegmentNumberInMessage() { return getOwner() ? ownerSegment->getSegmentNumberInMessage() : -1; }

bool FieldBase::getUserData(const std::u16string& key, std::u16string& value) {
  return ElementUserData::find(fieldDefn->getUserData(), fieldDefn->getSet(), key, value);
}

MetaDataRecord* FieldBase::getMetaData() { return nullptr; }

SeparatorList* FieldBase::getSeparatorList() { return parent ? parent->getSeparatorList() : nullptr; }

const MessageSetDefn* FieldBase::getMessageSetDefn() {
  return parent ? parent->getMessageSetDefn() : fieldDefn->getSet();
}

// ----- attributes at this place

const FieldInstancesControl* FieldBase::overrideControl() {
  if (!fieldDefn->getHasOverrides() || getFlag(kBelowVariable) || !getOwner() || !ownerSegment->getItemDefn()) {
    return nullptr;
  }
  return ownerSegment->getItemDefn()->getFieldInstances();
}

const FieldInstancesControl* FieldBase::ownOverrideControl() {
  const FieldInstancesControl* control = overrideControl();
  if (!control) return nullptr;
  // A field of the segment itself, or a repeat of one, is looked up by its index alone: where the
  // holder has no entry there, the answer is the field definition's, with no location to make.
  const InternalElement* top = parent && parent->getNodeType() == qxRepeating ? parent : this;
  if (top->parent != ownerSegment || top->index < 0 || top->index >= control->getFieldCount()) return control;
  if (control->getEntry(top->index) == nullptr && &control->getFieldDefn(top->index) == fieldDefn) return nullptr;
  return control;
}

std::unique_ptr<FieldBase::InstValues> FieldBase::createInstValues() { return std::make_unique<InstValues>(); }

FieldBase::InstValues& FieldBase::instances() {
  if (!instValues) {
    instValues = createInstValues();
    // The child indexes from the segment down; a level below a repeating parent has none.
    std::vector<int32_t>& location = instValues->location;
    for (InternalElement* node = this; node && node != ownerSegment; node = node->parent) {
      if (!node->parent || node->parent->getNodeType() != qxRepeating) location.push_back(node->index);
    }
    std::reverse(location.begin(), location.end());
  }
  return *instValues;
}

const VariableFieldType* FieldBase::getVariableType() const {
  if (fieldDefn->getDataType() != FieldDefn::kVariable) return nullptr;
  if (instValues && instValues->variableType) return instValues->variableType.get();
  // The items of a variable array are of the array's type and hold none of their own.
  if (parent && parent->isFieldNode()) {
    const auto* list = static_cast<const FieldBase*>(parent);
    if (list->fieldDefn == fieldDefn) return list->getVariableType();
  }
  return nullptr;
}

void FieldBase::setVariableType(std::unique_ptr<VariableFieldType> type) {
  instances().variableType = std::move(type);
  typeChanged();
}

void FieldBase::copyVariableTypeInto(FieldBase& copy) const {
  if (instValues && instValues->variableType) {
    copy.setVariableType(std::make_unique<VariableFieldType>(*instValues->variableType));
  }
}

const std::vector<int32_t>& FieldBase::getLocationValues() {
  getOwner();
  return instances().location;
}

bool FieldBase::isRequired() {
  const FieldInstancesControl* control = ownOverrideControl();
  if (!control) return fieldDefn->isRequired();
  InstValues& values = instances();
  if (!getFlag(kCachedRequired)) {
    values.required = control->isRequired(values.location) ? 1 : 0;
    flags |= kCachedRequired;
  }
  return values.required != 0;
}

int32_t FieldBase::getMinLength() {
  const FieldInstancesControl* control = ownOverrideControl();
  if (!control) return fieldDefn->getMinLength();
  InstValues& values = instances();
  if (!getFlag(kCachedMinLength)) {
    values.minLength = control->getMinLength(values.location);
    flags |= kCachedMinLength;
  }
  return values.minLength;
}

int32_t FieldBase::getMaxLength() {
  const FieldInstancesControl* control = ownOverrideControl();
  if (!control) return fieldDefn->getMaxLength();
  InstValues& values = instances();
  if (!getFlag(kCachedMaxLength)) {
    values.maxLength = control->getMaxLength(values.location);
    flags |= kCachedMaxLength;
  }
  return values.maxLength;
}

bool FieldBase::isHiddenField() {
  const FieldInstancesControl* control = ownOverrideControl();
  if (!control) return fieldDefn->isHidden();
  InstValues& values = instances();
  if (!getFlag(kCachedHidden)) {
    values.hidden = control->isHidden(values.location) ? 1 : 0;
    flags |= kCachedHidden;
  }
  return values.hidden != 0;
}

const FieldBase::WideText& FieldBase::getDefaultValue() {
  const FieldInstancesControl* control = ownOverrideControl();
  if (!control) return fieldDefn->getDefaultValue();
  InstValues& values = instances();
  if (!getFlag(kCachedDefault)) {
    values.defaultValue = &control->getDefaultValue(values.location);
    flags |= kCachedDefault;
  }
  return values.defaultValue ? *values.defaultValue : fieldDefn->getDefaultValue();
}

bool FieldBase::hasDefaultValue() { return !getDefaultValue().empty(); }

Formatter* FieldBase::getFormatter() {
  const FieldInstancesControl* control = ownOverrideControl();
  if (!control) return fieldDefn->getFormatter();
  InstValues& values = instances();
  if (!getFlag(kCachedFormatter)) {
    values.formatter = control->getFormatter(values.location);
    flags |= kCachedFormatter;
  }
  return values.formatter;
}

const ValidationTableDefn* FieldBase::getValidationTable() {
  const FieldInstancesControl* control = ownOverrideControl();
  if (!control) return fieldDefn->getValidationTable();
  InstValues& values = instances();
  if (!getFlag(kCachedTable)) {
    values.validationTable = control->getValidationTable(values.location);
    flags |= kCachedTable;
  }
  return values.validationTable;
}

int32_t FieldBase::getCountKind() {
  const FieldInstancesControl* control = ownOverrideControl();
  if (!control) return fieldDefn->getCountKind();
  InstValues& values = instances();
  if (!getFlag(kCachedCountKind)) {
    values.countKind = control->getCountKind(values.location);
    flags |= kCachedCountKind;
  }
  return values.countKind;
}

std::u16string_view FieldBase::readOwnText(std::u16string_view text, ESeparatorType ownerLevel) {
  if (text.empty()) return text;
  SeparatorList& list = *getSeparatorList();
  list.pushSeparator(ownerLevel);
  StringParserStream stream(text.data(), static_cast<int32_t>(text.size()));
  RecordedErrors errors;
  ValidationLocation location;
  location.segmentNumber = getSegmentNumber();
  location.fieldPosition = getOwnerFieldIndex() + 1;
  uint32_t moreFollows = 0;
  parseElement(stream, errors, moreFollows, location);
  list.popSeparator();
  return text.substr(text.size() - static_cast<size_t>(stream.getRemaining()));
}

// ----- paths

void FieldBase::appendFieldPath(std::string& text) {
  if (parent) {
    parent->appendPath(text);
    if (parent->getNodeType() == qxRepeating) {
      text += formatMessage("[%d]", index);
      return;
    }
  }
  if (!text.empty()) text += '/';
  text += getName();
}

std::string FieldBase::getFieldPath() {
  if (pathCache) return *pathCache;
  std::string text;
  appendFieldPath(text);
  // The path is final once the field stands in a segment at a message item.
  if (getOwner() && ownerSegment->getItemDefn()) {
    pathCache = std::make_unique<std::string>(text);
    flags |= kPathFinal;
  }
  return text;
}

void FieldBase::appendPath(std::string& text) { text += getFieldPath(); }

void FieldBase::appendNumericPath(std::string& text) {
  if (parent) parent->appendNumericPath(text);
  if (parent && parent->getNodeType() == qxRepeating) {
    text += formatMessage("[%d]", index);
  } else {
    if (!text.empty()) text += '.';
    text += std::to_string(index + 1);
  }
}

// ----- what fields don't have

int FieldBase::getCountForPath(std::string_view, int, bool) { throw IllegalOperation(messages::kCannotCountFields); }
int FieldBase::countSegments(bool) { throw IllegalOperation(messages::kCannotCountFields); }
int FieldBase::countGroups(bool) { throw IllegalOperation(messages::kCannotCountFields); }
int FieldBase::countMessages(bool) { throw IllegalOperation(messages::kCannotCountFields); }

void FieldBase::forgetParserPositions(RecordedErrors& errors) { errors.forget(this); }

void FieldBase::validateTop(ValidationErrorList&, bool) {}

}  // namespace vantrelia
