#include "tool/CompositeJson.h"

#include "definitions/CompositeDefn.h"
#include "foundation/Utf8.h"
#include "tool/FieldJson.h"

namespace vantrelia::tool {

using Json = nlohmann::ordered_json;

Json toJson(const CompositeDefn& composite) {
  Json json;
  json["Name"] = composite.getName().str();
  json["SpecialSeparatorString"] = wideToUtf8(composite.getSpecialSeparatorString().view());
  json["SeparatorType"] = composite.getSeparatorType();
  json["FixedWidth"] = composite.isFixedWidth();
  json["id"] = composite.getId();
  json["FieldCount"] = composite.getFieldCount();
  Json fields = Json::array();
  for (const auto& field : composite.getFields()) fields.push_back(toJson(*field));
  json["fields"] = fields;
  Json userData = Json::object();
  for (const auto& [index, value] : composite.getUserData()) userData[std::to_string(index)] = wideToUtf8(value.view());
  json["userData"] = userData;
  json["flags"] = composite.getFlags();
  json["CompositeType"] = static_cast<int>(composite.getCompositeType());
  json["SpecialSeparatorType"] = composite.getSpecialSeparatorType();
  json["indicatorSeparatorString"] = wideToUtf8(composite.getIndicatorSeparatorString().view());
  return json;
}

}  // namespace vantrelia::tool
