#include "compiler/ValidationTableWriter.h"

#include <stdexcept>

#include "compiler/CompileContext.h"
#include "compiler/CompileError.h"
#include "compiler/PcfWriter.h"
#include "definitions/PcfVersion.h"
#include "foundation/Utf8.h"

namespace vantrelia::compiler {

namespace {

struct Entry {
  std::u16string value;
  std::u16string description;
  int line;
  int descriptionLine;
};

std::vector<Entry> entriesOf(const SourceNode& table) {
  std::vector<Entry> entries;
  if (!table.has("entries")) return entries;
  const YAML::Node list = table.yaml()["entries"];
  if (!list.IsSequence()) table.failAt("entries", "'entries' of " + table.what() + " must be a list");
  for (const auto& item : list) {
    if (item.IsScalar()) {
      const auto value = utf8ToWide(item.Scalar());
      if (!value) throw CompileError(lineOfNode(item), "an entry of " + table.what() + " is not valid UTF-8");
      entries.push_back({*value, u"", lineOfNode(item), 0});
      continue;
    }
    const SourceNode entry(item, "an entry of " + table.what());
    entry.allowOnly({"value", "description"});
    if (!entry.has("value")) entry.fail(entry.what() + " needs a 'value'");
    entries.push_back({entry.wideText("value", u""), entry.wideText("description", u""), entry.line(),
                       entry.lineOf("description")});
  }
  for (const Entry& entry : entries)
    if (entry.value.size() > PcfWriter::kLongestText || entry.description.size() > PcfWriter::kLongestText)
      throw CompileError(entry.line, "an entry of " + table.what() + " is longer than 65535 units");
  return entries;
}

}  // namespace

bool ValidationTableWriter::carriesDescriptions(const std::vector<SourceNode>& tables, const CompileContext& context) {
  if (context.version() < pcf::kTableDescriptions) return false;
  for (const auto& table : tables)
    for (const Entry& entry : entriesOf(table))
      if (!entry.description.empty()) return true;
  return false;
}

void ValidationTableWriter::write(const SourceNode& table, CompileContext& context, PcfWriter& out, bool withDescriptions) {
  table.allowOnly({"name", "entries"});
  const int version = context.version();
  const std::string name = table.text("name", "");
  if (name.empty()) table.fail(table.what() + " needs a name: fields refer to it by name");
  if (name.size() > PcfWriter::kLongestText) table.failAt("name", "the name of " + table.what() + " is longer than 65535 bytes");
  const auto entries = entriesOf(table);

  for (const Entry& entry : entries) {
    if (version < pcf::kWideValueTexts && !PcfWriter::fitsText8w(entry.value))
      throw CompileError(entry.line, "a value of " + table.what() + " has a character that needs format version " +
                                         std::to_string(pcf::kWideValueTexts) + " or later; this file is compiled for version " +
                                         std::to_string(version));
    if (entry.description.empty() || withDescriptions) continue;
    if (version < pcf::kTableDescriptions)
      throw CompileError(entry.descriptionLine, "descriptions of validation table entries need format version " +
                                                    std::to_string(pcf::kTableDescriptions) +
                                                    " or later; this file is compiled for version " + std::to_string(version));
    // The set writer decides the flag for all its tables; a table with descriptions it was told to
    // leave out means the caller didn't ask carriesDescriptions.
    throw std::logic_error("validation table with descriptions written without the set's description flag");
  }

  out.text8(name).i32(static_cast<int32_t>(entries.size()));
  for (const Entry& entry : entries) {
    out.textv(entry.value, version);
    if (version >= pcf::kTableDescriptions && withDescriptions) out.text16(entry.description);
  }
}

}  // namespace vantrelia::compiler
