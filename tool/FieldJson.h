#pragma once
// Field definitions and their override trees as JSON, keys named as the fields of the definition
// model.

#include <nlohmann/json.hpp>

namespace vantrelia {
class FieldDefn;
class FieldInstancesBase;
class FieldInstancesControl;
}  // namespace vantrelia

namespace vantrelia::tool {

// Texts as UTF-8 strings. Besides what the file says, what the loader worked out: flags,
// effectiveType, isBinary, isNumeric, countKind, linkedFieldName, Tag. typeDefn names the custom
// type, array type or composite, or spells out the rule of a variable field; null otherwise.
// ValidationTable by name; instancesControl is the override tree of a composite field.
nlohmann::ordered_json toJson(const FieldDefn& field);
// The entries by field index, null where a field has no override.
nlohmann::ordered_json toJson(const FieldInstancesControl& control);
nlohmann::ordered_json toJson(const FieldInstancesBase& entry);

}  // namespace vantrelia::tool
