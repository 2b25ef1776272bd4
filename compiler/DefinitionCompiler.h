#pragma once
// Turns a definition source (YAML) into the bytes of a definition file at a chosen format version.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace vantrelia::compiler {

class SourceNode;

struct CompileOptions {
  // Overrides the source's own `version`; both absent means the newest version.
  std::optional<int> version;
};

class DefinitionCompiler {
 public:
  // Throws CompileError, naming the line, for anything the source gets wrong or the chosen
  // version can't carry.
  static std::vector<uint8_t> compile(const std::string& source, const CompileOptions& options = {});
  static std::vector<uint8_t> compileFile(const std::string& path, const CompileOptions& options = {});

 private:
  // State-table bytes by set and message position.
  using StateTables = std::map<std::pair<size_t, size_t>, std::vector<uint8_t>>;
  static std::vector<uint8_t> compileAt(const SourceNode& root, int version, const StateTables* tables);
  static bool wantsEmbeddedStateTables(const SourceNode& root);
};

}  // namespace vantrelia::compiler
