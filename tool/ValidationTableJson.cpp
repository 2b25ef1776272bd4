#include "tool/ValidationTableJson.h"

#include "definitions/ValidationErrorSettingDefn.h"
#include "definitions/ValidationTableDefn.h"
#include "foundation/Utf8.h"

namespace vantrelia::tool {

using Json = nlohmann::ordered_json;

Json toJson(const ValidationTableDefn& table) {
  Json json;
  json["Name"] = table.getName();
  json["entryCount"] = table.getEntryCount();
  Json entries = Json::array();
  for (const auto& entry : table.getEntries())
    entries.push_back({{"value", wideToUtf8(entry.getValue().view())}, {"description", wideToUtf8(entry.getDescription().view())}});
  json["entries"] = entries;
  return json;
}

Json toJson(const ValidationErrorSettingDefn& setting) {
  Json json;
  json["errorType"] = static_cast<int>(setting.getErrorType());
  json["errorNumber"] = setting.getErrorNumber();
  return json;
}

}  // namespace vantrelia::tool
