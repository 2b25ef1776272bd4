#include "tool/OffsetMap.h"

#include <algorithm>

namespace vantrelia::tool {

void OffsetMap::add(int64_t position, int64_t shift) {
  if (shift == 0) return;
  total += shift;
  if (!steps.empty() && steps.back().position == position) steps.back().distance = total;
  else steps.push_back({position, total});
}

void OffsetMap::settle(int64_t position, int64_t distance) { add(position, distance - total); }

int64_t OffsetMap::map(int64_t position) const {
  const auto after = std::upper_bound(steps.begin(), steps.end(), position,
                                      [](int64_t value, const Step& step) { return value < step.position; });
  return position * scale + (after == steps.begin() ? 0 : std::prev(after)->distance);
}

}  // namespace vantrelia::tool
