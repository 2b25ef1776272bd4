#include "elements/FieldImpl.h"

#include <stdexcept>

#include "definitions/DataTypeCodes.h"
#include "definitions/FieldDefn.h"
#include "definitions/FieldPathDefn.h"
#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/SegmentDefn.h"
#include "elements/BinaryEncoding.h"
#include "elements/FactorySettings.h"
#include "elements/FormattedValue.h"
#include "elements/SegmentImplBase.h"
#include "foundation/TextCompare.h"
#include "parsing/SeparatorList.h"

namespace vantrelia {

std::unique_ptr<MessageElement> FieldImpl::clone() { return cloneWithParent(parent); }

std::unique_ptr<InternalElement> FieldImpl::cloneWithParent(InternalElement* newParent) {
  auto copy = std::make_unique<FieldImpl>(*fieldDefn, newParent, index, fieldSeparator);
  copyValueInto(*copy);
  return copy;
}

void FieldImpl::validateInto(SeparatorList&, ValidationErrorList&, bool, ValidationLocation&, bool) {}

namespace {

// The type text that a created message carries in a message type field, when this field is one.
std::u16string messageTypeValue(FieldBase& field) {
  SegmentImplBase* owner = field.getOwner();
  if (!owner || !owner->getItemDefn()) return {};
  const MessageDefn& message = owner->getItemDefn()->getMessage();
  const MessageSetDefn& set = message.getSet();
  const std::vector<int32_t>& location = field.getLocationValues();
  const std::vector<FieldPathDefn>& typeFields = set.getMessageTypeFields();
  for (size_t i = 0; i < typeFields.size() && i < message.getTypes().size(); ++i) {
    const FieldPathDefn& path = typeFields[i];
    bool same = false;
    if (path.isNumeric()) {
      same = equalIgnoringCase(path.getName().view(), owner->getSegmentDefn().getName().view()) &&
             path.getIndexes().size() == location.size();
      for (size_t k = 0; same && k < location.size(); ++k) same = path.getIndexes()[k] == location[k] + 1;
    } else {
      // A path by names: the segment's name, then the name of each field on the way down.
      std::string names(owner->getSegmentDefn().getName().view());
      const FieldListDefn* list = &owner->getSegmentDefn();
      for (const int32_t step : location) {
        if (!list || step >= list->getFieldCount()) break;
        const FieldDefn& defn = list->getField(step);
        names += '/';
        names += defn.getName().view();
        list = defn.getComposite();
      }
      same = equalIgnoringCase(names, path.getName().view());
    }
    if (same) return message.getTypes()[i].str();
  }
  return {};
}

}  // namespace

std::optional<std::u16string_view> FieldImpl::plainWireText(const SeparatorList& list) {
  // A value as it was read or set: no null marker, binary, pending format, count or calculation.
  if (value.empty() || getFlag(kNull) || getFlag(kAwaitsFormatter) || binaryValue || isBinaryField() ||
      isEncodedBinary()) {
    return std::nullopt;
  }
  if ((fieldDefn->getFlags() & FieldDefn::kEquationValue) && parent && parent->hasCalculatedValue(index)) {
    return std::nullopt;
  }
  if (getCountKind() != 0 || taggedRunOwner() || getFormatter()) return std::nullopt;
  const std::u16string_view text = value.view();
  const int32_t base = getBaseType();
  // Nothing in it that the wire writes otherwise.
  const std::u16string_view watched =
      base == DataTypeCodes::kQuotedText ? list.getMustQuoteCharacters() : list.getMustEncodeCharacters();
  if (base != FieldDefn::kRawBinary && text.find_first_of(watched) != std::u16string_view::npos) return std::nullopt;
  // No cut to the longest length and no fill to a width.
  const int32_t maximum = getMaxLength();
  const WarehouseSettings& settings = FactorySettings::of(&list.getMessageSet());
  if (settings.truncateFieldsToMaxLength && !measuring && maximum > 0 && text.size() > static_cast<size_t>(maximum)) {
    return std::nullopt;
  }
  const int32_t alignment = fieldDefn->getAlignment();
  const int32_t width = alignment == qxZeroMax || alignment == qxLeftMax || alignment == qxRightMax ? maximum
                        : alignment == qxZeroMin || alignment == qxLeftMin || alignment == qxRightMin
                            ? getMinLength()
                            : 0;
  if (width > 0 && text.size() < static_cast<size_t>(width)) return std::nullopt;
  return text;
}

bool FieldImpl::writeField(bool mayOmitFill, SeparatorList& list, bool minimize, int32_t&) {
  // Most values go out as they stand, in a list with its separators settled and no fixed widths:
  // written without the copies and lookups of the general way, which gives the same text.
  if (!minimize && !list.getVariablePending() && list.isSeparatorActive(SeparatorList::kCurrent) &&
      !list.isLevelFixedWidth()) {
    if (const std::optional<std::u16string_view> plain = plainWireText(list)) {
#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
      // Debug and fuzz builds hold the two ways to the same text.
      std::u16string general;
      bool carries = false;
      if (!wireText(mayOmitFill, list, minimize, general, carries) || general != *plain) {
        throw std::logic_error("a plain field value would be written otherwise by the general way");
      }
#endif
      list.writeData(*plain);
      return true;
    }
  }
  std::u16string text;
  bool carriesSeparators = false;
  if (!wireText(mayOmitFill, list, minimize, text, carriesSeparators)) return false;
  list.writeData(text);
  // The separator that follows a header field may already be its last character.
  if (carriesSeparators) list.setCheckOutputTail(true);
  return true;
}

bool FieldImpl::wireText(bool mayOmitFill, SeparatorList& list, bool minimize, std::u16string& text,
                         bool& carriesSeparators) {
  const bool required = isRequired();
  bool fixed = false;
  if (!mayOmitFill || required) {
    fixed = !list.isSeparatorActive(SeparatorList::kCurrent) || list.isLevelFixedWidth();
  }
  const bool calculated =
      (fieldDefn->getFlags() & FieldDefn::kEquationValue) && parent && parent->hasCalculatedValue(index);
  const int32_t base = getBaseType();
  const MessageSetDefn* set = getMessageSetDefn();
  const WarehouseSettings& settings = FactorySettings::of(set);

  // The null marker is looked up for null values only: every field written would copy it.
  if (isNull()) text = nullText();
  if (!text.empty()) {
    // The marker stands for the value.
  } else if (isEmpty() && getCountKind() == 0 && !calculated && !minimize) {
    if (required) text = messageTypeValue(*this);
    if (text.empty() && (required || (settings.flags & qxOutputDefaultValuesForOptionalFields))) {
      const WideText& defaultText = getDefaultValue();
      if (!defaultText.empty()) text = encodeForWire(defaultText.view(), list, base);
    }
    // A value that the definition writes with its own separators follows the message's.
    if (!text.empty()) text = list.translateValue(text);
  } else if (!isEmpty() || getCountKind() != 0 || calculated) {
    if (isEncodedBinary()) {
      if (binaryValue) BinaryEncoding::encode(getBaseType(), *binaryValue, text);
    } else {
      const bool recount = settings.forceCountUpdate && getCountKind() != 0;
      text = minimize && !recount ? getEncodedValueNoTouch() : currentValue();
      if (base != FieldDefn::kRawBinary) text = encodeForWire(text, list, base);
    }
  }

  const int32_t maximum = getMaxLength();
  if (settings.truncateFieldsToMaxLength && !measuring && maximum > 0 && text.size() > static_cast<size_t>(maximum)) {
    text.resize(static_cast<size_t>(maximum));
  }
  // A header field carries separators: what it holds settles them, and the text comes back with
  // each at its place.
  const bool pending = list.getVariablePending() && mayCarrySeparators(list);
  carriesSeparators = pending && list.holdsSeparatorsOf(headerFieldPath());
  if (pending) text = list.takeFromField(headerFieldPath(), text);
  if (text.empty() && !fixed) return false;
  if (Formatter* formatter = text.empty() ? nullptr : getFormatter()) FormattedValue::toWire(*formatter, base, text);

  const int32_t minimum = getMinLength();
  const int32_t alignment = fieldDefn->getAlignment();
  if (fixed && maximum != 0 && text.size() > static_cast<size_t>(maximum)) {
    text.resize(static_cast<size_t>(maximum));
  } else if (alignment == qxZeroMin || alignment == qxZeroMax) {
    const int32_t width = alignment == qxZeroMax || fixed ? maximum : minimum;
    const size_t sign = !text.empty() && (text.front() == u'+' || text.front() == u'-') ? 1 : 0;
    if (width > 0 && text.size() < static_cast<size_t>(width)) {
      text.insert(sign, static_cast<size_t>(width) - text.size(), u'0');
    }
  } else if (base != FieldDefn::kRawBinary) {
    int32_t effective = alignment;
    if (fixed) {
      effective = (alignment == qxRight || alignment == qxRightMin || alignment == qxRightMax) ? qxRightMax : qxLeftMax;
    }
    const int32_t width = (effective == qxLeftMin || effective == qxRightMin)   ? minimum
                          : (effective == qxLeftMax || effective == qxRightMax) ? maximum
                                                                                : 0;
    const std::u16string_view filler = list.getSeparatorValue(qxSepFiller);
    if (width > 0 && text.size() < static_cast<size_t>(width) && !filler.empty()) {
      const size_t missing = static_cast<size_t>(width) - text.size();
      if (effective == qxLeftMin || effective == qxLeftMax) {
        text.append(missing, filler.front());
      } else {
        text.insert(0, missing, filler.front());
      }
    }
  }
  return true;
}

}  // namespace vantrelia
