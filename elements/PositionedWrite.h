#pragma once
// The text of one part of a tree, written with the separators that hold at that part: a private
// copy of the tree's list, started as a wire text and brought past the headers before the part.
// Every level below the message writes its getEncodedValue this way.

#include <cstdint>
#include <memory>
#include <string>

namespace vantrelia {

class FieldBase;
class InternalElement;
class MessageSetDefn;
class SegmentDefn;
class SeparatorList;

class PositionedWrite {
 public:
  // The copy for `node`; `segmentDefn` and `childCount` say how far into a header the part lies.
  static std::unique_ptr<SeparatorList> makeList(InternalElement& node, const MessageSetDefn* setDefn,
                                                 const SegmentDefn* segmentDefn, int32_t childCount);
  // A structural node or segment through writeElement, segment numbers left alone.
  static std::u16string element(InternalElement& node, const MessageSetDefn* setDefn, const SegmentDefn* segmentDefn,
                                bool minimize);
  // A field through writeField; `mayOmitFill` as the field's own getEncodedValue asks.
  static std::u16string field(FieldBase& node, bool mayOmitFill, bool minimize);
};

}  // namespace vantrelia
