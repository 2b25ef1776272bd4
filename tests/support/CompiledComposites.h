#pragma once
// Composites, segments and validation tables written at the top of a test source, compiled by the
// set's own writers and read back by the engine's readers, without the rest of a message set
// around them: errors keep the line numbers of the test's own text.

#include <memory>
#include <stdexcept>
#include <string>

#include "definitions/CompositeFieldInstancesControl.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PcfVersion.h"

namespace vantrelia::testing {

struct CompiledComposites {
  MessageWarehouseDefn warehouse;
  std::unique_ptr<MessageSetDefn> set;

  const CompositeDefn& composite(const std::string& name) const {
    const CompositeDefn* found = set->findCompositeByName(name);
    if (!found) throw std::runtime_error("no composite " + name);
    return *found;
  }
  const FieldDefn& field(const std::string& composite, int index) const { return this->composite(composite).getField(index); }
  const CompositeFieldInstancesControl& overrides(const std::string& composite, int field) const {
    return *this->composite(composite).getField(field).getInstancesControl();
  }
};

// Throws compiler::CompileError for a source the compiler refuses, InvalidFile for bytes the
// engine refuses.
std::unique_ptr<CompiledComposites> compileComposites(const std::string& yaml, int version = pcf::kNewestVersion);

// The text of the CompileError the source raises, or "" when it compiles.
std::string compositeCompileFailure(const std::string& yaml, int version = pcf::kNewestVersion);

}  // namespace vantrelia::testing
