#include "tool/CompileCommand.h"

#include <exception>
#include <iostream>

#include "compiler/DefinitionCompiler.h"
#include "compiler/PcfWriter.h"
#include "tool/ExitCode.h"

namespace vantrelia::tool {

int CompileCommand::run(const std::string& source, const std::string& output, const std::optional<int>& version) {
  try {
    compiler::CompileOptions options;
    options.version = version;
    compiler::PcfWriter out;
    out.raw(compiler::DefinitionCompiler::compileFile(source, options));
    out.saveTo(output);
    return ExitCode::kSuccess;
  } catch (const std::exception& e) {
    std::cerr << "error: " << source << ": " << e.what() << "\n";
    return ExitCode::kInputError;
  }
}

}  // namespace vantrelia::tool
