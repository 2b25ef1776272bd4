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
  if (tag.empty()) return;
  if (lengths.insert(tag.size()).second) lengthOrder.assign(lengths.begin(), lengths.end());
  if (tag.size() <= kPackedLength) addPacked(pack(tag.data(), tag.size()), tag.size(), &found->second);
}

uint64_t SegmentTagMap::pack(const char16_t* tag, size_t length) {
  uint64_t key = 0;
  for (size_t i = 0; i < length; ++i) key |= static_cast<uint64_t>(tag[i]) << (16 * i);
  return key;
}

size_t SegmentTagMap::slotOf(uint64_t key, size_t capacity) {
  return static_cast<size_t>((key * 0x9E3779B97F4A7C15ull) >> 32) & (capacity - 1);
}

void SegmentTagMap::addPacked(uint64_t key, size_t length, const Entry* entry) {
  std::vector<Packed>& table = packed[length];
  if ((packedCount[length] + 1) * 2 > table.size()) {
    // Kept at most half full, so that a probe for a tag that isn't there ends soon.
    std::vector<Packed> grown(std::max<size_t>(16, table.size() * 2));
    for (const Packed& kept : table) {
      if (!kept.entry) continue;
      size_t at = slotOf(kept.key, grown.size());
      while (grown[at].entry) at = (at + 1) & (grown.size() - 1);
      grown[at] = kept;
    }
    table.swap(grown);
  }
  size_t at = slotOf(key, table.size());
  while (table[at].entry && table[at].key != key) at = (at + 1) & (table.size() - 1);
  if (!table[at].entry) ++packedCount[length];
  table[at] = {key, entry};
}

const SegmentTagMap::Entry* SegmentTagMap::findPacked(const char16_t* tag, size_t length) const {
  const std::vector<Packed>& table = packed[length];
  if (table.empty()) return nullptr;
  const uint64_t key = pack(tag, length);
  for (size_t at = slotOf(key, table.size());; at = (at + 1) & (table.size() - 1)) {
    if (!table[at].entry) return nullptr;
    if (table[at].key == key) return table[at].entry;
  }
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
    for (const size_t length : lengthOrder) {
      if (length > whole) continue;
      const Entry* entry = length <= kPackedLength ? findPacked(cursor, length)
                                                   : lookup(std::u16string_view(cursor, length));
      if (entry) return entry;
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
