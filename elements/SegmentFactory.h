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
  // Name/value (flag 0x04) and tagged pharmacy segments (0x10) get their own kinds; presence-
  // indicator segments (0x02) read and write as ordinary segments until their kind exists.
  static std::unique_ptr<SegmentImplBase> create(const SegmentDefn& segmentDefn, const MessageItemDefn* itemDefn,
                                                 InternalElement* parent, int32_t index, SeparatorList* separators);
};

}  // namespace vantrelia
