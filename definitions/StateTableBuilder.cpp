#include "definitions/StateTableBuilder.h"

#include <algorithm>
#include <unordered_set>
#include <utility>

#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/PcfMessages.h"
#include "definitions/SegmentDefn.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

namespace {

// A set of states without duplicates, kept in the order they joined so that the transitions come
// out in the same order on every build.
// States in the order they were added, each once. Large messages gather hundreds of states in
// one set, so membership is looked up, not searched.
class StateSet {
 public:
  void add(ParseState* state) {
    if (members.insert(state).second) states.push_back(state);
  }
  void add(const StateSet& other) {
    for (ParseState* state : other.states) add(state);
  }
  void clear() {
    states.clear();
    members.clear();
  }
  auto begin() const { return states.begin(); }
  auto end() const { return states.end(); }

 private:
  std::vector<ParseState*> states;
  std::unordered_set<const ParseState*> members;
};

bool isEmbeddedSet(const MessageItemDefn& item) { return item.getMessageItemType() == MessageItemDefn::kMessageSetItem; }

bool repeats(const MessageItemDefn& item) { return item.getMaxRepeats() != 1; }

// Where the items being built stand: at the top of the message, in a sequence group, or among the
// alternatives of a choice or unordered group. It decides a segment item's key and the distance
// the strict table gives its transitions.
enum class Place { Top, Sequence, Alternatives };

std::string segmentKey(const MessageItemDefn& item, Place place) {
  if (isEmbeddedSet(item)) return StateTableBuilder::keyOf(item);
  return place == Place::Sequence ? item.getName().str() : item.getSegment()->getName().str();
}

class Builder {
 public:
  explicit Builder(StateTable& target) : table(target) {}

  ParseState* newState(std::vector<int32_t> path, const MessageItemDefn* item) {
    table.push_back(std::make_unique<ParseState>(static_cast<int32_t>(table.size()), std::move(path), item));
    return table.back().get();
  }

  // The start state, then what `build` adds, then the final state reached from `open` under "$".
  template <class Build>
  void wholeTable(Build build) {
    StateSet open;
    open.add(newState({}, nullptr));
    build(open);
    ParseState* last = newState({}, nullptr);
    for (ParseState* state : open) state->addTransition(StateTableBuilder::kEndKey, 0, last);
  }

  // The strict table leaves the distances of the top of a message unworked.
  static int32_t distanceAt(Place place) { return place == Place::Top ? ParseTransition::kNoDistance : 0; }

  static void link(ParseState* from, std::string_view name, const ParseState* to, Place place) {
    from->addTransition(StateTableBuilder::keyFor(name), distanceAt(place), to);
  }

  // Every state of `from` to every state of `to` but embedded set items, under the item's name.
  static void linkAll(const StateSet& from, const StateSet& to, Place place) {
    // Each target's key is cut once, not once for every state that links to it.
    std::vector<std::pair<std::string, const ParseState*>> targets;
    for (ParseState* target : to)
      if (!isEmbeddedSet(*target->getItem())) targets.emplace_back(StateTableBuilder::keyFor(target->getItem()->getName().view()), target);
    for (ParseState* source : from)
      for (const auto& [key, target] : targets) source->addTransition(key, distanceAt(place), target);
  }

  static void refuseInUnordered(const SegmentGroupDefn& group, const MessageItemDefn& item) {
    if (group.isUnorderedGroup() && isEmbeddedSet(item)) throw InvalidFile(messages::kInvalidUnorderedItemType);
  }

  // --- strict ---

  void sequence(const StateTableBuilder::Items& items, const std::vector<int32_t>& path, StateSet& frontier,
                StateSet& firsts, Place place) {
    bool required = false;
    for (size_t i = 0; i < items.size(); ++i) {
      const MessageItemDefn& item = *items[i];
      std::vector<int32_t> itemPath = path;
      itemPath.push_back(static_cast<int32_t>(i));
      StateSet reached;
      StateSet starts;
      if (item.getMessageItemType() == MessageItemDefn::kGroupItem) {
        group(*item.getGroup(), itemPath, frontier, reached, starts);
        if (repeats(item) && !item.getGroup()->isUnorderedGroup()) linkAll(reached, starts, place);
      } else {
        ParseState* state = segmentState(item, itemPath, frontier, place);
        reached.add(state);
        starts.add(state);
      }
      if (!required) firsts.add(starts);
      if (item.isRequired()) {
        frontier.clear();
        required = true;
      }
      frontier.add(reached);
    }
  }

  // The state of a segment or embedded set item, entered from `from`, with its repeat link.
  ParseState* segmentState(const MessageItemDefn& item, const std::vector<int32_t>& path, const StateSet& from, Place place) {
    ParseState* state = newState(path, &item);
    const std::string key = segmentKey(item, place);
    for (ParseState* source : from) link(source, key, state, place);
    if (repeats(item)) link(state, key, state, place);
    return state;
  }

  void group(const SegmentGroupDefn& group, const std::vector<int32_t>& path, const StateSet& frontier,
             StateSet& groupFrontier, StateSet& groupFirsts) {
    StateSet copy = frontier;
    if (!group.isChoiceGroup() && !group.isUnorderedGroup()) {
      sequence(group.getItems(), path, copy, groupFirsts, Place::Sequence);
      groupFrontier = copy;
      return;
    }
    for (size_t i = 0; i < group.getItems().size(); ++i) {
      const MessageItemDefn& item = *group.getItems()[i];
      refuseInUnordered(group, item);
      std::vector<int32_t> itemPath = path;
      itemPath.push_back(static_cast<int32_t>(i));
      if (item.getMessageItemType() == MessageItemDefn::kGroupItem) {
        StateSet reached;
        StateSet starts;
        this->group(*item.getGroup(), itemPath, copy, reached, starts);
        if (repeats(item) && !item.getGroup()->isUnorderedGroup()) linkAll(reached, starts, Place::Alternatives);
        groupFrontier.add(reached);
        groupFirsts.add(starts);
      } else {
        ParseState* state = segmentState(item, itemPath, copy, Place::Alternatives);
        groupFrontier.add(state);
        groupFirsts.add(state);
      }
    }
    // In an unordered group any item may follow any other.
    if (group.isUnorderedGroup()) linkAll(groupFrontier, groupFirsts, Place::Alternatives);
  }

  // --- relaxed ---

  void relaxed(const StateTableBuilder::Items& items, const std::vector<int32_t>& path, StateSet& open, Place place) {
    for (size_t i = 0; i < items.size(); ++i) {
      const MessageItemDefn& item = *items[i];
      std::vector<int32_t> itemPath = path;
      itemPath.push_back(static_cast<int32_t>(i));
      if (item.getMessageItemType() != MessageItemDefn::kGroupItem) {
        ParseState* state = newState(itemPath, &item);
        const std::string key = segmentKey(item, place);
        for (ParseState* source : open) link(source, key, state, place);
        open.add(state);
        continue;
      }
      StateSet inside;
      relaxedGroup(*item.getGroup(), itemPath, inside);
      linkAll(open, inside, place);
      if (repeats(item) && !item.getGroup()->isUnorderedGroup()) linkAll(inside, inside, place);
      open.add(inside);
    }
  }

  void relaxedGroup(const SegmentGroupDefn& group, const std::vector<int32_t>& path, StateSet& inside) {
    if (!group.isChoiceGroup() && !group.isUnorderedGroup()) {
      relaxed(group.getItems(), path, inside, Place::Sequence);
      return;
    }
    // Alternatives are all entered from what came in, never from each other.
    const StateSet entry = inside;
    StateSet collected;
    for (size_t i = 0; i < group.getItems().size(); ++i) {
      const MessageItemDefn& item = *group.getItems()[i];
      refuseInUnordered(group, item);
      std::vector<int32_t> itemPath = path;
      itemPath.push_back(static_cast<int32_t>(i));
      if (item.getMessageItemType() != MessageItemDefn::kGroupItem) {
        ParseState* state = newState(itemPath, &item);
        const std::string key = segmentKey(item, Place::Alternatives);
        for (ParseState* source : entry) link(source, key, state, Place::Alternatives);
        collected.add(state);
        continue;
      }
      StateSet nested;
      relaxedGroup(*item.getGroup(), itemPath, nested);
      linkAll(entry, nested, Place::Alternatives);
      if (repeats(item) && !item.getGroup()->isUnorderedGroup()) linkAll(nested, nested, Place::Alternatives);
      collected.add(nested);
    }
    if (group.isUnorderedGroup()) linkAll(collected, collected, Place::Alternatives);
    inside = collected;
  }

 private:
  StateTable& table;
};

// One step of the walk through the strict table from `current` towards `target`: the furthest
// state it reaches without passing the target; going back, the furthest it can reach at all when
// nothing lies at or before the target.
int32_t stepTowards(const ParseState& current, int32_t target, bool forward) {
  int32_t best = forward ? current.getIndex() : -1;
  for (const auto& transition : current.getTransitions()) {
    const int32_t to = transition.target->getIndex();
    if (to <= target && to > best) best = to;
  }
  if (best != -1) return best;
  best = current.getIndex();
  for (const auto& transition : current.getTransitions()) best = std::max(best, transition.target->getIndex());
  return best;
}

}  // namespace

std::string StateTableBuilder::keyFor(std::string_view name) { return std::string(name.substr(0, name.find(':'))); }

std::string StateTableBuilder::keyOf(const MessageItemDefn& item) {
  const MessageSetDefn* embedded = item.getMessageSet();
  if (!embedded || embedded->getMessages().empty()) return {};
  const MessageDefn& first = *embedded->getMessages().front();
  return first.getItemCount() == 0 ? std::string() : first.getItem(0).getName().str();
}

StateTable StateTableBuilder::buildStrict(const Items& items) {
  StateTable table;
  Builder builder(table);
  builder.wholeTable([&](StateSet& frontier) {
    StateSet firsts;
    builder.sequence(items, {}, frontier, firsts, Place::Top);
  });
  return table;
}

StateTable StateTableBuilder::buildRelaxed(const Items& items) {
  StateTable table;
  Builder builder(table);
  builder.wholeTable([&](StateSet& open) { builder.relaxed(items, {}, open, Place::Top); });
  return table;
}

void StateTableBuilder::workOutDistances(StateTable& relaxed, const StateTable& strict) {
  // A walk that comes round to a state it has left can't end by itself; no walk that ends takes
  // more steps than there are states.
  const int32_t longest = static_cast<int32_t>(strict.size());
  // Where a walk goes next depends on where it stands, its target and its direction alone, so a
  // walk that steps on takes as many more steps as the walk from there. The steps from each state
  // are thus worked out once for each target and direction, not once for each jump: large messages
  // have a jump from every state to every later one.
  constexpr int32_t kUnknown = -1;
  constexpr int32_t kOnPath = -2;
  // Indexed by target, twice: going back, then going forward; each made at its first use.
  std::vector<std::vector<int32_t>> stepsFrom(2 * static_cast<size_t>(longest));
  std::vector<int32_t> path;
  for (const auto& state : relaxed) {
    const int32_t from = state->getIndex();
    for (size_t t = 0; t < state->getTransitions().size(); ++t) {
      const int32_t target = state->getTransitions()[t].target->getIndex();
      const bool forward = from < target;
      std::vector<int32_t>& known = stepsFrom.at(2 * static_cast<size_t>(target) + (forward ? 1 : 0));
      if (known.empty()) known.assign(static_cast<size_t>(longest), kUnknown);
      // Walk until a state whose steps are known, keeping the states passed; then each of them
      // takes one step more than the one after it.
      int32_t beyond = 0;
      path.clear();
      for (int32_t current = from; current >= 0 && current < longest;) {
        int32_t& steps = known[static_cast<size_t>(current)];
        if (steps >= 0) {
          beyond = steps;
          break;
        }
        if (steps == kOnPath) {
          beyond = longest + 1;
          break;
        }
        steps = kOnPath;
        path.push_back(current);
        const int32_t best = stepTowards(*strict[static_cast<size_t>(current)], target, forward);
        if (best == current || best == target) break;
        current = best;
      }
      for (auto place = path.rbegin(); place != path.rend(); ++place) {
        beyond = std::min(beyond + 1, longest + 1);
        known[static_cast<size_t>(*place)] = beyond;
      }
      state->setDistance(t, beyond);
    }
  }
}

}  // namespace vantrelia
