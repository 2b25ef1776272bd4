#pragma once
// Which separator slots a header field's path names. The answer depends on the set's separator
// definitions alone, while the lists that ask are made for every message read: the lists of one
// set share one index, and each path is worked out once. Safe from several threads.

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "foundation/Mutex.h"

namespace vantrelia {

class FieldPathDefn;

class SeparatorSlotIndex {
 public:
  // The slots kept for the path and the kind of question, `mode`, or null when nobody has asked
  // yet. What comes back stays put for the life of the index.
  const std::vector<int32_t>* find(const FieldPathDefn& path, uint8_t mode);
  // Keeps what was worked out for a path, unless another thread was first; either way, what is
  // kept now.
  const std::vector<int32_t>& keep(const FieldPathDefn& path, uint8_t mode, std::vector<int32_t> slots);

 private:
  struct Entry {
    bool numeric;
    uint8_t mode;
    std::string name;
    std::vector<int32_t> indexes;
    std::vector<int32_t> slots;
  };
  const std::vector<int32_t>* findLocked(const FieldPathDefn& path, uint8_t mode) const;

  Mutex lock;
  // A deque, so that the answers already given stay where they are as others are added.
  std::deque<Entry> entries;
};

}  // namespace vantrelia
