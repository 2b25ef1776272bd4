#pragma once
// A state of a message state table: a place in the message's item tree (or the start or the end)
// and the names that may come next. A state of the strict table and the state of the same index in
// the relaxed table stand for the same item.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "definitions/ParseTransition.h"

namespace vantrelia {

class MessageItemDefn;

class ParseState {
 public:
  // Transition keys with their targets.
  using Candidates = std::vector<std::pair<std::string_view, const ParseState*>>;

  ParseState(int32_t stateIndex, std::vector<int32_t> itemPath, const MessageItemDefn* stateItem)
      : index(stateIndex), path(std::move(itemPath)), item(stateItem) {}
  ParseState(const ParseState&) = delete;
  ParseState& operator=(const ParseState&) = delete;

  int32_t getIndex() const { return index; }
  // Item indexes from the message down; the last is the item's index in its parent.
  const std::vector<int32_t>& getPath() const { return path; }
  // Null for the start and the final state.
  const MessageItemDefn* getItem() const { return item; }
  const std::vector<ParseTransition>& getTransitions() const { return transitions; }

  void addTransition(std::string key, int32_t distance, const ParseState* target) {
    transitions.push_back(ParseTransition{std::move(key), distance, target});
  }
  void setDistance(size_t transition, int32_t distance) { transitions.at(transition).distance = distance; }
  void setKey(size_t transition, std::string key) { transitions.at(transition).key = std::move(key); }

  // What a walk standing in this state may read next: the target of each transition once (by
  // its first transition), in key order, ties in transition order. Settled once the table is
  // complete, since every segment of a parse asks. `seen` is all clear, and is left so.
  void settleCandidates(std::vector<char>& seen);
  const Candidates& getCandidates() const { return candidates; }

 private:
  int32_t index;
  std::vector<int32_t> path;
  const MessageItemDefn* item;
  std::vector<ParseTransition> transitions;
  Candidates candidates;
};

// A whole table, in index order: the start at 0, the final state last.
using StateTable = std::vector<std::unique_ptr<ParseState>>;

// Settles the candidates of every state of a complete table.
void settleCandidates(const StateTable& table);

}  // namespace vantrelia
