#include "compiler/SegmentWriter.h"

#include <algorithm>
#include <climits>
#include <stdexcept>

#include "compiler/CompileContext.h"
#include "compiler/FieldWriter.h"
#include "compiler/MatchWriter.h"
#include "compiler/PcfWriter.h"
#include "compiler/SeparatorWriter.h"
#include "compiler/UserDataWriter.h"
#include "definitions/PcfVersion.h"
#include "definitions/SegmentDefn.h"
#include "foundation/Enumerations.h"
#include "foundation/TextConversion.h"

namespace vantrelia::compiler {

namespace {

// A byte text of the record; the engine widens each byte back, so only what survives that goes.
std::u16string byteText(const SourceNode& segment, std::string_view key, const std::u16string& fallback) {
  const std::u16string text = segment.wideText(key, fallback);
  if (!PcfWriter::fitsText8w(text) || text.size() > PcfWriter::kLongestText || text.find(u'\0') != std::u16string::npos)
    segment.failAt(key, "'" + std::string(key) + "' of " + segment.what() + " has a character that the file's byte texts "
                        "can't carry: only U+0001 to U+007F and U+FF80 to U+FFFF come back unchanged");
  return text;
}

// The tag as written: the name when the source gives none.
std::u16string tagOf(const SourceNode& segment, const std::string& name) {
  return byteText(segment, "tag", widenSigned(name));
}

SourceNode specialRecord(const SourceNode& segment, const char* key) {
  const YAML::Node node = segment.yaml()[key];
  if (!node.IsMap()) segment.failAt(key, "'" + std::string(key) + "' of " + segment.what() + " must be a mapping with 'separator' and 'text'");
  SourceNode record(node, "'" + std::string(key) + "' of " + segment.what());
  record.allowOnly({"separator", "text"});
  return record;
}

std::u16string specialText(const SourceNode& record) {
  const std::u16string text = record.wideText("text", u"");
  if (text.size() > PcfWriter::kLongestText) record.failAt("text", "'text' of " + record.what() + " is too long");
  return text;
}

}  // namespace

void SegmentWriter::declare(const std::vector<SourceNode>& segments, CompileContext& context) {
  const int version = context.version();
  std::vector<std::string> names;
  for (const auto& segment : segments) {
    segment.allowOnly({"name", "tag", "id", "separator", "specialSeparator", "fixedWidth", "fields", "matches", "userData",
                       "ncpdp", "presenceIndicator", "nameValuePair"});
    const std::string name = segment.recordName("message items refer to it by name");
    if (context.findSegment(name) || std::find(names.begin(), names.end(), name) != names.end())
      segment.failAt("name", "segment name '" + name + "' is used twice in the set; message items refer to segments by name");
    names.push_back(name);
    // Before 517 the engine reads an empty tag as the name, so a segment can't be without one.
    segment.requireVersion("tag", segment.has("tag") && segment.wideText("tag", u"").empty(), pcf::kEmptyTagStaysEmpty, version);
    segment.requireVersion("ncpdp", segment.flag("ncpdp", false), pcf::kDefinitionFlagWords, version);
    segment.requireVersion("presenceIndicator", segment.has("presenceIndicator"), pcf::kSpecialRecords, version);
    segment.requireVersion("nameValuePair", segment.has("nameValuePair"), pcf::kFileHeader, version);
    if (segment.has("presenceIndicator") && segment.has("nameValuePair"))
      segment.failAt("nameValuePair", segment.what() + " is a presence indicator segment already; it can't hold name-value pairs too");
    UserDataWriter::declare(segment, context);
    for (const auto& field : FieldWriter::fieldsOf(segment)) FieldWriter::declare(field, context);
    if (!segment.has("id")) continue;
    const auto id = static_cast<int32_t>(segment.integer("id", 0, INT32_MIN, INT32_MAX));
    if (const auto* other = context.findSegmentById(id))
      segment.failAt("id", "id " + std::to_string(id) + " of " + segment.what() + " is already used by segment '" + other->name + "'");
    context.declareSegment(name, id, segment);
  }
  // Ids the source doesn't give come from the lowest free ones, in source order.
  int32_t next = 1;
  for (const auto& segment : segments) {
    if (segment.has("id")) continue;
    while (context.findSegmentById(next)) ++next;
    context.declareSegment(segment.recordName("message items refer to it by name"), next, segment);
  }
}

void SegmentWriter::write(const SourceNode& segment, const CompileContext& context, PcfWriter& out) {
  const int version = context.version();
  const std::string name = segment.recordName("message items refer to it by name");
  const auto* declared = context.findSegment(name);
  if (!declared) throw std::logic_error("segment '" + name + "' written without being declared");

  const int32_t separator = SeparatorWriter::kindOf(segment, "separator", qxSepAuto);
  if (segment.has("specialSeparator") && separator != qxSepString)
    segment.failAt("specialSeparator", "'specialSeparator' of " + segment.what() + " is used only with 'separator: string'");
  out.text8(name).text8w(tagOf(segment, name)).text8w(byteText(segment, "specialSeparator", u""));
  out.i32(separator).boolean(segment.flag("fixedWidth", false)).i32(declared->id);

  const std::vector<SourceNode> fields = FieldWriter::fieldsOf(segment);
  out.i32(static_cast<int32_t>(fields.size()));
  uint32_t flags = segment.flag("ncpdp", false) ? SegmentDefn::kNcpdp : 0;
  for (const auto& field : fields) {
    FieldWriter::write(field, fields, context, out);
    if (FieldWriter::isVariable(field, context)) flags |= SegmentDefn::kHasVariableField;
  }
  MatchWriter::writeList(segment, context, out);

  if (version >= pcf::kSyntaxRules) out.boolean(false);        // syntax rules
  if (version >= pcf::kValidationEquations) out.count(0);      // validation equations
  if (version >= pcf::kUserData) UserDataWriter::write(segment, context, out);
  if (version >= pcf::kDefinitionFlagWords) out.i32(static_cast<int32_t>(flags));
  if (version >= pcf::kSpecialRecords) {
    out.boolean(segment.has("presenceIndicator"));
    if (segment.has("presenceIndicator")) {
      const SourceNode indicator = specialRecord(segment, "presenceIndicator");
      out.i32(SeparatorWriter::kindOf(indicator, "separator", qxSepString)).text16(specialText(indicator));
    }
  }
  if (version >= pcf::kFileHeader) {
    out.boolean(segment.has("nameValuePair"));
    if (segment.has("nameValuePair")) {
      const SourceNode pairs = specialRecord(segment, "nameValuePair");
      const int32_t type = SeparatorWriter::kindOf(pairs, "separator", qxSepString);
      out.i32(type);
      // The file has this text only for a separator given as a string.
      if (type == qxSepString) out.text16(specialText(pairs));
      else if (pairs.has("text")) pairs.failAt("text", "'text' of " + pairs.what() + " is used only with 'separator: string'");
    }
  }
}

}  // namespace vantrelia::compiler
