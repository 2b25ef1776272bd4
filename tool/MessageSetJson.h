#pragma once
#include <nlohmann/json.hpp>

namespace vantrelia {
class MessageSetDefn;
}

namespace vantrelia::tool {

// A message set with everything it owns, keyed by the field names of the definition model.
nlohmann::ordered_json toJson(const MessageSetDefn& set);

}  // namespace vantrelia::tool
