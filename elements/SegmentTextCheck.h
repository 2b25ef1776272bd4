#pragma once
// Whether the text a segment was read from is, character for character, what the writer would
// give its fields: then a segment unchanged since it was read is written from its text, without
// cutting its fields or writing them one by one. The writer leaves out empty items at the end of
// every level, shows required items, and encodes characters that stand for separators, so the
// text qualifies only where none of that would change it: no empty item at the end of a field,
// repeat or composite, no required item empty or missing, no more items than the definition has,
// nothing that asks for encoding or quotes, and separators that are single characters.

#include <cstdint>
#include <optional>
#include <string_view>

namespace vantrelia {

class SegmentDefn;
class SegmentTextShape;
class SeparatorList;

class SegmentTextCheck {
 public:
  // The characters between the tag and the segment separator of `read`, the text a segment of
  // that definition and shape was read from, when the writer would give exactly those for its
  // fields with the separators of `list`; nothing otherwise. `truncating`: values longer than
  // their maximum are cut on writing.
  static std::optional<std::u16string_view> fieldText(const SegmentDefn& segment, const SegmentTextShape& shape,
                                                      std::u16string_view read, const SeparatorList& list,
                                                      bool truncating);
};

}  // namespace vantrelia
