#pragma once
// The slots of a separator list, shared between lists until one of them changes its own. Every
// message parsed starts its list as a copy of its set's prototype, and every header read again
// takes the slots its first read settled: with shared slots that is a count going up, not
// twenty-odd slots with three texts each copied. A list copies the slots the first time it asks
// for them to change, so what another list holds never moves.
//
// Reading goes through the const accessors; the others make the slots this list's own first. A
// list that holds a slot by reference across a copy of itself must ask again afterwards.

#include <array>
#include <cstddef>
#include <memory>

#include "definitions/MessageSetDefn.h"
#include "parsing/SeparatorImpl.h"

namespace vantrelia {

class SharedSlots {
 public:
  using Slots = std::array<SeparatorImpl, kSeparatorCount>;

  SharedSlots() : held(std::make_shared<Slots>()) {}
  SharedSlots& operator=(const Slots& slots) {
    held = std::make_shared<Slots>(slots);
    return *this;
  }

  const Slots& get() const { return *held; }
  const SeparatorImpl& operator[](size_t index) const { return (*held)[index]; }
  SeparatorImpl& operator[](size_t index) { return own()[index]; }
  Slots::const_iterator begin() const { return held->begin(); }
  Slots::const_iterator end() const { return held->end(); }
  Slots::iterator begin() { return own().begin(); }
  Slots::iterator end() { return own().end(); }
  static constexpr size_t size() { return kSeparatorCount; }
  // Whether another list holds these very slots.
  bool isShared() const { return held.use_count() > 1; }

  // The slots as this list's own, copied first when another list holds them too. Only a list
  // holding them can copy them, and each list lives on one thread: the count can't rise here
  // unseen.
  Slots& own() {
    if (held.use_count() > 1) [[unlikely]] held = std::make_shared<Slots>(*held);
    return *held;
  }

 private:
  std::shared_ptr<Slots> held;
};

}  // namespace vantrelia
