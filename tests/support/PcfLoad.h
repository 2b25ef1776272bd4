#pragma once
// Loading definition bytes the way a host does, for tests that need a loaded warehouse or the
// text of a load failure.

#include <cstdint>
#include <string>
#include <vector>

#include "foundation/MessageFactory.h"

namespace vantrelia::testing {

// Loads the bytes into the factory through a file, as LoadDefinition does. Throws what it throws.
void loadBytes(MessageFactory& factory, const std::vector<uint8_t>& bytes);

// The message of the InvalidFile that loading the bytes throws, or "" when the load succeeds.
std::string loadFailure(const std::vector<uint8_t>& bytes);

}  // namespace vantrelia::testing
