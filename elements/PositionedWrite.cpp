#include "elements/PositionedWrite.h"

#include "definitions/SegmentDefn.h"
#include "elements/FieldBase.h"
#include "elements/SegmentImplBase.h"
#include "parsing/SeparatorList.h"

namespace vantrelia {

std::unique_ptr<SeparatorList> PositionedWrite::makeList(InternalElement& node, const MessageSetDefn* setDefn,
                                                         const SegmentDefn* segmentDefn, int32_t childCount) {
  auto copy = std::make_unique<SeparatorList>(*node.getSeparatorList());
  copy->reset(true, true, true);
  copy->settleHeadersBefore(setDefn, segmentDefn, childCount);
  return copy;
}

std::u16string PositionedWrite::element(InternalElement& node, const MessageSetDefn* setDefn,
                                        const SegmentDefn* segmentDefn, bool minimize) {
  auto list = makeList(node, setDefn, segmentDefn, -1);
  int32_t counter = -1;
  node.writeElement(*list, minimize, counter);
  return std::move(list->getOutput());
}

std::u16string PositionedWrite::field(FieldBase& node, bool mayOmitFill, bool minimize) {
  SegmentImplBase* owner = node.getOwner();
  const SegmentDefn* segmentDefn = owner ? &owner->getSegmentDefn() : nullptr;
  const MessageSetDefn* setDefn = owner ? owner->getMessageSetDefn() : node.getMessageSetDefn();
  auto list = makeList(node, setDefn, segmentDefn, owner ? node.getOwnerFieldIndex() : -1);
  int32_t counter = -1;
  node.writeField(mayOmitFill, *list, minimize, counter);
  return std::move(list->getOutput());
}

}  // namespace vantrelia
