#pragma once
#include "foundation/VantreliaException.h"

namespace vantrelia {

// An operation that the element in question doesn't support.
class IllegalOperation : public VantreliaException {
 public:
  using VantreliaException::VantreliaException;
};

}  // namespace vantrelia
