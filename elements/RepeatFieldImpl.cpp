#include "elements/RepeatFieldImpl.h"

#include "definitions/CompositeDefn.h"
#include "definitions/FieldDefn.h"
#include "definitions/MessageSetDefn.h"
#include "elements/CompositeImpl.h"
#include "elements/ElementMessages.h"
#include "elements/ElementPath.h"
#include "elements/FactorySettings.h"
#include "elements/FieldImpl.h"
#include "elements/PositionedWrite.h"
#include "elements/SegmentImplBase.h"
#include "foundation/CheckIndex.h"
#include "foundation/Format.h"
#include "foundation/IllegalOperation.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorList.h"
#include "parsing/SeparatorTrieNode.h"
#include "parsing/StringParserStream.h"
#include "validation/RecordedErrors.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

namespace {
const std::u16string kCarriageReturnLineFeed = u"\r\n";
}

RepeatFieldImpl::RepeatFieldImpl(const FieldDefn& fieldDefn, InternalElement* parent, int32_t index,
                                 ESeparatorType fieldSeparator)
    : FieldBase(fieldDefn, parent, index), fieldSeparator(fieldSeparator) {}

RepeatFieldImpl::~RepeatFieldImpl() = default;

std::unique_ptr<FieldBase> RepeatFieldImpl::makeItem(int32_t itemIndex) {
  if (fieldDefn->isComposite()) return std::make_unique<CompositeImpl>(*fieldDefn, this, itemIndex, fieldSeparator);
  return std::make_unique<FieldImpl>(*fieldDefn, this, itemIndex, fieldSeparator);
}

// ----- the list

MessageElement* RepeatFieldImpl::appendElement(const char*) {
  items.push_back(makeItem(static_cast<int32_t>(items.size())));
  setChanged(true);
  return items.back().get();
}

void RepeatFieldImpl::removeElementAt(int at) {
  checkIndex(at, getElementCount());
  items.erase(items.begin() + at);
  for (size_t i = static_cast<size_t>(at); i < items.size(); ++i) items[i]->index = static_cast<int32_t>(i);
  onFieldValueChanged(at, 1, false);
  setChanged(true);
}

void RepeatFieldImpl::removeAllElements() {
  items.clear();
  items.shrink_to_fit();
  setChanged(true);
  onFieldValueChanged(-1, -1, false);
}

void RepeatFieldImpl::setEmpty() {
  removeAllElements();
  setChanged(true);
  onFieldValueChanged(-1, -1, false);
}

bool RepeatFieldImpl::isEmpty() {
  for (const auto& item : items) {
    if (!item->isEmpty()) return false;
  }
  return true;
}

bool RepeatFieldImpl::isNull() { return items.size() == 1 && items.front()->isNull(); }

void RepeatFieldImpl::setNull() {
  removeAllElements();
  appendElement(nullptr);
  items.front()->setNull();
  setChanged(true);
  onFieldValueChanged(-1, -1, false);
}

void RepeatFieldImpl::setValue(const unsigned char*, int) {
  throw IllegalOperation(messages::kSetBinaryPrimitiveValuesOnly);
}

void RepeatFieldImpl::onFieldValueChanged(int fieldIndex, int, bool) {
  if (fieldDefn->isVariableTypeField() && parent) parent->onFieldValueChanged(index, fieldIndex, false);
}

// The owner segment answers for the equations of its fields, repeated or not.
bool RepeatFieldImpl::hasCalculatedValue(int fieldIndex) {
  return getOwner() && getOwner()->hasCalculatedValue(fieldIndex);
}

double RepeatFieldImpl::getCalculatedNumber(int fieldIndex) {
  return getOwner() ? getOwner()->getCalculatedNumber(fieldIndex) : 0;
}

std::u16string RepeatFieldImpl::getCalculatedText(int fieldIndex) {
  return getOwner() ? getOwner()->getCalculatedText(fieldIndex) : std::u16string();
}

// ----- paths

MessageElement* RepeatFieldImpl::getElementAt(int at) {
  checkIndex(at, getElementCount());
  return items[static_cast<size_t>(at)].get();
}

MessageElement* RepeatFieldImpl::getElementAt(const char* path) { return ElementPath::walkIndexed(*this, path, parent); }

ElementCollection RepeatFieldImpl::getElementCollection(const char* spec) {
  return ElementPath::collectIndexed(*this, spec);
}

void RepeatFieldImpl::appendNumericPath(std::string& text) {
  if (parent) parent->appendNumericPath(text);
  if (!text.empty()) text += '.';
  text += std::to_string(index + 1);
}

// ----- copies

std::unique_ptr<InternalElement> RepeatFieldImpl::cloneWithParent(InternalElement* newParent) {
  auto copy = std::make_unique<RepeatFieldImpl>(*fieldDefn, newParent, index, fieldSeparator);
  copy->items.reserve(items.size());
  for (const auto& item : items) copy->items.push_back(item->cloneWithParent(copy.get()));
  return copy;
}

std::unique_ptr<MessageElement> RepeatFieldImpl::clone() { return cloneWithParent(parent); }

void RepeatFieldImpl::validateInto(SeparatorList&, ValidationErrorList&, bool, ValidationLocation&, bool) {}

void RepeatFieldImpl::forgetParserPositions(RecordedErrors& errors) {
  errors.forget(this);
  for (const auto& item : items) item->forgetParserPositions(errors);
}

// ----- reading

void RepeatFieldImpl::readItem(ParserStream& stream, RecordedErrors& errors, ValidationLocation& location,
                               bool fieldSeparatorActive, bool useGeneric) {
  SeparatorList& list = *getSeparatorList();
  if (list.isTrieDirty()) list.buildTrie();
  SeparatorTrieNode& trie = useGeneric && list.getGenericTrie() ? *list.getGenericTrie() : list.getTrie();
  ParserToken token;
  token.useView = true;
  const bool composite = fieldDefn->isComposite();
  if (!fieldSeparatorActive) {
    stream.readToken(trie, token, getMaxLength(), !composite);
  } else if (composite && fieldDefn->getComposite() &&
             (fieldDefn->getComposite()->getFlags() & CompositeDefn::kHoldsQuotedText)) {
    auto* item = static_cast<InternalElement*>(appendElement(nullptr));
    uint32_t moreFollows = 0;
    item->parseElement(stream, errors, moreFollows, location);
    return;
  } else if (!composite && fieldDefn->getBaseType() == FieldDefn::kQuotedText) {
    list.readToken(stream, token, 0, true, useGeneric, nullptr);
  } else {
    stream.readToken(trie, token, 0, !composite);
  }
  // An empty token makes an item too, which stays empty.
  auto* item = static_cast<InternalElement*>(appendElement(nullptr));
  const std::u16string_view text = token.characters();
  if (text.empty()) return;
  if (item->getNodeType() == qxPrimitive) {
    SegmentImplBase* owner = getOwner();
    static_cast<FieldImplBase*>(item)->readValue(text, token.useView && owner && owner->isInSourceText(text));
    return;
  }
  StringParserStream itemStream(text.data(), static_cast<int32_t>(text.size()));
  uint32_t moreFollows = 0;
  item->parseElement(itemStream, errors, moreFollows, location);
}

bool RepeatFieldImpl::parseElement(ParserStream& stream, RecordedErrors& errors, uint32_t& moreFollows,
                                   ValidationLocation& location) {
  moreFollows = 0;
  SeparatorList& list = *getSeparatorList();
  const bool fieldSeparatorActive = list.isSeparatorActive(fieldSeparator);
  list.pushSeparator(qxSepRepeat);
  const MessageSetDefn* set = getMessageSetDefn();
  const bool useGeneric = !fieldDefn->isComposite() && set && set->getGenericParsing();
  if (list.isSeparatorActive(qxSepRepeat)) {
    const std::u16string separator(list.getSeparatorValue(qxSepRepeat));
    for (int32_t n = 1;; ++n) {
      location.fieldRepetition = n;
      readItem(stream, errors, location, fieldSeparatorActive, useGeneric);
      location.fieldRepetition = -1;
      const bool consumed = list.getCrlfEquivalent() == qxSepRepeat
                                ? stream.consumeLonger(separator, kCarriageReturnLineFeed)
                                : stream.consume(separator);
      if (!consumed || list.atOuterSeparator(stream, 1)) break;
    }
  } else {
    // Repeats side by side in fixed width: at most MaxRepeats of them, and never past the end.
    const int32_t maximum = fieldDefn->getMaxRepeats();
    for (int32_t n = 1; (maximum <= 0 || n <= maximum) && !stream.atEnd(); ++n) {
      location.fieldRepetition = n;
      readItem(stream, errors, location, fieldSeparatorActive, useGeneric);
      location.fieldRepetition = -1;
      if (list.atOuterSeparator(stream, 1)) break;
    }
  }
  list.popSeparator();
  onFieldValueChanged(-1, -1, false);
  return !isEmpty();
}

std::u16string_view RepeatFieldImpl::setEncodedValue(std::u16string_view text) {
  setChanged(true);
  setEmpty();
  return readOwnText(text, fieldSeparator);
}

// ----- writing

std::u16string RepeatFieldImpl::getEncodedValue() { return PositionedWrite::field(*this, items.size() == 1, false); }

std::u16string RepeatFieldImpl::getEncodedValueNoTouch() {
  return PositionedWrite::field(*this, items.size() == 1, true);
}

bool RepeatFieldImpl::writeField(bool mayOmitFill, SeparatorList& list, bool minimize, int32_t& counter) {
  if (isNull() && list.isInUse(qxSepNull)) {
    list.writeData(list.getSeparatorValue(qxSepNull));
    return true;
  }
  const int32_t maximum = fieldDefn->getMaxRepeats();
  if (!list.isInUse(qxSepRepeat)) {
    // Side by side: MaxRepeats places, those without an item filled, none beyond.
    const size_t shown = maximum > 0 ? std::min(items.size(), static_cast<size_t>(maximum)) : items.size();
    for (size_t i = 0; i < shown; ++i) items[i]->writeField(false, list, minimize, counter);
    if (maximum > 0 && !minimize) {
      for (size_t i = shown; i < static_cast<size_t>(maximum); ++i) {
        std::unique_ptr<FieldBase> temporary = makeItem(static_cast<int32_t>(items.size()));
        temporary->writeField(false, list, false, counter);
      }
    }
    return true;
  }
  if (isEmpty() && !minimize &&
      (isRequired() || FactorySettings::hasFlag(getMessageSetDefn(), qxOutputDefaultValuesForOptionalFields))) {
    const WideText& defaultText = getDefaultValue();
    list.writeData(defaultText.view());
    return !defaultText.empty();
  }
  list.writeSeparator(SeparatorList::kWriteInitiator, qxSepRepeat);
  const bool flag = items.size() == 1 && mayOmitFill;
  for (size_t i = 0; i < items.size(); ++i) {
    if (i > 0) {
      list.writeSeparator(SeparatorList::kWriteInitiator | SeparatorList::kWriteSeparator |
                              SeparatorList::kWriteTerminator,
                          qxSepRepeat);
    }
    items[i]->writeField(flag, list, minimize, counter);
  }
  list.writeSeparator(SeparatorList::kWriteTerminator, qxSepRepeat);
  return true;
}

}  // namespace vantrelia
