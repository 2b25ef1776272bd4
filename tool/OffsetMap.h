#pragma once
// Where a position of a filtered text lay before the filter: a sparse list of the places at which
// the distance between the two grows, so that a large text with few changes costs little.

#include <cstdint>
#include <vector>

namespace vantrelia::tool {

class OffsetMap {
 public:
  // From `position` on, every position lies `shift` further than the ones before it did. Positions
  // come in ascending order.
  void add(int64_t position, int64_t shift);
  // Keeps the total distance at `position` equal to `distance`, adding a step only when it differs.
  void settle(int64_t position, int64_t distance);
  // Each position before the filter spans `units` positions after it, e.g. two bytes per unit.
  void setScale(int64_t units) { scale = units; }
  int64_t map(int64_t position) const;
  int64_t distance() const { return total; }

 private:
  struct Step {
    int64_t position;
    int64_t distance;
  };
  std::vector<Step> steps;
  int64_t total = 0;
  int64_t scale = 1;
};

}  // namespace vantrelia::tool
