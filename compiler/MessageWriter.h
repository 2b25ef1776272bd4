#pragma once
// The messages of a message set with their item trees, written field for field and gate for gate
// as MessageDefn::load, MessageItemDefn::load and SegmentGroupDefn::load read them.
//
//   messages:
//     - name: ADT_A01
//       type: "ADT A01"           # the type text; cut into one type per message type field
//       matches: [{path: MSH.9.1, value: ADT}]    # see MatchWriter
//       visibleChildren: {counts: {1: 3}, total: 5}   # from 850: item index -> count
//       stateTables: embedded     # from 851; default built: the engine builds them at load
//       userData: {Note: admit}   # from 855
//       items:
//         - segment: MSH          # a segment of the set, by name; the item's name defaults to it
//           required: true
//           id: 10                # from 851; otherwise the lowest free id from 1, depth first
//           overrides:            # from 800, keyed by the segment's field names
//             Sending: {required: true, default: X, table: Apps}
//             Coding: {hidden: true, overrides: {Identifier: {maxLength: 20}}}
//           matches: [...]
//         - segment: NTE
//           name: "NTE:2"         # names may carry a suffix after ":"; the state key drops it
//           maxRepeats: 0         # 0: no limit; default 1
//         - group: PROCEDURE      # the item's and the group's name
//           choice: true          # or unordered: true (from 849)
//           maxRepeats: 0
//           items: [...]
//         - embeddedSet: OTHER    # an embedded message of a set by name, also a later one
//           name: OTHER
//
// Every item also takes minRepeats, hidden (from 516) and userData.

#include <cstdint>
#include <vector>

#include "compiler/SourceNode.h"

namespace vantrelia::compiler {

class CompileContext;
class PcfWriter;

class MessageWriter {
 public:
  // Declaration pass over the messages of one set: checks keys and gates and declares the
  // user-data keys of messages and items.
  static void declare(const std::vector<SourceNode>& messages, CompileContext& context);
  // One message record, after the set's segments are declared. `stateTables` are the bytes of
  // StateTableWriter for this message: given, the record carries them; null, it carries none.
  static void write(const SourceNode& message, const CompileContext& context, PcfWriter& out,
                    const std::vector<uint8_t>* stateTables = nullptr);
  // True for a message whose source asks for `stateTables: embedded`.
  static bool wantsEmbeddedTables(const SourceNode& message);
};

}  // namespace vantrelia::compiler
