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

#include <cstdint>

#include "compiler/CompileContext.h"
#include "compiler/SourceNode.h"
#include "definitions/FieldInstanceUpdate.h"

namespace vantrelia::compiler {

class PcfWriter;

class FieldOverrideWriter {
 public:
  // The block of `field`, whose composite is `composite`; nothing in files before 800, where a
  // field that asks for overrides is refused.
  static void write(const SourceNode& field, const CompileContext::Composite& composite, const CompileContext& context,
                    PcfWriter& out);

  // What every override record may carry, the situational data of message items included:
  // required, hidden and the lengths, each from the version that brought it, and the bare
  // `situational` flag. `flagsFrom` is the version from which the record has a flag word: 800 for
  // a primitive field's record, 801 for a composite field's and the header.
  static FieldOverrideValues commonValuesOf(const SourceNode& entry, int version, int flagsFrom);
  // The flag word of a record: a byte before the version that widened it.
  static void writeFlags(PcfWriter& out, uint16_t flags, int version);
  // Behind the texts: what every record, the header's included, carries under its flags.
  static void writeCommonAttributes(PcfWriter& out, const FieldOverrideValues& values, int version);
};

}  // namespace vantrelia::compiler
