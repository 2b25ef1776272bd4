#pragma once
// The validation error settings of a message set, written as ValidationErrorSettingDefn::load reads
// each record.
//
//   validationErrorSettings: {1043: warning, 1007: ignore}
//
// The engine completes a set's list by position, numbering what it appends from 1001 plus the count
// read, so the file must list the numbers from 1001 on without a gap. The writer therefore writes
// every number from 1001 up to the highest one named, those not named with the severity the engine
// would give them.

#include "compiler/SourceNode.h"

namespace vantrelia::compiler {

class CompileContext;
class PcfWriter;

class ValidationErrorSettingWriter {
 public:
  // The settings of `set`, from its key `validationErrorSettings`: the count, then the records. From
  // the version that has settings on; below it nothing is written and naming a setting is an error.
  static void writeList(const SourceNode& set, CompileContext& context, PcfWriter& out);
};

}  // namespace vantrelia::compiler
