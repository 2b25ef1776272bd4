#pragma once
// Validation tables and error settings as JSON, their keys named as the fields of the definition model.

#include <nlohmann/json.hpp>

namespace vantrelia {
class ValidationErrorSettingDefn;
class ValidationTableDefn;
}  // namespace vantrelia

namespace vantrelia::tool {

// Texts as UTF-8 strings; every entry with its description, empty where the file has none.
nlohmann::ordered_json toJson(const ValidationTableDefn& table);
// errorType as its number: 0 error, 1 ignore, 2 warning.
nlohmann::ordered_json toJson(const ValidationErrorSettingDefn& setting);

}  // namespace vantrelia::tool
