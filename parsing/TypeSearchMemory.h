#pragma once
// Where the search for the segment that names a message's type read on without finding it, to
// where another message begins or to the end of the text. A later search that starts within that
// stretch reads a part of the same segments and fails the same way: in a text of many segments
// that may open a message, and none that names its type until far behind them, every attempt
// would otherwise read on as far.

#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace vantrelia {

class MessageSetDefn;

class TypeSearchMemory {
 public:
  // Whether a search of the set for `segmentName` from `from`, in the text ending at `end`, is
  // known to fail.
  bool knownToFail(const MessageSetDefn* set, std::string_view segmentName, const char16_t* from,
                   const char16_t* end) const {
    if (end != textEnd) return false;
    const auto found = failed.find(Key(set, std::string(segmentName)));
    return found != failed.end() && from >= found->second.first && from < found->second.second;
  }
  // A search from `from` read up to `to` without finding the segment, in the text ending at `end`.
  void failedBefore(const MessageSetDefn* set, std::string_view segmentName, const char16_t* from,
                    const char16_t* to, const char16_t* end) {
    if (end != textEnd) {
      failed.clear();
      textEnd = end;
    }
    auto& stretch = failed[Key(set, std::string(segmentName))];
    // A stretch that reaches as far grows back to the earlier start; any other replaces it.
    if (stretch.second == to && stretch.first && stretch.first < from) return;
    stretch = {from, to};
  }

 private:
  using Key = std::pair<const MessageSetDefn*, std::string>;
  const char16_t* textEnd = nullptr;
  std::map<Key, std::pair<const char16_t*, const char16_t*>> failed;
};

}  // namespace vantrelia
