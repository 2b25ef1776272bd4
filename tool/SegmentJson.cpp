#include "tool/SegmentJson.h"

#include "definitions/SegmentDefn.h"
#include "foundation/Utf8.h"
#include "tool/FieldJson.h"
#include "tool/MatchJson.h"

namespace vantrelia::tool {

using Json = nlohmann::ordered_json;

namespace {

Json toJson(const SegmentDefn::SpecialSeparator* separator) {
  if (!separator) return nullptr;
  Json json;
  json["SpecialSeparatorType"] = separator->SpecialSeparatorType;
  json["SpecialSeparatorString"] = wideToUtf8(separator->SpecialSeparatorString.view());
  return json;
}

}  // namespace

Json toJson(const SegmentDefn& segment) {
  Json json;
  json["Name"] = segment.getName().str();
  json["Tag"] = wideToUtf8(segment.getTag().view());
  json["SpecialSeparatorString"] = wideToUtf8(segment.getSpecialSeparatorString().view());
  json["SeparatorType"] = segment.getSeparatorType();
  json["FixedWidth"] = segment.isFixedWidth();
  json["id"] = segment.getId();
  json["FieldCount"] = segment.getFieldCount();
  Json fields = Json::array();
  for (const auto& field : segment.getFields()) fields.push_back(tool::toJson(*field));
  json["fields"] = fields;
  Json matches = Json::array();
  for (const auto& match : segment.getMatches()) matches.push_back(tool::toJson(*match));
  json["matches"] = matches;
  Json userData = Json::object();
  for (const auto& [index, value] : segment.getUserData()) userData[std::to_string(index)] = wideToUtf8(value.view());
  json["userData"] = userData;
  json["flags"] = segment.getFlags();
  json["presenceSeparator"] = toJson(segment.getPresenceSeparator());
  Json variableKeys = nullptr;
  if (const auto* keys = segment.getVariableKeys()) {
    variableKeys = Json::object();
    for (const auto& [key, field] : *keys) variableKeys[std::to_string(key)] = field;
  }
  json["variableKeys"] = variableKeys;
  json["nameValueSeparator"] = toJson(segment.getNameValueSeparator());
  json["SegmentType"] = static_cast<int>(segment.getSegmentType());
  return json;
}

}  // namespace vantrelia::tool
