#pragma once
// Makes the segment node of the kind a segment definition names.

#include <cstdint>
#include <memory>

namespace vantrelia {

class InternalElement;
class MessageItemDefn;
class SegmentDefn;
class SegmentImplBase;
class SeparatorList;

class SegmentFactory {
 public:
  // Tagged pharmacy segments (flag 0x10) get their own kind; presence-indicator (0x02) and
  // name/value (0x04) segments read and write as ordinary segments until their kinds exist.
  static std::unique_ptr<SegmentImplBase> create(const SegmentDefn& segmentDefn, const MessageItemDefn* itemDefn,
                                                 InternalElement* parent, int32_t index, SeparatorList* separators);
};

}  // namespace vantrelia
