#include "tool/MatchJson.h"

#include "definitions/MatchDefn.h"
#include "foundation/Utf8.h"

namespace vantrelia::tool {

nlohmann::ordered_json toJson(const MatchDefn& match) {
  nlohmann::ordered_json json;
  json["FieldPath"] = match.getFieldPath().str();
  json["value"] = wideToUtf8(match.getValue().view());
  json["pattern"] = match.getPattern() != nullptr;
  return json;
}

}  // namespace vantrelia::tool
