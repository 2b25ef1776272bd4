#include "compiler/FieldWriter.h"

#include <array>
#include <climits>

#include "compiler/CompileContext.h"
#include "compiler/CompileError.h"
#include "compiler/FieldOverrideWriter.h"
#include "compiler/PcfWriter.h"
#include "compiler/TypeWriter.h"
#include "compiler/UserDataWriter.h"
#include "definitions/DataTypeCodes.h"
#include "definitions/FieldDefn.h"
#include "definitions/PcfVersion.h"
#include "foundation/Enumerations.h"
#include "foundation/InvalidFile.h"
#include "foundation/Utf8.h"

namespace vantrelia::compiler {

namespace {

constexpr std::array<std::pair<std::string_view, int32_t>, 4> kCountKinds = {{{"repeats", FieldDefn::kCountRepeats},
                                                                             {"segments", FieldDefn::kCountSegments},
                                                                             {"groups", FieldDefn::kCountGroups},
                                                                             {"messages", FieldDefn::kCountMessages}}};

// Keys that only a primitive field, or only a composite field, may carry.
constexpr std::array<std::string_view, 9> kPrimitiveOnly = {"dataType",  "default", "count", "countedField", "lengthField",
                                                            "alignment", "format",  "table", "variable"};

std::string tooNew(int gate, int version) {
  return "needs format version " + std::to_string(gate) + " or later; this file is compiled for version " +
         std::to_string(version);
}

// A value text (default or format) as the version's `textv` carries it.
void checkValueText(const SourceNode& owner, std::string_view key, std::u16string_view text, int version) {
  if (text.size() > PcfWriter::kLongestText) owner.failAt(key, "'" + std::string(key) + "' of " + owner.what() + " is longer than 65535 units");
  if (version < pcf::kWideValueTexts && !PcfWriter::fitsText8w(text))
    owner.failAt(key, "'" + std::string(key) + "' of " + owner.what() + " has a character that " +
                          tooNew(pcf::kWideValueTexts, version) + "; below it write the character as an escape such as "
                          "\\u00E9 in single quotes, which the engine expands when it loads the file");
}

int32_t alignmentOf(const SourceNode& field) {
  if (!field.has("alignment")) return qxLeft;
  if (const int named = FieldDefn::alignmentOf(field.text("alignment", "")); named >= 0) return named;
  const int64_t code = field.integer("alignment", 0, INT32_MIN, INT32_MAX);
  if (FieldDefn::alignmentName(static_cast<int>(code)).empty())
    field.failAt("alignment", "'alignment' of " + field.what() + " must be left, right, leftMin, rightMin, leftMax, "
                              "rightMax, zeroMin, zeroMax or its code 0 to 7");
  return static_cast<int32_t>(code);
}

// The index of the field that a variable field names as its key.
int32_t keyFieldIndexOf(const SourceNode& variable, const std::vector<SourceNode>& siblings) {
  if (!variable.has("keyField")) variable.fail(variable.what() + " needs a 'keyField': the field whose value chooses the type");
  const std::string key = variable.text("keyField", "");
  int32_t found = -1;
  for (size_t i = 0; i < siblings.size(); ++i) {
    if (siblings[i].text("name", "") != key) continue;
    if (found >= 0) variable.failAt("keyField", "'keyField' of " + variable.what() + " names '" + key + "', which more than one field has");
    found = static_cast<int32_t>(i);
  }
  if (found < 0) variable.failAt("keyField", "'keyField' of " + variable.what() + " names no field beside it: '" + key + "'");
  return found;
}

// The id a variable field's `types` entry records: a composite of the set first, then a custom or
// array type, the order in which the engine looks the id up.
int32_t variableTypeId(const SourceNode& variable, const std::string& key, const std::string& name, int line,
                       const CompileContext& context) {
  if (const auto* composite = context.findComposite(name)) return composite->id;
  const auto type = context.types() ? context.types()->resolve(name) : std::nullopt;
  if (!type || !type->typeId)
    throw CompileError(line, "entry '" + key + "' of 'types' of " + variable.what() + " names neither a composite nor a "
                             "custom or array type: '" + name + "'");
  if (const auto* clash = context.findCompositeById(*type->typeId))
    throw CompileError(line, "entry '" + key + "' of 'types' of " + variable.what() + " names type '" + name + "', whose id " +
                                 std::to_string(*type->typeId) + " composite '" + clash->name +
                                 "' also has; the engine would take the composite. Give one of them another id");
  return *type->typeId;
}

void writeVariable(const SourceNode& field, const std::vector<SourceNode>& siblings, const CompileContext& context,
                   PcfWriter& out) {
  if (!field.has("variable"))
    field.fail(field.what() + " is variable and needs a 'variable' mapping with its 'keyField' and its types");
  const SourceNode variable(field.yaml()["variable"], "'variable' of " + field.what());
  variable.allowOnly({"keyField", "types", "basicTypes"});
  out.i32(keyFieldIndexOf(variable, siblings));

  const auto mapOf = [&](const char* key) {
    std::vector<std::tuple<std::u16string, std::string, std::string, int>> entries;  // key text, key, value, line
    if (!variable.has(key)) return entries;
    const YAML::Node map = variable.yaml()[key];
    if (!map.IsMap()) variable.failAt(key, "'" + std::string(key) + "' of " + variable.what() + " must be a mapping");
    for (const auto& entry : map) {
      const auto text = utf8ToWide(entry.first.Scalar());
      if (!text) throw CompileError(lineOfNode(entry.first), "a key of '" + std::string(key) + "' is not valid UTF-8");
      if (!entry.second.IsScalar())
        throw CompileError(lineOfNode(entry.second), "entry '" + entry.first.Scalar() + "' of '" + key + "' must name a type");
      entries.emplace_back(*text, entry.first.Scalar(), entry.second.Scalar(), lineOfNode(entry.second));
    }
    return entries;
  };

  const auto basics = mapOf("basicTypes");
  out.i32(static_cast<int32_t>(basics.size()));
  for (const auto& [text, key, value, line] : basics) {
    const int code = TypeWriter::dataTypeCode(value);
    if (!DataTypeCodes::isBasic(code))
      throw CompileError(line, "entry '" + key + "' of 'basicTypes' of " + variable.what() + " must name a basic data type");
    out.text16(text).i32(code);
  }
  const auto types = mapOf("types");
  out.i32(static_cast<int32_t>(types.size()));
  for (const auto& [text, key, value, line] : types) out.text16(text).i32(variableTypeId(variable, key, value, line, context));
}

}  // namespace

std::vector<SourceNode> FieldWriter::fieldsOf(const SourceNode& owner) { return owner.records("fields", owner.what() + " field"); }

FieldWriter::DataType FieldWriter::dataTypeOf(const SourceNode& field, const CompileContext& context) {
  const std::string name = field.text("dataType", "string");
  std::optional<TypeWriter::DataType> type;
  if (context.types()) type = context.types()->resolve(name);
  else if (const int code = TypeWriter::dataTypeCode(name); code >= 0) type = TypeWriter::DataType{code, std::nullopt};
  if (!type) field.failAt("dataType", "'dataType' of " + field.what() + " names neither a type of the file nor a data type: '" + name + "'");
  if ((type->code == DataTypeCodes::kCustom || type->code == DataTypeCodes::kArray) && !type->typeId)
    field.failAt("dataType", "'dataType' of " + field.what() + " names its custom or array type by that type's name");
  int32_t base = type->code;
  if (type->code == DataTypeCodes::kCustom) base = context.customBaseType(name).value_or(type->code);
  return {type->code, type->typeId, base};
}

std::u16string FieldWriter::countText(const SourceNode& owner) {
  std::string kind;
  std::u16string path;
  const YAML::Node count = owner.yaml()["count"];
  if (count.IsMap()) {
    const SourceNode spec(count, "'count' of " + owner.what());
    spec.allowOnly({"kind", "path"});
    kind = spec.text("kind", "repeats");
    path = spec.wideText("path", u"");
    if (path.find(u'#') != std::u16string::npos) spec.failAt("path", "'path' of " + spec.what() + " can't hold '#'");
  } else {
    kind = owner.text("count", "");
  }
  for (const auto& [name, countKind] : kCountKinds) {
    if (kind != name) continue;
    // A leading "+" would name a counted field instead.
    if (!path.empty() && path.front() == u'+') owner.failAt("count", "the path of 'count' of " + owner.what() + " can't start with '+'");
    return FieldDefn::countText(countKind, path);
  }
  owner.failAt("count", "'count' of " + owner.what() + " must be repeats, segments, groups or messages, or a mapping of "
                        "'kind' and 'path'");
}

void FieldWriter::checkCountDefault(const SourceNode& owner, std::string_view key, std::u16string_view text) {
  if (text.empty() || text.front() != u'#') return;
  const std::u16string_view rest = text.substr(1);
  if (!rest.empty() && rest.front() == u'+') return;
  try {
    std::u16string_view path;
    FieldDefn::splitCountItem(rest, path);
  } catch (const InvalidFile& refused) {
    owner.failAt(key, "'" + std::string(key) + "' of " + owner.what() + " makes the field a count whose item behind the "
                      "second '#' isn't S, G or M; the engine refuses it (\"" + refused.message + "\")");
  }
}

bool FieldWriter::isVariable(const SourceNode& field, const CompileContext& context) {
  return !field.has("composite") && dataTypeOf(field, context).code == DataTypeCodes::kVariable;
}

void FieldWriter::declare(const SourceNode& field, CompileContext& context) {
  field.allowOnly({"name", "dataType", "composite", "required", "minLength", "maxLength", "minRepeats", "maxRepeats", "default",
                   "count", "countedField", "lengthField", "hidden", "hasOverrides", "alignment", "format", "table",
                   "userData", "fieldPresenceIndicator", "variable", "overrides", "overrideHeader"});
  field.recordName("overrides and paths refer to fields by name");
  UserDataWriter::declare(field, context);
}

void FieldWriter::write(const SourceNode& field, const std::vector<SourceNode>& siblings, const CompileContext& context,
                        PcfWriter& out) {
  const int version = context.version();
  const std::string name = field.recordName("overrides and paths refer to fields by name");
  const bool composite = field.has("composite");
  if (composite) {
    for (std::string_view key : kPrimitiveOnly)
      if (field.has(key))
        field.failAt(key, "'" + std::string(key) + "' of " + field.what() + " belongs to a primitive field; this one holds a composite");
  } else {
    for (const char* key : {"overrides", "overrideHeader"})
      if (field.has(key)) field.failAt(key, "'" + std::string(key) + "' of " + field.what() + " belongs to a composite field");
  }

  const bool required = field.flag("required", false);
  out.text8(name).boolean(required);
  out.i32(static_cast<int32_t>(field.integer("minLength", 0, INT32_MIN, INT32_MAX)));
  out.i32(static_cast<int32_t>(field.integer("maxLength", 0, INT32_MIN, INT32_MAX)));
  out.i32(static_cast<int32_t>(field.integer("minRepeats", 0, INT32_MIN, INT32_MAX)));
  out.i32(static_cast<int32_t>(field.integer("maxRepeats", 1, INT32_MIN, INT32_MAX)));

  std::optional<DataType> type;
  if (!composite) type = dataTypeOf(field, context);
  std::u16string defaultText;
  if (!composite) {
    const char* special = nullptr;
    for (const char* key : {"default", "count", "countedField", "lengthField"})
      if (field.has(key)) {
        if (special) field.failAt(key, "'" + std::string(key) + "' and '" + special + "' of " + field.what() +
                                           " both give the default text; write one of them");
        special = key;
      }
    for (const char* key : {"count", "countedField", "lengthField"})
      field.requireVersion(key, field.has(key), pcf::kCountDefaults, version);
    if (field.has("count") || field.has("countedField")) {
      const char* key = field.has("count") ? "count" : "countedField";
      if (!DataTypeCodes::isCountBase(type->baseType))
        field.failAt(key, "'" + std::string(key) + "' of " + field.what() + " needs a field of base type short, long or strictInteger");
    }
    if (field.has("lengthField") && type->baseType != DataTypeCodes::kRawBinary)
      field.failAt("lengthField", "'lengthField' of " + field.what() + " belongs to a raw binary field (base type binary)");

    if (field.has("count")) defaultText = countText(field);
    else if (field.has("countedField")) defaultText = u"#+" + field.wideText("countedField", u"");
    else if (field.has("lengthField")) defaultText = u"#" + field.wideText("lengthField", u"");
    else defaultText = field.wideText("default", u"");
    for (const char* key : {"countedField", "lengthField"})
      if (field.has(key) && field.wideText(key, u"").empty())
        field.failAt(key, "'" + std::string(key) + "' of " + field.what() + " names no field");
    const char* defaultKey = special ? special : "default";

    // What the engine makes of the default, checked here so that the file loads.
    const std::u16string format = field.wideText("format", u"");
    // Before patterns existed a leading "@" is plain text, which is not what the source means by it.
    field.requireVersion("format", !format.empty() && format.front() == u'@', pcf::kFormatPatterns, version);
    const bool pattern = !format.empty() && format.front() == u'@';
    if (pattern && special) field.failAt(special, "'" + std::string(special) + "' of " + field.what() +
                                                      " is lost: a pattern format (\"@...\") replaces the default");
    if (version >= pcf::kCountDefaults) {
      if (DataTypeCodes::isCountBase(type->baseType)) checkCountDefault(field, defaultKey, defaultText);
      const bool lengthGiven = defaultText.size() > 1 && defaultText.front() == u'#' && !pattern;
      if (type->baseType == DataTypeCodes::kRawBinary && !lengthGiven)
        field.fail(field.what() + " is raw binary and needs a 'lengthField', the field that holds its length (from format "
                                  "version " + std::to_string(pcf::kCountDefaults) + " on)");
    }
    checkValueText(field, defaultKey, defaultText, version);
    checkValueText(field, "format", format, version);
    if (version >= pcf::kFormatPatterns) checkPattern(field, format, type->baseType);
  }
  out.textv(defaultText, version);

  const bool hidden = field.flag("hidden", false);
  field.requireVersion("hidden", hidden, pcf::kHiddenFlags, version);
  if (version >= pcf::kHiddenFlags) out.boolean(hidden);
  // Before the word exists the version says it: no overrides before field overrides, then yes.
  const bool impliedOverrides = version >= pcf::kFieldOverrides;
  const bool hasOverrides = field.flag("hasOverrides", true);
  if (field.has("hasOverrides") && hasOverrides != impliedOverrides && version < pcf::kHasOverrides)
    field.failAt("hasOverrides", "'hasOverrides: " + std::string(hasOverrides ? "true" : "false") + "' of " + field.what() + " " +
                                     tooNew(pcf::kHasOverrides, version));
  if (version >= pcf::kHasOverrides) out.boolean(hasOverrides);

  if (composite) {
    const std::string target = field.text("composite", "");
    const auto* declared = context.findComposite(target);
    if (!declared) field.failAt("composite", "'composite' of " + field.what() + " names no composite of the set: '" + target + "'");
    out.i32(FieldDefn::kComposite).i32(declared->id);
    FieldOverrideWriter::write(field, *declared, context, out);
  } else {
    out.i32(FieldDefn::kPrimitive).i32(type->code);
    field.requireVersion("dataType", !DataTypeCodes::isBasic(type->code), pcf::kTypeTables, version);
    if (type->code != DataTypeCodes::kVariable && field.has("variable"))
      field.failAt("variable", "'variable' of " + field.what() + " goes with 'dataType: variable'");
    if (type->typeId) out.i32(*type->typeId);
    if (type->code == DataTypeCodes::kVariable) writeVariable(field, siblings, context, out);
    out.i32(alignmentOf(field));
    out.textv(field.wideText("format", u""), version);
    const std::string table = field.text("table", "");
    field.requireVersion("table", !table.empty(), pcf::kValidationTableName, version);
    if (!table.empty() && !context.hasValidationTable(table))
      field.failAt("table", "'table' of " + field.what() + " names no validation table of the set: '" + table + "'");
    if (version >= pcf::kValidationTableName) out.text8(table);
  }

  if (version >= pcf::kUserData) UserDataWriter::write(field, context, out);
  const bool presence = field.flag("fieldPresenceIndicator", false);
  field.requireVersion("fieldPresenceIndicator", presence, pcf::kSpecialRecords, version);
  if (version >= pcf::kSpecialRecords) out.boolean(presence);
}

void FieldWriter::checkPattern(const SourceNode& owner, std::u16string_view format, int32_t baseType) {
  if (format.empty() || format.front() != u'@') return;
  // The engine's own builder judges it, so that the compiler and the loader can't disagree.
  try {
    buildFieldFormatter(formatterKindFor(baseType, false), format.substr(1));
  } catch (const InvalidFile& e) {
    owner.failAt("format", "'format' of " + owner.what() + " can't be loaded: " + e.message);
  } catch (int) {
    owner.failAt("format", "'format' of " + owner.what() + " is a regular expression that doesn't compile");
  }
}

}  // namespace vantrelia::compiler
