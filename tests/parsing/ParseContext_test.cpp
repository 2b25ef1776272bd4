#include <gtest/gtest.h>

#include "definitions/MessageWarehouseDefn.h"
#include "parsing/ParseContext.h"
#include "parsing/SeparatorList.h"
#include "support/ElementTesting.h"

namespace vantrelia::testing {
namespace {

// A failed attempt gives back the lists it set aside; the sets set aside with them must go too, or
// the next return to an enclosing set pops a list that isn't there (as a text of the generated X12
// interchange once made the reader do).
TEST_F(ElementTreeTest, RestoringASnapshotKeepsTheSetStackParallelToItsLists) {
  ParseContext context(factory.getWarehouse(), std::make_shared<const std::u16string>());
  const auto list = [&] {
    return std::make_shared<SeparatorList>(*factory.getWarehouse().getMessageSets().front(), false, nullptr);
  };
  context.separatorStack.push_back(list());
  context.setStack.push_back(0);
  const ParseContextSnapshot saved = context.snapshot();
  context.separatorStack.push_back(list());
  context.setStack.push_back(1);
  context.restore(saved);
  EXPECT_EQ(context.separatorStack.size(), 1u);
  EXPECT_EQ(context.setStack, std::vector<int32_t>{0});
}

}  // namespace
}  // namespace vantrelia::testing
