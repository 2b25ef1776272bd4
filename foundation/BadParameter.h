#pragma once
#include "foundation/VantreliaException.h"

namespace vantrelia {

// Wrong arguments, wrong paths, wrong use of an operation's data.
class BadParameter : public VantreliaException {
 public:
  using VantreliaException::VantreliaException;
};

}  // namespace vantrelia
