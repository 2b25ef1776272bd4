#pragma once
// The stack of separator levels a list reads and writes at. A message's list is copied for every
// message read, and its stack rarely grows past a few levels, so the stack lives in the list.

#include <boost/container/small_vector.hpp>

#include "foundation/Enumerations.h"

namespace vantrelia {

using SeparatorLevels = boost::container::small_vector<ESeparatorType, 8>;

}  // namespace vantrelia
