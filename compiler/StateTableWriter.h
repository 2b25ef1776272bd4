#pragma once
// A loaded message's two state tables in the file form that MessageDefn::readStateTables reads.
//
// The compiler embeds tables by building them with the engine itself: it compiles the file
// without tables, loads it (the load builds every message's tables), then compiles again and
// hands each message that asks for embedded tables the bytes written here from its loaded twin.
// So a file's embedded tables are those the engine would have built.

#include <cstdint>
#include <vector>

namespace vantrelia {
class MessageDefn;
}

namespace vantrelia::compiler {

class PcfWriter;

class StateTableWriter {
 public:
  // Strict table, then relaxed. Throws std::invalid_argument for a state whose item has no id
  // (a file from before item ids can't carry tables).
  static void write(const MessageDefn& message, PcfWriter& out);
  static std::vector<uint8_t> bytesOf(const MessageDefn& message);
  // The distance form: one byte, 0x7F for a distance never worked out, or 0xFF and a wider form.
  static void writeDistance(int32_t distance, PcfWriter& out);
};

}  // namespace vantrelia::compiler
