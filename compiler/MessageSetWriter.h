#pragma once
// One message set record, written field for field as the set reads it: its settings, separators,
// message type fields, validation tables, composites, segments, messages, user data and error
// severities.

#include <vector>

#include "compiler/SourceNode.h"

namespace vantrelia::compiler {

class CompileContext;
class PcfWriter;

class MessageSetWriter {
 public:
  // First pass over all sets of the file: checks each, gives it its id and declares every name
  // and user-data key it holds, so that the file's header can list all keys and items can refer
  // to sets later in the file.
  static void declareAll(const std::vector<SourceNode>& sets, CompileContext& context);
  // Second pass: one set's bytes. Declares the set's own names again, since names of composites,
  // tables and segments are local to a set.
  // `position` is the set's place in the file, by which embedded state tables are found.
  static void write(const SourceNode& set, size_t position, CompileContext& context, PcfWriter& out);

 private:
  static void declareLocalNames(const SourceNode& set, CompileContext& context);
};

}  // namespace vantrelia::compiler
