#include "definitions/SegmentTagMap.h"

#include <algorithm>

#include "parsing/ParserStream.h"

namespace vantrelia {

SegmentTagMap::SegmentTagMap() = default;
SegmentTagMap::~SegmentTagMap() = default;

void SegmentTagMap::add(std::u16string_view tag, const SegmentDefn& segment) {
  auto found = entries.find(tag);
  if (found == entries.end()) {
    found = entries.emplace(std::u16string(tag), Entry()).first;
    byTag.emplace(std::u16string_view(found->first), &found->second);
  }
  found->second.push_back(&segment);
  if (!tag.empty()) lengths.insert(tag.size());
}

const SegmentTagMap::Entry* SegmentTagMap::lookup(std::u16string_view tag) const {
  const auto found = byTag.find(tag);
  return found == byTag.end() ? nullptr : found->second;
}

const SegmentTagMap::Entry* SegmentTagMap::matchStream(ParserStream& stream) const {
  // Where the rest of the text lies in memory, the tags are compared in place: every segment
  // read asks.
  const char16_t* cursor = stream.getCursor();
  const auto whole = static_cast<size_t>(std::max(stream.getWholeRemaining(), 0));
  if (cursor && whole > 0) {
    for (const size_t length : lengths) {
      if (length > whole) continue;
      if (const Entry* entry = lookup(std::u16string_view(cursor, length))) return entry;
    }
    return nullptr;
  }
  for (const size_t length : lengths) {
    const std::u16string text = stream.peek(static_cast<int32_t>(length));
    // Near the end of the text a peek comes back short; that length can't match.
    if (text.size() != length) continue;
    if (const Entry* entry = lookup(text)) return entry;
  }
  return nullptr;
}

}  // namespace vantrelia
