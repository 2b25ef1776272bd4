#pragma once
// The composites of a message set, written field for field and gate for gate as CompositeDefn::load
// reads them.
//
//   composites:
//     - name: CE
//       id: 12                    # optional; assigned otherwise
//       separator: field2         # the composite's separator by name; default auto
//       specialSeparator: "&"     # its text, with `separator: string`
//       fixedWidth: false
//       userData: {Note: coded}   # from 855
//       presenceIndicator: {separator: string, text: "~"}   # from 865
//       fields: [...]             # see FieldWriter
//
// Fields refer to composites by name, also to composites later in the list. The flag word of the
// file (from 857) is worked out from the fields: the source doesn't state it.

#include <vector>

#include "compiler/SourceNode.h"

namespace vantrelia::compiler {

class CompileContext;
class PcfWriter;

class CompositeWriter {
 public:
  // Declaration pass over the composites of one set, after CompileContext::beginMessageSet and
  // before any field of the set is written: checks names and keys, takes the ids given and assigns
  // the others (the lowest from 1 up that no other composite and no custom or array type holds, so
  // that a variable field's type id names one thing), and declares the fields' user-data keys.
  static void declare(const std::vector<SourceNode>& composites, CompileContext& context);
  // One composite record with its fields.
  static void write(const SourceNode& composite, const CompileContext& context, PcfWriter& out);
};

}  // namespace vantrelia::compiler
