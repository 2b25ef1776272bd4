#pragma once

#include "foundation/NodePool.h"

namespace vantrelia {

// The state that a stream needs to return to a saved place. Each stream class has its own form.
// A place is saved for every segment read, so it comes from the pool.
class ParserPositionData : public PoolAllocated {
 public:
  virtual ~ParserPositionData() = default;
};

}  // namespace vantrelia
