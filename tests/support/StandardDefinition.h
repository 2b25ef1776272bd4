#pragma once
// The definitions of whole standards under standards/, as the build compiled them, loaded
// once per test run: they are large, and every test only reads them.

#include <string>

#include "foundation/MessageFactory.h"

namespace vantrelia {
class MessageSetDefn;
}

namespace vantrelia::testing {

// The factory that has loaded standards/<relativePath>. Throws what compiling or loading throws.
MessageFactory& standardDefinition(const std::string& relativePath);

// The set of that name in the factory's definition; throws std::runtime_error when there is none.
const MessageSetDefn& messageSet(const MessageFactory& factory, const std::string& name);

}  // namespace vantrelia::testing
