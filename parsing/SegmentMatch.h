#pragma once
// What one read of the segment reader gives: the segment that starts at the cursor (or the text
// that nobody could claim), the separators it was read with, and where it began.

#include <cstdint>
#include <list>
#include <memory>
#include <string>

#include "foundation/NodePool.h"
#include "parsing/ParserPosition.h"

namespace vantrelia {

class SegmentElement;
class SeparatorList;

class SegmentMatch {
 public:
  // Bits of endKind: something was ended by a separator, and which one.
  static constexpr uint32_t kEndedBySeparator = 0x80000000u;
  static constexpr uint32_t kEndSegment = 1;
  static constexpr uint32_t kEndGroup = 2;
  static constexpr uint32_t kEndMessage = 4;

  SegmentMatch();
  SegmentMatch(SegmentMatch&&) noexcept;
  SegmentMatch& operator=(SegmentMatch&&) noexcept;
  ~SegmentMatch();

  // The segment, whether the match still owns it or a tree has taken it.
  SegmentElement* getElement() const { return placed; }
  // The match owns the segment until a tree takes it; a message that is given up hands it back.
  void own(std::unique_ptr<SegmentElement> segment);
  SegmentElement* release();
  void reclaim(std::unique_ptr<SegmentElement> segment);
  bool ownsElement() const { return owned != nullptr; }
  // Forgets the segment without deleting it: a tree owns it for good.
  void forgetElement();
  // Deletes the segment if the match still owns it.
  void dropElement();
  // No segment, nothing skipped, and no set: the text can't go on.
  bool isDeadEnd() const { return placed == nullptr && tagText.empty() && setIndex == -1; }

  bool newSeparators = false;
  std::shared_ptr<SeparatorList> separators;
  // When there is no segment: the text that was skipped.
  std::u16string tagText;
  int32_t segmentNumber = 0;
  int32_t setIndex = -1;
  uint32_t endKind = 0;
  std::unique_ptr<ParserPosition> position;
  // How much of the text was left when the read began (-1 when the stream can't tell): where the
  // segment's text starts, for a reader that goes on behind a message.
  int32_t remainingAtStart = -1;

 private:
  std::unique_ptr<SegmentElement> owned;
  SegmentElement* placed = nullptr;
};

// The segments read so far and not yet used up, in text order; shared by all levels of one parse.
using LookAheadList = std::list<SegmentMatch, NodePoolAllocator<SegmentMatch>>;

}  // namespace vantrelia
