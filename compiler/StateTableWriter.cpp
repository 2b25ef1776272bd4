#include "compiler/StateTableWriter.h"

#include <stdexcept>

#include "compiler/PcfWriter.h"
#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"

namespace vantrelia::compiler {

namespace {

void writeTable(const StateTable& table, PcfWriter& out) {
  const auto stateCount = static_cast<int32_t>(table.size());
  out.i32(stateCount);
  for (const auto& state : table) {
    out.count(static_cast<int32_t>(state->getPath().size()));
    for (const int32_t index : state->getPath()) out.count(index);
    const MessageItemDefn* item = state->getItem();
    if (item && item->getId() == 0) throw std::invalid_argument("a state table can't name a message item without an id");
    out.i32(item ? item->getId() : 0);
    out.count(static_cast<int32_t>(state->getTransitions().size()));
    for (const auto& transition : state->getTransitions()) {
      StateTableWriter::writeDistance(transition.distance, out);
      out.count(transition.target->getIndex());
    }
  }
  out.i32(stateCount);  // unused by the reader; the state count is what it means
  // Only keys into embedded set items stand in the file; the reader works out all others.
  for (const auto& state : table)
    for (const auto& transition : state->getTransitions()) {
      const MessageItemDefn* item = transition.target->getItem();
      if (item && item->getMessageItemType() == MessageItemDefn::kMessageSetItem) out.text8(transition.key);
    }
}

}  // namespace

void StateTableWriter::writeDistance(int32_t distance, PcfWriter& out) {
  if (distance == ParseTransition::kNoDistance) {
    out.byte(0x7F);
  } else if (distance >= 0 && distance < 0xFF && distance != 0x7F) {
    out.byte(static_cast<uint8_t>(distance));
  } else if (distance >= 0 && distance < 0xFFFF) {
    out.byte(0xFF).u16(static_cast<uint16_t>(distance));
  } else {
    out.byte(0xFF).u16(0xFFFF).i32(distance);
  }
}

void StateTableWriter::write(const MessageDefn& message, PcfWriter& out) {
  writeTable(message.getStrictStates(), out);
  writeTable(message.getRelaxedStates(), out);
}

std::vector<uint8_t> StateTableWriter::bytesOf(const MessageDefn& message) {
  PcfWriter out;
  write(message, out);
  return out.take();
}

}  // namespace vantrelia::compiler
