#pragma once
// One edge of a message state table: the name the next element must have, and where it leads.

#include <cstdint>
#include <string>

namespace vantrelia {

class ParseState;

struct ParseTransition {
  // A distance that was never worked out; the strict table keeps it at the top of a message.
  static constexpr int32_t kNoDistance = 0x7FFFFFFF;

  std::string key;
  // In the relaxed table: how many steps through the strict table the jump spans.
  int32_t distance = kNoDistance;
  // A state of the same table; the table owns it.
  const ParseState* target = nullptr;
};

}  // namespace vantrelia
