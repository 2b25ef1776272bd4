#pragma once
#include <stdexcept>
#include <string>

namespace vantrelia::compiler {

// A fault in a definition source. The text starts with the line it was found on ("line 7: ...")
// when there is one.
class CompileError : public std::runtime_error {
 public:
  CompileError(int line, const std::string& message)
      : std::runtime_error(line > 0 ? "line " + std::to_string(line) + ": " + message : message), sourceLine(line) {}

  // 1-based; 0 when the fault has no place in the source.
  int line() const { return sourceLine; }

 private:
  int sourceLine;
};

}  // namespace vantrelia::compiler
