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
    if (it->segment == &segment && it->item == item && it->startVersion == startVersion &&
        it->text.size() <= text.size() &&
        std::memcmp(it->text.data(), text.data(), it->text.size() * sizeof(char16_t)) == 0) {
      if (Failures* found = failuresOf(segment, item, startVersion)) found->count = 0;
      return &*it;
    }
  }
  return nullptr;
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
