#pragma once
// The 22 slots of a separator list, shared by the lists that hold the same slots until one of
// them changes its own. Every message parsed makes a list from its set's prototype and then takes
// the slots its header settled, most often those of the message before it: sharing spares a copy
// of all the slots, and the memory of one, for each message.

#include <array>
#include <cstddef>
#include <memory>

#include "foundation/Enumerations.h"
#include "parsing/SeparatorImpl.h"

namespace vantrelia {

class SeparatorSlots {
 public:
  using Array = std::array<SeparatorImpl, kSeparatorCount>;

  SeparatorSlots() : shared(std::make_shared<Array>()) {}
  explicit SeparatorSlots(const Array& slots) : shared(std::make_shared<Array>(slots)) {}

  const SeparatorImpl& operator[](size_t index) const { return (*shared)[index]; }
  const Array& all() const { return *shared; }
  static constexpr size_t size() { return kSeparatorCount; }
  Array::const_iterator begin() const { return shared->begin(); }
  Array::const_iterator end() const { return shared->end(); }

  // The slots to change, made this list's own first if another list holds them too. A reference
  // taken here stands for this list only until the list is copied: take it again after a copy.
  Array& edit() {
    if (shared.use_count() > 1) shared = std::make_shared<Array>(*shared);
    return *shared;
  }
  SeparatorImpl& edit(size_t index) { return edit()[index]; }

  // Takes slots of another origin, sharing them with nobody.
  SeparatorSlots& operator=(const Array& slots) {
    shared = std::make_shared<Array>(slots);
    return *this;
  }

  // Whether the two hold the very same slots, not only equal ones.
  bool isSharedWith(const SeparatorSlots& other) const { return shared == other.shared; }

 private:
  std::shared_ptr<Array> shared;
};

}  // namespace vantrelia
