#include "tool/MessageSetJson.h"

#include "definitions/MessageSetDefn.h"
#include "foundation/Utf8.h"
#include "tool/CompositeJson.h"
#include "tool/MessageJson.h"
#include "tool/SegmentJson.h"
#include "tool/SeparatorJson.h"
#include "tool/ValidationTableJson.h"

namespace vantrelia::tool {

using Json = nlohmann::ordered_json;

Json toJson(const MessageSetDefn& set) {
  Json json;
  json["id"] = set.getId();
  json["name"] = set.getName().str();
  json["FixedWidth"] = set.isFixedWidth();
  json["InitializeSeparatorsFromParent"] = set.getInitializeSeparatorsFromParent();
  json["TrimSegments"] = set.getTrimSegments();
  json["genericParsing"] = set.getGenericParsing();
  json["countEncodedLength"] = set.getCountEncodedLength();

  // Keyed by the separator's kind, in kind order, so that a reader needn't count places.
  Json separators = Json::object();
  for (int type = 0; type < kSeparatorCount; ++type)
    separators[std::string(SeparatorDefn::nameOf(type))] = toJson(set.getSeparator(type));
  json["separators"] = separators;

  Json typeFields = Json::array();
  for (const auto& path : set.getMessageTypeFields()) typeFields.push_back(path.text());
  json["messageTypeFields"] = typeFields;
  json["headerItemCount"] = set.getHeaderItemCount();

  Json tables = Json::array();
  for (const auto& table : set.getValidationTables()) tables.push_back(toJson(*table));
  json["validationTables"] = tables;
  Json composites = Json::array();
  for (const auto& composite : set.getComposites()) composites.push_back(toJson(*composite));
  json["composites"] = composites;
  Json segments = Json::array();
  for (const auto& segment : set.getSegments()) segments.push_back(toJson(*segment));
  json["segments"] = segments;
  Json messages = Json::array();
  for (const auto& message : set.getMessages()) messages.push_back(toJson(*message));
  json["messages"] = messages;

  Json userData = Json::object();
  for (const auto& [index, value] : set.getUserData()) userData[std::to_string(index)] = wideToUtf8(value.view());
  json["userData"] = userData;
  json["InitializeValidationErrSettingsFromParent"] = set.getInitializeValidationErrSettingsFromParent();
  Json settings = Json::array();
  for (const auto& setting : set.getValidationErrorSettings()) settings.push_back(toJson(setting));
  json["validationErrorSettings"] = settings;
  return json;
}

}  // namespace vantrelia::tool
