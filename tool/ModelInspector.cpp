#include "tool/ModelInspector.h"

#include <cstdio>
#include <sstream>

#include "definitions/DataTypeCodes.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PcfVersion.h"
#include "foundation/Utf8.h"
#include "tool/MessageSetJson.h"
#include "tool/TypeJson.h"

namespace vantrelia::tool {

using Json = nlohmann::ordered_json;

namespace {

std::string hex32(uint32_t value) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "0x%08X", value);
  return buffer;
}

// A data type code or separator index by its source name, or as the number when it has none.
std::string dataTypeText(int code) {
  const auto name = DataTypeCodes::nameOf(code);
  return name.empty() ? std::to_string(code) : std::string(name);
}

std::string separatorText(int index) {
  const auto name = SeparatorDefn::nameOf(index);
  return name.empty() ? std::to_string(index) : std::string(name);
}

std::string codeText(int32_t code) {
  char buffer[16];
  std::snprintf(buffer, sizeof buffer, "%04X", static_cast<unsigned>(code));
  return buffer;
}

void writeRanges(std::ostringstream& out, const char* what, const std::vector<CharacterRange>& ranges) {
  if (ranges.empty()) return;
  out << ", " << what << " ranges";
  for (const auto& range : ranges) {
    out << " " << codeText(range.getStartChar());
    if (range.getEndChar() != range.getStartChar()) out << "-" << codeText(range.getEndChar());
  }
}

void writePrimitiveType(std::ostringstream& out, const PrimitiveTypeDefn& type) {
  out << "  [" << type.getId() << "] " << type.getName().str() << ": " << dataTypeText(type.getBaseType());
  if (type.isPlainAlias()) {
    out << ", plain alias\n";
    return;
  }
  out << ", flags " << hex32(type.getFlags());
  if (type.hasAllowedSeparators()) {
    out << ", allowed separators";
    for (int index = 0; index < kSeparatorCount; ++index)
      if (type.isSeparatorAllowed(static_cast<ESeparatorType>(index))) out << " " << separatorText(index);
  }
  if (type.hasRegularExpression()) out << ", expression \"" << wideToUtf8(type.getRegularExpression().view()) << "\"";
  if (type.getUsingSpecialEscapeCharacters())
    out << ", escapes " << separatorText(type.rawStartEscapeCharacter()) << " to " << separatorText(type.rawEndEscapeCharacter());
  if (const CharacterRanges* ranges = type.getCharacterRanges()) {
    writeRanges(out, "allowed", ranges->getAllowedRanges());
    writeRanges(out, "excluded", ranges->getExcludedRanges());
  }
  out << "\n";
}

void writeArrayType(std::ostringstream& out, const ArrayTypeDefn& type) {
  out << "  [" << type.getId() << "] " << type.getName().str() << ": items of ";
  if (type.getDataType() == DataTypeCodes::kCustom)
    out << (type.getCustomType() ? type.getCustomType()->getName().str() : std::string("an unknown type")) << " (custom)";
  else out << dataTypeText(type.getDataType());
  if (type.hasOwnSeparator()) out << ", own separator \"" << wideToUtf8(type.getOwnSeparator().view()) << "\"\n";
  else out << ", separator " << separatorText(type.getArraySeparator()) << "\n";
}

// The records inside a message set are many and deep; they are shown as an indented outline of
// the same document that --json prints, so that text and JSON never tell different stories.
void writeTree(std::ostringstream& out, const Json& node, int indent) {
  const std::string pad(static_cast<size_t>(indent), ' ');
  // Control characters (separators are often CR, LF and the like) are shown as escapes.
  const auto scalar = [](const Json& value) {
    if (!value.is_string()) return value.dump();
    std::string shown;
    for (char c : value.get<std::string>()) {
      if (static_cast<unsigned char>(c) < 0x20) {
        char escape[8];
        std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned>(c));
        shown += escape;
      } else {
        shown += c;
      }
    }
    return shown;
  };
  const auto isLeaf = [](const Json& value) { return !value.is_structured() || value.empty(); };
  if (node.is_object()) {
    for (const auto& [key, value] : node.items()) {
      if (isLeaf(value)) out << pad << key << ": " << (value.is_structured() ? "(none)" : scalar(value)) << "\n";
      else {
        out << pad << key << ":\n";
        writeTree(out, value, indent + 2);
      }
    }
  } else if (node.is_array()) {
    for (const auto& value : node) {
      if (isLeaf(value)) out << pad << "- " << (value.is_structured() ? "(none)" : scalar(value)) << "\n";
      else {
        out << pad << "-\n";
        writeTree(out, value, indent + 2);
      }
    }
  }
}

}  // namespace

Json ModelInspector::toJson() const {
  Json root;
  const int version = warehouse.getVersion();
  root["version"] = version;
  if (version >= pcf::kFileHeader) root["header"] = pcf::kHeaderText;
  Json primitiveTypes = Json::array();
  for (const auto& [id, type] : warehouse.getPrimitiveTypes()) primitiveTypes.push_back(tool::toJson(*type));
  root["primitiveTypes"] = primitiveTypes;
  Json arrayTypes = Json::array();
  for (const auto& [id, type] : warehouse.getArrayTypes()) arrayTypes.push_back(tool::toJson(*type));
  root["arrayTypes"] = arrayTypes;
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
  for (const auto& set : warehouse.getMessageSets()) sets.push_back(tool::toJson(*set));
  root["messageSets"] = sets;
  return root;
}

std::string ModelInspector::toJsonText() const {
  return toJson().dump(2, ' ', false, Json::error_handler_t::replace);
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
  for (const auto& [id, type] : warehouse.getPrimitiveTypes()) writePrimitiveType(out, *type);
  if (!warehouse.getArrayTypes().empty()) out << "array types:\n";
  for (const auto& [id, type] : warehouse.getArrayTypes()) writeArrayType(out, *type);

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
  for (const auto& set : warehouse.getMessageSets()) {
    out << "  [" << set->getId() << "] " << set->getName().str() << "\n";
    Json details = tool::toJson(*set);
    details.erase("id");
    details.erase("name");
    writeTree(out, details, 4);
  }
  return out.str();
}

}  // namespace vantrelia::tool
