// vantrelia-compile: the definition compiler alone, which the build runs to make the definitions
// that the tool carries inside it (the tool itself can't compile what it is built from).

#include <CLI/CLI.hpp>

#include <optional>
#include <string>

#include "tool/CompileCommand.h"
#include "tool/ExitCode.h"

int main(int argc, char** argv) {
  CLI::App app{"Compile a YAML definition source into a PCF"};
  std::string source, output;
  std::optional<int> version;
  app.add_option("source", source, "definition source (YAML)")->required();
  app.add_option("-o,--output", output, "PCF to write")->required();
  app.add_option("--pcf-version", version, "format version to write (512 to 883)");
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp& e) {
    return app.exit(e);
  } catch (const CLI::ParseError& e) {
    app.exit(e);
    return vantrelia::tool::ExitCode::kUsageError;
  }
  return vantrelia::tool::CompileCommand::run(source, output, version);
}
