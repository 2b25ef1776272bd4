// Findings made by each of their three constructors, and the list that keeps them in order.

#include <gtest/gtest.h>

#include <array>

#include "foundation/BadParameter.h"
#include "validation/ValidationErrorList.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {
namespace {

// Segment number, sequence number, field position, repetition, component, sub-component.
using Where = std::array<int32_t, 6>;

Where whereOf(const ValidationError& e) {
  return {e.getSegmentNumber(), e.getSegmentSequenceNumber(), e.getFieldPosition(), e.getFieldRepetition(),
          e.getComponentNumber(), e.getSubComponentNumber()};
}

TEST(ValidationErrorTest, StructuralFindingHasNoPosition) {
  const ValidationError e("M/G", u"Required group missing", 1002, qxVESWarning);
  EXPECT_EQ(e.getPath(), "M/G");
  EXPECT_EQ(e.getErrorNumber(), 1002);
  EXPECT_EQ(e.getErrorType(), qxVESWarning);
  EXPECT_EQ(e.getNumericalPath(), "");
  EXPECT_EQ(e.getSegmentID(), u"");
  EXPECT_EQ(whereOf(e), (Where{-1, -1, -1, -1, -1, -1}));
}

TEST(ValidationErrorTest, ParserFindingKnowsItsSegment) {
  const ValidationError e("", u"Segment [4]: Unexpected segment", 1004, 4, "5", qxVESError, u"ZZ1", 2);
  EXPECT_EQ(e.getNumericalPath(), "5");
  EXPECT_EQ(e.getSegmentID(), u"ZZ1");
  EXPECT_EQ(whereOf(e), (Where{4, 2, -1, -1, -1, -1}));
}

TEST(ValidationErrorTest, FindingBelowSegmentTakesTheWalksPosition) {
  ValidationLocation location(true);
  location.enterSegment(7, u"PID");
  location.fieldPosition = 5;
  location.fieldRepetition = 2;
  location.enterComponent(3);
  location.enterComponent(1);
  location.enterComponent(4);  // deeper than sub-components: not part of the finding
  location.path = "PID/Name/Family";
  location.numericalPath = "7/5/3/1";
  const ValidationError e(location, u"Field too long: 9 > 4", 1008, qxVESError);
  location.leaveComponent();
  location.path = "elsewhere";  // the walk moves on; the finding has its own copy
  EXPECT_EQ(e.getPath(), "PID/Name/Family");
  EXPECT_EQ(e.getNumericalPath(), "7/5/3/1");
  EXPECT_EQ(e.getSegmentID(), u"PID");
  EXPECT_EQ(e.getError(), u"Field too long: 9 > 4");
  EXPECT_EQ(whereOf(e), (Where{7, 1, 5, 2, 3, 1}));
}

TEST(ValidationErrorListTest, KeepsOrderAndGuardsIndexes) {
  ValidationErrorList list;
  EXPECT_TRUE(list.empty());
  for (int32_t number : {1006, 1001, 1006}) list.add(ValidationError("", u"", number, qxVESError));
  ASSERT_EQ(list.count(), 3);
  std::vector<int32_t> numbers;
  for (const ValidationError& e : list) numbers.push_back(e.getErrorNumber());
  EXPECT_EQ(numbers, (std::vector<int32_t>{1006, 1001, 1006}));
  EXPECT_EQ(list.get(1).getErrorNumber(), 1001);
  EXPECT_THROW(list.get(3), BadParameter);
  EXPECT_THROW(list.get(-1), BadParameter);
}

}  // namespace
}  // namespace vantrelia
