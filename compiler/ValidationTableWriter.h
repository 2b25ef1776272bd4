#pragma once
// A validation table of a message set, written field for field and gate for gate as
// ValidationTableDefn::load and ValidationEntryDefn::load read it.
//
//   - name: Sex
//     entries: [M, F, {value: U, description: Unknown}]
//
// An entry is its value, or a mapping of value and description.

#include <vector>

#include "compiler/SourceNode.h"

namespace vantrelia::compiler {

class CompileContext;
class PcfWriter;

class ValidationTableWriter {
 public:
  // The flag of the set header that says the set's tables carry descriptions: true from the version
  // that has descriptions on, when any entry of any table gives one. One flag serves every table of
  // a set, so the set writer asks this once and hands the answer to each write.
  static bool carriesDescriptions(const std::vector<SourceNode>& tables, const CompileContext& context);

  // One table. Refuses, naming the line, descriptions below their version and values that the
  // version's texts can't carry.
  static void write(const SourceNode& table, CompileContext& context, PcfWriter& out, bool withDescriptions);
};

}  // namespace vantrelia::compiler
