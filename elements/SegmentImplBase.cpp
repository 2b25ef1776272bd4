#include "elements/SegmentImplBase.h"

#include <algorithm>
#include <array>
#include <stdexcept>

#include "definitions/FieldDefn.h"
#include "definitions/FieldInstancesControl.h"
#include "definitions/FieldPathDefn.h"
#include "definitions/MatchDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/SeparatorDefn.h"
#include "elements/FactorySettings.h"
#include "elements/ParseFindings.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorTrieNode.h"
#include "validation/ValidationErrorNumbers.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SegmentFieldInstancesControl.h"
#include "elements/ElementMessages.h"
#include "foundation/FoundationMessages.h"
#include "elements/CompositeImpl.h"
#include "elements/SegmentTextCheck.h"
#include "elements/ElementPath.h"
#include "elements/ElementUserData.h"
#include "elements/FieldFactory.h"
#include "elements/ItemListNode.h"
#include "elements/MessageImpl.h"
#include "definitions/CompositeDefn.h"
#include "definitions/DataTypeCodes.h"
#include "definitions/FieldListDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "parsing/ParseFindingsScope.h"
#include "parsing/SeparatorCut.h"
#include "elements/PositionedWrite.h"
#include "elements/SegmentFactory.h"
#include "elements/RepeatFieldImpl.h"
#include "foundation/BadParameter.h"
#include "foundation/CheckIndex.h"
#include "foundation/Format.h"
#include "foundation/IllegalOperation.h"
#include "foundation/TextCompare.h"
#include "parsing/SeparatorList.h"
#include "parsing/StringParserStream.h"
#include "validation/RecordedErrors.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

SegmentImplBase::SegmentImplBase(const SegmentDefn& segmentDefn, const MessageItemDefn* itemDefn,
                                 InternalElement* parent, int32_t index, SeparatorList* separators)
    : SegmentElement(parent, index, separators),
      fieldSeparator(segmentDefn.getSeparatorType() == qxSepAuto
                         ? qxSepField1
                         : static_cast<ESeparatorType>(segmentDefn.getSeparatorType())),
      segmentDefn(&segmentDefn),
      itemDefn(itemDefn) {}

SegmentImplBase::~SegmentImplBase() { prefetchEach(fields); }

const char* SegmentImplBase::getName() const {
  return itemDefn ? itemDefn->getName().c_str() : segmentDefn->getName().c_str();
}

const MessageSetDefn* SegmentImplBase::getMessageSetDefn() {
  return itemDefn ? &itemDefn->getSet() : segmentDefn->getSet();
}

MetaDataRecord* SegmentImplBase::getMetaData() { return nullptr; }

bool SegmentImplBase::getUserData(const std::u16string& key, std::u16string& value) {
  if (itemDefn && ElementUserData::find(itemDefn->getUserData(), &itemDefn->getSet(), key, value)) return true;
  return ElementUserData::find(segmentDefn->getUserData(), segmentDefn->getSet(), key, value);
}

void SegmentImplBase::setItemDefn(const MessageItemDefn* item) {
  itemDefn = item;
  pathCache.reset();
  // The item's overrides and shape have their say in the check.
  asReadVerdict = {};
}

// ----- fields

int SegmentImplBase::getFieldCount() { return segmentDefn->getFieldCount(); }

const std::vector<std::unique_ptr<FieldDefn>>& SegmentImplBase::getFieldDefns() { return segmentDefn->getFields(); }

int SegmentImplBase::getChildCount() { return segmentDefn->getFieldCount(); }

std::span<const std::unique_ptr<InternalElement>> SegmentImplBase::getChildArray() {
  if (uncut) cutFields();
  fields.resize(static_cast<size_t>(segmentDefn->getFieldCount()));
  return fields;
}

FieldBase* SegmentImplBase::fieldAt(int index) const {
  if (uncut) [[unlikely]] const_cast<SegmentImplBase*>(this)->cutFields();
  return index >= 0 && static_cast<size_t>(index) < fields.size()
             ? static_cast<FieldBase*>(fields[static_cast<size_t>(index)].get())
             : nullptr;
}

std::unique_ptr<FieldBase> SegmentImplBase::makeField(int index) {
  const FieldDefn& defn = segmentDefn->getField(index);
  std::unique_ptr<VariableFieldType> type;
  // Repeats that each follow the key's repeat beside them are typed one by one, not here.
  if (defn.getDataType() == FieldDefn::kVariable && !(defn.getFlags() & FieldDefn::kRepeatsWithKey)) {
    type = FieldFactory::typeFromKey(*this, defn);
  }
  if (defn.getMaxRepeats() != 1) {
    auto repeat = std::make_unique<RepeatFieldImpl>(defn, this, index, fieldSeparator);
    if (type) repeat->setVariableType(std::move(type));
    return repeat;
  }
  return FieldFactory::makeValue(defn, this, index, fieldSeparator, std::move(type));
}

void SegmentImplBase::storeField(int index, std::unique_ptr<FieldBase> field) {
  if (uncut) cutFields();
  // One slot for each field from the first one made: a segment that holds anything holds a few.
  if (fields.size() <= static_cast<size_t>(index)) fields.resize(static_cast<size_t>(segmentDefn->getFieldCount()));
  fields[static_cast<size_t>(index)] = std::move(field);
}

void SegmentImplBase::destroyField(int index) {
  if (uncut) cutFields();
  if (static_cast<size_t>(index) < fields.size()) fields[static_cast<size_t>(index)].reset();
}

InternalElement* SegmentImplBase::getChildCreating(int index) { return getField(index); }

FieldBase* SegmentImplBase::getField(int index) {
  if (FieldBase* existing = fieldAt(index)) {
    // A variable field always matches its key when fetched; one whose key changed without telling
    // it is made anew, and its value is lost.
    if (existing->getFieldDefn().getDataType() != FieldDefn::kVariable || !FieldFactory::isStale(*this, *existing)) {
      return existing;
    }
    destroyField(index);
  }
  storeField(index, makeField(index));
  return fieldAt(index);
}

bool SegmentImplBase::isFieldRequired(int index) {
  if (FieldBase* field = fieldAt(index)) return field->isRequired();
  const FieldDefn& defn = segmentDefn->getField(index);
  if (defn.getHasOverrides() && itemDefn && itemDefn->getFieldInstances()) {
    return itemDefn->getFieldInstances()->isRequired(index);
  }
  return defn.isRequired();
}

bool SegmentImplBase::isChildPresent(int index) { return fieldAt(index) != nullptr; }

bool SegmentImplBase::isChildRepeating(int index) {
  checkIndex(index, getFieldCount());
  return segmentDefn->getField(index).getMaxRepeats() != 1;
}

void SegmentImplBase::onFieldValueChanged(int fieldIndex, int repeatIndex, bool onlyFollowing) {
  const auto* keys = segmentDefn->getVariableKeys();
  if (!keys) return;
  const auto ruled = keys->find(fieldIndex);
  if (ruled == keys->end()) return;
  FieldBase* field = fieldAt(ruled->second);
  if (!field) return;
  if (repeatIndex != -1 && (field->getFieldDefn().getFlags() & FieldDefn::kRepeatsWithKey)) {
    // One repeat of the key changed: the ruled repeat beside it (and, asked for, those after it).
    auto* repeats = static_cast<RepeatFieldImpl*>(field);
    for (int i = repeatIndex; i < repeats->getElementCount(); ++i) {
      repeats->retypeRepeat(i);
      if (!onlyFollowing) break;
    }
    return;
  }
  // The ruled field takes the type its key names now; its text survives the change.
  fieldAt(ruled->second);
  FieldFactory::retype(*this, fields[static_cast<size_t>(ruled->second)], ruled->second);
}

std::unique_ptr<MessageElement> SegmentImplBase::clone() {
  std::unique_ptr<SegmentImplBase> copy = SegmentFactory::create(*segmentDefn, itemDefn, parent, index, separators);
  copyFieldsInto(*copy);
  return copy;
}

std::unique_ptr<InternalElement> SegmentImplBase::cloneWithParent(InternalElement* newParent) {
  SeparatorList* list = newParent ? newParent->getSeparatorList() : separators;
  std::unique_ptr<SegmentImplBase> copy = SegmentFactory::create(*segmentDefn, itemDefn, newParent, index, list);
  copyFieldsInto(*copy);
  return copy;
}

void SegmentImplBase::copyFieldsInto(SegmentImplBase& copy) const {
  if (uncut) const_cast<SegmentImplBase*>(this)->cutFields();
  copy.fields.resize(fields.size());
  for (size_t i = 0; i < fields.size(); ++i) {
    if (fields[i]) copy.fields[i] = fields[i]->cloneWithParent(&copy);
  }
  copy.segmentNumber = segmentNumber;
  copy.sourceText = sourceText;
}

void SegmentImplBase::setMessageDefn(const MessageDefn* messageDefn) {
  for (const auto& field : fields) {
    if (field) field->setMessageDefn(messageDefn);
  }
}

// ----- host operations

MessageElement* SegmentImplBase::getElementAt(int index) {
  checkIndex(index, getFieldCount());
  return getField(index);
}

int SegmentImplBase::getElementCount() { return getFieldCount(); }

MessageElement* SegmentImplBase::getElementAt(const char* pathText) {
  const std::string_view path = ElementPath::of(pathText);
  const auto [head, rest] = ElementPath::split(path);
  if (parent && ElementPath::isParent(head)) {
    InternalElement* target = ItemListNode::parentSeenFromBelow(*this);
    return rest.empty() ? target : target->getElementAt(rest.data());
  }
  for (int i = 0; i < getFieldCount(); ++i) {
    if (!equalIgnoringCase(head, segmentDefn->getField(i).getName().view())) continue;
    FieldBase* field = getField(i);
    return rest.empty() ? static_cast<MessageElement*>(field) : field->getElementAt(rest.data());
  }
  throw BadParameter(formatMessage(messages::kChildNotFoundInSegment, std::string(head).c_str(),
                                   segmentDefn->getName().c_str()));
}

ElementCollection SegmentImplBase::getElementCollection(const char* specText) {
  const std::string_view spec = ElementPath::of(specText);
  // Named, not a structured binding: the lambda below captures the rest.
  const ElementPath::Step step = ElementPath::split(spec);
  const std::string_view head = step.head;
  const std::string_view rest = step.rest;
  ElementCollection result;
  const auto take = [&](int i) {
    FieldBase* field = fieldAt(i);
    if (!field) return;
    if (rest.empty()) {
      result.add(field);
    } else if (!field->isEmpty() || isFieldRequired(i)) {
      result.addAll(field->getElementCollection(rest.data()));
    }
  };
  if (ElementPath::isWildcard(head)) {
    for (int i = 0; i < getFieldCount(); ++i) take(i);
    return result;
  }
  for (int i = 0; i < getFieldCount(); ++i) {
    if (!equalIgnoringCase(head, segmentDefn->getField(i).getName().view())) continue;
    take(i);
    return result;
  }
  throw BadParameter(formatMessage(messages::kChildNotFoundInSegment, std::string(head).c_str(),
                                   segmentDefn->getName().c_str()));
}

void SegmentImplBase::setEmpty() {
  // Fields still in the text go with it.
  uncut.reset();
  fields.clear();
  setChanged(true);
}

bool SegmentImplBase::isEmpty() {
  if (uncut) {
    // A text that would be written as it stands holds a value: no need to cut it to tell.
    if (fieldTextAsRead(uncut->separators())) return false;
    cutFields();
  }
  for (const auto& field : fields) {
    if (field && !field->isEmpty()) return false;
  }
  return true;
}

void SegmentImplBase::setNull() { throw IllegalOperation(messages::kSegmentsNotNull); }

void SegmentImplBase::appendPath(std::string& text) {
  if (!pathCache) {
    std::string path;
    if (parent) {
      parent->appendPath(path);
      if (parent->getNodeType() == qxRepeating) {
        path += formatMessage("[%d]", index);
      } else {
        if (!path.empty()) path += '/';
        path += getName();
      }
    } else {
      path = getName();
    }
    pathCache = std::make_unique<std::string>(std::move(path));
  }
  text += *pathCache;
}

// ----- counts: a segment counts itself

int SegmentImplBase::getCountForPath(std::string_view path, int kind, bool) {
  if (path.empty() && (kind == 1 || kind == 2)) return 1;
  throw BadParameter(messages::kInvalidPathInCountItem);
}

int SegmentImplBase::countSegments(bool) { throw IllegalOperation(messages::kInternalError); }

int SegmentImplBase::countGroups(bool) { throw IllegalOperation(messages::kGroupCountOfSegment); }

int SegmentImplBase::countMessages(bool) { throw IllegalOperation(messages::kMessageCountOfSegment); }

// ----- text

bool SegmentImplBase::canStartOnPath(std::vector<int32_t>::const_iterator, std::vector<int32_t>::const_iterator) {
  return false;
}

bool SegmentImplBase::parseElement(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                                   ValidationLocation& location) {
  location.segmentNumber = getSegmentNumber();
  location.segmentID = segmentDefn->getTag().c_str();
  sourceLength = 0;
  uncut.reset();
  readWith.reset();
  asReadVerdict = {};
  const char16_t* first = stream.getCursor();
  bool parsed = false;
  try {
    parsed = parseSegmentFields(stream, errors, status, location);
  } catch (...) {
    mayLeaveUncut = false;
    uncut.reset();
    throw;
  }
  mayLeaveUncut = false;
  if (!parsed) forgetParserPositions(errors);
  const char16_t* last = stream.getCursor();
  if (parsed && first && last > first && isInSourceText(std::u16string_view(first, static_cast<size_t>(last - first)))) {
    sourceStart = static_cast<int32_t>(first - sourceText->data());
    sourceLength = static_cast<int32_t>(last - first);
    // A header that settles separators as it is read is never written from its text anyway.
    if (uncut) {
      readWith = uncut;
    } else if (!separators->getVariablePending()) {
      readWith = separators->shareCut();
    }
  }
  location.fieldPosition = -1;
  location.fieldRepetition = -1;
  return parsed;
}

std::u16string_view SegmentImplBase::setEncodedValue(std::u16string_view text) {
  setChanged(true);
  setEmpty();
  if (text.empty()) return text;
  separators->reset(true, true, true);
  separators->settleHeadersBefore(getMessageSetDefn(), segmentDefn, -1);
  // What the parse finds is dropped with the map: a host that sets one segment's text gets no
  // findings recorded in the message for it.
  RecordedErrors errors;
  return parseEncodedValue(text, errors);
}

std::u16string_view SegmentImplBase::parseEncodedValue(std::u16string_view text, RecordedErrors& errors) {
  setEmpty();
  // The fields' values point into this copy of the text rather than each holding their own.
  auto source = std::make_shared<const std::u16string>(text);
  sourceText = source;
  StringParserStream stream(source->data(), static_cast<int32_t>(source->size()));
  ValidationLocation location;
  uint32_t status = 0;
  // A text that isn't this segment's leaves it all to whoever comes next.
  if (!parseElement(stream, errors, status, location)) return text;
  return text.substr(text.size() - static_cast<size_t>(stream.getRemaining()));
}

void SegmentImplBase::setChanged(bool flag) {
  // The text goes out of reach: what still lies in it is cut now.
  if (uncut) cutFields();
  sourceLength = 0;
  readWith.reset();
  asReadVerdict = {};
  SegmentElement::setChanged(flag);
}

std::u16string_view SegmentImplBase::getIntactSource() const {
  if (sourceLength == 0 || !sourceText) return {};
  return std::u16string_view(*sourceText).substr(static_cast<size_t>(sourceStart), static_cast<size_t>(sourceLength));
}

std::optional<std::u16string_view> SegmentImplBase::fieldTextAsRead(const SeparatorList& list) {
  if (!readWith || sourceLength == 0 || list.getVariablePending() || list.isLevelFixedWidth() ||
      !list.isInUse(fieldSeparator) || !list.sameSlotsAs(readWith->separators())) {
    return std::nullopt;
  }
  return checkedFieldText(list, false);
}

std::optional<std::u16string_view> SegmentImplBase::headerTextAsRead(SeparatorList& list, bool everyField) {
  if (!readWith || sourceLength == 0 || !list.getVariablePending() || list.isLevelFixedWidth()) return std::nullopt;
  // The fields are held to the separators the read settled, which the write settles again.
  const SeparatorList& read = readWith->separators();
  if (!read.isInUse(fieldSeparator)) return std::nullopt;
  const std::optional<std::u16string_view> text = checkedFieldText(read, true);
  if (!text) return std::nullopt;
  // The text begins with the separator of the first field, and holds it nowhere else but between
  // fields.
  if (everyField && static_cast<size_t>(std::count(text->begin(), text->end(), text->front())) !=
                        segmentDefn->getFields().size()) {
    return std::nullopt;
  }
  if (!list.settleAsRead(segmentDefn->getName().view(), read)) return std::nullopt;
  return text;
}

std::optional<std::u16string_view> SegmentImplBase::checkedFieldText(const SeparatorList& list, bool header) {
  const WarehouseSettings& settings = FactorySettings::of(getMessageSetDefn());
  if (settings.flags & qxOutputDefaultValuesForOptionalFields) return std::nullopt;
  // The item's overrides reach the fields whatever segment stands there; its shape is for its own.
  if (itemDefn && itemDefn->getSegment() != segmentDefn) return std::nullopt;
  const SegmentTextShape& shape = itemDefn ? itemDefn->getTextShape() : segmentDefn->getTextShape();
  // A header's fields that hold separators are written as the list's, which stand as read only
  // while the header is what settles them.
  if (shape.carriesSeparators() != header) return std::nullopt;
  const bool truncating = settings.truncateFieldsToMaxLength;
  const std::u16string_view intact = getIntactSource();
  if (asReadVerdict.known && asReadVerdict.truncating == truncating) {
    if (!asReadVerdict.qualifies) return std::nullopt;
    return intact.substr(asReadVerdict.offset, asReadVerdict.length);
  }
  const std::optional<std::u16string_view> text =
      SegmentTextCheck::fieldText(*segmentDefn, shape, intact, list, truncating);
  // A text too long for the record is checked on every write instead.
  const size_t offset = text ? static_cast<size_t>(text->data() - intact.data()) : 0;
  const size_t length = text ? text->size() : 0;
  if (offset < (1u << 5) && length < (1u << 24)) {
    asReadVerdict = {1, truncating, text.has_value(), static_cast<uint32_t>(offset), static_cast<uint32_t>(length)};
  }
  return text;
}

std::u16string SegmentImplBase::getEncodedValue() {
  return PositionedWrite::element(*this, getMessageSetDefn(), segmentDefn, false);
}

std::u16string SegmentImplBase::getEncodedValueNoTouch() {
  return PositionedWrite::element(*this, getMessageSetDefn(), segmentDefn, true);
}

// ----- fields left in the text

namespace {

// How many characters `text` takes at `at` as a stream's consume compares it (up to a zero in it),
// or -1 when the characters there don't begin with it.
int32_t matchedAt(const char16_t* at, const char16_t* end, std::u16string_view text) {
  size_t length = 0;
  for (; length < text.size() && text[length] != u'\0'; ++length) {
    if (at + length >= end || at[length] != text[length]) return -1;
  }
  return static_cast<int32_t>(length);
}

// Whether a value of the field is cut at separators alone, so that no segment separator can stand
// inside it: no binary lengths, quotes, or separators allowed in data. Escape marks may stand in
// it: a separator ends a field between them too, and the scan that leaves fields uncut stops at
// the first character of any replacement, which is where a mark would change what is read.
bool cutAtSeparators(const FieldDefn& field) {
  const PrimitiveTypeDefn* custom = field.getCustomType();
  const bool asItStands = custom && custom->readsAsItStands();
  const uint32_t flags = field.getFlags();
  if ((flags & FieldDefn::kHasFieldPresenceIndicator) || ((flags & FieldDefn::kNotPlain) && !asItStands)) return false;
  const int32_t type = field.getDataType();
  if (DataTypeCodes::isBinary(type) || field.getIsBinary() || type == DataTypeCodes::kQuotedText ||
      (type == DataTypeCodes::kCustom && !asItStands) || type == DataTypeCodes::kArray ||
      type == DataTypeCodes::kVariable) {
    return false;
  }
  if (custom && (custom->hasAllowedSeparators() || custom->getBaseType() == DataTypeCodes::kQuotedText ||
                 DataTypeCodes::isBinary(custom->getBaseType()))) {
    return false;
  }
  if (!field.isComposite()) return true;
  const CompositeDefn* composite = field.getComposite();
  if (!composite || !composite->getSpecialSeparatorString().empty() ||
      composite->getCompositeType() != qxCompTypeNormal) {
    return false;
  }
  for (const auto& component : composite->getFields()) {
    if (!cutAtSeparators(*component)) return false;
  }
  return true;
}

}  // namespace

bool SegmentImplBase::endsAtSeparator() const {
  const int8_t known = segmentDefn->getEndsAtSeparator();
  if (known >= 0) return known != 0;
  bool ends = !segmentDefn->isFixedWidth() && segmentDefn->getSpecialSeparatorString().empty();
  // A match list looks into the fields while the segment is read.
  for (const auto& match : segmentDefn->getMatches()) {
    if (!match->getFieldPath().empty()) ends = false;
  }
  for (const auto& field : segmentDefn->getFields()) {
    if (!ends) break;
    ends = cutAtSeparators(*field);
  }
  segmentDefn->setEndsAtSeparator(ends);
  return ends;
}

bool SegmentImplBase::leaveFieldsUncut(ParserStream& stream, uint32_t endMask, uint32_t& status,
                                       RecordedErrors& errors, ValidationLocation& location, int firstField,
                                       bool lastFieldFilled) {
  SeparatorList& list = *separators;
  // Only the segment separator ends a segment here, it ends every field, and no separator is
  // still to be read from the text.
  if (!mayLeaveUncut || endMask != 4 || list.getVariablePending() || list.isLevelFixedWidth() ||
      (separatorFlags(list, qxSepSegment) & SeparatorDefn::kInitiator) || usesGenericParsing() ||
      !endsAtSeparator() || firstField > INT16_MAX) {
    return false;
  }
  const char16_t* cursor = stream.getCursor();
  const int32_t remaining = stream.getWholeRemaining();
  if (!cursor || !isInSourceText(std::u16string_view(cursor, static_cast<size_t>(remaining)))) return false;
  // The field level that beginSegmentParse pushed sits on the three a message starts with.
  const SeparatorList::Levels& levels = list.getLevels();
  if (levels.size() != 4 || levels[0] != qxSepMessage || levels[1] != qxSepGroup || levels[2] != qxSepSegment) {
    return false;
  }
  std::shared_ptr<SeparatorCut> cut = list.shareCut();
  const int32_t length = cut->scanFields(cursor, remaining);
  if (length < 0) return false;
  ParserToken skipped;
  skipped.useView = true;
  stream.readChars(length, skipped);
  list.popSeparator();
  finishSegmentParse(stream, endMask, false, status, errors, location, true);
  uncut = std::move(cut);
  uncutFrom = static_cast<int16_t>(firstField);
  uncutLastFilled = lastFieldFilled;
  uncutOffset = static_cast<int32_t>(cursor - sourceText->data());
  return true;
}

std::optional<SegmentImplBase::QuickUncut> SegmentImplBase::planQuickUncut(ParserStream& stream) {
  SeparatorList& list = *separators;
  // The opening and the end read no more than the tag, an initiator and the segment separator.
  if (!list.readsSegmentsPlainly() || usesGenericParsing() || !endsAtSeparator()) return std::nullopt;
  const char16_t* const start = stream.getCursor();
  const int32_t remaining = stream.getWholeRemaining();
  if (!start || remaining <= 0 || !isInSourceText(std::u16string_view(start, static_cast<size_t>(remaining)))) {
    return std::nullopt;
  }
  const char16_t* const end = start + remaining;
  const int32_t tag = matchedAt(start, end, segmentDefn->getTag().view());
  if (tag <= 0) return std::nullopt;
  const char16_t* fields = start + tag;
  QuickUncut quick;
  if (separatorFlags(list, fieldSeparator) & SeparatorDefn::kInitiator) {
    const int32_t initiator = matchedAt(fields, end, list.getSlot(fieldSeparator).initiator());
    if (initiator >= 0) {
      fields += initiator;
      quick.lastFieldFilled = false;
    }
  }
  quick.cut = list.shareCut();
  const int32_t length = quick.cut->scanFields(fields, static_cast<int32_t>(end - fields));
  if (length < 0) return std::nullopt;
  const char16_t* behind = fields + length;
  const int32_t separator = matchedAt(behind, end, list.getSeparatorValue(qxSepSegment));
  if (separator >= 0) {
    behind += separator;
    quick.status = 1;
  }
  quick.taken = static_cast<int32_t>(behind - start);
  quick.fieldsAt = static_cast<int32_t>(fields - sourceText->data());
  return quick;
}

void SegmentImplBase::takeQuickUncut(QuickUncut&& quick, ParserStream& stream, uint32_t& status) {
  ParserToken taken;
  taken.useView = true;
  stream.readChars(quick.taken, taken);
  status = quick.status;
  uncut = std::move(quick.cut);
  uncutFrom = 0;
  uncutLastFilled = quick.lastFieldFilled;
  uncutOffset = quick.fieldsAt;
}

std::optional<std::u16string> SegmentImplBase::peekUncutValue(std::string_view path) const {
  if (!uncut) return std::nullopt;
  const SegmentDefn::PathIndexes& indexes = segmentDefn->indexesOfPath(path, [](const SegmentDefn& defn, std::string_view names) {
    SegmentDefn::PathIndexes found(std::in_place);
    const FieldListDefn* fieldsOf = &defn;
    for (ElementPath::Step step = ElementPath::split(names, false); !step.head.empty();
         step = ElementPath::split(step.rest, false)) {
      const auto indexed = [](char c) { return c == '[' || c == ']' || c == '(' || c == ')' || c == '*'; };
      if (!fieldsOf || found->size() == kPeekDepth || std::any_of(step.head.begin(), step.head.end(), indexed)) {
        return SegmentDefn::PathIndexes();
      }
      const auto& fields = fieldsOf->getFields();
      size_t index = 0;
      while (index < fields.size() && !equalIgnoringCase(step.head, fields[index]->getName().view())) ++index;
      if (index == fields.size()) return SegmentDefn::PathIndexes();
      found->push_back(static_cast<int32_t>(index));
      fieldsOf = fields[index]->isComposite() ? fields[index]->getComposite() : nullptr;
    }
    return found;
  });
  if (!indexes) return std::nullopt;
  return peekUncutValue(std::span<const int32_t>(indexes->data(), indexes->size()));
}

std::optional<std::u16string> SegmentImplBase::peekUncutValue(std::span<const int32_t> path) const {
  if (!uncut || !sourceText || sourceLength == 0 || path.empty() || path.size() > kPeekDepth) return std::nullopt;
  const SeparatorList& list = uncut->separators();
  // The scan that left the fields uncut saw no quote or replacement in them, and no separator but
  // the segment's, a single character, ends them.
  std::array<char16_t, kPeekDepth + 1> stops{};
  size_t stopCount = 0;
  stops[stopCount++] = list.getSeparatorValue(qxSepSegment).front();
  const char16_t* from = sourceText->data() + uncutOffset;
  // The scan found the segment's separator nowhere in the fields: they run up to it, which stands
  // last or before the line feed of a line end, or to the end of the text where it is missing.
  const char16_t* const end = sourceText->data() + sourceStart + sourceLength;
  const char16_t* to = std::find(end - std::min<std::ptrdiff_t>(end - from, 2), end, stops[0]);

  const FieldListDefn* fieldsOf = segmentDefn;
  ESeparatorType separator = fieldSeparator;
  int32_t first = uncutFrom;
  const FieldDefn* defn = nullptr;
  for (const int32_t index : path) {
    if (!fieldsOf || index < first || index >= static_cast<int32_t>(fieldsOf->getFields().size())) return std::nullopt;
    defn = fieldsOf->getFields()[static_cast<size_t>(index)].get();
    if (defn->getMaxRepeats() != 1 || (defn->getFlags() & FieldDefn::kNotPlain) || !list.isInUse(separator)) {
      return std::nullopt;
    }
    // A separator of one character that no outer level shares: else only the read can tell which
    // of them stands in the text. A zero ends nothing in the text, where the read never matches it.
    const std::u16string_view between = list.getSeparatorValue(separator);
    if (between.size() != 1 || between.front() == u'\0' ||
        std::find(stops.begin(), stops.begin() + stopCount, between.front()) !=
                                   stops.begin() + stopCount) {
      return std::nullopt;
    }
    stops[stopCount++] = between.front();
    for (int32_t skipped = first; skipped < index && from != to; ++skipped) {
      from = std::find(from, to, between.front());
      if (from != to) ++from;
    }
    to = std::find(from, to, between.front());
    const CompositeDefn* composite = defn->isComposite() ? defn->getComposite() : nullptr;
    if (defn->isComposite() && (!composite || composite->getCompositeType() != qxCompTypeNormal ||
                                !composite->getSpecialSeparatorString().empty())) {
      return std::nullopt;
    }
    fieldsOf = composite;
    separator = CompositeDefn::childSeparatorOf(composite, separator);
    first = 0;
  }
  const std::u16string_view text(from, static_cast<size_t>(to - from));
  // A leaf value of plain text, as its field would give it: no type of its own but another name for
  // text, nothing trimmed, no default standing in for it and no null marker.
  const PrimitiveTypeDefn* custom = defn ? defn->getCustomType() : nullptr;
  if (!defn || defn->isComposite() || defn->getBaseType() != FieldDefn::kString || (custom && !custom->isPlainAlias()) ||
      defn->getIsBinary() || defn->getAlignment() != qxLeft || text.empty() ||
      (list.isInUse(qxSepNull) && text == list.getSeparatorValue(qxSepNull))) {
    return std::nullopt;
  }
#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
  checkPeek(path, text);
#endif
  return std::u16string(text);
}

#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
void SegmentImplBase::checkPeek(std::span<const int32_t> path, std::u16string_view peeked) const {
  // A twin of no tree, uncut as this segment is, cut in full with findings of its own.
  std::unique_ptr<SegmentImplBase> twin = SegmentFactory::create(*segmentDefn, itemDefn, nullptr, 0, separators);
  twin->segmentNumber = segmentNumber;
  twin->sourceText = sourceText;
  twin->sourceStart = sourceStart;
  twin->sourceLength = sourceLength;
  twin->uncut = uncut;
  twin->uncutFrom = uncutFrom;
  twin->uncutOffset = uncutOffset;
  twin->uncutLastFilled = uncutLastFilled;
  RecordedErrors scratch;
  const ParseFindingsScope scope(scratch);
  twin->cutFields();
  MessageElement* element = twin.get();
  for (const int32_t index : path) element = element->getElementAt(index);
  if (element->getValue() != peeked) throw std::logic_error("a value peeked at in an uncut segment differs from its cut");
}
#endif

void SegmentImplBase::cutFields() {
  // Cleared first: the cut below makes fields through the same accessors.
  const std::shared_ptr<SeparatorCut> cut = std::move(uncut);
  uncut.reset();
  if (!cut || !sourceText || sourceLength == 0) return;
  RecordedErrors scratch;
  RecordedErrors* findings = ParseFindingsScope::current();
  const MessageDefn* messageDefn = nullptr;
  for (InternalElement* node = parent; node; node = node->parent) {
    if (!messageDefn) {
      if (auto* items = dynamic_cast<ItemListNode*>(node)) messageDefn = &items->getMessageDefn();
    }
    if (auto* message = dynamic_cast<MessageImpl*>(node)) {
      if (!findings) findings = &message->getRecordedErrors();
      break;
    }
  }
  if (!findings) findings = &scratch;

  // The cut runs as the parse did, on a segment of no tree: what the fields do while they are made
  // is no change of the tree.
  SeparatorCut::Lease lease(*cut);
  SeparatorList* const own = separators;
  InternalElement* const owner = parent;
  separators = &lease.list();
  parent = nullptr;
  const auto restore = [&] {
    separators = own;
    parent = owner;
    pathCache.reset();
  };
  ValidationLocation location;
  location.segmentNumber = getSegmentNumber();
  location.segmentID = segmentDefn->getTag().c_str();
  // The cut goes on where the read stopped: behind the tag and whatever the read took from the text
  // there (separators that stand right behind a header's tag, say), or behind the first fields of
  // a header that carried separators in them.
  const int firstField = uncutFrom;
  StringParserStream stream(sourceText->data() + uncutOffset, sourceStart + sourceLength - uncutOffset);
  uint32_t status = 0;
  const int32_t start = sourceStart;
  const int32_t length = sourceLength;
  std::shared_ptr<SeparatorCut> readAs = readWith;
  uncutFrom = 0;
  try {
    resumeSegmentFields(stream, *findings, status, location, firstField, uncutLastFilled);
  } catch (...) {
    restore();
    throw;
  }
  restore();
  sourceStart = start;
  sourceLength = length;
  readWith = std::move(readAs);
  if (messageDefn) setMessageDefn(messageDefn);
}

// ----- reading and writing the segment around its fields

uint32_t SegmentImplBase::separatorFlags(const SeparatorList& list, int32_t separator) {
  return list.getSlot(separator).defn ? list.getSlot(separator).defn->getFlags() : 0;
}

bool SegmentImplBase::beginSegmentParse(ParserStream& stream, uint32_t& status, bool& lastFieldFilled,
                                        uint32_t& endMask) {
  SeparatorList& list = *separators;
  status = 0;
  if (separatorFlags(list, qxSepSegment) & SeparatorDefn::kInitiator) {
    stream.consume(std::u16string(list.getSeparatorValue(qxSepSegment)));
  }
  if (!segmentDefn->getTag().empty() && !stream.consume(segmentDefn->getTag())) {
    status = kNotThisSegment;
    return false;
  }
  if (list.getVariablePending()) {
    list.readFromStream(FieldPathDefn::parse(segmentDefn->getName().view()), stream);
    list.settleHeadersBefore(getMessageSetDefn(), segmentDefn, -1);
  }
  if (separatorFlags(list, fieldSeparator) & SeparatorDefn::kInitiator) {
    const std::u16string initiator(list.getSlot(fieldSeparator).initiator());
    const bool found = list.getCrlfEquivalent() == list.getCurrentSeparator()
                           ? stream.consumeLonger(initiator, SeparatorList::kCarriageReturnLineFeed)
                           : stream.consume(initiator);
    if (found) lastFieldFilled = false;
  }
  pushFieldLevel(endMask);
  return true;
}

void SegmentImplBase::pushFieldLevel(uint32_t& endMask) {
  SeparatorList& list = *separators;
  endMask = 0;
  if (list.isSeparatorActive(qxSepMessage)) endMask |= 1;
  if (list.isSeparatorActive(qxSepGroup)) endMask |= 2;
  if (list.isSeparatorActive(qxSepSegment)) endMask |= 4;
  list.pushSeparator(fieldSeparator, segmentDefn->getSpecialSeparatorString().view(), segmentDefn->isFixedWidth());
}

bool SegmentImplBase::resumeSegmentFields(ParserStream&, RecordedErrors&, uint32_t&, ValidationLocation&, int, bool) {
  throw IllegalOperation(messages::kInternalError);
}

bool SegmentImplBase::openField(bool last, bool& popped) {
  SeparatorList& list = *separators;
  bool delimited = list.isSeparatorActive(fieldSeparator);
  if (!last) return delimited;
  if (!(separatorFlags(list, fieldSeparator) & SeparatorDefn::kTerminator)) delimited = false;
  if (!list.isSeparatorActive(qxSepSegment)) {
    list.popSeparator();
    popped = true;
  }
  return delimited;
}

bool SegmentImplBase::usesGenericParsing() {
  const MessageSetDefn* set = getMessageSetDefn();
  return set && set->getGenericParsing();
}

void SegmentImplBase::readPlainToken(ParserStream& stream, ParserToken& token, int32_t maxLength, bool applyReplacements,
                                     bool useGeneric) {
  SeparatorList& list = *separators;
  if (list.isTrieDirty()) list.buildTrie();
  SeparatorTrieNode& trie = useGeneric && list.getGenericTrie() ? *list.getGenericTrie() : list.getTrie();
  stream.readToken(trie, token, maxLength, applyReplacements);
}

bool SegmentImplBase::consumeFieldSeparator(int index, ParserStream& stream, RecordedErrors& errors,
                                            ValidationLocation& location, bool useGeneric, bool& lastFieldFilled) {
  SeparatorList& list = *separators;
  ParserToken extra;
  extra.useView = true;
  if (list.isTrieDirty()) list.buildTrie();
  stream.readToken(list.getTrie(), extra, 0, false);
  if (useGeneric && !extra.characters().empty()) {
    ParseFindings::record(errors, getField(index), list, location, verr::kExtraDataAfterField, extra.characters());
  }
  const bool crlfHere = list.getCrlfEquivalent() == fieldSeparator && stream.startsWith(SeparatorList::kCarriageReturnLineFeed);
  if (extra.separator != fieldSeparator && !crlfHere) return true;
  const std::u16string separator(list.getSeparatorValue(fieldSeparator));
  const bool consumed = list.getCrlfEquivalent() == fieldSeparator
                            ? stream.consumeLonger(separator, SeparatorList::kCarriageReturnLineFeed)
                            : stream.consume(separator);
  if (!consumed) {
    const std::u16string terminator(list.getSlot(qxSepSegment).terminator());
    if (!terminator.empty() && stream.startsWith(terminator)) return false;
  }
  if (separatorFlags(list, fieldSeparator) & (SeparatorDefn::kInitiator | SeparatorDefn::kSeparator)) {
    lastFieldFilled = false;
  }
  return true;
}

bool SegmentImplBase::matchFields() {
  for (const auto& match : segmentDefn->getMatches()) {
    if (match->getFieldPath().empty()) continue;
    auto* field = static_cast<InternalElement*>(getElementAt(match->getFieldPath().c_str()));
    // A text that merely lacks a tag must not pass for an untagged segment (or one qualifier's
    // segment for another's): the value has to fit the entry's pattern.
    const std::u16string found =
        field->getNodeType() == qxPrimitive ? field->getValue() : field->getEncodedValueNoTouch();
    if (!match->accepts(found)) return false;
  }
  return true;
}

void SegmentImplBase::finishSegmentParse(ParserStream& stream, uint32_t endMask, bool useGeneric, uint32_t& status,
                                         RecordedErrors& errors, ValidationLocation& location, bool atSegmentEnd) {
  SeparatorList& list = *separators;
  const std::string_view name = segmentDefn->getName().view();
  const bool segmentWasActive = list.isSeparatorActive(qxSepSegment);
  if (list.getVariablePending()) list.readFromStreamEnd(FieldPathDefn::parse(name), stream);
  list.applyDefaultForPath(name);
  status = 0;
  if (endMask == 0 || (separatorFlags(list, qxSepSegment) & SeparatorDefn::kInitiator)) return;

  ParserToken extra;
  extra.useView = true;
  // A scan that stopped at the segment separator, or at the end of the text, leaves nothing between.
  if (!atSegmentEnd && (segmentWasActive || !list.isSeparatorActive(qxSepSegment))) {
    if (list.isTrieDirty()) list.buildTrie();
    stream.readToken(list.getTrie(), extra, 0, false);
  }
  const auto consumeEnd = [&](int32_t separator) {
    const std::u16string text(list.getSeparatorValue(separator));
    if (text.empty()) return false;
    return list.getCrlfEquivalent() == separator ? stream.consumeLonger(text, SeparatorList::kCarriageReturnLineFeed)
                                                 : stream.consume(text);
  };
  if ((endMask & 4) && consumeEnd(qxSepSegment)) status |= 1;
  if ((endMask & 2) && consumeEnd(qxSepGroup)) status |= 2;
  if ((endMask & 1) && consumeEnd(qxSepMessage)) status |= 4;
  if (!useGeneric && !extra.characters().empty()) {
    status |= 8;
    ParseFindings::record(errors, this, list, location, verr::kExtraDataAfterSegment, extra.characters());
  }
}

bool SegmentImplBase::fieldHasDefault(int index) {
  if (FieldBase* field = fieldAt(index)) return field->hasDefaultValue();
  const FieldDefn& defn = segmentDefn->getField(index);
  if (defn.getHasOverrides() && itemDefn && itemDefn->getFieldInstances()) {
    return !itemDefn->getFieldInstances()->getDefaultValue(index).empty();
  }
  return !defn.getDefaultValue().empty();
}

SegmentImplBase::WriteStart SegmentImplBase::beginSegmentWrite(SeparatorList& list, int32_t& counter,
                                                               SegmentWrite& write) {
  const std::string_view name = segmentDefn->getName().view();
  if (!list.getFromWire() && itemDefn) list.restoreForItem(itemDefn->getMessage(), getName());
  if (FactorySettings::of(getMessageSetDefn()).preserveParsedText) {
    const std::u16string_view intact = getIntactSource();
    if (!intact.empty()) {
      // The separators it carries count as settled, as if its text had been written field by field.
      list.markKnownForPath(name);
      list.writeData(intact);
      if (counter >= 0) segmentNumber = counter++;
      return WriteStart::kWritten;
    }
  }
  // A segment that carries the separators of the text (a service string advice, say) is written
  // whenever it is in the tree, even with no field filled: without it the text couldn't be read back.
  const bool carriesSeparators = list.getVariablePending() && list.carriesSeparators(name);
  write.fixedSegment = segmentDefn->isFixedWidth() || !list.isSeparatorActive(SeparatorList::kCurrent);
  // Asked before the field level is pushed, at the segment's level. A text that qualifies holds a
  // value, so the segment is never one to skip. A header that qualifies has settled the
  // separators it carries already, and its text holds the one behind its tag.
  if (write.mayWriteAsRead && carriesSeparators && !segmentDefn->isFixedWidth()) {
    // A header that carries the segment separator too stands where none is in force yet: every
    // field of it is written.
    write.asRead = headerTextAsRead(list, write.fixedSegment);
  } else if (write.mayWriteAsRead && !write.fixedSegment) {
    write.asRead = fieldTextAsRead(list);
  }
  if (!write.asRead && (!itemDefn || !itemDefn->isRequired()) && isEmpty() && !carriesSeparators) {
    settleSlots(list);
    return WriteStart::kSkipped;
  }
  list.writeSeparator(SeparatorList::kWriteInitiator, SeparatorList::kCurrent);
  list.writeData(segmentDefn->getTag().view());
  list.pushSeparator(fieldSeparator, segmentDefn->getSpecialSeparatorString().view(), segmentDefn->isFixedWidth());
  if (list.getVariablePending()) list.writeSeparatorsOf(FieldPathDefn::parse(name), false);
#if defined(NDEBUG) && !defined(VANTRELIA_CHECK_FAST_PATHS)
  if (write.asRead) {
    if (counter >= 0) segmentNumber = counter++;
    return WriteStart::kFields;
  }
#endif

  const bool outputDefaults = FactorySettings::hasFlag(getMessageSetDefn(), qxOutputDefaultValuesForOptionalFields);
  write.lastField = getFieldCount() - 1;
  if (!write.fixedSegment) {
    const bool minimizing = isMinimizeChanges();
    while (write.lastField >= 0) {
      const int i = write.lastField;
      FieldBase* field = fieldAt(i);
      if ((isFieldRequired(i) && !minimizing) || (field && !field->isEmpty()) || (outputDefaults && fieldHasDefault(i))) {
        break;
      }
      --write.lastField;
    }
  }
  if (counter >= 0) segmentNumber = counter++;
  return WriteStart::kFields;
}

void SegmentImplBase::endSegmentWrite(SeparatorList& list) {
  list.flushPending();
  list.writeSeparator(SeparatorList::kWriteTerminator, SeparatorList::kCurrent);
  if (list.getVariablePending()) list.writeSeparatorsOf(FieldPathDefn::parse(segmentDefn->getName().view()), true);
  list.popSeparator();
  list.writeSeparator(SeparatorList::kWriteSeparator | SeparatorList::kWriteTerminator, SeparatorList::kCurrent);
  settleSlots(list);
}

void SegmentImplBase::settleSlots(SeparatorList& list) {
  // What the write of a segment changes in the slots is undone at its end unless the text came
  // from the wire.
  if (list.getFromWire()) {
    list.applyDefaultForPath(segmentDefn->getName().view());
  } else {
    list.restoreSavedSlots();
  }
}

// ----- validation comes with its walk

void SegmentImplBase::validateInto(SeparatorList&, ValidationErrorList&, bool, ValidationLocation&, bool) {}

void SegmentImplBase::validateTop(ValidationErrorList&, bool) {}

void SegmentImplBase::forgetParserPositions(RecordedErrors& errors) {
  errors.forget(this);
  for (const auto& field : fields) {
    if (field) field->forgetParserPositions(errors);
  }
}

}  // namespace vantrelia
