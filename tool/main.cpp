// vantrelia: compile definition sources and look inside definition files.

#include <CLI/CLI.hpp>

#include <iostream>
#include <optional>

#include "compiler/CompileError.h"
#include "compiler/DefinitionCompiler.h"
#include "compiler/PcfWriter.h"
#include "definitions/MessageWarehouseDefn.h"
#include "foundation/InvalidFile.h"
#include "foundation/MessageFactory.h"
#include "tool/ModelInspector.h"

namespace {

constexpr const char* kUsage =
    "usage: vantrelia compile SOURCE.yaml -o OUT.pcf [--pcf-version N]\n"
    "       vantrelia inspect FILE.pcf [--json]";

constexpr int kUsageError = 1;
constexpr int kInputError = 2;
// Anything else that goes wrong: still a line on stderr and an exit code, never an abort.
constexpr int kToolError = 3;

int runCompile(const std::string& source, const std::string& output, const std::optional<int>& version) {
  try {
    vantrelia::compiler::CompileOptions options;
    options.version = version;
    vantrelia::compiler::PcfWriter out;
    out.raw(vantrelia::compiler::DefinitionCompiler::compileFile(source, options));
    out.saveTo(output);
    return 0;
  } catch (const std::exception& e) {
    std::cerr << "error: " << source << ": " << e.what() << "\n";
    return kInputError;
  }
}

int runInspect(const std::string& path, bool json) {
  vantrelia::MessageFactory factory;
  try {
    factory.LoadDefinition(path);
  } catch (const vantrelia::InvalidFile& e) {
    std::cerr << "error: " << e.message << "\n";
    return kInputError;
  }
  const vantrelia::tool::ModelInspector inspector(factory.getWarehouse());
  if (json) std::cout << inspector.toJsonText() << "\n";
  else std::cout << inspector.toText();
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Vantrelia: definition compiler and inspector"};
  app.require_subcommand(1);

  std::string source, output;
  std::optional<int> version;
  auto* compile = app.add_subcommand("compile", "Compile a YAML definition source into a PCF");
  compile->add_option("source", source, "definition source (YAML)")->required();
  compile->add_option("-o,--output", output, "PCF to write")->required();
  compile->add_option("--pcf-version", version, "format version to write (512 to 883)");

  std::string pcf;
  bool json = false;
  auto* inspect = app.add_subcommand("inspect", "Load a PCF and show what it holds");
  inspect->add_option("file", pcf, "PCF to load")->required();
  inspect->add_flag("--json", json, "one JSON document instead of text");

  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp& e) {
    return app.exit(e);
  } catch (const CLI::ParseError& e) {
    std::cerr << e.what() << "\n" << kUsage << "\n";
    return kUsageError;
  }

  try {
    if (compile->parsed()) return runCompile(source, output, version);
    return runInspect(pcf, json);
  } catch (const std::exception& e) {
    std::cerr << "error: " << e.what() << "\n";
  } catch (...) {
    std::cerr << "error: unknown failure\n";
  }
  return kToolError;
}
