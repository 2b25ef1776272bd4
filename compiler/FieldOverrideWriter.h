#pragma once
// The override block of a composite field, written record for record as
// UpdateCompositeFieldInstances::load reads it. The source is a tree keyed by the names of the
// composite's fields; the writer turns names into indexes and closes each nested level:
//
//   - name: Coding
//     composite: CE
//     overrideHeader: {required: true}          # the composite field as a whole (from 801)
//     overrides:                                # from 800
//       Identifier: {required: true, default: X, table: Codes}
//       Text: {format: "@[A-Z]+", maxLength: 20}
//       Detail:                                 # a composite field of CE: its own attributes...
//         hidden: true
//         overrides: {Part: {default: "1"}}     # ...and the fields of its composite
//
// A primitive field takes default, count, format, table, required, hidden, minLength, maxLength;
// a composite field required, hidden, minLength, maxLength and overrides. `situational` and
// `advancedValidation: true` set the bare flags that files before 868 may carry.

#include "compiler/CompileContext.h"
#include "compiler/SourceNode.h"

namespace vantrelia::compiler {

class PcfWriter;

class FieldOverrideWriter {
 public:
  // The block of `field`, whose composite is `composite`; nothing in files before 800, where a
  // field that asks for overrides is refused.
  static void write(const SourceNode& field, const CompileContext::Composite& composite, const CompileContext& context,
                    PcfWriter& out);
};

}  // namespace vantrelia::compiler
