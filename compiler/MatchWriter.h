#pragma once
// Match lists of segments, message items and messages, written as MatchDefn::load reads them.
//
//   matches:
//     - {path: MSH.9.1, value: ADT}     # steps joined by "." or "/"; the engine reads both as "/"
//     - {path: PID/3, value: ""}        # an empty value matches without a pattern
//
// The value is a value text: from 832 any character; below it only what a byte carries.

#include <vector>

#include "compiler/SourceNode.h"

namespace vantrelia::compiler {

class CompileContext;
class PcfWriter;

class MatchWriter {
 public:
  // The match records in the `matches` list of a segment, item or message, in order.
  static std::vector<SourceNode> matchesOf(const SourceNode& owner);
  // One match record: path, then value.
  static void write(const SourceNode& match, const CompileContext& context, PcfWriter& out);
  // The owner's match count, then its records.
  static void writeList(const SourceNode& owner, const CompileContext& context, PcfWriter& out);
};

}  // namespace vantrelia::compiler
