#include "support/CompiledComposites.h"

#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include <sstream>

#include "compiler/CompileContext.h"
#include "compiler/CompositeWriter.h"
#include "compiler/DefinitionCompiler.h"
#include "compiler/PcfWriter.h"
#include "compiler/SegmentWriter.h"
#include "compiler/TypeWriter.h"
#include "compiler/ValidationTableWriter.h"
#include "definitions/DefinitionFile.h"
#include "foundation/InvalidFile.h"
#include "foundation/Utf8.h"
#include "support/CompilerTesting.h"
#include "support/DefinitionSetup.h"

namespace vantrelia::testing {

using namespace compiler;

std::unique_ptr<CompiledComposites> compileComposites(const std::string& yaml, int version) {
  const SourceNode root(YAML::Load(yaml), "the definition");
  CompileContext context(version);
  TypeWriter types(root, context);
  types.declare();
  context.setTypes(types, root);
  context.beginMessageSet();
  const auto tables = root.records("validationTables", "validation table");
  for (const auto& table : tables) context.declareValidationTable(table.text("name", ""));
  const auto composites = root.records("composites", "composite");
  CompositeWriter::declare(composites, context);
  const auto segments = root.records("segments", "segment");
  SegmentWriter::declare(segments, context);
  // The file around the set: the same types, and every user-data key that the records declared.
  YAML::Node head = YAML::Clone(root.yaml());
  for (const char* key : {"composites", "segments", "validationTables"}) head.remove(key);
  for (const auto& key : context.userDataKeys()) head["userDataKeys"].push_back(wideToUtf8(key));
  PcfWriter body;
  for (const auto& table : tables) ValidationTableWriter::write(table, context, body, false);
  for (const auto& composite : composites) CompositeWriter::write(composite, context, body);
  for (const auto& segment : segments) SegmentWriter::write(segment, context, body);

  auto compiled = std::make_unique<CompiledComposites>();
  const auto headBytes = DefinitionCompiler::compile(YAML::Dump(head), {version});
  std::istringstream headSource(std::string(headBytes.begin(), headBytes.end()));
  DefinitionFile headFile(headSource);
  compiled->warehouse.read(headFile);
  compiled->set = DefinitionSetup::messageSet("SET", &compiled->warehouse);
  const auto bytes = body.take();
  std::istringstream source(std::string(bytes.begin(), bytes.end()));
  DefinitionFile file(source);
  for (size_t i = 0; i < tables.size(); ++i) {
    auto table = std::make_unique<ValidationTableDefn>();
    table->load(file, version, false);
    DefinitionSetup::addValidationTable(*compiled->set, std::move(table));
  }
  FieldUpdates updates;
  std::vector<std::unique_ptr<CompositeDefn>> loaded(composites.size());
  for (auto& composite : loaded) (composite = std::make_unique<CompositeDefn>())->load(*compiled->set, file, version, updates);
  DefinitionSetup::addComposites(*compiled->set, std::move(loaded), updates);
  for (size_t i = 0; i < segments.size(); ++i) {
    auto segment = std::make_unique<SegmentDefn>();
    segment->load(*compiled->set, file, version, updates);
    DefinitionSetup::addSegment(*compiled->set, std::move(segment), updates);
  }
  EXPECT_TRUE(updates.empty()) << "overrides left without a field";
  EXPECT_THROW(file.readByte(), InvalidFile) << "bytes left behind the records";
  return compiled;
}

std::string compositeCompileFailure(const std::string& yaml, int version) {
  return compileError([&] { compileComposites(yaml, version); });
}

}  // namespace vantrelia::testing
