#pragma once
// A saved place in a parser stream, as the stream hands it out. The caller owns it and drops it
// when done; restoring doesn't use it up, so one holder brings the cursor back any number of times.

#include <memory>
#include <utility>

#include "parsing/ParserPositionData.h"

namespace vantrelia {

class ParserPosition : public PoolAllocated {
 public:
  explicit ParserPosition(std::unique_ptr<ParserPositionData> data) : owned(std::move(data)), data(owned.get()) {}
  virtual ~ParserPosition() = default;

  ParserPosition(const ParserPosition&) = delete;
  ParserPosition& operator=(const ParserPosition&) = delete;

  const ParserPositionData& getData() const { return *data; }

 protected:
  // For a class that holds its data as a member: a place is saved for every segment read, and one
  // allocation for both halves is half the cost.
  explicit ParserPosition(const ParserPositionData& inner) : data(&inner) {}

 private:
  std::unique_ptr<ParserPositionData> owned;
  const ParserPositionData* data;
};

// A position with its data inside.
template <class Data>
class ParserPositionWith : public ParserPosition {
 public:
  template <class... Args>
  explicit ParserPositionWith(Args&&... args) : ParserPosition(inner), inner(std::forward<Args>(args)...) {}

 private:
  Data inner;
};

}  // namespace vantrelia
