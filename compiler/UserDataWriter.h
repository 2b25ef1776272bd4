#pragma once
// The `userData` mapping that most records take (from format version 855): texts under keys of
// the file-wide key list, which the warehouse writes once at the front of the file.
//
//   userData: {Note: coded, Origin: lab}

#include "compiler/CompileContext.h"
#include "compiler/PcfWriter.h"
#include "compiler/SourceNode.h"

namespace vantrelia::compiler {

class UserDataWriter {
 public:
  // Refuses user data before its version, and puts the record's keys into the file-wide list.
  static void declare(const SourceNode& record, CompileContext& context);
  // A count, then each value with the index of its key; the keys must have been declared.
  static void write(const SourceNode& record, const CompileContext& context, PcfWriter& out);
};

}  // namespace vantrelia::compiler
