#pragma once
// Composite definitions as JSON, keys named as the fields of the definition model.

#include <nlohmann/json.hpp>

namespace vantrelia {
class CompositeDefn;
}

namespace vantrelia::tool {

// Texts as UTF-8 strings; the fields in order, each with its override tree (see FieldJson.h);
// CompositeType as its number.
nlohmann::ordered_json toJson(const CompositeDefn& composite);

}  // namespace vantrelia::tool
