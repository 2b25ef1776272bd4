#include "elements/CompositeImpl.h"

#include "definitions/CompositeDefn.h"
#include "definitions/FieldDefn.h"
#include "definitions/FieldInstancesControl.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/SegmentFieldInstancesControl.h"
#include "definitions/SeparatorDefn.h"
#include "elements/ElementMessages.h"
#include "elements/ElementPath.h"
#include "elements/FactorySettings.h"
#include "elements/ParseFindings.h"
#include "elements/FieldFactory.h"
#include "elements/FieldImplBase.h"
#include "elements/TypedFieldReader.h"
#include "elements/PositionedWrite.h"
#include "elements/SegmentImplBase.h"
#include "foundation/BadParameter.h"
#include "foundation/Format.h"
#include "foundation/IllegalOperation.h"
#include "foundation/TextCompare.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorList.h"
#include "parsing/SeparatorTrieNode.h"
#include "parsing/StringParserStream.h"
#include "validation/RecordedErrors.h"
#include "validation/ValidationError.h"
#include "validation/ValidationErrorNumbers.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

CompositeImpl::CompositeImpl(const FieldDefn& fieldDefn, InternalElement* parent, int32_t index,
                             ESeparatorType parentSeparator)
    : FieldBase(fieldDefn, parent, index),
      compositeDefn(fieldDefn.getComposite()),
      parentSeparator(parentSeparator),
      childSeparator(CompositeDefn::childSeparatorOf(compositeDefn, parentSeparator)) {}

CompositeImpl::~CompositeImpl() { prefetchEach(children); }

int CompositeImpl::getFieldCount() { return compositeDefn ? compositeDefn->getFieldCount() : 0; }

const std::vector<std::unique_ptr<FieldDefn>>& CompositeImpl::getFieldDefns() {
  static const std::vector<std::unique_ptr<FieldDefn>> none;
  return compositeDefn ? compositeDefn->getFields() : none;
}

std::span<const std::unique_ptr<InternalElement>> CompositeImpl::getChildArray() {
  children.resize(static_cast<size_t>(getFieldCount()));
  return children;
}

FieldBase* CompositeImpl::childAt(int index) const {
  return index >= 0 && static_cast<size_t>(index) < children.size()
             ? static_cast<FieldBase*>(children[static_cast<size_t>(index)].get())
             : nullptr;
}

bool CompositeImpl::isChildPresent(int index) { return childAt(index) != nullptr; }

std::unique_ptr<FieldBase> CompositeImpl::makeChild(int index) {
  const FieldDefn& defn = compositeDefn->getField(index);
  std::unique_ptr<VariableFieldType> type;
  if (defn.getDataType() == FieldDefn::kVariable) type = FieldFactory::typeFromKey(*this, defn);
  // A component doesn't repeat, whatever its definition says.
  return FieldFactory::makeValue(defn, this, index, childSeparator, std::move(type));
}

void CompositeImpl::typeChanged() {
  // A variable field made as a composite takes the composite its key chose, and no children yet.
  const VariableFieldType* type = getVariableType();
  compositeDefn = fieldDefn->isComposite() ? fieldDefn->getComposite() : (type ? type->getComposite() : nullptr);
  childSeparator = CompositeDefn::childSeparatorOf(compositeDefn, parentSeparator);
  children.clear();
}

InternalElement* CompositeImpl::getChildCreating(int index) {
  if (FieldBase* existing = childAt(index)) {
    if (existing->getFieldDefn().getDataType() != FieldDefn::kVariable || !FieldFactory::isStale(*this, *existing)) {
      return existing;
    }
  }
  if (children.size() <= static_cast<size_t>(index)) children.resize(static_cast<size_t>(getFieldCount()));
  children[static_cast<size_t>(index)] = makeChild(index);
  setTreeChanged(true);
  return children[static_cast<size_t>(index)].get();
}

// ----- paths

MessageElement* CompositeImpl::getElementAt(int index) {
  // An index outside the fields names the composite itself.
  if (index < 0 || index >= getFieldCount()) return this;
  return getChildCreating(index);
}

MessageElement* CompositeImpl::getElementAt(const char* pathText) {
  const std::string_view path = ElementPath::of(pathText);
  const auto [head, rest] = ElementPath::split(path, false);
  if (parent && ElementPath::isParent(head)) return rest.empty() ? parent : parent->getElementAt(rest.data());
  for (int i = 0; i < getFieldCount(); ++i) {
    if (!equalIgnoringCase(head, compositeDefn->getField(i).getName().view())) continue;
    InternalElement* child = getChildCreating(i);
    return rest.empty() ? static_cast<MessageElement*>(child) : child->getElementAt(rest.data());
  }
  throw BadParameter(formatMessage(messages::kChildNotFoundInComposite, std::string(head).c_str(),
                                   compositeDefn ? compositeDefn->getName().c_str() : ""));
}

ElementCollection CompositeImpl::getElementCollection(const char* specText) {
  const std::string_view spec = ElementPath::of(specText);
  // Named, not a structured binding: the lambda below captures the rest.
  const ElementPath::Step step = ElementPath::split(spec, false);
  const std::string_view head = step.head;
  const std::string_view rest = step.rest;
  ElementCollection result;
  const auto take = [&](int i) {
    FieldBase* child = childAt(i);
    if (!child) return;
    if (rest.empty()) {
      result.add(child);
    } else if (!child->isEmpty() || childRequired(i)) {
      result.addAll(child->getElementCollection(rest.data()));
    }
  };
  if (ElementPath::isWildcard(head)) {
    for (int i = 0; i < getFieldCount(); ++i) take(i);
    return result;
  }
  for (int i = 0; i < getFieldCount(); ++i) {
    if (!equalIgnoringCase(head, compositeDefn->getField(i).getName().view())) continue;
    take(i);
    return result;
  }
  throw BadParameter(formatMessage(messages::kChildNotFoundInComposite, std::string(head).c_str(),
                                   compositeDefn ? compositeDefn->getName().c_str() : ""));
}

void CompositeImpl::appendNumericPath(std::string& text) {
  if (!numericPathCache) {
    std::string path;
    FieldBase::appendNumericPath(path);
    if (!getOwner() || !getOwner()->getItemDefn()) {
      text += path;
      return;
    }
    numericPathCache = std::make_unique<std::string>(std::move(path));
  }
  text += *numericPathCache;
}

// ----- state

void CompositeImpl::setEmpty() {
  children.clear();
  setChanged(true);
  onFieldValueChanged(-1, -1, false);
}

bool CompositeImpl::isEmpty() {
  for (const auto& child : children) {
    if (child && !child->isEmpty()) return false;
  }
  return true;
}

bool CompositeImpl::isNull() {
  FieldBase* first = childAt(0);
  if (!first || !first->isNull()) return false;
  for (size_t i = 1; i < children.size(); ++i) {
    if (children[i] && !children[i]->isEmpty()) return false;
  }
  return true;
}

void CompositeImpl::setNull() {
  setEmpty();
  if (getFieldCount() > 0) getChildCreating(0)->setNull();
  setChanged(true);
  onFieldValueChanged(-1, -1, false);
}

// A composite of one field stands for that field in values.
void CompositeImpl::setValue(std::u16string_view text) {
  if (getFieldCount() == 1) {
    getChildCreating(0)->setValue(text);
  } else {
    setEncodedValue(text);
  }
  onFieldValueChanged(-1, -1, false);
}

std::u16string CompositeImpl::getValue() {
  return getFieldCount() == 1 ? getChildCreating(0)->getValue() : getEncodedValue();
}

void CompositeImpl::setValue(const unsigned char* bytes, int length) {
  if (getFieldCount() != 1) throw IllegalOperation(messages::kBinaryValueOfComposite);
  getChildCreating(0)->setValue(bytes, length);
}

const FieldInstancesControl* CompositeImpl::childOverrides() {
  // A composite that a variable field's key chose has no place in the item's overrides.
  return fieldDefn->isComposite() ? overrideControl() : nullptr;
}

bool CompositeImpl::childRequired(int index) {
  if (FieldBase* child = childAt(index)) return child->isRequired();
  if (const FieldInstancesControl* control = childOverrides()) return control->isRequired(getLocationValues(), index);
  return compositeDefn->getField(index).isRequired();
}

bool CompositeImpl::childHasDefault(int index) {
  if (FieldBase* child = childAt(index)) return child->hasDefaultValue();
  if (const FieldInstancesControl* control = childOverrides()) {
    return !control->getDefaultValue(getLocationValues(), index).empty();
  }
  return !compositeDefn->getField(index).getDefaultValue().empty();
}

void CompositeImpl::onFieldValueChanged(int fieldIndex, int, bool) {
  // The composite as a key tells its owner.
  if (fieldIndex == -1) {
    if (fieldDefn->isVariableTypeField() && parent) parent->onFieldValueChanged(index, -1, false);
    return;
  }
  FieldBase* child = childAt(fieldIndex);
  if (!child || !child->getFieldDefn().isVariableTypeField()) return;
  const auto* keys = compositeDefn ? compositeDefn->getVariableKeys() : nullptr;
  if (!keys || !keys->contains(fieldIndex)) {
    // A key that rules nothing here rules something outside.
    if (parent) parent->onFieldValueChanged(index, -1, false);
    return;
  }
  const int32_t ruled = keys->at(fieldIndex);
  if (static_cast<size_t>(ruled) < children.size()) FieldFactory::retype(*this, children[static_cast<size_t>(ruled)], ruled);
}

// ----- copies

std::unique_ptr<InternalElement> CompositeImpl::cloneWithParent(InternalElement* newParent) {
  auto copy = std::make_unique<CompositeImpl>(*fieldDefn, newParent, index, parentSeparator);
  copyVariableTypeInto(*copy);
  copy->children.resize(children.size());
  for (size_t i = 0; i < children.size(); ++i) {
    if (children[i]) copy->children[i] = children[i]->cloneWithParent(copy.get());
  }
  return copy;
}

std::unique_ptr<MessageElement> CompositeImpl::clone() { return cloneWithParent(parent); }

// ----- counting and validation

int CompositeImpl::getCountForPath(std::string_view, int, bool) {
  throw IllegalOperation(messages::kCannotCountComposites);
}
int CompositeImpl::countSegments(bool) { throw IllegalOperation(messages::kCannotCountComposites); }
int CompositeImpl::countGroups(bool) { throw IllegalOperation(messages::kCannotCountComposites); }
int CompositeImpl::countMessages(bool) { throw IllegalOperation(messages::kCannotCountComposites); }

void CompositeImpl::validateInto(SeparatorList&, ValidationErrorList&, bool, ValidationLocation&, bool) {}

void CompositeImpl::forgetParserPositions(RecordedErrors& errors) {
  errors.forget(this);
  for (const auto& child : children) {
    if (child) child->forgetParserPositions(errors);
  }
}

// ----- reading

void CompositeImpl::readChildToken(int i, ParserStream& stream, ParserToken& token, bool separatorInUse,
                                   bool useGeneric, RecordedErrors& errors, ValidationLocation& location,
                                   bool& readDirectly) {
  SeparatorList& list = *getSeparatorList();
  const FieldDefn& defn = compositeDefn->getField(i);
  if (list.isTrieDirty()) list.buildTrie();
  SeparatorTrieNode& plain = list.getTrie();
  SeparatorTrieNode& trie = useGeneric && list.getGenericTrie() ? *list.getGenericTrie() : plain;
  readDirectly = false;
  if (defn.getFlags() & FieldDefn::kNotPlain) {
    auto* child = static_cast<FieldBase*>(getChildCreating(i));
    readDirectly = TypedFieldReader::read(*child, stream, token, list, separatorInUse, defn.getMaxLength(), useGeneric,
                                          errors, location);
    return;
  }
  if (defn.isComposite()) {
    const CompositeDefn* inner = defn.getComposite();
    const bool readsItself = inner && (inner->getFlags() & CompositeDefn::kHoldsQuotedText);
    if ((!separatorInUse && defn.getMaxLength() == 0) || (separatorInUse && readsItself)) {
      uint32_t moreFollows = 0;
      getChildCreating(i)->parseElement(stream, errors, moreFollows, location);
      readDirectly = true;
    } else {
      stream.readToken(plain, token, separatorInUse ? 0 : defn.getMaxLength(), false);
    }
    return;
  }
  const int32_t base = defn.getBaseType();
  if (base == FieldDefn::kRawBinary) {
    const int32_t length = FieldImplBase::lengthFromSibling(*this, compositeDefn->getFields(), i);
    if (length > 0) stream.readChars(length, token);
  } else if (!separatorInUse) {
    stream.readToken(plain, token, defn.getMaxLength(), true);
  } else if (base == FieldDefn::kQuotedText) {
    list.readToken(stream, token, 0, true, useGeneric, nullptr);
  } else {
    stream.readToken(trie, token, 0, true);
  }
}

bool CompositeImpl::parseElement(ParserStream& stream, RecordedErrors& errors, uint32_t& moreFollows,
                                 ValidationLocation& location) {
  moreFollows = 0;
  SeparatorList& list = *getSeparatorList();
  if (!compositeDefn) return true;
  list.pushSeparator(childSeparator, compositeDefn->getSpecialSeparatorString().view(), compositeDefn->isFixedWidth());
  const bool separatorInUse = list.isSeparatorActive(SeparatorList::kCurrent);
  const MessageSetDefn* set = getMessageSetDefn();
  const bool useGeneric = set && set->getGenericParsing();
  std::u16string indicator;
  const bool hasIndicator = compositeDefn->getCompositeType() == qxCompTypeFieldPresenceIndicator;
  if (hasIndicator) {
    const auto type = static_cast<ESeparatorType>(compositeDefn->getSpecialSeparatorType());
    list.pushSeparator(type, compositeDefn->getIndicatorSeparatorString().view(), compositeDefn->isFixedWidth());
    indicator = type == qxSepString ? compositeDefn->getIndicatorSeparatorString().str()
                                    : std::u16string(list.getSeparatorValue(type));
  }
  const uint32_t separatorFlags =
      list.getSlot(childSeparator).defn ? list.getSlot(childSeparator).defn->getFlags() : 0;
  bool trailingEmpty = true;
  for (int i = 0; i < getFieldCount() && !stream.atEnd(); ++i) {
    location.enterComponent(i + 1);
    const FieldDefn& defn = compositeDefn->getField(i);
    if (hasIndicator && defn.hasFieldPresenceIndicator()) {
      if (!stream.consume(indicator)) {
        location.leaveComponent();
        continue;
      }
      trailingEmpty = true;
    }
    ParserToken token;
    token.useView = true;
    bool readDirectly = false;
    readChildToken(i, stream, token, separatorInUse, useGeneric, errors, location, readDirectly);
    bool childFilled = false;
    if (readDirectly) {
      childFilled = childAt(i) && !childAt(i)->isEmpty();
    } else if (!token.characters().empty()) {
      TypedFieldReader::give(*static_cast<FieldBase*>(getChildCreating(i)), token, errors, location);
      childFilled = true;
    }
    if (separatorInUse) {
      ParserToken extra;
      extra.useView = true;
      if (list.isTrieDirty()) list.buildTrie();
      stream.readToken(list.getTrie(), extra, 0, false);
      if (useGeneric && !extra.characters().empty()) {
        ParseFindings::record(errors, getChildCreating(i), list, location, verr::kExtraDataAfterField,
                              extra.characters());
      }
      if (childFilled) trailingEmpty = true;
      const bool crlf = list.getCrlfEquivalent() == childSeparator && stream.startsWith(SeparatorList::kCarriageReturnLineFeed);
      if (extra.separator == childSeparator || crlf) {
        const std::u16string separator(list.getSeparatorValue(childSeparator));
        const bool consumed = crlf || list.getCrlfEquivalent() == childSeparator
                                  ? stream.consumeLonger(separator, SeparatorList::kCarriageReturnLineFeed)
                                  : stream.consume(separator);
        if (consumed) {
          trailingEmpty = true;
          // A separator between children promises another child.
          if (separatorFlags & (SeparatorDefn::kInitiator | SeparatorDefn::kSeparator)) trailingEmpty = false;
        }
      }
    } else if (childFilled) {
      trailingEmpty = true;
    }
    const bool atEnd = list.atOuterSeparator(stream, hasIndicator ? 2 : 1);
    location.leaveComponent();
    if (atEnd) break;
  }
  if (!trailingEmpty) ParseFindings::record(errors, this, list, location, verr::kUnnecessaryCompositeSeparators);
  if (hasIndicator) list.popSeparator();
  list.popSeparator();
  // A first child that read the null text, with nothing beside it, makes the composite null by
  // itself: isNull looks at exactly that.
  const bool parentLevelInUse = [&] {
    for (const ESeparatorType level : list.getLevels()) {
      if (level == parentSeparator) return list.isSeparatorActive(parentSeparator);
    }
    return false;
  }();
  if ((getMaxLength() != 0 || parentLevelInUse) && !(compositeDefn->getFlags() & CompositeDefn::kHoldsQuotedText)) {
    ParserToken rest;
    rest.useView = true;
    stream.readRest(rest);
    if (!useGeneric && !rest.characters().empty()) {
      ParseFindings::record(errors, this, list, location, verr::kExtraDataAfterComposite, rest.characters());
    }
  }
  onFieldValueChanged(-1, -1, false);
  return true;
}

std::u16string_view CompositeImpl::setEncodedValue(std::u16string_view text) {
  setChanged(true);
  setEmpty();
  return readOwnText(text, parentSeparator);
}

// ----- writing

std::u16string CompositeImpl::getEncodedValue() { return PositionedWrite::field(*this, true, false); }

std::u16string CompositeImpl::getEncodedValueNoTouch() {
  if (getFieldCount() == 1) return getChildCreating(0)->getEncodedValueNoTouch();
  return PositionedWrite::field(*this, true, true);
}

bool CompositeImpl::writeField(bool mayOmitFill, SeparatorList& list, bool minimize, int32_t& counter) {
  if (!compositeDefn) return false;
  FieldBase* first = childAt(0);
  if (first && first->isNull() && isNull() && list.isInUse(qxSepNull)) {
    list.writeData(list.getSeparatorValue(qxSepNull));
    return true;
  }
  bool fixed = compositeDefn->isFixedWidth();
  if ((!list.isSeparatorActive(SeparatorList::kCurrent) && !mayOmitFill) || list.isLevelFixedWidth()) fixed = true;
  const bool outputDefaults = FactorySettings::hasFlag(getMessageSetDefn(), qxOutputDefaultValuesForOptionalFields);
  if (!outputDefaults && !isRequired() && isEmpty() && !fixed) return false;

  const int count = getFieldCount();
  int lastChild = -1;
  if (fixed) {
    lastChild = count - 1;
  } else {
    int firstRequired = -1;
    for (int i = count - 1; i >= 0; --i) {
      FieldBase* child = childAt(i);
      if ((child && !child->isEmpty()) || (outputDefaults && childHasDefault(i))) {
        lastChild = i;
        break;
      }
      if (firstRequired == -1 && childRequired(i)) firstRequired = i;
    }
    if (lastChild == -1) lastChild = firstRequired;
  }
  if (lastChild == -1 && minimize) return false;
  if (lastChild == -1) return false;

  list.pushSeparator(childSeparator, compositeDefn->getSpecialSeparatorString().view(), compositeDefn->isFixedWidth());
  const bool fixedHere = !list.isSeparatorActive(SeparatorList::kCurrent) || list.isLevelFixedWidth();
  list.writeSeparator(SeparatorList::kWriteInitiator, SeparatorList::kCurrent);
  const bool lastOmit = !(compositeDefn->isFixedWidth() && !mayOmitFill);
  const bool hasIndicator = compositeDefn->getCompositeType() == qxCompTypeFieldPresenceIndicator;
  std::u16string indicator;
  if (hasIndicator) {
    const auto type = static_cast<ESeparatorType>(compositeDefn->getSpecialSeparatorType());
    indicator = type == qxSepString ? compositeDefn->getIndicatorSeparatorString().str()
                                    : std::u16string(list.getSeparatorValue(type));
  }
  constexpr int32_t kBetween =
      SeparatorList::kWriteInitiator | SeparatorList::kWriteSeparator | SeparatorList::kWriteTerminator;
  bool needSeparator = true;
  for (int i = 0; i <= lastChild; ++i) {
    if (needSeparator && i != 0) list.writeSeparator(kBetween, SeparatorList::kCurrent);
    const bool childOmit = i == lastChild && lastOmit;
    FieldBase* child = childAt(i);
    if (hasIndicator && compositeDefn->getField(i).hasFieldPresenceIndicator()) {
      needSeparator = true;
      if (!child || child->isEmpty()) {
        // An absent child shows its indicator only when a child with a value follows.
        bool valueFollows = false;
        for (int k = i + 1; k <= lastChild; ++k) {
          if (!compositeDefn->getField(k).hasFieldPresenceIndicator()) break;
          FieldBase* later = childAt(k);
          if (later && !later->isEmpty()) {
            valueFollows = true;
            break;
          }
        }
        if (valueFollows) {
          list.writeData(indicator);
        } else {
          needSeparator = false;
        }
        continue;
      }
      list.writeData(indicator);
    } else {
      needSeparator = true;
    }
    if (child) {
      child->writeField(childOmit, list, minimize, counter);
    } else if ((fixedHere || childRequired(i) || outputDefaults) && !minimize) {
      std::unique_ptr<FieldBase> temporary = makeChild(i);
      temporary->writeField(childOmit, list, false, counter);
    }
  }
  const MessageSetDefn* set = getMessageSetDefn();
  if (!(set && set->getTrimSegments())) {
    for (int i = lastChild + 1; i < count; ++i) list.writeSeparator(kBetween, SeparatorList::kCurrent);
  }
  list.writeSeparator(SeparatorList::kWriteTerminator, SeparatorList::kCurrent);
  list.popSeparator();
  return true;
}

}  // namespace vantrelia
