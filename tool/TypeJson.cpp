#include "tool/TypeJson.h"

#include "definitions/ArrayTypeDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "foundation/Utf8.h"

namespace vantrelia::tool {

using Json = nlohmann::ordered_json;

namespace {

Json rangesJson(const std::vector<CharacterRange>& ranges) {
  Json list = Json::array();
  for (const auto& range : ranges)
    list.push_back({{"Allowed", range.isAllowed()}, {"StartChar", range.getStartChar()}, {"EndChar", range.getEndChar()}});
  return list;
}

}  // namespace

Json toJson(const PrimitiveTypeDefn& type) {
  Json json;
  json["Name"] = type.getName().str();
  json["id"] = type.getId();
  json["RegularExpression"] = wideToUtf8(type.getRegularExpression().view());
  Json allowed = Json::array();
  for (const uint8_t entry : type.getSeparatorAllowed()) allowed.push_back(entry != 0);
  json["separatorAllowed"] = allowed;
  json["BaseType"] = type.getBaseType();
  json["StartEscapeCharacter"] = type.rawStartEscapeCharacter();
  json["EndEscapeCharacter"] = type.rawEndEscapeCharacter();
  if (const CharacterRanges* ranges = type.getCharacterRanges())
    json["characterRanges"] = {{"allowedRanges", rangesJson(ranges->getAllowedRanges())},
                               {"excludedRanges", rangesJson(ranges->getExcludedRanges())}};
  else json["characterRanges"] = nullptr;
  json["flags"] = type.getFlags();
  return json;
}

Json toJson(const ArrayTypeDefn& type) {
  Json json;
  json["Name"] = type.getName().str();
  json["id"] = type.getId();
  json["DataType"] = type.getDataType();
  if (const PrimitiveTypeDefn* custom = type.getCustomType()) json["CustomType"] = custom->getName().str();
  else json["CustomType"] = nullptr;
  json["ArraySeparator"] = type.getArraySeparator();
  json["ownSeparator"] = wideToUtf8(type.getOwnSeparator().view());
  return json;
}

}  // namespace vantrelia::tool
