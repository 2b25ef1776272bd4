#include "compiler/DefinitionCompiler.h"

#include <yaml-cpp/yaml.h>

#include <fstream>
#include <sstream>

#include "compiler/CompileContext.h"
#include "compiler/CompileError.h"
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

  CompileContext context(version);
  WarehouseWriter warehouse(root, context);
  warehouse.declare();
  PcfWriter out;
  warehouse.write(out);
  return out.take();
}

std::vector<uint8_t> DefinitionCompiler::compileFile(const std::string& path, const CompileOptions& options) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw CompileError(0, "cannot read " + path);
  std::ostringstream text;
  text << file.rdbuf();
  return compile(text.str(), options);
}

}  // namespace vantrelia::compiler
