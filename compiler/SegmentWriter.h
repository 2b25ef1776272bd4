#pragma once
// The segments of a message set, written field for field and gate for gate as SegmentDefn::load
// reads them.
//
//   segments:
//     - name: PID
//       tag: PID                  # default: the name; "" for a segment without a tag (from 517)
//       id: 7                     # optional; assigned otherwise
//       separator: field1         # the segment's separator by name; default auto
//       specialSeparator: "|"     # its text, with `separator: string`
//       fixedWidth: false
//       fields: [...]             # see FieldWriter
//       matches: [{path: PID.3, value: X}]                   # see MatchWriter
//       userData: {Note: patient} # from 855
//       ncpdp: true               # from 857: a tagged pharmacy segment
//       presenceIndicator: {separator: string, text: "~"}   # from 865
//       nameValuePair: {separator: string, text: "="}       # from 866; text only with string
//
// The flag word of the file (from 857) is worked out from the fields and `ncpdp`; the two special
// records add their own flags when the engine reads them.

#include <vector>

#include "compiler/SourceNode.h"

namespace vantrelia::compiler {

class CompileContext;
class PcfWriter;

class SegmentWriter {
 public:
  // Declaration pass over the segments of one set, after its composites are declared: checks names,
  // keys and version gates, takes the ids given and assigns the others (the lowest from 1 up that
  // no other segment of the set holds), and declares the user-data keys of segments and fields.
  // Message items then find a segment's id by name through CompileContext::segmentId.
  static void declare(const std::vector<SourceNode>& segments, CompileContext& context);
  // One segment record with its fields and matches.
  static void write(const SourceNode& segment, const CompileContext& context, PcfWriter& out);
};

}  // namespace vantrelia::compiler
