#include "support/ToolRun.h"

#include <sys/wait.h>

#include <cstdlib>

#include "support/ReadFile.h"

namespace vantrelia::testing {

ToolRun runTool(const TempDir& dir, const std::string& arguments, const std::string& input) {
  const std::string out = dir.path("stdout.txt"), err = dir.path("stderr.txt");
  std::string command = VANTRELIA_TOOL_PATH;
  command.append(" ").append(arguments).append(" >").append(out).append(" 2>").append(err).append(" <");
  command.append(input.empty() ? std::string("/dev/null") : dir.write("stdin.txt", input));
  const int status = std::system(command.c_str());
  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(out), readFile(err)};
}

std::string sourcePath(const std::string& relative) { return std::string(VANTRELIA_SOURCE_DIR) + "/" + relative; }

}  // namespace vantrelia::testing
