#pragma once
// Compiles a message's item tree into its two state tables, for files that don't carry them.
//
// The strict table accepts exactly what the items allow: a state per segment or embedded set
// item, reached from every state that can stand before it, with a link to itself where the item
// repeats and links from the end of a repeating group back to its first states. The relaxed table
// lets every item be skipped: each state reaches every later one, and alternatives of a choice
// don't reach each other. Both number their states alike, in item order, so the state of an index
// stands for the same item in both; the relaxed table's distances count the steps its jumps take
// through the strict one.

#include <memory>
#include <string>
#include <vector>

#include "definitions/ParseState.h"

namespace vantrelia {

class MessageItemDefn;

class StateTableBuilder {
 public:
  using Items = std::vector<std::unique_ptr<MessageItemDefn>>;

  // The key of the transitions into the final state.
  static constexpr const char* kEndKey = "$";

  // Both throw InvalidFile "Invalid message item type in unordered group" for an embedded set
  // item in an unordered group.
  static StateTable buildStrict(const Items& items);
  // Without distances; workOutDistances fills them.
  static StateTable buildRelaxed(const Items& items);
  static void workOutDistances(StateTable& relaxed, const StateTable& strict);

  // The key an embedded set item is entered under: the name of the first item of the first
  // message of its set; empty while the set is unknown or has nothing to start with.
  static std::string keyOf(const MessageItemDefn& item);
  // The key a transition stores for a name: the name cut before its first ":" ("NTE:2" is "NTE").
  static std::string keyFor(std::string_view name);
};

}  // namespace vantrelia
