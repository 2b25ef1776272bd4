#include "compiler/SeparatorWriter.h"

#include <array>
#include <climits>
#include <optional>
#include <string>

#include "compiler/CompileContext.h"
#include "compiler/CompileError.h"
#include "compiler/PcfWriter.h"
#include "definitions/PcfVersion.h"
#include "foundation/Enumerations.h"

namespace vantrelia::compiler {

namespace {

constexpr std::array<std::pair<std::string_view, int32_t>, 4> kStyles = {{
    {"initiator", SeparatorDefn::kStyleInitiator},
    {"separator", SeparatorDefn::kStyleSeparator},
    {"terminator", SeparatorDefn::kStyleTerminator},
    {"all", SeparatorDefn::kStyleAll},
}};


// The fields of one file record, in file order.
struct Record {
  int32_t kind = 2;  // neither preset nor from a field: leaves the flags alone
  std::u16string value;
  std::u16string replacement;
  std::string fieldPath;
  int32_t position = 0;
  int32_t style = SeparatorDefn::kStyleSeparator;
  bool variable = false;
  std::u16string initiator;
  std::u16string terminator;
  std::u16string terminatorReplacement;
};

// The mirror of SeparatorDefn::load.
void writeRecord(const Record& record, int version, PcfWriter& out) {
  out.i32(record.kind);
  out.text8w(record.value);
  out.text8w(record.replacement);
  if (record.kind == SeparatorDefn::kKindFromField) {
    out.text8(record.fieldPath);
    out.i32(record.position);
  }
  if (version >= pcf::kSeparatorWritingStyle) out.i32(record.style);
  if (version >= pcf::kVariableSeparators) out.boolean(record.variable);
  if (record.variable) {
    out.text8w(record.initiator);
    out.text8w(record.terminator);
    if (version >= pcf::kTerminatorReplacement) out.text8w(record.terminatorReplacement);
  }
}

// Separator texts are byte texts at every version, and a zero would end them early.
std::u16string byteText(const SourceNode& owner, std::string_view key) {
  std::u16string text = owner.wideText(key, u"");
  const std::string where = "'" + std::string(key) + "' of " + owner.what();
  if (text.size() > PcfWriter::kLongestText) owner.failAt(key, where + " is longer than 65535 characters");
  for (char16_t unit : text) {
    if (unit == 0) owner.failAt(key, where + " can't hold a zero character");
    if (!PcfWriter::fitsText8w(std::u16string_view(&unit, 1)))
      owner.failAt(key, where + " has a character that the file's byte texts can't carry; write it as an escape"
                                " such as \\u00E9, which the engine expands when it loads the file");
  }
  return text;
}

int32_t styleOf(const SourceNode& source) {
  const std::string name = source.text("style", "separator");
  for (const auto& [styleName, style] : kStyles)
    if (name == styleName) return style;
  source.failAt("style", "'style' of " + source.what() + " must be initiator, separator, terminator or all");
}

Record recordOf(const SourceNode& source, int version, int32_t styleBeforeWritingStyle) {
  source.allowOnly({"value", "replacement", "fromField", "position", "style", "variable", "kind"});
  Record record;
  record.value = byteText(source, "value");
  record.replacement = byteText(source, "replacement");

  const bool fromField = source.has("fromField");
  record.kind = static_cast<int32_t>(
      source.integer("kind", fromField ? SeparatorDefn::kKindFromField : SeparatorDefn::kKindPreset, INT32_MIN, INT32_MAX));
  if (record.kind == SeparatorDefn::kKindFromField) {
    record.fieldPath = source.text("fromField", "");
    if (record.fieldPath.size() > PcfWriter::kLongestText) source.failAt("fromField", "'fromField' of " + source.what() + " is too long");
    if (record.fieldPath.find('\0') != std::string::npos)
      source.failAt("fromField", "'fromField' of " + source.what() + " can't hold a zero character");
    record.position = static_cast<int32_t>(source.integer("position", 0, INT32_MIN, INT32_MAX));
  } else {
    if (fromField) source.failAt("fromField", "'fromField' of " + source.what() + " is written only for kind 1");
    if (source.has("position")) source.failAt("position", "'position' of " + source.what() + " goes with 'fromField'");
  }

  record.style = styleOf(source);
  source.requireVersion("style", source.has("style") && record.style != styleBeforeWritingStyle,
                        pcf::kSeparatorWritingStyle, version);

  if (source.has("variable")) {
    source.requireVersion("variable", true, pcf::kVariableSeparators, version);
    // The engine refuses a variable separator that still comes from a field; an empty path doesn't.
    if (record.kind == SeparatorDefn::kKindFromField && !record.fieldPath.empty())
      source.failAt("variable", "a separator read from a field ('fromField') can't be variable");
    // Refuses anything but a mapping, naming the line.
    const SourceNode variable(source.yaml()["variable"], "'variable' of " + source.what());
    variable.allowOnly({"initiator", "terminator", "terminatorReplacement"});
    record.variable = true;
    record.initiator = byteText(variable, "initiator");
    record.terminator = byteText(variable, "terminator");
    record.terminatorReplacement = byteText(variable, "terminatorReplacement");
    variable.requireVersion("terminatorReplacement", !record.terminatorReplacement.empty(),
                            pcf::kTerminatorReplacement, version);
  }
  return record;
}

// Files too old for the style word have the set make segments terminated and the first field
// level introduced by its separator; every other separator is written between items.
int32_t styleBeforeWritingStyleOf(int type) {
  if (type == qxSepSegment) return SeparatorDefn::kStyleTerminator;
  if (type == qxSepField1) return SeparatorDefn::kStyleInitiator;
  return SeparatorDefn::kStyleSeparator;
}

}  // namespace

std::string SeparatorWriter::knownNames() {
  std::string known;
  for (int type = 0; type < kSeparatorCount; ++type) known += (type ? ", " : "") + std::string(SeparatorDefn::nameOf(type));
  return known;
}

void SeparatorWriter::write(const SourceNode& separator, const CompileContext& context, PcfWriter& out,
                            int32_t styleBeforeWritingStyle) {
  writeRecord(recordOf(separator, context.version(), styleBeforeWritingStyle), context.version(), out);
}

void SeparatorWriter::writeUntouched(PcfWriter& out, int version) { writeRecord(Record{}, version, out); }

int32_t SeparatorWriter::writeList(const SourceNode& separators, CompileContext& context, PcfWriter& out) {
  const YAML::Node& mapping = separators.yaml();
  if (!mapping.IsMap()) return 0;  // SourceNode lets only an absent or null value through here

  std::array<std::optional<Record>, kSeparatorCount> given;
  int highest = -1;
  for (const auto& entry : mapping) {
    const std::string& name = entry.first.Scalar();
    const int type = SeparatorDefn::typeOf(name);
    if (type < 0)
      throw CompileError(lineOfNode(entry.first), "unknown separator '" + name + "' in " + separators.what() +
                                                     " (known separators: " + knownNames() + ")");
    auto& slot = given[static_cast<size_t>(type)];
    if (slot)
      throw CompileError(lineOfNode(entry.first), "separator '" + name + "' is given twice in " + separators.what());

    if (entry.second.IsScalar()) {
      Record preset;
      preset.kind = SeparatorDefn::kKindPreset;
      preset.value = byteText(separators, name);
      slot = preset;
    } else if (entry.second.IsMap()) {
      const SourceNode source(entry.second, "separator '" + name + "'");
      slot = recordOf(source, context.version(), styleBeforeWritingStyleOf(type));
    } else {
      separators.failAt(name, "separator '" + name + "' must be a text or a mapping");
    }
    if (type > highest) highest = type;
  }

  for (int type = 0; type <= highest; ++type) {
    const auto& slot = given[static_cast<size_t>(type)];
    writeRecord(slot ? *slot : Record{}, context.version(), out);
  }
  return highest + 1;
}

int32_t SeparatorWriter::kindOf(const SourceNode& record, std::string_view key, int32_t fallback) {
  if (!record.has(key)) return fallback;
  const int type = SeparatorDefn::typeOf(record.text(key, ""));
  if (type < 0)
    record.failAt(key, "'" + std::string(key) + "' of " + record.what() + " must name a separator (segment, repeat, "
                       "null, decimal, filler, field1 to field5, user1 to user5, none, auto, string, message, group, length, crlf)");
  return type;
}

}  // namespace vantrelia::compiler
