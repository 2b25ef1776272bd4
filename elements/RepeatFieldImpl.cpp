#include "elements/RepeatFieldImpl.h"

#include "definitions/CompositeDefn.h"
#include "definitions/FieldDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/VariableFieldDefn.h"
#include "elements/CompositeImpl.h"
#include "elements/FactorySettings.h"
#include "elements/FieldFactory.h"
#include "elements/FieldImpl.h"
#include "elements/SegmentImplBase.h"
#include "elements/TypedFieldReader.h"
#include "foundation/CheckIndex.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorList.h"
#include "parsing/SeparatorTrieNode.h"
#include "parsing/StringParserStream.h"
#include "validation/RecordedErrors.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

std::unique_ptr<RepeatingFieldBase> RepeatFieldImpl::makeEmptyCopy(InternalElement* newParent) const {
  return std::make_unique<RepeatFieldImpl>(*fieldDefn, newParent, index, fieldSeparator);
}

std::unique_ptr<VariableFieldType> RepeatFieldImpl::repeatType(int32_t repeat) {
  const VariableFieldDefn* variable = fieldDefn->getVariableDefn();
  const int32_t key = variable ? variable->getKeyFieldIndex() : -1;
  if (!parent || key < 0 || key >= parent->getElementCount()) return FieldFactory::typeFor(*fieldDefn, {});
  InternalElement* keyField = parent->getChildCreating(key);
  // A repeating key gives each repeat the text of its own repeat at the same place.
  if (keyField->getNodeType() == qxRepeating) {
    const bool present = repeat < keyField->getElementCount();
    return FieldFactory::typeFor(*fieldDefn, present ? keyField->getElementAt(repeat)->getValue() : std::u16string());
  }
  return FieldFactory::typeFor(*fieldDefn, keyField->getValue());
}

std::unique_ptr<FieldBase> RepeatFieldImpl::makeItem(int32_t itemIndex) {
  if (fieldDefn->getDataType() != FieldDefn::kVariable) {
    return FieldFactory::makeValue(*fieldDefn, this, itemIndex, fieldSeparator, nullptr);
  }
  std::unique_ptr<VariableFieldType> type;
  if (fieldDefn->getFlags() & FieldDefn::kRepeatsWithKey) {
    type = repeatType(itemIndex);
  } else if (const VariableFieldType* shared = getVariableType()) {
    type = std::make_unique<VariableFieldType>(*shared);
  }
  return FieldFactory::makeValue(*fieldDefn, this, itemIndex, fieldSeparator, std::move(type));
}

void RepeatFieldImpl::retypeRepeat(int repeat) {
  if (repeat < 0 || static_cast<size_t>(repeat) >= items.size()) return;
  auto& slot = items[static_cast<size_t>(repeat)];
  const std::u16string text = slot->getValue();
  slot.reset();
  slot = makeItem(repeat);
  if (!text.empty()) slot->setValue(std::u16string_view(text));
}

void RepeatFieldImpl::removeElementAt(int at) {
  checkIndex(at, getElementCount());
  eraseItem(at);
  onFieldValueChanged(at, 1, false);
  // Each repeat behind the gap now stands beside another repeat of its key.
  if (fieldDefn->getFlags() & FieldDefn::kRepeatsWithKey) {
    for (int i = at; i < getElementCount(); ++i) retypeRepeat(i);
  }
  setChanged(true);
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

// ----- reading

void RepeatFieldImpl::readItem(ParserStream& stream, RecordedErrors& errors, ValidationLocation& location,
                               bool fieldSeparatorActive, bool useGeneric) {
  SeparatorList& list = *getSeparatorList();
  ParserToken token;
  token.useView = true;
  auto* item = static_cast<FieldBase*>(appendElement(nullptr));
  if (fieldDefn->getFlags() & FieldDefn::kNotPlain) {
    // Custom, array and variable items cut their text by their class.
    if (TypedFieldReader::read(*item, stream, token, list, fieldSeparatorActive, getMaxLength(), useGeneric, errors,
                               location)) {
      return;
    }
  } else {
    if (list.isTrieDirty()) list.buildTrie();
    SeparatorTrieNode& trie = useGeneric && list.getGenericTrie() ? *list.getGenericTrie() : list.getTrie();
    const bool composite = fieldDefn->isComposite();
    if (!fieldSeparatorActive) {
      stream.readToken(trie, token, getMaxLength(), !composite);
    } else if (composite && fieldDefn->getComposite() &&
               (fieldDefn->getComposite()->getFlags() & CompositeDefn::kHoldsQuotedText)) {
      uint32_t moreFollows = 0;
      item->parseElement(stream, errors, moreFollows, location);
      return;
    } else if (!composite && fieldDefn->getBaseType() == FieldDefn::kQuotedText) {
      list.readToken(stream, token, 0, true, useGeneric, nullptr);
    } else {
      stream.readToken(trie, token, 0, !composite);
    }
  }
  // An empty token makes an item too, which stays empty.
  TypedFieldReader::give(*item, token, errors, location);
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
      const char16_t* const before = stream.getCursor();
      readItem(stream, errors, location, fieldSeparatorActive, useGeneric);
      location.fieldRepetition = -1;
      const bool consumed = list.getCrlfEquivalent() == qxSepRepeat
                                ? stream.consumeLonger(separator, SeparatorList::kCarriageReturnLineFeed)
                                : stream.consume(separator);
      if (!consumed || list.atOuterSeparator(stream, 1)) break;
      // A separator a header declared empty is "found" everywhere: the repeats end where nothing
      // was taken, instead of growing for ever at one place.
      if (before && stream.getCursor() == before) break;
    }
  } else {
    // Repeats side by side in fixed width: at most MaxRepeats of them, and never past the end.
    const int32_t maximum = fieldDefn->getMaxRepeats();
    for (int32_t n = 1; (maximum <= 0 || n <= maximum) && !stream.atEnd(); ++n) {
      location.fieldRepetition = n;
      const char16_t* const before = stream.getCursor();
      readItem(stream, errors, location, fieldSeparatorActive, useGeneric);
      location.fieldRepetition = -1;
      if (list.atOuterSeparator(stream, 1)) break;
      // An item that took nothing (the text stands at a separator of some other level) ends the
      // repeats: without a maximum, the same place would make items for ever.
      if (before && stream.getCursor() == before) break;
    }
  }
  list.popSeparator();
  onFieldValueChanged(-1, -1, false);
  return !isEmpty();
}

// ----- writing

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
    const WideText& text = defaultText();
    list.writeData(text.view());
    return !text.empty();
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
