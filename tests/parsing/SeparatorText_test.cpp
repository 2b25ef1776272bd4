#include "parsing/SeparatorText.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace vantrelia {
namespace {

// Texts on both sides of the inline capacity: every way of copying, moving and assigning keeps
// the units, and no text keeps a share of another's storage.
TEST(SeparatorTextTest, CopiesMovesAndAssignmentsKeepTheUnitsAcrossTheInlineLimit) {
  const std::u16string longest(SeparatorText::kInline, u'x');
  const std::vector<std::u16string> texts = {u"", u"|", u"\r\n", u"\\F\\", longest, longest + u"y",
                                             std::u16string(40, u'z') + u"\x2028"};
  for (const std::u16string& from : texts) {
    for (const std::u16string& onto : texts) {
      SCOPED_TRACE(std::string(from.begin(), from.end()) + " onto " + std::string(onto.begin(), onto.end()));
      const SeparatorText source(from);
      SeparatorText copy(source);
      EXPECT_EQ(copy, from);

      SeparatorText assigned(onto);
      assigned = source;
      EXPECT_EQ(assigned, from);
      EXPECT_EQ(source, from);
      assigned = std::u16string_view(onto);
      EXPECT_EQ(assigned, onto);
      EXPECT_EQ(source, from);  // the earlier copy was the target's own
      // Texts compare by their units alone, whatever each held before.
      EXPECT_TRUE(assigned == SeparatorText(onto));
      EXPECT_EQ(source == assigned, from == onto);

      SeparatorText moved(std::move(copy));
      EXPECT_EQ(moved, from);
      SeparatorText target(onto);
      target = std::move(moved);
      EXPECT_EQ(target, from);
      EXPECT_EQ(target.size(), from.size());

      SeparatorText cleared(from);
      cleared.clear();
      EXPECT_TRUE(cleared.empty());
      EXPECT_TRUE(cleared == SeparatorText());
      copy = onto;  // moved from, and still a text to take another
      EXPECT_TRUE(copy == SeparatorText(onto));
      cleared = onto;
      EXPECT_EQ(cleared.str(), onto);
    }
  }
}

// A text given a part of itself: its storage goes only after the part is copied out.
TEST(SeparatorTextTest, ATextTakesAPartOfItself) {
  for (const size_t length : {size_t{3}, size_t{SeparatorText::kInline}, size_t{SeparatorText::kInline + 5}}) {
    std::u16string units;
    for (size_t i = 0; i < length; ++i) units += static_cast<char16_t>(u'a' + i);
    SeparatorText text(units);
    text = text.view().substr(1);
    EXPECT_EQ(text, std::u16string_view(units).substr(1)) << length;
    const SeparatorText& same = text;
    text = same;
    EXPECT_EQ(text, std::u16string_view(units).substr(1)) << length;
  }
}

}  // namespace
}  // namespace vantrelia
