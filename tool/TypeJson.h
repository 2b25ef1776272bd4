#pragma once
// Custom and array types as JSON, their keys named as the fields of the definition model.

#include <nlohmann/json.hpp>

namespace vantrelia {
class ArrayTypeDefn;
class PrimitiveTypeDefn;
}  // namespace vantrelia

namespace vantrelia::tool {

// Texts as UTF-8 strings; escape separators as stored (-1 without escapes); separatorAllowed as 22
// booleans by separator index; characterRanges null when the type has none.
nlohmann::ordered_json toJson(const PrimitiveTypeDefn& type);
// CustomType as the name of that custom type, null when there is none.
nlohmann::ordered_json toJson(const ArrayTypeDefn& type);

}  // namespace vantrelia::tool
