#pragma once
// A saved place in a parser stream, as the stream hands it out. The caller owns it and drops it
// when done; restoring doesn't use it up, so one holder brings the cursor back any number of times.

#include <memory>
#include <utility>

#include "parsing/ParserPositionData.h"

namespace vantrelia {

class ParserPosition : public PoolAllocated {
 public:
  explicit ParserPosition(std::unique_ptr<ParserPositionData> data) : data(std::move(data)) {}

  ParserPosition(const ParserPosition&) = delete;
  ParserPosition& operator=(const ParserPosition&) = delete;

  const ParserPositionData& getData() const { return *data; }

 private:
  std::unique_ptr<ParserPositionData> data;
};

}  // namespace vantrelia
