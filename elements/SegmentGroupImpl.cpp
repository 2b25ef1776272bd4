#include "elements/SegmentGroupImpl.h"

#include <algorithm>

#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/SegmentGroupDefn.h"
#include "elements/ElementMessages.h"
#include "elements/ElementUserData.h"
#include "elements/PositionedWrite.h"
#include "foundation/Format.h"
#include "foundation/IllegalOperation.h"
#include "parsing/SeparatorList.h"
#include "validation/RecordedErrors.h"

namespace vantrelia {

SegmentGroupImpl::SegmentGroupImpl(const MessageDefn& messageDefn, const MessageItemDefn& itemDefn,
                                   InternalElement* parent, int32_t index, SeparatorList* separators)
    : ItemListNode(messageDefn, itemDefn.getGroup()->getItems(), itemDefn.getGroup()->getVisibleChildren(), parent,
                   index),
      itemDefn(&itemDefn),
      separators(separators) {}

SegmentGroupImpl::~SegmentGroupImpl() = default;

const char* SegmentGroupImpl::getName() const { return itemDefn->getName().c_str(); }

bool SegmentGroupImpl::isHidden() const { return itemDefn->isHidden(); }

bool SegmentGroupImpl::isUnordered() const { return itemDefn->getGroup()->isUnorderedGroup(); }

const MessageSetDefn* SegmentGroupImpl::getMessageSetDefn() { return &messageDefn->getSet(); }

int SegmentGroupImpl::getElementIndex() { return visibleIndexOf(*this); }

MetaDataRecord* SegmentGroupImpl::getMetaData() { return nullptr; }

bool SegmentGroupImpl::getUserData(const std::u16string& key, std::u16string& value) {
  return ElementUserData::find(itemDefn->getUserData(), &messageDefn->getSet(), key, value);
}

void SegmentGroupImpl::childCreated(InternalElement* child) {
  if (isUnordered()) appearanceOrder.push_back(child);
}

void SegmentGroupImpl::childRemoved(InternalElement* child) { std::erase(appearanceOrder, child); }

void SegmentGroupImpl::setEmpty() {
  ItemListNode::setEmpty();
  appearanceOrder.clear();
}

// ----- copies

std::unique_ptr<SegmentGroupImpl> SegmentGroupImpl::copyWithParent(InternalElement* newParent,
                                                                   SeparatorList* list) const {
  auto copy = std::make_unique<SegmentGroupImpl>(*messageDefn, *itemDefn, newParent, index, list);
  cloneChildrenInto(*copy);
  // The order of appearance maps to the copies by slot.
  for (InternalElement* child : appearanceOrder) {
    for (size_t slot = 0; slot < children.size(); ++slot) {
      if (children[slot].get() == child) copy->appearanceOrder.push_back(copy->children[slot].get());
    }
  }
  return copy;
}

std::unique_ptr<MessageElement> SegmentGroupImpl::clone() { return copyWithParent(parent, separators); }

std::unique_ptr<InternalElement> SegmentGroupImpl::cloneWithParent(InternalElement* newParent) {
  return copyWithParent(newParent, newParent ? newParent->getSeparatorList() : separators);
}

// ----- paths

void SegmentGroupImpl::appendPath(std::string& text) {
  if (!pathCache) {
    std::string path;
    if (parent) parent->appendPath(path);
    if (!isHidden()) {
      if (parent && parent->getNodeType() == qxRepeating) {
        path += formatMessage("[%d]", index);
      } else {
        if (!path.empty()) path += '/';
        path += getName();
      }
    }
    pathCache = std::make_unique<std::string>(std::move(path));
  }
  text += *pathCache;
}

std::string_view SegmentGroupImpl::restAfterMatch(int, std::string_view rest) {
  if (!isUnordered() || rest.substr(0, 2) != "[*") return rest;
  const size_t close = rest.find(']');
  if (close == std::string_view::npos) return rest;
  return close + 2 <= rest.size() ? rest.substr(close + 2) : std::string_view();
}

const char* SegmentGroupImpl::childNotFoundText() const { return messages::kChildNotFoundInGroup; }

const char* SegmentGroupImpl::definitionName() const { return itemDefn->getGroup()->getName().c_str(); }

// ----- text

std::u16string_view SegmentGroupImpl::setEncodedValue(std::u16string_view text) {
  setChanged(true);
  setEmpty();
  if (text.empty()) return text;
  const MessageItemDefn& first = getItem(0);
  const SegmentDefn* start = first.getMessageItemType() == MessageItemDefn::kSegmentItem ? first.getSegment() : nullptr;
  separators->settleHeadersBefore(&messageDefn->getSet(), start, -1);
  // What the parse finds is dropped: a host that sets a group's text gets no findings for it.
  RecordedErrors errors;
  return parseEncodedValue(text, errors);
}

std::u16string_view SegmentGroupImpl::parseEncodedValue(std::u16string_view text, RecordedErrors& errors) {
  setEmpty();
  std::u16string_view current = text;
  for (int i = 0; i < getItemCount(); ++i) {
    InternalElement* child = getChildCreating(i);
    const std::u16string_view rest = child->parseEncodedValue(current, errors);
    if (rest.size() == current.size()) {
      // Nothing was taken: the child goes again, and a required one ends the group here.
      childRemoved(child);
      children[static_cast<size_t>(i)].reset();
      if (getItem(i).isRequired()) return current;
      continue;
    }
    current = rest;
    if (itemDefn->getGroup()->isChoiceGroup()) return current;
  }
  return current;
}

std::u16string SegmentGroupImpl::getEncodedValue() {
  return PositionedWrite::element(*this, &messageDefn->getSet(), nullptr, false);
}

std::u16string SegmentGroupImpl::getEncodedValueNoTouch() {
  return PositionedWrite::element(*this, &messageDefn->getSet(), nullptr, true);
}

bool SegmentGroupImpl::writeElement(SeparatorList& list, bool minimize, int32_t& counter) {
  if (!itemDefn->isRequired() && isEmpty()) return false;
  if (itemDefn->getGroup()->isChoiceGroup()) {
    // A choice writes only the first child that has anything, and has no group positions.
    for (const auto& child : children) {
      if (child && !child->isEmpty() && !child->isPlaceholderSegment()) return child->writeElement(list, minimize, counter);
    }
    return false;
  }
  list.writeSeparator(SeparatorList::kWriteInitiator, qxSepGroup);
  bool written = false;
  // A required item that isn't there is written as the definition makes it, then taken away again.
  const auto writeAbsent = [&](int i) {
    if (!getItem(i).isRequired() || minimize || isPreservingParsedText()) return;
    const bool wasAbsent = children[static_cast<size_t>(i)] == nullptr;
    written |= getChildCreating(i)->writeElement(list, false, counter);
    if (wasAbsent) {
      childRemoved(children[static_cast<size_t>(i)].get());
      children[static_cast<size_t>(i)].reset();
    }
  };
  if (!isUnordered()) {
    for (int i = 0; i < getItemCount(); ++i) {
      InternalElement* child = children[static_cast<size_t>(i)].get();
      if (child && !child->isPlaceholderSegment()) {
        written |= child->writeElement(list, minimize, counter);
      } else {
        writeAbsent(i);
      }
    }
  } else {
    // The order of the wire text first, then the required items that never came.
    const std::vector<InternalElement*> order = appearanceOrder;
    for (InternalElement* child : order) {
      if (!child->isPlaceholderSegment()) written |= child->writeElement(list, minimize, counter);
    }
    for (int i = 0; i < getItemCount(); ++i) {
      InternalElement* child = children[static_cast<size_t>(i)].get();
      if (!child || child->isPlaceholderSegment()) writeAbsent(i);
    }
  }
  list.writeSeparator(SeparatorList::kWriteTerminator | SeparatorList::kWriteSeparator, qxSepGroup);
  return written;
}

// ----- parsing, counting and validation come with their walks

bool SegmentGroupImpl::parseElement(ParserStream&, RecordedErrors&, uint32_t&, ValidationLocation&) { return false; }

int SegmentGroupImpl::getCountForPath(std::string_view, int, bool) { return 0; }
int SegmentGroupImpl::countSegments(bool) { return 0; }
int SegmentGroupImpl::countGroups(bool) { return 1; }
int SegmentGroupImpl::countMessages(bool) { return 0; }

void SegmentGroupImpl::validateInto(SeparatorList&, ValidationErrorList&, bool, ValidationLocation&, bool) {}

void SegmentGroupImpl::validateTop(ValidationErrorList&, bool) {}

void SegmentGroupImpl::forgetParserPositions(RecordedErrors& errors) {
  errors.forget(this);
  for (const auto& child : children) {
    if (child) child->forgetParserPositions(errors);
  }
}

}  // namespace vantrelia
