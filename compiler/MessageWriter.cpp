#include "compiler/MessageWriter.h"

#include <algorithm>
#include <climits>
#include <string>

#include "compiler/CompileContext.h"
#include "compiler/CompileError.h"
#include "compiler/FieldOverrideWriter.h"
#include "compiler/FieldWriter.h"
#include "compiler/MatchWriter.h"
#include "compiler/PcfWriter.h"
#include "compiler/UserDataWriter.h"
#include "definitions/FieldInstanceUpdate.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/PcfVersion.h"

namespace vantrelia::compiler {

namespace {

using namespace overrideflags;

std::vector<SourceNode> itemsOf(const SourceNode& owner) { return owner.records("items", "message item"); }

int32_t kindOf(const SourceNode& item) {
  int kinds = 0;
  int32_t kind = MessageItemDefn::kSegmentItem;
  if (item.has("segment")) ++kinds;
  if (item.has("group")) ++kinds, kind = MessageItemDefn::kGroupItem;
  if (item.has("embeddedSet")) ++kinds, kind = MessageItemDefn::kMessageSetItem;
  if (kinds != 1) item.fail(item.what() + " needs exactly one of 'segment', 'group' and 'embeddedSet'");
  return kind;
}

std::string nameOf(const SourceNode& item) {
  const char* kindKey = item.has("group") ? "group" : item.has("embeddedSet") ? "embeddedSet" : "segment";
  return item.text("name", item.text(kindKey, ""));
}

void checkItem(const SourceNode& item, int version) {
  item.allowOnly({"segment", "group", "embeddedSet", "name", "id", "required", "minRepeats", "maxRepeats", "hidden",
                  "overrides", "matches", "userData", "choice", "unordered", "items", "visibleChildren"});
  const int32_t kind = kindOf(item);
  item.requireVersion("id", item.has("id"), pcf::kItemIdsAndStateTables, version);
  item.requireVersion("hidden", item.flag("hidden", false), pcf::kHiddenFlags, version);
  const auto only = [&](const char* key, int32_t wanted, const char* kindName) {
    if (item.has(key) && kind != wanted) item.failAt(key, "'" + std::string(key) + "' belongs to " + kindName + " items only");
  };
  only("overrides", MessageItemDefn::kSegmentItem, "segment");
  only("matches", MessageItemDefn::kSegmentItem, "segment");
  for (const char* key : {"choice", "unordered", "items", "visibleChildren"}) only(key, MessageItemDefn::kGroupItem, "group");
  item.requireVersion("overrides", item.has("overrides"), pcf::kFieldOverrides, version);
  item.requireVersion("matches", !MatchWriter::matchesOf(item).empty(), pcf::kMatchLists, version);
  item.requireVersion("unordered", item.flag("unordered", false), pcf::kUnorderedGroups, version);
  item.requireVersion("visibleChildren", item.has("visibleChildren"), pcf::kVisibleChildTables, version);
  if (item.flag("choice", false) && item.flag("unordered", false))
    item.fail(item.what() + " can't be both a choice and unordered");
  for (const auto& child : itemsOf(item)) checkItem(child, version);
}

// Item ids of one message: the ids the source gives, and for the others, in depth-first order,
// the lowest ids from 1 that no item of the message holds.
struct ItemIds {
  std::vector<int32_t> given;
  int32_t next = 1;

  void take(const SourceNode& item) {
    if (item.has("id")) {
      const auto id = static_cast<int32_t>(item.integer("id", 0, 1, INT32_MAX));
      if (std::find(given.begin(), given.end(), id) != given.end())
        item.failAt("id", "id " + std::to_string(id) + " of " + item.what() + " is given to another item of the message");
      given.push_back(id);
    }
    for (const auto& child : itemsOf(item)) take(child);
  }
  void takeAll(const std::vector<SourceNode>& items) {
    for (const auto& item : items) take(item);
  }
  int32_t idOf(const SourceNode& item) {
    if (item.has("id")) return static_cast<int32_t>(item.integer("id", 0, 1, INT32_MAX));
    while (std::find(given.begin(), given.end(), next) != given.end()) ++next;
    given.push_back(next);
    return next;
  }
};

void writeVisibleChildren(const SourceNode& owner, size_t itemCount, int version, PcfWriter& out) {
  if (version < pcf::kVisibleChildTables) return;
  out.boolean(owner.has("visibleChildren"));
  if (!owner.has("visibleChildren")) return;
  const SourceNode table(owner.yaml()["visibleChildren"], "'visibleChildren' of " + owner.what());
  table.allowOnly({"counts", "total"});
  std::vector<std::pair<int32_t, int32_t>> entries;
  if (table.has("counts")) {
    const YAML::Node counts = table.yaml()["counts"];
    if (!counts.IsMap()) table.failAt("counts", "'counts' of " + table.what() + " must map item indexes to counts");
    for (const auto& entry : counts) {
      const int32_t index = entry.first.as<int32_t>(-1);
      if (index < 0 || static_cast<size_t>(index) >= itemCount)
        table.failAt("counts", "'counts' of " + table.what() + " names item " + entry.first.Scalar() + ", which isn't there");
      entries.emplace_back(index, entry.second.as<int32_t>(1));
    }
  }
  out.i32(static_cast<int32_t>(entries.size()));
  for (const auto& [index, count] : entries) out.i32(index).i32(count);
  out.i32(static_cast<int32_t>(table.integer("total", 0, INT32_MIN, INT32_MAX)));
}

// The overrides of a segment item, keyed by field names, as MessageItemDefn reads its
// situational data: at each level (from 801) the record of the level itself, then an entry per
// overridden field, ended by -1.
class SituationalWriter {
 public:
  SituationalWriter(const CompileContext& compileContext, PcfWriter& target)
      : context(compileContext), version(compileContext.version()), out(target) {}

  void level(const SourceNode* owner, const std::vector<SourceNode>& fields, const std::string& holder,
             const FieldOverrideValues& own) {
    if (version >= pcf::kOverrideFlagsAndHeader) {
      FieldOverrideWriter::writeFlags(out, own.flags, version);
      FieldOverrideWriter::writeCommonAttributes(out, own, version);
    }
    if (owner && owner->has("overrides")) entries(*owner, fields, holder);
    out.i32(FieldInstanceUpdate::kEndOfBlock);
  }

 private:
  void entries(const SourceNode& owner, const std::vector<SourceNode>& fields, const std::string& holder) {
    const YAML::Node tree = owner.yaml()["overrides"];
    if (!tree.IsMap()) owner.failAt("overrides", "'overrides' of " + owner.what() + " must map field names to overrides");
    for (const auto& pair : tree) {
      const std::string& name = pair.first.Scalar();
      const int line = lineOfNode(pair.first);
      int32_t index = -1;
      for (size_t i = 0; i < fields.size() && index < 0; ++i)
        if (fields[i].text("name", "") == name) index = static_cast<int32_t>(i);
      if (index < 0) throw CompileError(line, holder + " has no field named '" + name + "' to override");
      const SourceNode entry(pair.second, "the override of field '" + name + "' of " + holder);
      if (!pair.second.IsMap()) entry.fail(entry.what() + " must be a mapping of the attributes it overrides");
      const SourceNode& target = fields[static_cast<size_t>(index)];
      out.i32(index).boolean(false);
      if (target.has("composite")) {
        entry.allowOnly({"required", "hidden", "minLength", "maxLength", "overrides"});
        const auto* composite = context.findComposite(target.text("composite", ""));
        if (!composite) entry.fail("field '" + name + "' of " + holder + " names no composite of the set");
        level(&entry, FieldWriter::fieldsOf(composite->source), "composite '" + composite->name + "'", values(entry, false));
        continue;
      }
      entry.allowOnly({"default", "format", "table", "required", "hidden", "minLength", "maxLength"});
      const FieldOverrideValues own = values(entry, true);
      if (own.flags == 0) entry.fail(entry.what() + " overrides nothing");
      FieldWriter::checkPattern(entry, own.format.view(), FieldWriter::dataTypeOf(target, context).baseType);
      FieldOverrideWriter::writeFlags(out, own.flags, version);
      if (own.flags & kDefaultValue) out.textv(own.DefaultValue.view(), version);
      if (own.flags & kFormatter) out.textv(own.format.view(), version);
      if (own.flags & kValidationTable) out.text8(own.tableName);
      FieldOverrideWriter::writeCommonAttributes(out, own, version);
    }
  }

  FieldOverrideValues values(const SourceNode& entry, bool primitive) const {
    // Item overrides don't take `situational`, so the flag word's version doesn't come into it.
    FieldOverrideValues result = FieldOverrideWriter::commonValuesOf(entry, version, pcf::kOverrideFlagsAndHeader);
    if (!primitive) return result;
    for (const auto& [key, flag] : {std::pair{"default", kDefaultValue}, std::pair{"format", kFormatter}}) {
      if (!entry.has(key)) continue;
      result.flags |= flag;
      const std::u16string text = entry.wideText(key, u"");
      if (text.size() > PcfWriter::kLongestText || (version < pcf::kWideValueTexts && !PcfWriter::fitsText8w(text)))
        entry.failAt(key, "'" + std::string(key) + "' of " + entry.what() + " can't be carried by format version " +
                              std::to_string(version));
      (flag == kDefaultValue ? result.DefaultValue : result.format) = text;
    }
    if (entry.has("table")) {
      result.flags |= kValidationTable;
      result.tableName = entry.text("table", "");
      if (!result.tableName.empty() && !context.hasValidationTable(result.tableName))
        entry.failAt("table", "'table' of " + entry.what() + " names no validation table of the set: '" + result.tableName + "'");
    }
    return result;
  }

  const CompileContext& context;
  int version;
  PcfWriter& out;
};

void writeItems(const std::vector<SourceNode>& items, const CompileContext& context, ItemIds& ids, PcfWriter& out);

void writeItem(const SourceNode& item, const CompileContext& context, ItemIds& ids, PcfWriter& out) {
  const int version = context.version();
  const int32_t kind = kindOf(item);
  const std::string name = nameOf(item);
  const bool required = item.flag("required", false);
  out.boolean(required);
  out.i32(static_cast<int32_t>(item.integer("minRepeats", 0, 0, INT32_MAX)));
  out.i32(static_cast<int32_t>(item.integer("maxRepeats", 1, 0, INT32_MAX)));
  if (version >= pcf::kItemIdsAndStateTables) out.i32(ids.idOf(item));
  out.text8(name);
  if (version >= pcf::kHiddenFlags) out.boolean(item.flag("hidden", false));
  out.i32(kind);
  if (kind == MessageItemDefn::kSegmentItem) {
    const std::string segmentName = item.text("segment", "");
    const auto* segment = context.findSegment(segmentName);
    if (!segment) item.failAt("segment", item.what() + " names no segment of the set: '" + segmentName + "'");
    out.i32(segment->id);
    if (version >= pcf::kFieldOverrides)
      SituationalWriter(context, out).level(&item, FieldWriter::fieldsOf(segment->source), "segment '" + segment->name + "'", {});
    if (version >= pcf::kMatchLists) MatchWriter::writeList(item, context, out);
    if (version >= pcf::kSyntaxRules) out.boolean(false);
    if (version >= pcf::kValidationEquations) out.count(0);
  } else if (kind == MessageItemDefn::kGroupItem) {
    out.text8(name).boolean(item.flag("choice", false));
    if (version >= pcf::kUnorderedGroups) {
      out.boolean(item.flag("unordered", false));
      if (item.flag("unordered", false)) out.boolean(false);  // reserved
    }
    const auto children = itemsOf(item);
    writeItems(children, context, ids, out);
    writeVisibleChildren(item, children.size(), version, out);
  } else {
    const std::string setName = item.text("embeddedSet", "");
    const auto setId = context.messageSetId(setName);
    if (!setId) item.failAt("embeddedSet", item.what() + " names no message set of the file: '" + setName + "'");
    out.i32(*setId);
  }
  if (version >= pcf::kUserData) UserDataWriter::write(item, context, out);
  if (version >= pcf::kSituationalRules) out.boolean(false);
}

void writeItems(const std::vector<SourceNode>& items, const CompileContext& context, ItemIds& ids, PcfWriter& out) {
  out.i32(static_cast<int32_t>(items.size()));
  for (const auto& item : items) writeItem(item, context, ids, out);
}

void declareItems(const std::vector<SourceNode>& items, CompileContext& context) {
  for (const auto& item : items) {
    checkItem(item, context.version());
    UserDataWriter::declare(item, context);
    declareItems(itemsOf(item), context);
  }
}

}  // namespace

bool MessageWriter::wantsEmbeddedTables(const SourceNode& message) {
  const std::string mode = message.text("stateTables", "built");
  if (mode != "built" && mode != "embedded") message.failAt("stateTables", "'stateTables' of " + message.what() + " is 'built' (by the engine at load) or 'embedded'");
  return mode == "embedded";
}

void MessageWriter::declare(const std::vector<SourceNode>& messages, CompileContext& context) {
  const int version = context.version();
  for (const auto& message : messages) {
    message.allowOnly({"name", "type", "matches", "visibleChildren", "stateTables", "userData", "items"});
    if (message.text("name", "").empty()) message.fail(message.what() + " needs a name");
    message.requireVersion("type", !message.wideText("type", u"").empty(), pcf::kMessageTypeText, version);
    message.requireVersion("visibleChildren", message.has("visibleChildren"), pcf::kVisibleChildTables, version);
    message.requireVersion("stateTables", wantsEmbeddedTables(message), pcf::kItemIdsAndStateTables, version);
    UserDataWriter::declare(message, context);
    declareItems(itemsOf(message), context);
    ItemIds ids;
    ids.takeAll(itemsOf(message));
  }
}

void MessageWriter::write(const SourceNode& message, const CompileContext& context, PcfWriter& out,
                          const std::vector<uint8_t>* stateTables) {
  const int version = context.version();
  out.text8(message.text("name", ""));
  if (version >= pcf::kMessageTypeText) {
    const std::u16string type = message.wideText("type", u"");
    if (!PcfWriter::fitsText8w(type)) message.failAt("type", "the type of " + message.what() + " must be byte text");
    out.text8w(type);
  }
  const auto items = itemsOf(message);
  ItemIds ids;
  ids.takeAll(items);
  writeItems(items, context, ids, out);
  MatchWriter::writeList(message, context, out);
  writeVisibleChildren(message, items.size(), version, out);
  if (version >= pcf::kItemIdsAndStateTables) {
    out.boolean(stateTables != nullptr);
    if (stateTables) out.raw(*stateTables);
  }
  if (version >= pcf::kUserData) UserDataWriter::write(message, context, out);
}

}  // namespace vantrelia::compiler
