#include "definitions/CharacterRanges.h"

#include <algorithm>

#include "foundation/CheckIndex.h"

namespace vantrelia {

namespace {

bool anyContains(const std::vector<CharacterRange>& ranges, int32_t character) {
  return std::any_of(ranges.begin(), ranges.end(), [character](const CharacterRange& r) { return r.contains(character); });
}

}  // namespace

void CharacterRanges::add(bool excluded, int32_t start, int32_t end) {
  if (excluded) excludedRanges.emplace_back(false, start, end);
  else allowedRanges.emplace_back(true, start, end);
}

int CharacterRanges::getCharacterRangeCount() const {
  return static_cast<int>(allowedRanges.size() + excludedRanges.size());
}

const CharacterRange& CharacterRanges::getCharacterRange(int index) const {
  checkIndex(index, getCharacterRangeCount());
  const auto position = static_cast<size_t>(index);
  return position < allowedRanges.size() ? allowedRanges[position] : excludedRanges[position - allowedRanges.size()];
}

std::optional<size_t> CharacterRanges::validate(std::u16string_view value) const {
  for (size_t i = 0; i < value.size(); ++i) {
    const auto character = static_cast<int32_t>(value[i]);  // char16_t is unsigned: no sign to lose
    if (anyContains(excludedRanges, character) || !anyContains(allowedRanges, character)) return i;
  }
  return std::nullopt;
}

}  // namespace vantrelia
