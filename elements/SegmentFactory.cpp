#include "elements/SegmentFactory.h"

#include "elements/SegmentImpl.h"

namespace vantrelia {

std::unique_ptr<SegmentImplBase> SegmentFactory::create(const SegmentDefn& segmentDefn,
                                                        const MessageItemDefn* itemDefn, InternalElement* parent,
                                                        int32_t index, SeparatorList* separators) {
  return std::make_unique<SegmentImpl>(segmentDefn, itemDefn, parent, index, separators);
}

}  // namespace vantrelia
