#pragma once
// Where the first segments of messages that failed to parse ended. The headers inside such a
// segment are tried in turn, since a broken header may run into a good one, and each attempt reads
// on to where that segment ends. After a few attempts the rest of the segment is taken for junk:
// a text full of headers without a segment separator would otherwise cost time by the square of
// its length.

#include <cstdint>
#include <map>

namespace vantrelia {

class FailedSegmentEnds {
 public:
  // How many failed messages whose first segments end at the same place are tried.
  static constexpr int kAttemptsPerEnd = 8;

  // Records a failed message whose first segment ended at `end`, the reading now standing at `at`.
  // Returns where the reading goes on: `end` once enough failed messages ended there, else `at`.
  int64_t note(int64_t end, int64_t at);
  void clear() { failures.clear(); }

 private:
  std::map<int64_t, int> failures;  // by where the first segment ended
};

}  // namespace vantrelia
