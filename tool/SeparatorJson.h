#pragma once
// One separator definition as JSON, its keys named as the fields of the definition model.

#include <nlohmann/json.hpp>

namespace vantrelia {
class SeparatorDefn;
}

namespace vantrelia::tool {

// Texts as UTF-8 strings, FieldPath in the form the metadata shows ("MSH.1").
nlohmann::ordered_json toJson(const SeparatorDefn& separator);

}  // namespace vantrelia::tool
