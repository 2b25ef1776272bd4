#include "tool/ModelInspector.h"

#include <cstdio>
#include <sstream>

#include "compiler/Utf8.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PcfVersion.h"

namespace vantrelia::tool {

using compiler::wideToUtf8;
using Json = nlohmann::ordered_json;

namespace {

std::string hex32(uint32_t value) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "0x%08X", value);
  return buffer;
}

}  // namespace

Json ModelInspector::toJson() const {
  Json root;
  const int version = warehouse.getVersion();
  root["version"] = version;
  if (version >= pcf::kFileHeader) root["header"] = pcf::kHeaderText;
  root["primitiveTypes"] = Json::array();
  root["arrayTypes"] = Json::array();
  root["hasVariableFields"] = warehouse.getHasVariableFields();

  Json keys = Json::array();
  for (const auto& key : warehouse.getUserDataKeys()) keys.push_back(wideToUtf8(key.view()));
  root["userDataKeys"] = keys;
  // A map from key index to value; JSON object keys are texts, so the index is written in decimal.
  Json values = Json::object();
  for (const auto& [index, value] : warehouse.getUserData()) values[std::to_string(index)] = wideToUtf8(value.view());
  root["userData"] = values;

  root["flags"] = warehouse.getSettings().flags;

  Json sets = Json::array();
  for (const auto& set : warehouse.getMessageSets()) {
    Json entry;
    entry["id"] = set->getId();
    entry["name"] = set->getName().str();
    sets.push_back(entry);
  }
  root["messageSets"] = sets;
  return root;
}

std::string ModelInspector::toText() const {
  std::ostringstream out;
  const int version = warehouse.getVersion();
  out << "PCF format version " << version;
  if (version >= pcf::kFileHeader) out << ", header " << pcf::kHeaderText;
  out << "\n";
  out << "flags: " << hex32(warehouse.getSettings().flags) << "\n";
  out << "hasVariableFields: " << (warehouse.getHasVariableFields() ? "true" : "false") << "\n";
  out << "primitive types: " << warehouse.getPrimitiveTypeCount() << ", array types: " << warehouse.getArrayTypeCount()
      << "\n";

  const auto& keys = warehouse.getUserDataKeys();
  out << "user data keys: " << keys.size() << "\n";
  for (size_t i = 0; i < keys.size(); ++i) {
    out << "  [" << i << "] " << wideToUtf8(keys[i].view());
    const auto value = warehouse.getUserData().find(static_cast<int32_t>(i));
    if (value != warehouse.getUserData().end()) out << " = " << wideToUtf8(value->second.view());
    else out << " (no value)";
    out << "\n";
  }
  // Values whose index names no key are kept by the reader; show them rather than hide them.
  for (const auto& [index, value] : warehouse.getUserData())
    if (index < 0 || static_cast<size_t>(index) >= keys.size())
      out << "  [" << index << "] (no such key) = " << wideToUtf8(value.view()) << "\n";

  out << "message sets: " << warehouse.getMessageSetCount() << "\n";
  for (const auto& set : warehouse.getMessageSets()) out << "  [" << set->getId() << "] " << set->getName().str() << "\n";
  return out.str();
}

}  // namespace vantrelia::tool
