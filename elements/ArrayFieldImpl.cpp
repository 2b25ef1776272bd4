#include "elements/ArrayFieldImpl.h"

#include <algorithm>

#include "definitions/ArrayTypeDefn.h"
#include "definitions/DataTypeCodes.h"
#include "definitions/FieldDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "elements/CustomFieldImpl.h"
#include "elements/FieldImpl.h"
#include "foundation/CheckIndex.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorList.h"
#include "parsing/StringParserStream.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

const ArrayTypeDefn* ArrayFieldImpl::getArrayType() const {
  if (const VariableFieldType* type = getVariableType()) return type->getArrayType();
  return fieldDefn->getArrayType();
}

int32_t ArrayFieldImpl::getItemType() const {
  const ArrayTypeDefn* type = getArrayType();
  if (!type) return DataTypeCodes::kString;
  if (type->getDataType() == DataTypeCodes::kCustom && type->getCustomType()) return type->getCustomType()->getBaseType();
  return type->getDataType();
}

std::unique_ptr<FieldBase> ArrayFieldImpl::makeItem(int32_t itemIndex) {
  const ArrayTypeDefn* type = getArrayType();
  const PrimitiveTypeDefn* custom = type ? type->getCustomType() : nullptr;
  if (custom && !custom->isPlainAlias()) {
    return std::make_unique<CustomFieldImpl>(*fieldDefn, this, itemIndex, fieldSeparator);
  }
  return std::make_unique<FieldImpl>(*fieldDefn, this, itemIndex, fieldSeparator);
}

std::unique_ptr<RepeatingFieldBase> ArrayFieldImpl::makeEmptyCopy(InternalElement* newParent) const {
  return std::make_unique<ArrayFieldImpl>(*fieldDefn, newParent, index, fieldSeparator);
}

void ArrayFieldImpl::removeElementAt(int at) {
  checkIndex(at, getElementCount());
  items[static_cast<size_t>(at)].reset();
  onFieldValueChanged(at, -1, false);
  eraseItem(at);
  setChanged(true);
}

std::u16string ArrayFieldImpl::separatorText(const SeparatorList& list) const {
  const ArrayTypeDefn* type = getArrayType();
  if (!type) return {};
  if (type->hasOwnSeparator()) return type->getOwnSeparator().str();
  return std::u16string(list.getSeparatorValue(type->getArraySeparator()));
}

// ----- reading

void ArrayFieldImpl::appendItemReading(std::u16string_view text, RecordedErrors& errors, ValidationLocation& location,
                                       int32_t number) {
  auto* item = static_cast<InternalElement*>(appendElement(nullptr));
  location.enterComponent(number);
  StringParserStream itemStream(text.data(), static_cast<int32_t>(text.size()));
  uint32_t moreFollows = 0;
  item->parseElement(itemStream, errors, moreFollows, location);
  location.leaveComponent();
}

bool ArrayFieldImpl::parseElement(ParserStream& stream, RecordedErrors& errors, uint32_t& moreFollows,
                                  ValidationLocation& location) {
  moreFollows = 0;
  SeparatorList& list = *getSeparatorList();
  const ArrayTypeDefn* type = getArrayType();
  const std::u16string separator = separatorText(list);
  if (type && getItemType() == DataTypeCodes::kQuotedText) {
    // Quoted items may hold the separator inside their quotes: the list reads them one by one,
    // and two separators side by side give an empty item.
    if (type->hasOwnSeparator()) {
      list.pushSeparator(qxSepString, separator);
    } else {
      list.pushSeparator(static_cast<ESeparatorType>(type->getArraySeparator()));
    }
    for (int32_t n = 1; !stream.atEnd() && !list.atOuterSeparator(stream, 1); ++n) {
      ParserToken token;
      list.readToken(stream, token, 0, true, false, nullptr);
      if (token.characters().empty()) {
        appendElement(nullptr);
      } else {
        appendItemReading(token.characters(), errors, location, n);
      }
      if (separator.empty() || !stream.consume(separator)) break;
    }
    list.popSeparator();
  } else {
    // Every character of the separator text cuts, and a run of them cuts once: no empty items.
    const std::u16string rest = stream.readRest();
    int32_t n = 1;
    for (size_t at = 0; at < rest.size();) {
      const size_t begin = separator.empty() ? at : rest.find_first_not_of(separator, at);
      if (begin == std::u16string::npos) break;
      const size_t end = separator.empty() ? rest.size() : std::min(rest.find_first_of(separator, begin), rest.size());
      appendItemReading(std::u16string_view(rest).substr(begin, end - begin), errors, location, n++);
      at = end;
    }
  }
  onFieldValueChanged(-1, -1, false);
  return true;
}

// ----- writing

bool ArrayFieldImpl::writeField(bool mayOmitFill, SeparatorList& list, bool minimize, int32_t& counter) {
  if (isNull() && list.isInUse(qxSepNull)) {
    list.writeData(list.getSeparatorValue(qxSepNull));
    return true;
  }
  const std::u16string separator = separatorText(list);
  if (isEmpty() && isRequired()) {
    if (!minimize) list.writeData(defaultText().view());
    return false;
  }
  const bool flag = items.size() == 1 && mayOmitFill;
  for (size_t i = 0; i < items.size(); ++i) {
    // Between items the separator goes out plainly: it belongs to the value, not to the levels.
    if (i > 0) list.writeData(separator);
    items[i]->writeField(flag, list, minimize, counter);
  }
  return true;
}

}  // namespace vantrelia
