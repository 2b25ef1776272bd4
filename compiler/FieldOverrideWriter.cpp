#include "compiler/FieldOverrideWriter.h"

#include <climits>
#include <string>

#include "compiler/CompileError.h"
#include "compiler/FieldWriter.h"
#include "compiler/PcfWriter.h"
#include "definitions/DataTypeCodes.h"
#include "definitions/FieldInstanceUpdate.h"
#include "definitions/PcfMessages.h"
#include "definitions/PcfVersion.h"

namespace vantrelia::compiler {

namespace {

using namespace overrideflags;

FieldOverrideValues primitiveValuesOf(const SourceNode& entry, const SourceNode& target, const CompileContext& context) {
  const int version = context.version();
  const FieldWriter::DataType type = FieldWriter::dataTypeOf(target, context);
  FieldOverrideValues values = FieldOverrideWriter::commonValuesOf(entry, version, pcf::kFieldOverrides);
  if (entry.flag("advancedValidation", false)) {
    if (version >= pcf::kOverrideValidationFlags)
      entry.failAt("advancedValidation", "'advancedValidation' of " + entry.what() + ": from format version " +
                                             std::to_string(pcf::kOverrideValidationFlags) + " the engine refuses it (\"" +
                                             messages::kCompositeOverrideAdvanced + "\")");
    values.flags |= kAdvancedValidation;
  }

  if (entry.has("default") && entry.has("count"))
    entry.failAt("count", "'count' and 'default' of " + entry.what() + " both give the default text; write one of them");
  const char* defaultKey = entry.has("count") ? "count" : "default";
  if (entry.has(defaultKey)) {
    values.flags |= kDefaultValue;
    std::u16string text;
    if (entry.has("count")) {
      if (!DataTypeCodes::isCountBase(type.baseType))
        entry.failAt("count", "'count' of " + entry.what() + " needs a field of base type short, long or strictInteger");
      text = FieldWriter::countText(entry);
    } else {
      text = entry.wideText("default", u"");
    }
    if (type.code == DataTypeCodes::kRawBinary || (type.baseType == DataTypeCodes::kRawBinary && !text.empty() && text.front() == u'#'))
      entry.failAt(defaultKey, "'" + std::string(defaultKey) + "' of " + entry.what() +
                                   ": the default of a raw binary field names its length field and can't be overridden");
    if (DataTypeCodes::isCountBase(type.baseType)) FieldWriter::checkCountDefault(entry, defaultKey, text);
    values.DefaultValue = text;
  }
  if (entry.has("format")) {
    values.flags |= kFormatter;
    const std::u16string format = entry.wideText("format", u"");
    if (!format.empty() && format.front() == u'@' && (values.flags & kDefaultValue))
      entry.failAt(defaultKey, "'" + std::string(defaultKey) + "' of " + entry.what() +
                                   " is lost: a pattern format (\"@...\") replaces the default");
    FieldWriter::checkPattern(entry, format, type.baseType);
    values.format = format;
  }
  if (entry.has("table")) {
    values.flags |= kValidationTable;
    values.tableName = entry.text("table", "");
    if (!values.tableName.empty() && !context.hasValidationTable(values.tableName))
      entry.failAt("table", "'table' of " + entry.what() + " names no validation table of the set: '" + values.tableName + "'");
  }
  for (const char* key : {"default", "format"}) {
    const std::u16string text = key == std::string("default") ? values.DefaultValue.str() : values.format.str();
    if (text.size() > PcfWriter::kLongestText) entry.failAt(key, "'" + std::string(key) + "' of " + entry.what() + " is too long");
    if (version < pcf::kWideValueTexts && !PcfWriter::fitsText8w(text))
      entry.failAt(entry.has(key) ? key : defaultKey, "'" + std::string(key) + "' of " + entry.what() +
                                                          " has a character that needs format version " +
                                                          std::to_string(pcf::kWideValueTexts) + " or later");
  }
  return values;
}

void writeLevel(const SourceNode& owner, const CompileContext::Composite& composite, const CompileContext& context,
                PcfWriter& out) {
  const int version = context.version();
  const YAML::Node tree = owner.yaml()["overrides"];
  if (!tree.IsMap()) owner.failAt("overrides", "'overrides' of " + owner.what() + " must be a mapping from field names to overrides");
  const std::vector<SourceNode> fields = FieldWriter::fieldsOf(composite.source);
  std::vector<std::string> seen;
  for (const auto& item : tree) {
    const std::string& name = item.first.Scalar();
    const int line = lineOfNode(item.first);
    int32_t index = -1;
    for (size_t i = 0; i < fields.size(); ++i) {
      if (fields[i].text("name", "") != name) continue;
      if (index >= 0) throw CompileError(line, "composite '" + composite.name + "' has more than one field named '" + name + "'");
      index = static_cast<int32_t>(i);
    }
    if (index < 0) throw CompileError(line, "composite '" + composite.name + "' has no field named '" + name + "' to override");
    for (const auto& earlier : seen)
      if (earlier == name) throw CompileError(line, "field '" + name + "' is overridden twice in " + owner.what());
    seen.push_back(name);

    const SourceNode entry(item.second, "the override of field '" + name + "' of composite '" + composite.name + "'");
    if (!item.second.IsMap()) entry.fail(entry.what() + " must be a mapping of the attributes it overrides");
    const SourceNode& target = fields[static_cast<size_t>(index)];
    if (!target.has("composite")) {
      entry.allowOnly({"default", "count", "format", "table", "required", "hidden", "minLength", "maxLength", "situational",
                       "advancedValidation"});
      const FieldOverrideValues values = primitiveValuesOf(entry, target, context);
      if (values.flags == 0) entry.fail(entry.what() + " overrides nothing");
      out.i32(index).boolean(false);
      FieldOverrideWriter::writeFlags(out, values.flags, version);
      if (values.flags & kDefaultValue) out.textv(values.DefaultValue.view(), version);
      if (values.flags & kFormatter) out.textv(values.format.view(), version);
      if (values.flags & kValidationTable) out.text8(values.tableName);
      FieldOverrideWriter::writeCommonAttributes(out, values, version);
      continue;
    }

    entry.allowOnly({"required", "hidden", "minLength", "maxLength", "situational", "advancedValidation", "overrides"});
    FieldOverrideValues values = FieldOverrideWriter::commonValuesOf(entry, version, pcf::kOverrideFlagsAndHeader);
    // A composite field's record may carry the flag at any version that has its flag word.
    if (entry.flag("advancedValidation", false)) {
      entry.requireVersion("advancedValidation", true, pcf::kOverrideFlagsAndHeader, version);
      values.flags |= kAdvancedValidation;
    }
    if (values.flags == 0 && !entry.has("overrides")) entry.fail(entry.what() + " overrides nothing");
    const auto* nested = context.findComposite(target.text("composite", ""));
    if (!nested) entry.fail("field '" + name + "' of composite '" + composite.name + "' names no composite of the set");
    out.i32(index).boolean(true);
    if (version >= pcf::kOverrideFlagsAndHeader) FieldOverrideWriter::writeFlags(out, values.flags, version);
    FieldOverrideWriter::writeCommonAttributes(out, values, version);
    if (entry.has("overrides")) writeLevel(entry, *nested, context, out);
    out.i32(FieldInstanceUpdate::kCloseLevel);
  }
}

}  // namespace

FieldOverrideValues FieldOverrideWriter::commonValuesOf(const SourceNode& entry, int version, int flagsFrom) {
  FieldOverrideValues values;
  const auto gate = [&](const char* key, uint16_t flag, int from) {
    if (!entry.has(key)) return false;
    entry.requireVersion(key, true, from, version);
    values.flags |= flag;
    return true;
  };
  // A nested record carries flags only from 801, the version that also brought the header.
  if (gate("required", kRequired, pcf::kOverrideFlagsAndHeader)) values.Required = entry.flag("required", false);
  if (gate("hidden", kHidden, pcf::kHiddenOverride)) values.Hidden = entry.flag("hidden", false);
  if (gate("minLength", kMinLength, pcf::kWideOverrideFlags))
    values.MinLength = static_cast<int32_t>(entry.integer("minLength", 0, INT32_MIN, INT32_MAX));
  if (gate("maxLength", kMaxLength, pcf::kWideOverrideFlags))
    values.MaxLength = static_cast<int32_t>(entry.integer("maxLength", 0, INT32_MIN, INT32_MAX));
  if (entry.flag("situational", false)) {
    if (version >= pcf::kOverrideValidationFlags)
      entry.failAt("situational", "'situational' of " + entry.what() + ": from format version " +
                                      std::to_string(pcf::kOverrideValidationFlags) + " the engine refuses it (\"" +
                                      messages::kCompositeOverrideSituational + "\")");
    gate("situational", kSituationalRule, flagsFrom);
  }
  return values;
}

void FieldOverrideWriter::writeFlags(PcfWriter& out, uint16_t flags, int version) {
  if (version >= pcf::kWideOverrideFlags) out.u16(flags);
  else out.byte(static_cast<uint8_t>(flags));
}

void FieldOverrideWriter::writeCommonAttributes(PcfWriter& out, const FieldOverrideValues& values, int version) {
  if (version >= pcf::kOverrideFlagsAndHeader && (values.flags & kRequired)) out.boolean(values.Required != 0);
  if (version >= pcf::kHiddenOverride && (values.flags & kHidden)) out.boolean(values.Hidden != 0);
  if (version >= pcf::kWideOverrideFlags) {
    if (values.flags & kMinLength) out.i32(values.MinLength);
    if (values.flags & kMaxLength) out.i32(values.MaxLength);
  }
}

void FieldOverrideWriter::write(const SourceNode& field, const CompileContext::Composite& composite,
                                const CompileContext& context, PcfWriter& out) {
  const int version = context.version();
  field.requireVersion("overrides", field.has("overrides"), pcf::kFieldOverrides, version);
  field.requireVersion("overrideHeader", field.has("overrideHeader"), pcf::kOverrideFlagsAndHeader, version);
  if (version < pcf::kFieldOverrides) return;

  if (version >= pcf::kOverrideFlagsAndHeader) {
    FieldOverrideValues header;
    if (field.has("overrideHeader")) {
      const SourceNode source(field.yaml()["overrideHeader"], "'overrideHeader' of " + field.what());
      source.allowOnly({"required", "hidden", "minLength", "maxLength", "situational"});
      header = commonValuesOf(source, version, pcf::kOverrideFlagsAndHeader);
    }
    writeFlags(out, header.flags, version);
    writeCommonAttributes(out, header, version);
  }
  if (field.has("overrides")) writeLevel(field, composite, context, out);
  out.i32(FieldInstanceUpdate::kEndOfBlock);
}

}  // namespace vantrelia::compiler
