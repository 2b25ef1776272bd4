#pragma once
// Finds the segments that the text at a stream's position can be, by the tag that opens them.
// Segments with the same tag share one entry, in the order of the set's segments; the match lists
// of the candidates tell them apart later.

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vantrelia {

class ParserStream;
class SegmentDefn;

class SegmentTagMap {
 public:
  using Entry = std::vector<const SegmentDefn*>;

  SegmentTagMap();
  virtual ~SegmentTagMap();
  // Not copied: the index views the keys of this very map.
  SegmentTagMap(const SegmentTagMap&) = delete;
  SegmentTagMap& operator=(const SegmentTagMap&) = delete;

  // Adds the segment to the entry of its tag, making the entry if it is new. Only tags that
  // aren't empty count for matchStream.
  void add(std::u16string_view tag, const SegmentDefn& segment);
  // The entry of exactly that tag (case counting), or null.
  const Entry* lookup(std::u16string_view tag) const;
  // The segments without a tag, or null.
  const Entry* lookupEmptyTag() const { return lookup(std::u16string_view()); }
  // The entry of the longest tag that the stream's text begins with, or null. Peeks once per
  // distinct tag length, longest first; the stream isn't moved.
  const Entry* matchStream(ParserStream& stream) const;

  const std::map<std::u16string, Entry, std::less<>>& getEntries() const { return entries; }
  // The lengths of the non-empty tags, longest first.
  const std::set<size_t, std::greater<>>& getLengths() const { return lengths; }

 private:
  std::map<std::u16string, Entry, std::less<>> entries;
  std::set<size_t, std::greater<>> lengths;
  // The entries by tag, hashed: every segment read looks its tag up once per length. The keys
  // view the map's own, which stay put as entries are added.
  struct TagHash {
    // Tags are a few characters: a multiply per character spreads them well enough.
    size_t operator()(std::u16string_view tag) const noexcept {
      uint64_t hash = tag.size();
      for (const char16_t c : tag) hash = (hash ^ c) * 0x100000001B3ull;
      return static_cast<size_t>(hash ^ (hash >> 29));
    }
  };
  std::unordered_map<std::u16string_view, const Entry*, TagHash> byTag;
  // The lengths again, longest first, for matchStream to walk without a tree.
  std::vector<size_t> lengthOrder;
  // Tags of up to four characters, their characters packed in one number, in an open-addressed
  // table per length: the tags of the usual standards, looked up without hashing a string.
  static constexpr size_t kPackedLength = 4;
  struct Packed {
    uint64_t key = 0;
    const Entry* entry = nullptr;
  };
  std::vector<Packed> packed[kPackedLength + 1];
  size_t packedCount[kPackedLength + 1] = {};
  static uint64_t pack(const char16_t* tag, size_t length);
  static size_t slotOf(uint64_t key, size_t capacity);
  void addPacked(uint64_t key, size_t length, const Entry* entry);
  const Entry* findPacked(const char16_t* tag, size_t length) const;
};

}  // namespace vantrelia
