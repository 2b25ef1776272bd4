#pragma once
// Match definitions as JSON, keys named as the fields of the definition model.

#include <nlohmann/json.hpp>

namespace vantrelia {
class MatchDefn;
}

namespace vantrelia::tool {

// FieldPath as the engine holds it ("/" between steps), value as UTF-8, and whether a pattern was
// built.
nlohmann::ordered_json toJson(const MatchDefn& match);

}  // namespace vantrelia::tool
