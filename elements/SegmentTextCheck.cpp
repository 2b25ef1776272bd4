#include "elements/SegmentTextCheck.h"

#include <algorithm>
#include <array>
#include <string>

#include "definitions/SegmentDefn.h"
#include "definitions/SegmentTextShape.h"
#include "parsing/SeparatorList.h"

namespace vantrelia {

namespace {

using Item = SegmentTextShape::Item;

// The character of a separator that is one character and nothing else: what the text is cut at;
// 0 for none.
char16_t unitOf(ESeparatorType slot, const SeparatorList& list) {
  if (!list.isInUse(slot)) return 0;
  const std::u16string_view text = list.getSeparatorValue(slot);
  if (text.size() != 1 || list.classOf(text.front()) != slot + 1) return 0;
  return text.front();
}

class Check {
 public:
  Check(const SeparatorList& list, bool truncating) : list(list), truncating(truncating) {}

  // unitOf, asked once per separator and check.
  char16_t unit(ESeparatorType slot) const {
    if (!(known >> slot & 1u)) {
      units[slot] = unitOf(slot, list);
      known |= 1u << slot;
    }
    return units[slot];
  }

  // A field's text between its separators.
  bool field(std::u16string_view text, const Item& item) const {
    if (!item.carried.empty()) return carried(text, item);
    if (text.empty()) return !item.required;
    if (!item.repeats) return value(text, item);
    const char16_t repeat = unit(qxSepRepeat);
    if (repeat == 0) return false;
    // Repeats beyond the maximum are kept and written, as validation reports them.
    return pieces(text, repeat, [&](size_t, std::u16string_view piece) {
      return piece.empty() ? !item.required : value(piece, item);
    });
  }

 private:
  // A value that isn't empty: a primitive's, or a composite's with its children.
  bool value(std::u16string_view text, const Item& item) const {
    if (item.children.empty()) {
      for (const char16_t c : text) {
        if (list.classOf(c) != SeparatorList::kDataCharacter) return false;
      }
      if (item.fillTo > 0 && !filled(text, item)) return false;
      return !truncating || item.maxLength == 0 || text.size() <= static_cast<size_t>(item.maxLength);
    }
    const char16_t separator = unit(item.childSeparator);
    if (separator == 0) return false;
    return pieces(text, separator, [&](size_t index, std::u16string_view piece) {
      if (index >= item.children.size()) return false;
      const Item& child = item.children[index];
      return piece.empty() ? !child.required : value(piece, child);
    });
  }

  // A value the writer fills to a width: the read took the filler off, and the fill must give the
  // text back. Filled just to the width, or longer without filler where it would have been; a
  // text of filler alone was an empty value, which only a required field's default fills again.
  bool filled(std::u16string_view text, const Item& item) const {
    const std::u16string_view filler = list.getSeparatorValue(qxSepFiller);
    if (filler.empty()) return true;
    const char16_t fill = filler.front();
    const size_t width = static_cast<size_t>(item.fillTo);
    if (text.size() < width) return false;
    if (text.find_first_not_of(fill) == std::u16string_view::npos) {
      return text.size() == width && !item.blank.empty() && item.blank.size() <= width &&
             item.blank.find_first_not_of(fill) == std::u16string::npos;
    }
    return text.size() == width || (item.fillAtEnd ? text.back() != fill : text.front() != fill);
  }

  // A header field that holds separators is written as them, each at its place, and nothing else.
  bool carried(std::u16string_view text, const Item& item) const {
    size_t covered = 0;
    for (const auto& [slot, position] : item.carried) {
      const std::u16string_view value = list.getSeparatorValue(slot);
      const size_t at = static_cast<size_t>(position);
      if (value.empty() || at > text.size() || text.substr(at, value.size()) != value) return false;
      covered = std::max(covered, at + value.size());
    }
    // Every character one of them: no room for a character between them or behind them.
    size_t held = 0;
    for (const auto& [slot, position] : item.carried) held += list.getSeparatorValue(slot).size();
    return covered == text.size() && held == text.size();
  }

  // Cuts text at separator and hands each piece to take with its index, as long as take agrees;
  // the last piece may not be empty, since the writer leaves out empty items at the end.
  template <typename Take>
  static bool pieces(std::u16string_view text, char16_t separator, Take take) {
    size_t from = 0;
    for (size_t index = 0;; ++index) {
      const size_t found = text.find(separator, from);
      const size_t to = found == std::u16string_view::npos ? text.size() : found;
      const std::u16string_view piece = text.substr(from, to - from);
      if (to == text.size()) return !piece.empty() && take(index, piece);
      if (!take(index, piece)) return false;
      from = to + 1;
    }
  }

  const SeparatorList& list;
  bool truncating;
  mutable uint32_t known = 0;
  mutable std::array<char16_t, kSeparatorCount> units{};
};

}  // namespace

std::optional<std::u16string_view> SegmentTextCheck::fieldText(const SegmentDefn& segment,
                                                               const SegmentTextShape& shape, std::u16string_view read,
                                                               const SeparatorList& list, bool truncating) {
  const std::u16string_view tag = segment.getTag().view();
  if (!shape.isUsable() || tag.empty() || !read.starts_with(tag)) return std::nullopt;
  std::u16string_view text = read.substr(tag.size());
  // The last segment of a text may stand without its separator.
  const std::u16string_view end = list.getSeparatorValue(qxSepSegment);
  if (!end.empty() && text.ends_with(end)) text.remove_suffix(end.size());
  const char16_t separator = unitOf(shape.getFieldSeparator(), list);
  if (text.empty() || separator == 0 || text.front() != separator) return std::nullopt;

  const Check check(list, truncating);
  const std::vector<Item>& fields = shape.getFields();
  size_t count = 0;
  std::u16string_view rest = text.substr(1);
  for (;; ++count) {
    const size_t found = rest.find(separator);
    const std::u16string_view piece = rest.substr(0, found);
    const bool last = found == std::u16string_view::npos;
    if (count >= fields.size() || (last && piece.empty()) || !check.field(piece, fields[count])) return std::nullopt;
    if (last) break;
    rest.remove_prefix(found + 1);
  }
  const size_t shown = shape.showsEveryField() ? fields.size() : static_cast<size_t>(shape.getShownFields());
  if (count + 1 < shown) return std::nullopt;
  return text;
}

}  // namespace vantrelia
