#include "parsing/SeparatorSlotIndex.h"

#include "definitions/FieldPathDefn.h"

namespace vantrelia {

const std::vector<int32_t>* SeparatorSlotIndex::findLocked(const FieldPathDefn& path, uint8_t mode) const {
  for (const Entry& entry : entries) {
    if (entry.mode == mode && entry.numeric == path.isNumeric() && entry.name == path.getName().view() &&
        entry.indexes == path.getIndexes()) {
      return &entry.slots;
    }
  }
  return nullptr;
}

const std::vector<int32_t>* SeparatorSlotIndex::find(const FieldPathDefn& path, uint8_t mode) {
  ScopedLock held(lock);
  return findLocked(path, mode);
}

const std::vector<int32_t>& SeparatorSlotIndex::keep(const FieldPathDefn& path, uint8_t mode,
                                                     std::vector<int32_t> slots) {
  ScopedLock held(lock);
  if (const std::vector<int32_t>* kept = findLocked(path, mode)) return *kept;
  // The paths asked for are those of the set's header segments and their fields, so the index
  // stays as small as the definitions.
  entries.push_back({path.isNumeric(), mode, std::string(path.getName().view()), path.getIndexes(), std::move(slots)});
  return entries.back().slots;
}

}  // namespace vantrelia
