#pragma once
// The outer record of a definition file, written field for field as the warehouse reads it.

#include "compiler/SourceNode.h"
#include "compiler/TypeWriter.h"

namespace vantrelia::compiler {

class CompileContext;
class PcfWriter;

class WarehouseWriter {
 public:
  WarehouseWriter(const SourceNode& source, CompileContext& context);

  // First pass: checks the record and declares the names that other records refer to.
  void declare();
  // Second pass: writes the bytes.
  void write(PcfWriter& out) const;

  // The custom and array types, for records that refer to them by name.
  const TypeWriter& types() const { return typeTables; }

 private:
  const SourceNode& source;
  CompileContext& context;
  TypeWriter typeTables;
};

}  // namespace vantrelia::compiler
