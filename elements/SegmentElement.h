#pragma once
// What a message or group holds for one line of the wire: a segment with a definition, or one the
// engine couldn't place. It keeps the segment's number in the parsed text and whether the tree
// may destroy it.

#include <cstdint>

#include "elements/ElementContainer.h"
#include "elements/InternalElement.h"

namespace vantrelia {

class SegmentImplBase;

class SegmentElement : public InternalElement, public ElementContainer {
 public:
  SegmentElement(InternalElement* parent, int32_t index, SeparatorList* separators)
      : InternalElement(parent, index), separators(separators) {}

  int getSegmentNumber() override { return segmentNumber; }
  // Counted from the first segment of the nearest message; -1 outside a message.
  int getSegmentNumberInMessage() override;
  bool isPlaceholderSegment() override;
  int getElementIndex() override;
  SeparatorList* getSeparatorList() override { return separators; }
  // The caller has stored the list already; fields ask their segment, so they need no call.
  virtual void setSeparatorList(SeparatorList* list) { separators = list; }

  // The segment with a definition that this is, or null: asked for every segment placed, where a
  // dynamic_cast costs more than placing it.
  virtual SegmentImplBase* asDefined() { return nullptr; }

  void setSegmentNumber(int32_t number) { segmentNumber = number; }
  bool isOwnedByTree() const { return ownedByTree; }
  void setOwnedByTree(bool value) { ownedByTree = value; }

 protected:
  SeparatorList* separators;
  int32_t segmentNumber = -1;
  bool ownedByTree = true;
};

}  // namespace vantrelia
