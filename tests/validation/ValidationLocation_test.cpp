// The position the validation walk carries: component nesting and segment counting.

#include <gtest/gtest.h>

#include "validation/ValidationLocation.h"

namespace vantrelia {
namespace {

TEST(ValidationLocationTest, ComponentNumbersNestTwoLevelsThenCount) {
  // Positive: enter the child at that position; 0: leave. Then componentNumber, sub, deeper.
  struct Step {
    int32_t move, component, sub, deeper;
  } steps[] = {
      {3, 3, -1, 0}, {2, 3, 2, 0}, {5, 3, 2, 1}, {1, 3, 2, 2},  // down four levels
      {0, 3, 2, 1},  {0, 3, 2, 0},                              // the counted levels go first
      {0, 3, -1, 0}, {4, 3, 4, 0}, {0, 3, -1, 0}, {0, -1, -1, 0}, {6, 6, -1, 0},
  };
  ValidationLocation location;
  for (const Step& s : steps) {
    if (s.move > 0)
      location.enterComponent(s.move);
    else
      location.leaveComponent();
    EXPECT_EQ(location.componentNumber, s.component) << "after " << s.move;
    EXPECT_EQ(location.subComponentNumber, s.sub) << "after " << s.move;
    EXPECT_EQ(location.deeperLevels, s.deeper) << "after " << s.move;
  }
}

TEST(ValidationLocationTest, SegmentsAreCountedByTagOnlyWhenAsked) {
  ValidationLocation counting(true);
  ValidationLocation plain;
  EXPECT_TRUE(counting.countsSegments());
  EXPECT_FALSE(plain.countsSegments());
  struct Step {
    int32_t number;
    const char16_t* tag;
    int32_t sequence;
  } steps[] = {{0, u"MSH", 1}, {1, u"PID", 1}, {2, u"PID", 2}, {-1, u"PID", 2}, {3, u"MSH", 2}, {4, u"PID", 3}};
  for (const Step& s : steps) {
    counting.enterSegment(s.number, s.tag);
    plain.enterSegment(s.number, s.tag);
    EXPECT_EQ(counting.segmentSequenceNumber, s.sequence) << s.number;
    EXPECT_EQ(plain.segmentSequenceNumber, -1) << s.number;
    EXPECT_EQ(std::u16string(counting.segmentID), s.tag);
    EXPECT_EQ(counting.segmentNumber, s.number);
  }
  counting.leaveSegment();
  EXPECT_EQ(counting.segmentNumber, -1);
  EXPECT_EQ(std::u16string(counting.segmentID), u"");
  EXPECT_EQ(counting.segmentSequenceNumber, 3) << "kept for findings after the segment";
}

}  // namespace
}  // namespace vantrelia
