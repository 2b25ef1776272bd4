#include "elements/SegmentElement.h"

#include "elements/ElementMessages.h"
#include "elements/ItemListNode.h"
#include "elements/Message.h"
#include "foundation/IllegalOperation.h"

namespace vantrelia {

int SegmentElement::getSegmentNumberInMessage() {
  InternalElement* node = parent;
  while (node && !dynamic_cast<Message*>(node)) node = node->parent;
  if (!node) return -1;
  // The first segment of the message is the one that the first children lead down to.
  auto* first = static_cast<InternalElement*>(node->getElementAt(0));
  while (first && !dynamic_cast<SegmentElement*>(first)) {
    if (first->getNodeType() != qxComposite) return -1;
    if (first->getElementCount() == 0) throw IllegalOperation(messages::kNoItemsInSegmentGroup);
    first = static_cast<InternalElement*>(first->getElementAt(0));
  }
  if (!first) return -1;
  return segmentNumber - first->getSegmentNumber();
}

bool SegmentElement::isPlaceholderSegment() { return segmentNumber == -1 && isEmpty(); }

int SegmentElement::getElementIndex() { return ItemListNode::visibleIndexOf(*this); }

}  // namespace vantrelia
