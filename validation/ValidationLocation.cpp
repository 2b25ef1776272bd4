#include "validation/ValidationLocation.h"

namespace vantrelia {

ValidationLocation::ValidationLocation(bool countSegments) : countSegments(countSegments) {}

void ValidationLocation::enterSegment(int32_t number, const char16_t* tag) {
  segmentNumber = number;
  segmentID = tag ? tag : u"";
  if (!countSegments || segmentNumber < 0) return;
  if (!segmentCounts) segmentCounts = std::make_unique<std::map<std::u16string, int32_t>>();
  segmentSequenceNumber = ++(*segmentCounts)[segmentID];
}

void ValidationLocation::leaveSegment() {
  segmentNumber = -1;
  segmentID = u"";
}

void ValidationLocation::enterComponent(int32_t position) {
  if (componentNumber == -1)
    componentNumber = position;
  else if (subComponentNumber == -1)
    subComponentNumber = position;
  else
    ++deeperLevels;
}

void ValidationLocation::leaveComponent() {
  if (deeperLevels > 0)
    --deeperLevels;
  else if (subComponentNumber == -1)
    componentNumber = -1;
  else
    subComponentNumber = -1;
}

}  // namespace vantrelia
