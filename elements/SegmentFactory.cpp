#include "elements/SegmentFactory.h"

#include "definitions/SegmentDefn.h"
#include "elements/FPSegmentImpl.h"
#include "elements/NCPDPSegmentImpl.h"
#include "elements/NVPairSegmentImpl.h"
#include "elements/SegmentImpl.h"

namespace vantrelia {

std::unique_ptr<SegmentImplBase> SegmentFactory::create(const SegmentDefn& segmentDefn,
                                                        const MessageItemDefn* itemDefn, InternalElement* parent,
                                                        int32_t index, SeparatorList* separators) {
  // Name/value pairs come before presence indicators, and those before tagged segments, when flags
  // mix.
  if (segmentDefn.getFlags() & SegmentDefn::kNameValuePair) {
    return std::make_unique<NVPairSegmentImpl>(segmentDefn, itemDefn, parent, index, separators);
  }
  if (segmentDefn.getFlags() & SegmentDefn::kFieldPresenceIndicator) {
    return std::make_unique<FPSegmentImpl>(segmentDefn, itemDefn, parent, index, separators);
  }
  if (segmentDefn.getFlags() & SegmentDefn::kNcpdp) {
    return std::make_unique<NCPDPSegmentImpl>(segmentDefn, itemDefn, parent, index, separators);
  }
  return std::make_unique<SegmentImpl>(segmentDefn, itemDefn, parent, index, separators);
}

}  // namespace vantrelia
