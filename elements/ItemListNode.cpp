#include "elements/ItemListNode.h"

#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/SegmentGroupDefn.h"
#include "definitions/VisibleChildTable.h"
#include "elements/ElementMessages.h"
#include "elements/ElementPath.h"
#include "elements/MessageSetImpl.h"
#include "elements/RepeatItemImpl.h"
#include "elements/SegmentFactory.h"
#include "elements/SegmentGroupImpl.h"
#include "elements/SegmentImplBase.h"
#include "foundation/BadParameter.h"
#include "foundation/CheckIndex.h"
#include "foundation/Format.h"
#include "foundation/TextCompare.h"

namespace vantrelia {

ItemListNode::ItemListNode(const MessageDefn& messageDefn, const std::vector<std::unique_ptr<MessageItemDefn>>& items,
                           const VisibleChildTable* table, InternalElement* parent, int32_t index)
    : InternalElement(parent, index), messageDefn(&messageDefn), items(&items), table(table), children(items.size()) {}

ItemListNode::~ItemListNode() { prefetchEach(children); }

int ItemListNode::visibleCount(int index) const { return table ? table->getVisibleCount(index) : 1; }

int ItemListNode::visibleBefore(int index) const {
  if (!table) return index;
  int sum = 0;
  for (int i = 0; i < index; ++i) sum += table->getVisibleCount(i);
  return sum;
}

bool ItemListNode::tableHasHidden() const { return table && table->getEntryCount() > 0; }

int ItemListNode::visibleIndexOf(const InternalElement& node) {
  if (!node.parent) return node.index;
  if (const auto* group = dynamic_cast<const SegmentGroupImpl*>(node.parent); group && group->isHidden()) {
    const auto* grandparent = dynamic_cast<const ItemListNode*>(group->parent);
    if (!grandparent || grandparent->getItemCount() == 0) return node.index;
    return node.index + grandparent->visibleBefore(group->index);
  }
  if (const auto* list = dynamic_cast<const ItemListNode*>(node.parent); list && list->tableHasHidden()) {
    return list->visibleBefore(node.index);
  }
  return node.index;
}

InternalElement* ItemListNode::parentSeenFromBelow(const InternalElement& node) {
  InternalElement* target = node.parent;
  if (const auto* group = dynamic_cast<const SegmentGroupImpl*>(target); group && group->isHidden()) {
    return group->parent;
  }
  return target;
}

// ----- children

std::unique_ptr<InternalElement> ItemListNode::makeChild(int index) {
  const MessageItemDefn& item = getItem(index);
  SeparatorList* list = getSeparatorList();
  switch (item.getMessageItemType()) {
    case MessageItemDefn::kSegmentItem:
      if (item.getMaxRepeats() == 1) return SegmentFactory::create(*item.getSegment(), &item, this, index, list);
      return std::make_unique<RepeatItemImpl>(*messageDefn, item, this, index, list);
    case MessageItemDefn::kGroupItem:
      if (item.getMaxRepeats() == 1 || item.getGroup()->isUnorderedGroup()) {
        return std::make_unique<SegmentGroupImpl>(*messageDefn, item, this, index, list);
      }
      return std::make_unique<RepeatItemImpl>(*messageDefn, item, this, index, list);
    default:
      return std::make_unique<MessageSetImpl>(&item, item.getMessageSet(), this, index, list);
  }
}

InternalElement* ItemListNode::getChildCreating(int index) {
  checkIndex(index, getItemCount());
  auto& slot = children[static_cast<size_t>(index)];
  if (!slot) {
    slot = makeChild(index);
    childCreated(slot.get());
    setTreeChanged(true);
  }
  return slot.get();
}

bool ItemListNode::isChildPresent(int index) {
  return index >= 0 && index < getItemCount() && children[static_cast<size_t>(index)] != nullptr;
}

bool ItemListNode::isChildRepeating(int index) {
  checkIndex(index, getItemCount());
  return getItem(index).getMaxRepeats() != 1;
}

bool ItemListNode::attachSegment(SegmentElement* segment, int index) {
  checkIndex(index, getItemCount());
  if (getItem(index).getMaxRepeats() != 1) return getChildCreating(index)->attachSegment(segment, index);
  auto& slot = children[static_cast<size_t>(index)];
  if (slot) return false;
  adoptSegment(*segment, &getItem(index));
  segment->parent = this;
  segment->index = index;
  slot.reset(segment);
  childCreated(segment);
  return true;
}

void ItemListNode::addUnknownSegment(SegmentElement* segment) {
  adoptSegment(*segment, nullptr);
  segment->parent = this;
  segment->index = static_cast<int32_t>(unknownSegments.size());
  unknownSegments.emplace_back(segment);
}

void ItemListNode::adoptSegment(SegmentElement& segment, const MessageItemDefn* item) {
  if (auto* defined = segment.asDefined()) {
    defined->setMessageDefn(messageDefn);
    if (item) defined->setItemDefn(item);
  }
  if (segment.getSeparatorList() != getSeparatorList()) segment.setSeparatorList(getSeparatorList());
}

std::unique_ptr<SegmentElement> ItemListNode::releaseSegment(SegmentElement* segment) {
  for (auto& child : children) {
    if (child.get() == segment) {
      childRemoved(segment);
      child.release();
      return std::unique_ptr<SegmentElement>(segment);
    }
  }
  for (auto& unknown : unknownSegments) {
    if (unknown.get() == segment) return std::move(unknown);
  }
  return nullptr;
}

bool ItemListNode::canStartOnPath(std::vector<int32_t>::const_iterator position,
                                  std::vector<int32_t>::const_iterator end) {
  if (position == end) return false;
  const int index = *position;
  if (index < 0 || index >= getItemCount()) return false;
  const MessageItemDefn& item = getItem(index);
  InternalElement* child = children[static_cast<size_t>(index)].get();
  if (!child) return item.isRequired();
  if (item.getMessageItemType() != MessageItemDefn::kSegmentItem) {
    InternalElement* target = child;
    if (child->getNodeType() == qxRepeating) {
      // A repeat of groups: the place lies in its last element.
      if (item.getMessageItemType() != MessageItemDefn::kGroupItem) return child->canStartOnPath(position + 1, end);
      const int count = child->getElementCount();
      if (count == 0) return item.isRequired();
      target = child->getChildCreating(count - 1);
    }
    return target->canStartOnPath(position + 1, end);
  }
  return false;
}

int ItemListNode::getUnknownSegmentCount() { return static_cast<int>(unknownSegments.size()); }

MessageElement* ItemListNode::getUnknownSegment(int index) {
  checkIndex(index, getUnknownSegmentCount());
  return unknownSegments[static_cast<size_t>(index)].get();
}

void ItemListNode::cloneChildrenInto(ItemListNode& copy) const {
  for (size_t i = 0; i < children.size(); ++i) {
    if (children[i]) copy.children[i] = children[i]->cloneWithParent(&copy);
  }
}

// ----- host operations

MessageElement* ItemListNode::getElementAt(int index) {
  if (!table) return getChildCreating(index);
  checkIndex(index, table->getVisibleTotal());
  int start = 0;
  for (int i = 0; i < getItemCount(); ++i) {
    const int count = visibleCount(i);
    if (index < start + count) {
      InternalElement* child = getChildCreating(i);
      return count < 2 ? child : child->getElementAt(index - start);
    }
    start += count;
  }
  // A total larger than the items show: nothing stands at that position.
  checkIndex(index, start);
  return nullptr;
}

int ItemListNode::getElementCount() { return table ? table->getVisibleTotal() : getItemCount(); }

int ItemListNode::findItem(std::string_view head, int& hiddenTaker) const {
  hiddenTaker = -1;
  for (int i = 0; i < getItemCount(); ++i) {
    if (table && visibleCount(i) > 1) {
      hiddenTaker = i;
      return -1;
    }
    if (equalIgnoringCase(head, getItem(i).getName().view())) return i;
  }
  return -1;
}

MessageElement* ItemListNode::getElementAt(const char* pathText) {
  const std::string_view path = ElementPath::of(pathText);
  const auto [head, rest] = ElementPath::split(path);
  if (parent && ElementPath::isParent(head)) {
    InternalElement* target = parentStepTarget();
    return rest.empty() ? target : target->getElementAt(rest.data());
  }
  int hiddenTaker;
  const int found = findItem(head, hiddenTaker);
  if (hiddenTaker >= 0) return getChildCreating(hiddenTaker)->getElementAt(path.data());
  if (found < 0) throw BadParameter(formatMessage(childNotFoundText(), std::string(head).c_str(), definitionName()));
  InternalElement* child = getChildCreating(found);
  if (rest.empty()) return child;
  const std::string_view childPath = restAfterMatch(found, rest);
  // An index of an unordered group with nothing behind it names the group itself.
  return childPath.empty() ? child : child->getElementAt(childPath.data());
}

ElementCollection ItemListNode::getElementCollection(const char* specText) {
  const std::string_view spec = ElementPath::of(specText);
  const auto [head, rest] = ElementPath::split(spec);
  ElementCollection result;
  // What a child adds: itself when the path ends there, else what the rest finds in it, unless it
  // is empty and may be left out.
  const auto addChild = [&](int i, std::string_view childRest) {
    InternalElement* child = children[static_cast<size_t>(i)].get();
    if (childRest.empty()) {
      result.add(child);
    } else if (!child->isEmpty() || getItem(i).isRequired()) {
      result.addAll(child->getElementCollection(childRest.data()));
    }
  };
  if (ElementPath::isWildcard(head)) {
    for (int i = 0; i < getItemCount(); ++i) {
      InternalElement* child = children[static_cast<size_t>(i)].get();
      if (!child) continue;
      const MessageItemDefn& item = getItem(i);
      if (item.getMessageItemType() == MessageItemDefn::kGroupItem && item.isHidden()) {
        result.addAll(child->getElementCollection(spec.data()));
      } else {
        addChild(i, rest);
      }
    }
    return result;
  }
  int hiddenTaker;
  const int found = findItem(head, hiddenTaker);
  if (hiddenTaker >= 0) return getChildCreating(hiddenTaker)->getElementCollection(spec.data());
  if (found < 0) throw BadParameter(formatMessage(childNotFoundText(), std::string(head).c_str(), definitionName()));
  if (!children[static_cast<size_t>(found)]) return result;
  if (rest.empty()) {
    addChild(found, rest);
  } else {
    const std::string_view childRest = restAfterMatch(found, rest);
    if (childRest.empty()) {
      result.add(children[static_cast<size_t>(found)].get());
    } else {
      addChild(found, childRest);
    }
  }
  return result;
}

void ItemListNode::setEmpty() {
  for (auto& child : children) {
    if (child) childRemoved(child.get());
    child.reset();
  }
  setChanged(true);
}

bool ItemListNode::isEmpty() {
  for (const auto& child : children) {
    if (child && !child->isEmpty()) return false;
  }
  return true;
}

}  // namespace vantrelia
