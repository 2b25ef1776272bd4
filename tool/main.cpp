// vantrelia: parse, query, change and write EDI messages; compile definition sources and look
// inside definition files. This file only wires the command line to the commands' classes.

#include <CLI/CLI.hpp>

#include <fstream>
#include <iostream>
#include <optional>

#include "foundation/InvalidFile.h"
#include "foundation/MessageFactory.h"
#include "tool/BundledDefinitions.h"
#include "tool/CompileCommand.h"
#include "tool/ExitCode.h"
#include "tool/GetCommand.h"
#include "tool/ModelInspector.h"
#include "tool/NewCommand.h"
#include "tool/ParseCommand.h"
#include "tool/PathAssignment.h"
#include "tool/WriteCommand.h"

#ifndef VANTRELIA_VERSION
#define VANTRELIA_VERSION "unknown"
#endif

namespace {

using vantrelia::tool::ExitCode;

int runInspect(const std::string& path, bool json) {
  vantrelia::MessageFactory factory;
  try {
    factory.LoadDefinition(path);
  } catch (const vantrelia::InvalidFile& e) {
    std::cerr << "error: " << e.message << "\n";
    return ExitCode::kInputError;
  }
  const vantrelia::tool::ModelInspector inspector(factory.getWarehouse());
  if (json) std::cout << inspector.toJsonText() << "\n";
  else std::cout << inspector.toText();
  return ExitCode::kSuccess;
}

// Where written messages go: -o OUT, or standard output.
class Output {
 public:
  explicit Output(const std::string& path) {
    if (path.empty() || path == "-") return;
    file.open(path, std::ios::binary);
    if (!file) failed = true;
  }
  std::ostream& stream() { return file.is_open() ? file : std::cout; }
  bool failed = false;

 private:
  std::ofstream file;
};

std::string pcfHelp() {
  return "definition: a PCF file or a bundled name (" + vantrelia::tool::BundledDefinitions::names() +
         "); without it, chosen by the input's first characters: MSH/FHS/BHS hl7-v2.5, ISA x12, UNA/UNB "
         "edifact_d96a, an NCPDP transaction header ncpdp-d0, anything else default";
}

constexpr const char* kUsage =
    "usage: vantrelia parse [--pcf PCF] [--json | --summary] [--generic] [INPUT...]\n"
    "       vantrelia get [--pcf PCF] [--json] INPUT PATH...\n"
    "       vantrelia set [--pcf PCF] INPUT PATH=VALUE... [-o OUT]\n"
    "       vantrelia write [--pcf PCF] [--normalize] [--check] [INPUT...] [-o OUT]\n"
    "       vantrelia new [--pcf PCF] MESSAGE [PATH=VALUE...]\n"
    "       vantrelia compile SOURCE.yaml -o OUT.pcf [--pcf-version N]\n"
    "       vantrelia inspect FILE.pcf [--json]\n"
    "       vantrelia COMMAND --help";

constexpr const char* kExitCodes =
    "Exit codes: 0 all parsed, 1 usage error, 2 a file or definition can't be read, 3 some text was skipped or "
    "didn't parse, 4 (write --check) an output would differ.";

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Vantrelia: parse, query, change and write EDI messages (HL7 v2, X12, EDIFACT, NCPDP)"};
  app.require_subcommand(1);
  app.set_version_flag("--version", std::string("vantrelia ") + VANTRELIA_VERSION);
  app.footer(std::string("Example: vantrelia parse examples/adt-a04.hl7\n") + kExitCodes +
             "\nInputs are files or - for standard input (the default).");

  std::string pcf;
  std::vector<std::string> inputs;
  bool json = false;

  vantrelia::tool::ParseCommand::Options parseOptions;
  auto* parse = app.add_subcommand("parse", "Show the tree and parse findings of every message");
  parse->add_option("--pcf", parseOptions.pcf, pcfHelp());
  parse->add_flag("--json", parseOptions.json, "JSON Lines: one object per message or stretch of skipped text");
  parse->add_flag("--summary", parseOptions.summary, "one line per input: messages, segments, skipped bytes, findings, MB/s");
  parse->add_flag("--generic", parseOptions.generic, "build generic messages for unknown types (no effect yet)");
  parse->add_option("inputs", inputs, "message files, - for standard input");
  parse->footer("Example: vantrelia parse --json examples/eligibility-270.x12 | jq .tree.name");

  std::vector<std::string> getArguments;
  auto* get = app.add_subcommand("get", "Print the values at paths, one line per message (tab-separated)");
  get->add_option("--pcf", pcf, pcfHelp());
  get->add_flag("--json", json, "one object per message: {offset, message, values}");
  get->add_option("input_and_paths", getArguments, "INPUT then PATH...")->required()->expected(2, -1);
  get->footer("Example: vantrelia get examples/adt-a04.hl7 PID/PatientName[0]/FamilyName MSH/MessageControlId");

  std::vector<std::string> setArguments;
  std::string output;
  auto* set = app.add_subcommand("set", "Change values in every message and write the result");
  set->add_option("--pcf", pcf, pcfHelp());
  set->add_option("input_and_assignments", setArguments, "INPUT then PATH=VALUE...")->required()->expected(2, -1);
  set->add_option("-o,--output", output, "file to write (default: standard output)");
  set->footer("Example: vantrelia set examples/adt-a04.hl7 PID/PatientName[0]/FamilyName=ROE -o changed.hl7");

  vantrelia::tool::WriteCommand::Options writeOptions;
  auto* write = app.add_subcommand("write", "Parse and write back: byte for byte unless --normalize");
  write->add_option("--pcf", writeOptions.pcf, pcfHelp());
  write->add_flag("--normalize", writeOptions.normalize, "write every segment the engine's way");
  write->add_flag("--check", writeOptions.check, "write nothing; tell per input whether the output would equal it");
  write->add_option("inputs", inputs, "message files, - for standard input");
  write->add_option("-o,--output", output, "file to write (default: standard output)");
  write->footer("Example: vantrelia write --check examples/*");

  std::string messageName;
  std::vector<std::string> newAssignments;
  auto* create = app.add_subcommand("new", "Write an empty message of a definition, filled with the values given");
  create->add_option("--pcf", pcf, "definition: a PCF file or a bundled name (default: default)");
  create->add_option("message", messageName, "message name, or SET/MESSAGE")->required();
  create->add_option("assignments", newAssignments, "PATH=VALUE...");
  create->footer("Example: vantrelia new ADT_A04 MSH/MessageControlId=42 PID/PatientName[0]/FamilyName=DOE");

  std::string source, compileOutput;
  std::optional<int> version;
  auto* compile = app.add_subcommand("compile", "Compile a YAML definition source into a PCF");
  compile->add_option("source", source, "definition source (YAML)")->required();
  compile->add_option("-o,--output", compileOutput, "PCF to write")->required();
  compile->add_option("--pcf-version", version, "format version to write (512 to 883)");
  compile->footer("Example: vantrelia compile bundled/default.yaml -o default.pcf");

  std::string inspected;
  bool inspectJson = false;
  auto* inspect = app.add_subcommand("inspect", "Load a PCF and show what it holds");
  inspect->add_option("file", inspected, "PCF to load")->required();
  inspect->add_flag("--json", inspectJson, "one JSON document instead of text");
  inspect->footer("Example: vantrelia inspect default.pcf --json");

  try {
    app.parse(argc, argv);
  } catch (const CLI::Success& e) {
    return app.exit(e);
  } catch (const CLI::ParseError& e) {
    std::cerr << "error: " << e.what() << "\n" << kUsage << "\n";
    return ExitCode::kUsageError;
  }

  const auto assignmentsOf = [](const std::vector<std::string>& texts) {
    std::string bad;
    auto all = vantrelia::tool::PathAssignment::parseAll(texts, bad);
    if (!all) std::cerr << "error: not PATH=VALUE: " << bad << "\n";
    return all;
  };
  try {
    if (compile->parsed()) return vantrelia::tool::CompileCommand::run(source, compileOutput, version);
    if (inspect->parsed()) return runInspect(inspected, inspectJson);
    if (parse->parsed()) {
      if (parseOptions.generic) std::cerr << "note: --generic has no effect yet\n";
      return vantrelia::tool::ParseCommand(parseOptions, std::cout).run(inputs);
    }
    if (get->parsed()) {
      const std::vector<std::string> paths(getArguments.begin() + 1, getArguments.end());
      return vantrelia::tool::GetCommand(pcf, json, paths, std::cout).run({getArguments.front()});
    }
    if (create->parsed()) {
      auto assignments = assignmentsOf(newAssignments);
      if (!assignments) return ExitCode::kUsageError;
      return vantrelia::tool::NewCommand::run(pcf, messageName, *assignments, std::cout);
    }
    if (set->parsed()) {
      writeOptions = {};
      writeOptions.pcf = pcf;
      auto assignments = assignmentsOf(std::vector<std::string>(setArguments.begin() + 1, setArguments.end()));
      if (!assignments) return ExitCode::kUsageError;
      writeOptions.assignments = std::move(*assignments);
      inputs = {setArguments.front()};
    }
    Output out(output);
    if (out.failed) {
      std::cerr << "error: " << output << ": cannot be written\n";
      return ExitCode::kInputError;
    }
    return vantrelia::tool::WriteCommand(std::move(writeOptions), out.stream()).run(inputs);
  } catch (const std::exception& e) {
    std::cerr << "error: " << e.what() << "\n";
  } catch (...) {
    std::cerr << "error: unknown failure\n";
  }
  return ExitCode::kPartial;
}
