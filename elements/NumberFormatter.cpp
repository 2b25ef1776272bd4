#include "elements/NumberFormatter.h"

#include <cmath>
#include <limits>

namespace vantrelia {

int32_t NumberFormatter::getLong() const {
  // Saturating, so that no number is out of range for the cut.
  if (std::isnan(number)) return 0;
  const double cut = std::trunc(number);
  if (cut <= static_cast<double>(std::numeric_limits<int32_t>::min())) return std::numeric_limits<int32_t>::min();
  if (cut >= static_cast<double>(std::numeric_limits<int32_t>::max())) return std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(cut);
}

}  // namespace vantrelia
