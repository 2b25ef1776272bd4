#include "tool/FieldJson.h"

#include "definitions/ArrayTypeDefn.h"
#include "definitions/CompositeDefn.h"
#include "definitions/CompositeFieldInstancesControl.h"
#include "definitions/FieldDefn.h"
#include "definitions/FieldInstance.h"
#include "definitions/FieldInstances.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "definitions/ValidationTableDefn.h"
#include "definitions/VariableFieldDefn.h"
#include "foundation/Utf8.h"

namespace vantrelia::tool {

using Json = nlohmann::ordered_json;

namespace {

Json tableJson(const ValidationTableDefn* table) { return table ? Json(table->getName()) : Json(nullptr); }

Json typeMapJson(const std::map<std::u16string, int32_t>& map) {
  Json json = Json::object();
  for (const auto& [key, value] : map) json[wideToUtf8(key)] = value;
  return json;
}

Json typeDefnJson(const FieldDefn& field) {
  if (field.isComposite()) return field.getComposite() ? Json(field.getComposite()->getName().str()) : Json(nullptr);
  if (const auto* custom = field.getCustomType()) return custom->getName().str();
  if (const auto* array = field.getArrayType()) return array->getName().str();
  if (const auto* variable = field.getVariableDefn())
    return {{"keyFieldIndex", variable->getKeyFieldIndex()},
            {"basicTypes", typeMapJson(variable->getBasicTypes())},
            {"typeIds", typeMapJson(variable->getTypeIds())}};
  return nullptr;
}

}  // namespace

Json toJson(const FieldInstancesBase& entry) {
  Json json;
  json["flags"] = entry.getFlags();
  if (const auto* primitive = dynamic_cast<const FieldInstance*>(&entry)) {
    json["DefaultValue"] = wideToUtf8(primitive->getDefaultValueText().view());
    json["format"] = wideToUtf8(primitive->getFormat().view());
    json["ValidationTable"] = tableJson(primitive->getValidationTableDefn());
    json["countKind"] = primitive->getCountKindValue();
    json["Required"] = primitive->getRequired();
    json["Hidden"] = primitive->getHidden();
    json["MinLength"] = primitive->getMinLengthValue();
    json["MaxLength"] = primitive->getMaxLengthValue();
  } else if (const auto* composite = dynamic_cast<const FieldInstances*>(&entry)) {
    json["Required"] = composite->getRequired();
    json["Hidden"] = composite->getHidden();
    json["childCount"] = composite->getChildCount();
    Json children = Json::array();
    for (int32_t i = 0; i < composite->getChildCount(); ++i) {
      const FieldInstancesBase* child = composite->getChild(i);
      children.push_back(child ? toJson(*child) : Json(nullptr));
    }
    json["children"] = children;
    json["MinLength"] = composite->getMinLengthValue();
    json["MaxLength"] = composite->getMaxLengthValue();
  }
  return json;
}

Json toJson(const FieldInstancesControl& control) {
  Json json;
  json["count"] = control.getCount();
  Json entries = Json::array();
  for (int32_t i = 0; i < control.getCount(); ++i) {
    const FieldInstancesBase* entry = control.getEntry(i);
    entries.push_back(entry ? toJson(*entry) : Json(nullptr));
  }
  json["entries"] = entries;
  return json;
}

Json toJson(const FieldDefn& field) {
  Json json;
  json["Name"] = field.getName().str();
  json["MinRepeats"] = field.getMinRepeats();
  json["MaxRepeats"] = field.getMaxRepeats();
  json["kind"] = field.getKind();
  json["DataType"] = field.getDataType();
  json["effectiveType"] = field.getEffectiveType();
  json["Alignment"] = field.getAlignment();
  json["isBinary"] = field.getIsBinary();
  json["isNumeric"] = field.getIsNumeric();
  json["typeDefn"] = typeDefnJson(field);
  if (field.isComposite()) json["compositeId"] = field.getCompositeId();
  json["hasOverrides"] = field.getHasOverrides();
  const auto* control = field.getInstancesControl();
  json["instancesControl"] = control ? toJson(static_cast<const FieldInstancesControl&>(*control)) : Json(nullptr);
  json["Required"] = field.isRequired();
  json["ValidationTable"] = tableJson(field.getValidationTable());
  json["format"] = wideToUtf8(field.getFormat().view());
  json["DefaultValue"] = wideToUtf8(field.getDefaultValue().view());
  // A map from key index to value; JSON object keys are texts, so the index is written in decimal.
  Json userData = Json::object();
  for (const auto& [index, value] : field.getUserData()) userData[std::to_string(index)] = wideToUtf8(value.view());
  json["userData"] = userData;
  json["Hidden"] = field.isHidden();
  json["countKind"] = field.getCountKind();
  json["linkedFieldName"] = field.getLinkedFieldName();
  json["Tag"] = wideToUtf8(field.getTag().view());
  json["MinLength"] = field.getMinLength();
  json["MaxLength"] = field.getMaxLength();
  json["flags"] = field.getFlags();
  return json;
}

}  // namespace vantrelia::tool
