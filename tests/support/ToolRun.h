#pragma once
// Running the command-line tool as a user does, with what it printed and its exit code.

#include <string>

#include "support/TempDir.h"

namespace vantrelia::testing {

struct ToolRun {
  int exitCode;
  std::string out;
  std::string err;
};

// The arguments go through the shell as they are; `input`, when given, is the standard input.
ToolRun runTool(const TempDir& dir, const std::string& arguments, const std::string& input = "");

// A path of the source tree, e.g. "examples/adt-a04.hl7".
std::string sourcePath(const std::string& relative);

}  // namespace vantrelia::testing
