#pragma once
// The characters a custom type admits: ranges that allow and ranges that exclude, each in file order.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace vantrelia {

class CharacterRange {
 public:
  CharacterRange(bool allowed, int32_t start, int32_t end) : Allowed(allowed ? 1 : 0), StartChar(start), EndChar(end) {}

  bool isAllowed() const { return Allowed != 0; }
  int32_t getStartChar() const { return StartChar; }
  int32_t getEndChar() const { return EndChar; }
  // Both ends count. A range whose start lies above its end holds nothing.
  bool contains(int32_t character) const { return character >= StartChar && character <= EndChar; }

 private:
  uint8_t Allowed;
  int32_t StartChar;
  int32_t EndChar;
};

class CharacterRanges {
 public:
  // An excluded range goes to the excluded list and is stored as not allowed; any other to the allowed list.
  void add(bool excluded, int32_t start, int32_t end);
  bool empty() const { return allowedRanges.empty() && excludedRanges.empty(); }

  const std::vector<CharacterRange>& getAllowedRanges() const { return allowedRanges; }
  const std::vector<CharacterRange>& getExcludedRanges() const { return excludedRanges; }
  // The view's numbering: the allowed ranges first, then the excluded ones.
  int getCharacterRangeCount() const;
  // Throws BadParameter for an index outside the count.
  const CharacterRange& getCharacterRange(int index) const;

  // The character check: the position of the first unit that an excluded range holds or that no
  // allowed range holds, or nothing when every unit passes. Only the first offender counts: a value
  // gets one finding at most. Units are checked one by one, so each half of a surrogate pair must
  // pass on its own.
  std::optional<size_t> validate(std::u16string_view value) const;

 private:
  std::vector<CharacterRange> allowedRanges;
  std::vector<CharacterRange> excludedRanges;
};

}  // namespace vantrelia
