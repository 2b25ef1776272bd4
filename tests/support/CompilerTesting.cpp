#include "support/CompilerTesting.h"

#include "compiler/CompileError.h"
#include "compiler/DefinitionCompiler.h"
#include "support/PcfLoad.h"

namespace vantrelia::testing {

const MessageWarehouseDefn& compileAndLoad(MessageFactory& factory, const std::string& source, std::optional<int> version) {
  loadBytes(factory, compiler::DefinitionCompiler::compile(source, {version}));
  return factory.getWarehouse();
}

std::string compileError(const std::function<void()>& step) {
  try {
    step();
  } catch (const compiler::CompileError& e) {
    return e.what();
  }
  return "";
}

std::string definitionCompileFailure(const std::string& source, std::optional<int> version) {
  return compileError([&] { compiler::DefinitionCompiler::compile(source, {version}); });
}

std::string versionGate(int line, const std::string& key, const std::string& what, int needed, int version) {
  return "line " + std::to_string(line) + ": '" + key + "' of " + what + " needs format version " + std::to_string(needed) +
         " or later; this file is compiled for version " + std::to_string(version);
}

::testing::AssertionResult failsWith(const std::string& failure, const std::string& start) {
  if (start.empty() ? failure.empty() : failure.rfind(start, 0) == 0) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << "expected " << (start.empty() ? "no error" : "an error starting \"" + start + "\"")
                                       << "\n gave: \"" << failure << "\"";
}

}  // namespace vantrelia::testing
