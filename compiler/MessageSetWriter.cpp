#include "compiler/MessageSetWriter.h"

#include <set>

#include "compiler/CompileContext.h"
#include "compiler/CompileError.h"
#include "compiler/CompositeWriter.h"
#include "compiler/FieldWriter.h"
#include "compiler/MessageWriter.h"
#include "compiler/PcfWriter.h"
#include "compiler/SegmentWriter.h"
#include "compiler/SeparatorWriter.h"
#include "compiler/ValidationErrorSettingWriter.h"
#include "compiler/ValidationTableWriter.h"
#include "compiler/UserDataWriter.h"
#include "definitions/PcfVersion.h"

namespace vantrelia::compiler {

namespace {

constexpr int64_t kI32Min = INT32_MIN;
constexpr int64_t kI32Max = INT32_MAX;

// Settings of a set that old versions don't carry, with the value those versions imply.
struct GatedFlag {
  const char* key;
  bool implied;
  int gate;
};
constexpr GatedFlag kGatedFlags[] = {
    {"initializeSeparatorsFromParent", false, pcf::kInitSeparatorsFromParent},
    {"genericParsing", false, pcf::kGenericParsing},
    {"countEncodedLength", true, pcf::kCountEncodedLength},
    {"initializeValidationErrorSettingsFromParent", false, pcf::kValidationErrorSettings},
};

void checkSet(const SourceNode& set, const CompileContext& context) {
  set.allowOnly({"name", "id", "fixedWidth", "reserved", "trimSegments", "initializeSeparatorsFromParent",
                 "genericParsing", "countEncodedLength", "separators", "messageTypeFields", "headerItemCount",
                 "validationTables", "composites", "segments", "messages", "userData",
                 "initializeValidationErrorSettingsFromParent", "validationErrorSettings"});
  const int version = context.version();
  for (const GatedFlag& gated : kGatedFlags)
    set.requireVersion(gated.key, set.flag(gated.key, gated.implied) != gated.implied, gated.gate, version);
  set.requireVersion("headerItemCount", set.integer("headerItemCount", 1, kI32Min, kI32Max) != 1, pcf::kMessageTypeText,
                     version);
}

}  // namespace

void MessageSetWriter::declareLocalNames(const SourceNode& set, CompileContext& context) {
  context.beginMessageSet();
  for (const auto& table : set.records("validationTables", "validation table")) context.declareValidationTable(table.text("name", ""));
  CompositeWriter::declare(set.records("composites", "composite"), context);
  SegmentWriter::declare(set.records("segments", "segment"), context);
  MessageWriter::declare(set.records("messages", "message"), context);
}

void MessageSetWriter::declareAll(const std::vector<SourceNode>& sets, CompileContext& context) {
  std::set<int64_t> taken;
  for (const auto& set : sets)
    if (set.has("id") && !taken.insert(set.integer("id", 0, kI32Min, kI32Max)).second)
      set.failAt("id", "the id of " + set.what() + " is already taken by another message set");
  int64_t next = 1;
  for (const auto& set : sets) {
    checkSet(set, context);
    const std::string name = set.text("name", "");
    if (name.empty()) set.fail(set.what() + " needs a name");
    if (context.messageSetId(name)) set.failAt("name", "another message set is already named '" + name + "'");
    int64_t id = set.integer("id", 0, kI32Min, kI32Max);
    if (!set.has("id")) {
      while (taken.count(next)) ++next;
      id = next++;
    }
    context.declareMessageSet(name, static_cast<int32_t>(id));
  }
  // Every set's name is known before any item looks one up: an item may embed a later set.
  for (const auto& set : sets) {
    UserDataWriter::declare(set, context);
    declareLocalNames(set, context);
  }
}

void MessageSetWriter::write(const SourceNode& set, size_t position, CompileContext& context, PcfWriter& out) {
  const int version = context.version();
  declareLocalNames(set, context);
  const std::string name = set.text("name", "");

  out.text8(name);
  out.boolean(set.flag("fixedWidth", false));
  out.boolean(set.flag("reserved", false));
  out.boolean(set.flag("trimSegments", false));
  if (version >= pcf::kInitSeparatorsFromParent) out.boolean(set.flag("initializeSeparatorsFromParent", false));
  if (version >= pcf::kGenericParsing) out.boolean(set.flag("genericParsing", false));
  if (version >= pcf::kCountEncodedLength) out.boolean(set.flag("countEncodedLength", true));
  out.i32(*context.messageSetId(name));

  // The separator count stands before the records; the list writer knows it only once written.
  PcfWriter separators;
  const int32_t separatorCount =
      set.has("separators") ? SeparatorWriter::writeList(SourceNode(set.yaml()["separators"], "the separators of " + set.what()),
                                                         context, separators)
                            : 0;
  out.i32(separatorCount).raw(separators.bytes());

  const auto typeFields = set.wideTexts("messageTypeFields");
  out.i32(static_cast<int32_t>(typeFields.size()));
  for (const auto& path : typeFields) {
    if (!PcfWriter::fitsText8w(path)) set.failAt("messageTypeFields", "a message type field path must be plain ASCII");
    std::string bytes(path.begin(), path.end());
    out.text8(bytes);
  }
  if (version >= pcf::kMessageTypeText) out.i32(static_cast<int32_t>(set.integer("headerItemCount", 1, kI32Min, kI32Max)));

  const auto tables = set.records("validationTables", "validation table");
  const bool descriptions = ValidationTableWriter::carriesDescriptions(tables, context);
  if (version >= pcf::kTableDescriptions) out.boolean(descriptions);
  out.i32(static_cast<int32_t>(tables.size()));
  for (const auto& table : tables) ValidationTableWriter::write(table, context, out, descriptions);

  const auto composites = set.records("composites", "composite");
  out.i32(static_cast<int32_t>(composites.size()));
  for (const auto& composite : composites) CompositeWriter::write(composite, context, out);

  const auto segments = set.records("segments", "segment");
  out.i32(static_cast<int32_t>(segments.size()));
  for (const auto& segment : segments) SegmentWriter::write(segment, context, out);

  const auto messages = set.records("messages", "message");
  out.i32(static_cast<int32_t>(messages.size()));
  for (size_t i = 0; i < messages.size(); ++i)
    MessageWriter::write(messages[i], context, out, context.stateTablesFor(position, i));

  if (version >= pcf::kUserData) UserDataWriter::write(set, context, out);
  if (version >= pcf::kValidationErrorSettings) out.boolean(set.flag("initializeValidationErrorSettingsFromParent", false));
  ValidationErrorSettingWriter::writeList(set, context, out);
}

}  // namespace vantrelia::compiler
