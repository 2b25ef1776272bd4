#include "tool/MatchJson.h"

#include "compiler/Utf8.h"
#include "definitions/MatchDefn.h"

namespace vantrelia::tool {

nlohmann::ordered_json toJson(const MatchDefn& match) {
  nlohmann::ordered_json json;
  json["FieldPath"] = match.getFieldPath().str();
  json["value"] = compiler::wideToUtf8(match.getValue().view());
  json["pattern"] = match.getPattern() != nullptr;
  return json;
}

}  // namespace vantrelia::tool
