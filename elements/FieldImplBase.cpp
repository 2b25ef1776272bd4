#include "elements/FieldImplBase.h"

#include "definitions/ArrayTypeDefn.h"
#include "definitions/DataTypeCodes.h"
#include "definitions/FieldDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "definitions/SegmentDefn.h"
#include "elements/ElementMessages.h"
#include "elements/BinaryEncoding.h"
#include "elements/ElementPath.h"
#include "elements/FactorySettings.h"
#include "elements/FormattedValue.h"
#include "elements/NCPDPSegmentImpl.h"
#include "elements/PositionedWrite.h"
#include "elements/SegmentImplBase.h"
#include "foundation/BadParameter.h"
#include "foundation/IllegalOperation.h"
#include "foundation/TextCompare.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorList.h"
#include "parsing/StringParserStream.h"
#include "validation/RecordedErrors.h"
#include "validation/ValidationError.h"
#include "validation/ValidationErrorList.h"
#include "validation/ValidationErrorNumbers.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

namespace {

// The factory flag under which a value is given as it is held: no count, default or calculation.
constexpr uint32_t kRawValuesFlag = 4;

bool isNumericBase(int32_t base) {
  return base == FieldDefn::kShort || base == FieldDefn::kLong || base == 2 || base == 3 ||
         base == FieldDefn::kStrictInteger || base == FieldDefn::kStrictReal;
}

// UTF-16 units as bytes, low byte first, and back: how text and binary values meet.
std::vector<unsigned char> unitsAsBytes(std::u16string_view text) {
  std::vector<unsigned char> bytes;
  bytes.reserve(text.size() * 2);
  for (const char16_t unit : text) {
    bytes.push_back(static_cast<unsigned char>(unit & 0xFF));
    bytes.push_back(static_cast<unsigned char>(unit >> 8));
  }
  return bytes;
}

std::u16string bytesAsUnits(const std::vector<unsigned char>& bytes) {
  std::u16string text(bytes.size() / 2, u'\0');
  for (size_t i = 0; i < text.size(); ++i) {
    text[i] = static_cast<char16_t>(bytes[2 * i] | (bytes[2 * i + 1] << 8));
  }
  return text;
}

// The length of a strict number as its limits count it: no sign, and no point in a strict real.
size_t countDigits(std::u16string_view value, bool real) {
  size_t n = value.size();
  if (!value.empty() && (value.front() == u'+' || value.front() == u'-')) --n;
  if (real && value.find(u'.') != std::u16string_view::npos) --n;
  return n;
}

}  // namespace

FieldImplBase::FieldImplBase(const FieldDefn& fieldDefn, InternalElement* parent, int32_t index,
                             ESeparatorType fieldSeparator)
    : FieldBase(fieldDefn, parent, index), fieldSeparator(fieldSeparator) {}

FieldImplBase::~FieldImplBase() = default;

int32_t FieldImplBase::getBaseType() const {
  // A variable field is of the type its key chose; an array's items of the array's item type.
  if (const VariableFieldType* type = getVariableType()) return type->getBaseType();
  return fieldDefn->getEffectiveType();
}

bool FieldImplBase::isBinaryField() const {
  return fieldDefn->getDataType() == FieldDefn::kVariable ? DataTypeCodes::isBinary(getBaseType())
                                                          : fieldDefn->getIsBinary();
}

bool FieldImplBase::isEncodedBinary() const { return isBinaryField() && getBaseType() != FieldDefn::kRawBinary; }

int32_t FieldImplBase::lengthFromSibling(InternalElement& owner, const std::vector<std::unique_ptr<FieldDefn>>& fields,
                                         int index) {
  const std::string& linked = fields[static_cast<size_t>(index)]->getLinkedFieldName();
  for (int i = index - 1; i >= 0; --i) {
    if (!owner.isChildPresent(i) || !equalIgnoringCase(linked, fields[static_cast<size_t>(i)]->getName().view())) continue;
    int32_t length = 0;
    for (const char16_t c : owner.getElementAt(i)->getValue()) {
      if (c < u'0' || c > u'9' || length > 0x0ccccccc) break;
      length = length * 10 + (c - u'0');
    }
    return length;
  }
  return 0;
}

// ----- the separators a value holds

const PrimitiveTypeDefn* FieldImplBase::getCustomType() const {
  if (fieldDefn->getDataType() == FieldDefn::kVariable) {
    const VariableFieldType* type = getVariableType();
    return type ? type->getCustomType() : nullptr;
  }
  if (fieldDefn->getDataType() == FieldDefn::kArray) {
    return fieldDefn->getArrayType() ? fieldDefn->getArrayType()->getCustomType() : nullptr;
  }
  return fieldDefn->getCustomType();
}

std::u16string FieldImplBase::encodeForWire(std::u16string_view text, const SeparatorList& list, int32_t base) const {
  return list.encodeValue(text, base);
}

bool FieldImplBase::isSeparatorAllowed(int32_t separator) const {
  const PrimitiveTypeDefn* type = getCustomType();
  return type && separator >= 0 && separator < kSeparatorCount &&
         type->isSeparatorAllowed(static_cast<ESeparatorType>(separator));
}

bool FieldImplBase::mayCarrySeparators(const SeparatorList& list) {
  SegmentImplBase* owner = getOwner();
  if (!owner) return true;
  // Working out the path takes a few allocations; most fields of a header carry nothing.
  const int32_t number = parent == owner ? index + 1 : 0;
  return list.mayTakeFromField(owner->getSegmentDefn().getName().view(), number);
}

const FieldPathDefn& FieldImplBase::getFieldPath() const {
  if (!headerPath) {
    auto* self = const_cast<FieldImplBase*>(this);
    std::string path(self->getOwner() ? self->getOwner()->getSegmentDefn().getName().view() : std::string_view());
    std::string positions;
    self->appendNumericPath(positions);
    for (char& c : positions) {
      if (c == '.') c = '/';
    }
    headerPath = std::make_unique<FieldPathDefn>(FieldPathDefn::parse(path + "/" + positions));
  }
  return *headerPath;
}

bool FieldImplBase::checkSeparatorsInValue(ValidationErrorList& errors, bool includeWarnings,
                                           const ValidationLocation& location) {
  SeparatorList* list = getSeparatorList();
  if (!list || value.empty()) return false;
  if (!list->findInvalidCharacters(*this, value.view(), includeWarnings)) return false;
  const EVErrType severity = list->getValidationErrorSetting(verr::kInvalidCharacters);
  errors.add(ValidationError(location, verr::kInvalidCharactersPlural, verr::kInvalidCharacters, severity));
  return true;
}

// ----- what primitives refuse

MessageElement* FieldImplBase::getElementAt(const char* pathText) {
  const std::string_view path = ElementPath::of(pathText);
  if (parent && ElementPath::startsWithParent(path)) {
    return path.size() > ElementPath::kParentStepLength ? parent->getElementAt(path.data() + ElementPath::kParentStepLength)
                                                        : parent;
  }
  throw IllegalOperation(messages::kGetElementAtOnPrimitive);
}

MessageElement* FieldImplBase::getElementAt(int) { throw IllegalOperation(messages::kGetElementAtOnPrimitive); }

ElementCollection FieldImplBase::getElementCollection(const char*) {
  throw IllegalOperation(messages::kGetElementCollectionOnPrimitive);
}

// ----- state

bool FieldImplBase::isEmpty() {
  if (getFlag(kNull) || !value.empty() || binaryValue) return false;
  // A count field of a tagged segment always stands for something: the count of its run.
  return taggedRunOwner() == nullptr;
}

NCPDPSegmentImpl* FieldImplBase::taggedRunOwner() {
  const std::string& link = fieldDefn->getLinkedFieldName();
  if (link.empty() || link.front() != '+') return nullptr;
  SegmentImplBase* owner = getOwner();
  if (!owner || !(owner->getSegmentDefn().getFlags() & SegmentDefn::kNcpdp)) return nullptr;
  return dynamic_cast<NCPDPSegmentImpl*>(owner);
}

void FieldImplBase::valueChanged() {
  setChanged(true);
  if (fieldDefn->isVariableTypeField() && parent) parent->onFieldValueChanged(index, -1, false);
}

void FieldImplBase::setEmpty() {
  value.clear();
  flags &= static_cast<uint16_t>(~(kNull | kAwaitsFormatter));
  valueChanged();
}

void FieldImplBase::setNull() {
  value.clear();
  flags |= kNull;
  flags &= static_cast<uint16_t>(~kAwaitsFormatter);
  valueChanged();
}

std::u16string_view FieldImplBase::nullText() {
  SeparatorList* list = getSeparatorList();
  if (!list || !list->isInUse(qxSepNull)) return {};
  return list->getSeparatorValue(qxSepNull);
}

void FieldImplBase::setValue(std::u16string_view text) {
  if (isBinaryField()) {
    const std::vector<unsigned char> bytes = unitsAsBytes(text);
    setValue(bytes.data(), static_cast<int>(bytes.size()));
    return;
  }
  // The same text again changes nothing and tells nobody, though a null value is gone.
  flags &= static_cast<uint16_t>(~kNull);
  if (value == text) return;
  value.assign(text);
  flags &= static_cast<uint16_t>(~kAwaitsFormatter);
  valueChanged();
}

void FieldImplBase::setValue(const unsigned char* bytes, int length) {
  if (!isBinaryField()) throw IllegalOperation(messages::kSetBinaryOnPrimitiveBinaryOnly);
  if (length < 0) throw BadParameter(messages::kNegativeBinaryLength);
  flags &= static_cast<uint16_t>(~kNull);
  binaryValue = std::make_unique<std::vector<unsigned char>>(bytes, bytes + length);
  value.clear();
  if (getBaseType() == FieldDefn::kRawBinary) updateLengthField();
  valueChanged();
}

void FieldImplBase::updateLengthField() {
  // Raw binary has no end mark on the wire: the sibling that its definition names carries the
  // length, in characters of two bytes.
  const std::string& linked = fieldDefn->getLinkedFieldName();
  if (linked.empty() || !parent) return;
  const std::u16string length = [&] {
    const std::string digits = std::to_string(binaryValue ? binaryValue->size() / 2 : 0);
    return std::u16string(digits.begin(), digits.end());
  }();
  for (int i = 0; i < index && i < parent->getElementCount(); ++i) {
    auto* sibling = static_cast<InternalElement*>(parent->getElementAt(i));
    if (sibling->getName() == linked) sibling->setValue(std::u16string_view(length));
  }
}

std::vector<unsigned char> FieldImplBase::getBinaryValue() {
  if (!isBinaryField()) throw IllegalOperation(messages::kGetBinaryValuePrimitiveOnly);
  return binaryValue ? *binaryValue : std::vector<unsigned char>();
}

// ----- giving the value

void FieldImplBase::normalizeFormatted() {
  flags &= static_cast<uint16_t>(~kAwaitsFormatter);
  Formatter* formatter = value.empty() ? nullptr : getFormatter();
  std::u16string number;
  if (formatter && FormattedValue::fromWire(*formatter, getBaseType(), value.view(), number)) value.assign(number);
}

std::u16string FieldImplBase::currentValue() {
  if (getFlag(kNull)) {
    const std::u16string_view text = nullText();
    if (!text.empty()) return std::u16string(text);
  }
  const MessageSetDefn* set = getMessageSetDefn();
  const bool raw = FactorySettings::hasFlag(set, kRawValuesFlag);
  std::u16string text;
  if (!isBinaryField()) {
    if (getFlag(kAwaitsFormatter)) normalizeFormatted();
    if (raw) return value.str();
    if (NCPDPSegmentImpl* owner = taggedRunOwner()) {
      // A count field that repeats itself counts the run of its own repeat.
      const int32_t repeat = parent == owner ? 0 : index;
      const std::string count = std::to_string(owner->countRunRepeats(repeat, getOwnerFieldIndex()));
      return std::u16string(count.begin(), count.end());
    }
    text = value.str();
  } else {
    text = binaryValue ? bytesAsUnits(*binaryValue) : std::u16string();
    if (raw) return text;
  }
  if (!text.empty()) return text;
  if (isRequired() || FactorySettings::hasFlag(set, qxOutputDefaultValuesForOptionalFields)) {
    return getDefaultValue().str();
  }
  return text;
}

std::u16string FieldImplBase::getValue() { return currentValue(); }

std::u16string FieldImplBase::getEncodedValueNoTouch() {
  if (getFlag(kNull)) {
    const std::u16string_view text = nullText();
    if (!text.empty()) return std::u16string(text);
  }
  if (isBinaryField()) return binaryValue ? bytesAsUnits(*binaryValue) : std::u16string();
  return value.str();
}

std::u16string FieldImplBase::getEncodedValue() { return PositionedWrite::field(*this, true, false); }

// ----- taking text

std::u16string_view FieldImplBase::setEncodedValue(std::u16string_view text) {
  flags &= static_cast<uint16_t>(~kNull);
  SeparatorList* list = getSeparatorList();
  const std::u16string decoded = list ? list->decodeValue(text, getBaseType()) : std::u16string(text);
  StringParserStream stream(decoded.data(), static_cast<int32_t>(decoded.size()));
  RecordedErrors errors;
  ValidationLocation location;
  location.segmentNumber = getSegmentNumber();
  uint32_t moreFollows = 0;
  // An empty text empties the field; anything else is read as wire text is.
  if (decoded.empty()) {
    value.clear();
    binaryValue.reset();
  }
  parseElement(stream, errors, moreFollows, location);
  setChanged(true);
  return {};
}

bool FieldImplBase::parseElement(ParserStream& stream, RecordedErrors&, uint32_t& moreFollows, ValidationLocation&) {
  moreFollows = 0;
  ParserToken token;
  token.useView = true;
  stream.readRest(token);
  const std::u16string_view text = token.characters();
  // A view may be kept only while the text it points into lives as long as the field.
  readValue(text, token.useView && getOwner() && ownerSegment->isInSourceText(text));
  return true;
}

void FieldImplBase::readValue(std::u16string_view token, bool stable) {
  SeparatorList* list = getSeparatorList();
  const std::u16string_view nullMarker = nullText();
  if (!nullMarker.empty() && token == nullMarker) {
    // Reading marks nothing changed: the null value is taken as it stands.
    value.clear();
    flags |= kNull;
    flags &= static_cast<uint16_t>(~kAwaitsFormatter);
    if (fieldDefn->isVariableTypeField() && parent) parent->onFieldValueChanged(index, -1, false);
    return;
  }
  if (!token.empty()) {
    if (stable) {
      value.assignView(token);
    } else {
      value.assign(token);
    }
    trimForAlignment(list);
    if (!value.empty() && isNumericBase(getBaseType())) flags |= kAwaitsFormatter;
    if (isBinaryField()) {
      binaryValue = std::make_unique<std::vector<unsigned char>>();
      if (isEncodedBinary()) {
        // A text that doesn't decode leaves the record empty; validation reports it.
        BinaryEncoding::decode(getBaseType(), value.view(), *binaryValue);
      } else {
        *binaryValue = unitsAsBytes(value.view());
      }
    }
  }
  // A header field that holds separators settles them as it is read.
  if (list && list->getVariablePending() && mayCarrySeparators(*list)) list->takeFromField(headerFieldPath(), value.view());
  if (fieldDefn->isVariableTypeField() && parent) parent->onFieldValueChanged(index, -1, false);
}

void FieldImplBase::trimForAlignment(SeparatorList* list) {
  const int32_t base = getBaseType();
  if (base == FieldDefn::kStrictInteger || base == FieldDefn::kStrictReal) {
    // A strict number outside its limits, or with leading zeros, stays as it came for validation.
    const int32_t minimum = getMinLength();
    const int32_t maximum = getMaxLength();
    if (minimum != 0 || maximum != 0) {
      const std::u16string_view text = value.view();
      const size_t n = countDigits(text, base == FieldDefn::kStrictReal);
      const size_t sign = !text.empty() && (text.front() == u'+' || text.front() == u'-') ? 1 : 0;
      const bool leadingZero = text.size() > sign && text[sign] == u'0';
      if ((minimum != 0 && n < static_cast<size_t>(minimum)) || (maximum != 0 && n > static_cast<size_t>(maximum)) ||
          (leadingZero && n > static_cast<size_t>(minimum))) {
        return;
      }
    }
  }
  const int32_t alignment = fieldDefn->getAlignment();
  const std::u16string_view text = value.view();
  if (alignment == qxZeroMin || alignment == qxZeroMax) {
    const size_t sign = !text.empty() && (text.front() == u'+' || text.front() == u'-') ? 1 : 0;
    size_t first = text.find_first_not_of(u'0', sign);
    if (first == std::u16string_view::npos) {
      first = text.size() - 1;  // all zeros: the last one stays
    } else if (text[first] == u'.' && first > sign) {
      --first;  // "000.5" keeps the zero before the point
    }
    if (first <= sign) return;
    if (sign == 0) {
      value.narrow(first, text.size() - first);
    } else {
      std::u16string trimmed(text.substr(0, sign));
      trimmed += text.substr(first);
      value.assign(trimmed);
    }
    return;
  }
  if (base == FieldDefn::kRawBinary || !list) return;
  const bool fixedPosition = !list->isSeparatorActive(SeparatorList::kCurrent) || list->isLevelFixedWidth();
  int32_t effective = alignment;
  if (fixedPosition) {
    effective = (alignment == qxRight || alignment == qxRightMin || alignment == qxRightMax) ? qxRightMax : qxLeftMax;
  }
  const std::u16string_view filler = list->getSeparatorValue(qxSepFiller);
  if (filler.empty()) return;
  const char16_t fill = filler.front();
  if (effective == qxLeftMin || effective == qxLeftMax) {
    if (text.empty() || text.back() != fill) return;
    const size_t last = text.find_last_not_of(fill);
    value.narrow(0, last == std::u16string_view::npos ? 0 : last + 1);
  } else if (effective == qxRightMin || effective == qxRightMax) {
    if (text.empty() || text.front() != fill) return;
    const size_t first = text.find_first_not_of(fill);
    if (first == std::u16string_view::npos) {
      value.clear();
    } else {
      value.narrow(first, text.size() - first);
    }
  }
}

void FieldImplBase::copyValueInto(FieldImplBase& copy) const {
  copy.value.assign(value.view());
  copy.flags = static_cast<uint16_t>(copy.flags | (flags & (kNull | kAwaitsFormatter)));
  if (binaryValue) copy.binaryValue = std::make_unique<std::vector<unsigned char>>(*binaryValue);
  copyVariableTypeInto(copy);
}

}  // namespace vantrelia
