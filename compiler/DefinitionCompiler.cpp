#include "compiler/DefinitionCompiler.h"

#include <yaml-cpp/yaml.h>

#include <fstream>
#include <map>
#include <sstream>

#include "compiler/CompileContext.h"
#include "compiler/CompileError.h"
#include "compiler/MessageWriter.h"
#include "compiler/StateTableWriter.h"
#include "definitions/DefinitionFile.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "foundation/InvalidFile.h"
#include "compiler/PcfWriter.h"
#include "compiler/SourceNode.h"
#include "compiler/WarehouseWriter.h"
#include "definitions/PcfVersion.h"

namespace vantrelia::compiler {

std::vector<uint8_t> DefinitionCompiler::compile(const std::string& source, const CompileOptions& options) {
  YAML::Node document;
  try {
    document = YAML::Load(source);
  } catch (const YAML::Exception& e) {
    throw CompileError(e.mark.line >= 0 ? e.mark.line + 1 : 0, e.msg);
  }
  if (!document.IsDefined() || document.IsNull()) document = YAML::Node(YAML::NodeType::Map);
  const SourceNode root(document, "the definition");

  const int version = options.version
                          ? *options.version
                          : static_cast<int>(root.integer("version", pcf::kNewestVersion, INT32_MIN, INT32_MAX));
  if (!pcf::isSupportedVersion(version)) {
    const std::string message = "format version " + std::to_string(version) + " is outside " +
                                std::to_string(pcf::kOldestVersion) + " to " + std::to_string(pcf::kNewestVersion);
    if (options.version) throw CompileError(0, message);
    root.failAt("version", message);
  }

  std::vector<uint8_t> bytes = compileAt(root, version, nullptr);
  if (!wantsEmbeddedStateTables(root)) return bytes;

  // Embedded tables are the engine's own: load the file compiled without them, let the engine
  // build every table, and compile again with those tables written in.
  MessageWarehouseDefn loaded;
  std::istringstream stream(std::string(bytes.begin(), bytes.end()));
  DefinitionFile file(stream);
  try {
    loaded.read(file);
  } catch (const InvalidFile& e) {
    throw CompileError(0, "the engine refuses the compiled definition: " + e.message);
  }
  const auto sets = root.records("messageSets", "message set");
  std::map<std::pair<size_t, size_t>, std::vector<uint8_t>> tables;
  for (size_t s = 0; s < sets.size(); ++s) {
    const auto messages = sets[s].records("messages", "message");
    for (size_t m = 0; m < messages.size(); ++m)
      if (MessageWriter::wantsEmbeddedTables(messages[m]))
        tables[{s, m}] = StateTableWriter::bytesOf(*loaded.getMessageSets().at(s)->getMessages().at(m));
  }
  return compileAt(root, version, &tables);
}

std::vector<uint8_t> DefinitionCompiler::compileAt(const SourceNode& root, int version, const StateTables* tables) {
  CompileContext context(version);
  if (tables)
    for (const auto& [place, bytes] : *tables) context.setStateTables(place.first, place.second, bytes);
  WarehouseWriter warehouse(root, context);
  warehouse.declare();
  PcfWriter out;
  warehouse.write(out);
  return out.take();
}

bool DefinitionCompiler::wantsEmbeddedStateTables(const SourceNode& root) {
  for (const auto& set : root.records("messageSets", "message set"))
    for (const auto& message : set.records("messages", "message"))
      if (MessageWriter::wantsEmbeddedTables(message)) return true;
  return false;
}

std::vector<uint8_t> DefinitionCompiler::compileFile(const std::string& path, const CompileOptions& options) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw CompileError(0, "cannot read " + path);
  std::ostringstream text;
  text << file.rdbuf();
  return compile(text.str(), options);
}

}  // namespace vantrelia::compiler
