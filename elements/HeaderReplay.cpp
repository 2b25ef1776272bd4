#include "elements/HeaderReplay.h"

#include <algorithm>
#include <cstring>

#include "foundation/ThreadLocal.h"
#include "parsing/SeparatorList.h"

namespace vantrelia {

HeaderReplay* HeaderReplay::local() { return ThreadLocal<HeaderReplay>::get(); }

const HeaderReplay::Entry* HeaderReplay::find(const SegmentDefn& segment, const MessageItemDefn* item,
                                              uint64_t startVersion, std::u16string_view text) {
  for (auto it = entries.rbegin(); it != entries.rend(); ++it) {
    if (it->segment == &segment && it->item == item && it->startVersion == startVersion && it->readsAlike(text)) {
      if (Failures* found = failuresOf(segment, item, startVersion)) found->count = 0;
      return &*it;
    }
  }
  return nullptr;
}

void HeaderReplay::Entry::setStops(std::u16string characters) {
  stops = std::move(characters);
  asciiStops = {};
  for (const char16_t c : stops) {
    if (c < 128) asciiStops[c >> 6] |= uint64_t{1} << (c & 63);
  }
}

bool HeaderReplay::Entry::readsAlike(std::u16string_view header) const {
  if (header.size() < text.size()) return false;
  const auto same = [&](size_t from, size_t to) {
    return std::memcmp(text.data() + from, header.data() + from, (to - from) * sizeof(char16_t)) == 0;
  };
  if (!wholeSegment) return same(0, text.size());
  // Fields stand in the order of the text, so the characters between them are compared in turn.
  size_t at = 0;
  for (const FieldText& field : fields) {
    if (!field.varies) continue;
    const auto from = static_cast<size_t>(field.offset);
    const auto to = from + static_cast<size_t>(field.length);
    if (!same(at, from)) return false;
    for (size_t i = from; i < to; ++i) {
      const char16_t c = header[i];
      if (c < 128 ? (asciiStops[c >> 6] >> (c & 63)) & 1 : stops.find(c) != std::u16string::npos) return false;
    }
    at = to;
  }
  return same(at, text.size());
}

bool HeaderReplay::keeps(std::u16string_view text) const {
  return std::any_of(entries.begin(), entries.end(), [text](const Entry& entry) { return entry.text == text; });
}

void HeaderReplay::keep(Entry entry) {
  // Kept is not yet read again: only a read again says that keeping pays.
  noteNotKept(*entry.segment, entry.item, entry.startVersion);
  if (entries.size() == kCapacity) entries.erase(entries.begin());
  entries.push_back(std::move(entry));
}

HeaderReplay::Failures* HeaderReplay::failuresOf(const SegmentDefn& segment, const MessageItemDefn* item,
                                                 uint64_t startVersion) {
  for (Failures& found : failures) {
    if (found.segment == &segment && found.item == item && found.startVersion == startVersion) return &found;
  }
  return nullptr;
}

bool HeaderReplay::worthKeeping(const SegmentDefn& segment, const MessageItemDefn* item, uint64_t startVersion) const {
  const Failures* found = const_cast<HeaderReplay*>(this)->failuresOf(segment, item, startVersion);
  return !found || found->count < kTriesBeforeGivingUp;
}

void HeaderReplay::noteNotKept(const SegmentDefn& segment, const MessageItemDefn* item, uint64_t startVersion) {
  if (Failures* found = failuresOf(segment, item, startVersion)) {
    ++found->count;
    return;
  }
  if (failures.size() == kCapacity) failures.erase(failures.begin());
  failures.push_back({&segment, item, startVersion, 1});
}

}  // namespace vantrelia
