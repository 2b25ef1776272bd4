#pragma once
// What messages and segment groups share: one child slot for each item of their definition, made
// when first asked for, the visible-child table that lets the children of hidden groups stand in
// the group's place, the named path search, collections, and the segments they couldn't place.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "elements/ElementContainer.h"
#include "elements/InternalElement.h"

namespace vantrelia {

class MessageDefn;
class MessageItemDefn;
class SegmentElement;
class VisibleChildTable;

class ItemListNode : public InternalElement, public ElementContainer {
 public:
  ItemListNode(const MessageDefn& messageDefn, const std::vector<std::unique_ptr<MessageItemDefn>>& items,
               const VisibleChildTable* table, InternalElement* parent, int32_t index);
  ~ItemListNode() override;

  MessageElement* getElementAt(const char* path) override;
  MessageElement* getElementAt(int index) override;
  int getElementCount() override;
  ElementCollection getElementCollection(const char* spec) override;
  void setEmpty() override;
  bool isEmpty() override;
  int getUnknownSegmentCount() override;
  MessageElement* getUnknownSegment(int index) override;

  bool isChildPresent(int index) override;
  bool attachSegment(SegmentElement* segment, int index) override;
  bool isChildRepeating(int index) override;
  InternalElement* getChildCreating(int index) override;
  void addUnknownSegment(SegmentElement* segment) override;
  std::unique_ptr<SegmentElement> releaseSegment(SegmentElement* segment) override;
  bool canStartOnPath(std::vector<int32_t>::const_iterator position,
                      std::vector<int32_t>::const_iterator end) override;

  int getChildCount() override { return static_cast<int>(children.size()); }
  std::span<const std::unique_ptr<InternalElement>> getChildArray() override { return children; }

  const MessageDefn& getMessageDefn() const { return *messageDefn; }
  const MessageItemDefn& getItem(int index) const { return *(*items)[static_cast<size_t>(index)]; }
  int getItemCount() const { return static_cast<int>(items->size()); }
  // How many child positions item `index` shows a host: 1 without a table.
  int visibleCount(int index) const;
  // The positions that the items before `index` show a host.
  int visibleBefore(int index) const;
  bool hasVisibleTable() const { return table != nullptr; }
  bool tableHasHidden() const;

  // The host's index of `node` among the children of its parent, with hidden groups seen through.
  static int visibleIndexOf(const InternalElement& node);
  // The parent as a node below it sees it from a path: a hidden group is skipped.
  static InternalElement* parentSeenFromBelow(const InternalElement& node);

 protected:
  // Makes child `index` by its item's kind; the caller stores it.
  std::unique_ptr<InternalElement> makeChild(int index);
  // A child has just come into its slot (unordered groups remember the order).
  virtual void childCreated(InternalElement*) {}
  virtual void childRemoved(InternalElement*) {}
  // The rest of a path after a step that matched item `index`: a message drops the index of an
  // unordered group, an unordered group drops a "[*]" index.
  virtual std::string_view restAfterMatch(int index, std::string_view rest) = 0;
  // The "not found" text of this node, and the name it shows there.
  virtual const char* childNotFoundText() const = 0;
  virtual const char* definitionName() const = 0;
  // The target of the "(parent)" step.
  virtual InternalElement* parentStepTarget() = 0;
  // What a segment takes over when a parse puts it here: this node's definitions and separators.
  void adoptSegment(SegmentElement& segment, const MessageItemDefn* item);
  // Deep copies of the children and of nothing else, for the clone of the derived node.
  void cloneChildrenInto(ItemListNode& copy) const;
  // The item whose name is `head`, or -1; a hidden group that shows more than one child takes any
  // path and answers -2 through `hiddenTaker`.
  int findItem(std::string_view head, int& hiddenTaker) const;

  const MessageDefn* messageDefn;
  const std::vector<std::unique_ptr<MessageItemDefn>>* items;
  const VisibleChildTable* table;
  NodeVector<InternalElement> children;
  NodeVector<SegmentElement> unknownSegments;
};

}  // namespace vantrelia
