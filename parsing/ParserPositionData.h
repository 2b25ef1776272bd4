#pragma once

namespace vantrelia {

// The state that a stream needs to return to a saved place. Each stream class has its own form.
class ParserPositionData {
 public:
  virtual ~ParserPositionData() = default;
};

}  // namespace vantrelia
