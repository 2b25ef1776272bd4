#pragma once
// Compiling a definition source into a definition file, shared by the tool's `compile` command and
// the small compiler the build runs to make the bundled definitions.

#include <optional>
#include <string>

namespace vantrelia::tool {

class CompileCommand {
 public:
  // 0, or the input-error exit code with "error: " and the reason on stderr.
  static int run(const std::string& source, const std::string& output, const std::optional<int>& version);
};

}  // namespace vantrelia::tool
