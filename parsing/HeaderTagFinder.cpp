#include "parsing/HeaderTagFinder.h"

#include <algorithm>
#include <string_view>

#include "parsing/SegmentReader.h"

namespace vantrelia {

HeaderTagFinder::HeaderTagFinder(const MessageWarehouseDefn& warehouse)
    : tags(SegmentReader::headerTags(warehouse)), kept(tags.size()) {}

const char16_t* HeaderTagFinder::next(const char16_t* from, const char16_t* end) {
  if (end != textEnd) {
    std::fill(kept.begin(), kept.end(), Kept{});
    textEnd = end;
  }
  const char16_t* nearest = end;
  for (size_t i = 0; i < tags.size(); ++i) {
    Kept& tag = kept[i];
    if (tag.searchedFrom && from < tag.searchedFrom) {
      // A question behind the last one (a parse that went back to try again): only the stretch
      // up to where the last search began is new.
      const char16_t* const stretchEnd = std::min(end, tag.searchedFrom + tags[i].size() - 1);
      const std::u16string_view stretch(from, static_cast<size_t>(stretchEnd - from));
      const size_t at = stretch.find(tags[i]);
      if (at != std::u16string_view::npos) tag.foundAt = from + at;
      tag.searchedFrom = from;
    } else if (!tag.searchedFrom || from > tag.foundAt) {
      const std::u16string_view rest(from, static_cast<size_t>(end - from));
      const size_t at = rest.find(tags[i]);
      tag.searchedFrom = from;
      tag.foundAt = at == std::u16string_view::npos ? end : from + at;
    }
    nearest = std::min(nearest, tag.foundAt);
  }
  return nearest;
}

bool HeaderTagFinder::startsAt(const char16_t* from, const char16_t* end) const {
  const std::u16string_view rest(from, static_cast<size_t>(end - from));
  return std::any_of(tags.begin(), tags.end(), [&](const std::u16string& tag) { return rest.starts_with(tag); });
}

}  // namespace vantrelia
