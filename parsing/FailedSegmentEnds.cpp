#include "parsing/FailedSegmentEnds.h"

namespace vantrelia {

int64_t FailedSegmentEnds::note(int64_t end, int64_t at) {
  // Ends the reading has passed count no more.
  failures.erase(failures.begin(), failures.upper_bound(at));
  if (end <= at) return at;
  if (++failures[end] < kAttemptsPerEnd) return at;
  failures.erase(failures.begin(), failures.upper_bound(end));
  return end;
}

}  // namespace vantrelia
