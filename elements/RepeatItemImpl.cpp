#include "elements/RepeatItemImpl.h"

#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/SegmentDefn.h"
#include "elements/ElementMessages.h"
#include "elements/ElementPath.h"
#include "elements/ElementUserData.h"
#include "elements/ItemListNode.h"
#include "elements/PositionedWrite.h"
#include "elements/SegmentFactory.h"
#include "elements/SegmentGroupImpl.h"
#include "elements/SegmentImplBase.h"
#include "foundation/CheckIndex.h"
#include "foundation/IllegalOperation.h"
#include "parsing/SeparatorList.h"
#include "validation/RecordedErrors.h"

namespace vantrelia {

RepeatItemImpl::RepeatItemImpl(const MessageDefn& messageDefn, const MessageItemDefn& itemDefn,
                               InternalElement* parent, int32_t index, SeparatorList* separators)
    : InternalElement(parent, index), messageDefn(&messageDefn), itemDefn(&itemDefn), separators(separators) {}

RepeatItemImpl::~RepeatItemImpl() { prefetchEach(items); }

const char* RepeatItemImpl::getName() const { return itemDefn->getName().c_str(); }

const MessageSetDefn* RepeatItemImpl::getMessageSetDefn() { return &messageDefn->getSet(); }

int RepeatItemImpl::getElementIndex() { return ItemListNode::visibleIndexOf(*this); }

MetaDataRecord* RepeatItemImpl::getMetaData() { return nullptr; }

bool RepeatItemImpl::getUserData(const std::u16string& key, std::u16string& value) {
  return ElementUserData::find(itemDefn->getUserData(), &messageDefn->getSet(), key, value);
}

std::unique_ptr<InternalElement> RepeatItemImpl::makeItem(int32_t itemIndex) {
  if (itemDefn->getMessageItemType() == MessageItemDefn::kSegmentItem) {
    return SegmentFactory::create(*itemDefn->getSegment(), itemDefn, this, itemIndex, separators);
  }
  return std::make_unique<SegmentGroupImpl>(*messageDefn, *itemDefn, this, itemIndex, separators);
}

// ----- the list

MessageElement* RepeatItemImpl::appendElement(const char*) {
  items.push_back(makeItem(static_cast<int32_t>(items.size())));
  setChanged(true);
  return items.back().get();
}

void RepeatItemImpl::removeElementAt(int at) {
  checkIndex(at, getElementCount());
  items.erase(items.begin() + at);
  for (size_t i = static_cast<size_t>(at); i < items.size(); ++i) items[i]->index = static_cast<int32_t>(i);
  setChanged(true);
}

void RepeatItemImpl::removeAllElements() {
  items.clear();
  items.shrink_to_fit();
  setChanged(true);
}

void RepeatItemImpl::setEmpty() {
  removeAllElements();
  setChanged(true);
}

bool RepeatItemImpl::isEmpty() {
  for (const auto& item : items) {
    if (!item->isEmpty()) return false;
  }
  return true;
}

bool RepeatItemImpl::isChildPresent(int at) { return at >= 0 && at < getElementCount(); }

bool RepeatItemImpl::attachSegment(SegmentElement* segment, int) {
  if (auto* defined = segment->asDefined()) {
    defined->setMessageDefn(messageDefn);
    defined->setItemDefn(itemDefn);
  }
  if (segment->getSeparatorList() != separators) segment->setSeparatorList(separators);
  segment->parent = this;
  segment->index = static_cast<int32_t>(items.size());
  items.emplace_back(segment);
  return true;
}

std::unique_ptr<SegmentElement> RepeatItemImpl::releaseSegment(SegmentElement* segment) {
  for (auto& item : items) {
    if (item.get() == segment) {
      item.release();
      return std::unique_ptr<SegmentElement>(segment);
    }
  }
  return nullptr;
}

MessageElement* RepeatItemImpl::getElementAt(int at) {
  checkIndex(at, getElementCount());
  return items[static_cast<size_t>(at)].get();
}

MessageElement* RepeatItemImpl::getElementAt(const char* path) {
  return ElementPath::walkIndexed(*this, path, ItemListNode::parentSeenFromBelow(*this));
}

ElementCollection RepeatItemImpl::getElementCollection(const char* spec) {
  return ElementPath::collectIndexed(*this, spec);
}

// ----- copies

std::unique_ptr<RepeatItemImpl> RepeatItemImpl::copyWithParent(InternalElement* newParent, SeparatorList* list) const {
  auto copy = std::make_unique<RepeatItemImpl>(*messageDefn, *itemDefn, newParent, index, list);
  copy->items.reserve(items.size());
  for (const auto& item : items) copy->items.push_back(item->cloneWithParent(copy.get()));
  return copy;
}

std::unique_ptr<MessageElement> RepeatItemImpl::clone() { return copyWithParent(parent, separators); }

std::unique_ptr<InternalElement> RepeatItemImpl::cloneWithParent(InternalElement* newParent) {
  return copyWithParent(newParent, newParent ? newParent->getSeparatorList() : separators);
}

// ----- paths and text

void RepeatItemImpl::appendPath(std::string& text) {
  if (parent) parent->appendPath(text);
  if (!text.empty()) text += '/';
  text += getName();
}

std::u16string_view RepeatItemImpl::setEncodedValue(std::u16string_view text) {
  setChanged(true);
  setEmpty();
  if (text.empty()) return text;
  const SegmentDefn* start =
      itemDefn->getMessageItemType() == MessageItemDefn::kSegmentItem ? itemDefn->getSegment() : nullptr;
  separators->settleHeadersBefore(&messageDefn->getSet(), start, -1);
  RecordedErrors errors;
  return parseEncodedValue(text, errors);
}

std::u16string_view RepeatItemImpl::parseEncodedValue(std::u16string_view text, RecordedErrors& errors) {
  setEmpty();
  std::u16string_view current = text;
  while (true) {
    items.push_back(makeItem(static_cast<int32_t>(items.size())));
    const std::u16string_view rest = items.back()->parseEncodedValue(current, errors);
    if (rest.size() == current.size()) break;
    current = rest;
  }
  // The last one took nothing.
  items.pop_back();
  return current;
}

std::u16string RepeatItemImpl::getEncodedValue() {
  return PositionedWrite::element(*this, &messageDefn->getSet(), nullptr, false);
}

std::u16string RepeatItemImpl::getEncodedValueNoTouch() {
  return PositionedWrite::element(*this, &messageDefn->getSet(), nullptr, true);
}

bool RepeatItemImpl::writeElement(SeparatorList& list, bool minimize, int32_t& counter) {
  // A required item with no repeats is written once as the definition makes it.
  const bool temporary = items.empty() && itemDefn->isRequired() && !minimize;
  if (temporary) items.push_back(makeItem(0));
  bool written = false;
  for (const auto& item : items) written |= item->writeElement(list, minimize, counter);
  if (temporary) items.clear();
  return written;
}

// ----- parsing, counting and validation come with their walks

bool RepeatItemImpl::canStartOnPath(std::vector<int32_t>::const_iterator position,
                                    std::vector<int32_t>::const_iterator end) {
  if (items.empty()) return itemDefn->isRequired();
  if (itemDefn->getMessageItemType() == MessageItemDefn::kGroupItem && position != end) {
    return items.back()->canStartOnPath(position, end);
  }
  return false;
}

bool RepeatItemImpl::parseElement(ParserStream&, RecordedErrors&, uint32_t&, ValidationLocation&) { return false; }

int RepeatItemImpl::getCountForPath(std::string_view, int, bool) { return 0; }
int RepeatItemImpl::countSegments(bool) { return 0; }
int RepeatItemImpl::countGroups(bool) { return 0; }
int RepeatItemImpl::countMessages(bool) { return 0; }

void RepeatItemImpl::validateInto(SeparatorList&, ValidationErrorList&, bool, ValidationLocation&, bool) {}

void RepeatItemImpl::validateTop(ValidationErrorList&, bool) {}

void RepeatItemImpl::forgetParserPositions(RecordedErrors& errors) {
  errors.forget(this);
  for (const auto& item : items) item->forgetParserPositions(errors);
}

}  // namespace vantrelia
