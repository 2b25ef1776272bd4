#include "parsing/StateWalk.h"

#include <algorithm>
#include <string>

#include "definitions/MatchDefn.h"
#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/ParseState.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SegmentGroupDefn.h"
#include "definitions/SegmentTagMap.h"
#include "definitions/SeparatorDefn.h"
#include "elements/MessageImpl.h"
#include "elements/MessageSetImpl.h"
#include "elements/SegmentGroupImpl.h"
#include "elements/SegmentImplBase.h"
#include "foundation/BadParameter.h"
#include "foundation/Format.h"
#include "parsing/MessageParser.h"
#include "parsing/ParseCallback.h"
#include "parsing/ParseContext.h"
#include "parsing/ParserStream.h"
#include "parsing/SegmentReader.h"
#include "parsing/SeparatorList.h"
#include "validation/ValidationErrorNumbers.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

namespace {

constexpr char16_t kUnexpectedSegment[] = u"Unexpected segment";
constexpr char16_t kMatchListFailed[] = u"Message Item Match-List failed to match correctly";

SegmentImplBase* definedSegment(const SegmentMatch& match) {
  SegmentElement* element = match.getElement();
  return element ? element->asDefined() : nullptr;
}

int32_t indexOfSet(const MessageWarehouseDefn& warehouse, const MessageSetDefn& set) {
  const auto& sets = warehouse.getMessageSets();
  for (size_t i = 0; i < sets.size(); ++i) {
    if (sets[i].get() == &set) return static_cast<int32_t>(i);
  }
  return -1;
}

// The path of a node below the message, its indexes dropped, as match lists name it.
std::string plainPathBelow(InternalElement& node) {
  const std::string full = node.getPath();
  std::string plain;
  bool inIndex = false;
  for (char c : full) {
    if (c == '[') inIndex = true;
    if (!inIndex) plain += c;
    if (c == ']') inIndex = false;
  }
  return plain;
}

}  // namespace

StateWalk::StateWalk(MessageImpl& message, ParseContext& context, LookAheadList& lookAhead,
                     LookAheadList::iterator& iterator, ParserStream& stream, const ParseCallback* callback,
                     ValidationLocation& location)
    : message(message), defn(message.getMessageDefn()), context(context), lookAhead(lookAhead),
      iterator(iterator), stream(stream), callback(callback), location(location),
      messageSetIndex(indexOfSet(context.warehouse, message.getMessageDefn().getSet())) {
  if (iterator != lookAhead.begin()) beforeStart = std::prev(iterator);
}

bool StateWalk::parseSegments() {
  message.setTreeChanged(true);
  message.getRecordedErrors().clear();
  const StateTable& strict = defn.getStrictStates();
  if (strict.empty()) return false;
  visited.assign(strict.size(), 0);
  bool again = true;
  while (again) {
    again = false;
    bool ended = false;
    if (!walk(ended)) return false;
    if (!pending.empty()) {
      if (!resolvePending(strict.back()->getIndex()) || !placePending()) return false;
      if (!ended && iterator != lookAhead.end() && iterator->getElement() && belongsHere(*iterator) &&
          !iterator->newSeparators) {
        // More content of this message follows: the walk starts over at the top.
        again = true;
        currentState = 0;
      }
    }
  }
  if (!messageMatchesHold()) return false;
  cleanUp();
  // The message takes what the reads of its own segments found. What the read of a segment
  // beyond its end found stays with that segment, for the message that takes it next or for none:
  // kept here, it would name a segment that is dropped, or counted twice when read again.
  message.getRecordedErrors().takeWhere(context.errors, [this](MessageElement* element) {
    if (!element) return true;
    for (auto* node = static_cast<InternalElement*>(element); node; node = node->parent) {
      if (node == &message) return true;
    }
    return false;
  });
  return true;
}

bool StateWalk::walk(bool& ended) {
  // One path for every segment, so that its states keep their room from one to the next.
  ParsePath path;
  while (!ended) {
    if (iterator == lookAhead.end() && stream.atEnd()) break;
    gatherCandidates();
    bool readShort = false;
    if (iterator == lookAhead.end()) {
      readShort = readPlain();
      if (!readShort) {
        if (nextMessageBegins()) break;
        readAhead();
      }
    }
    SegmentMatch& match = *iterator;
    if (match.endKind & SegmentMatch::kEndMessage) ended = true;
    SegmentElement* element = match.getElement();
    if (!element) {
      if (!ended) {
        if (match.isDeadEnd()) return false;
        reportUnknownText(match);
      }
      ++iterator;
      continue;
    }
    const std::string_view name = element->getName();
    auto range = readShort && name == plainName ? plainRange : rangeOf(name);
    bool unexpectedCalled = false;
    if (range.first == range.second) {
      const int outcome = handleUnexpected();
      if (outcome == 0) return false;
      if (outcome == 1) continue;
      if (outcome == 3) break;
      range = rangeOf(name);
      unexpectedCalled = true;
    }
    path.entry = iterator;
    path.states.clear();
    int count = 0;
    matchCandidates(path, range, count);
    const bool anyName = range.first != range.second;
    if (count == 0 && !unexpectedCalled) {
      const int outcome = handleUnexpected();
      if (outcome == 0) return false;
      if (outcome == 1) continue;
      if (outcome == 3) break;
      range = rangeOf(name);
      matchCandidates(path, range, count);
    }
    if (count == 1 || (pending.size() > 1 && path.stateIndexes() == firstStates)) {
      const ParseState* target = path.states.front();
      if (!resolvePending(target->getIndex()) || !placePending()) return false;
    }
    if (count == 0) {
      reportUnplaceable(match, anyName);
      ++iterator;
    } else if (count == 1) {
      const ParseState* target = path.states.front();
      InternalElement* placed = placeSegment(path);
      if (!placed) return false;
      currentElement = placed;
      currentState = target->getIndex();
      currentPath = target->getPath();
    } else {
      if (pending.empty()) firstStates = path.stateIndexes();
      ++iterator;
      pending.push_back(std::move(path));
    }
  }
  return true;
}

bool StateWalk::ParsePath::holds(int32_t index) const {
  return std::any_of(states.begin(), states.end(), [&](const ParseState* state) { return state->getIndex() == index; });
}

std::vector<int32_t> StateWalk::ParsePath::stateIndexes() const {
  std::vector<int32_t> indexes;
  indexes.reserve(states.size());
  for (const ParseState* state : states) indexes.push_back(state->getIndex());
  std::sort(indexes.begin(), indexes.end());
  return indexes;
}

void StateWalk::gatherCandidates() {
  const StateTable& strict = defn.getStrictStates();
  if (pending.empty()) {
    candidates = &strict[static_cast<size_t>(currentState)]->getCandidates();
    return;
  }
  gathered.clear();
  std::fill(visited.begin(), visited.end(), 0);
  for (const ParseState* state : pending.back().states) {
    for (const ParseTransition& transition : state->getTransitions()) {
      const int32_t target = transition.target->getIndex();
      if (visited[static_cast<size_t>(target)]) continue;
      visited[static_cast<size_t>(target)] = 1;
      gathered.emplace_back(transition.key, transition.target);
    }
  }
  std::stable_sort(gathered.begin(), gathered.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
  candidates = &gathered;
}

std::pair<StateWalk::Candidates::const_iterator, StateWalk::Candidates::const_iterator> StateWalk::rangeOf(
    std::string_view name) const {
  // The order of std::string_view, compared here without a call to memcmp: segment names are a few
  // characters, and every segment read looks its name up.
  const auto less = [](const auto& a, const auto& b) {
    const std::string_view left = a.first;
    const std::string_view right = b.first;
    const size_t common = std::min(left.size(), right.size());
    for (size_t i = 0; i < common; ++i) {
      if (left[i] != right[i]) return static_cast<unsigned char>(left[i]) < static_cast<unsigned char>(right[i]);
    }
    return left.size() < right.size();
  };
  return std::equal_range(candidates->begin(), candidates->end(),
                          std::pair<std::string_view, const ParseState*>(name, nullptr), less);
}

void StateWalk::readAhead() {
  // Kept between reads: one read for every segment of the text.
  expectedNext.clear();
  for (const auto& [key, target] : *candidates) {
    if (const SegmentDefn* segment = expectedSegmentOf(*target)) expectedNext.push_back(segment);
  }
  standingStates.clear();
  if (pending.empty()) {
    standingStates.push_back(currentState);
  } else {
    for (const ParseState* state : pending.back().states) standingStates.push_back(state->getIndex());
  }
  lookAhead.push_back(SegmentReader::readNextSegment(context, stream, location, &expectedNext, &standingStates,
                                                     &defn.getRelaxedStates(), false));
  iterator = std::prev(lookAhead.end());
}

bool StateWalk::readPlain() {
  // Most segments of a message are of this kind: the walk stands in one state, which takes the
  // segment, and the reader has nothing to choose. The full read would try the same segment first
  // and take it; what it passes over on the way (the expected list, the other sets, the header
  // checks that nextMessageBegins makes) is the time of a short segment.
  if (!pending.empty()) return false;
  const SegmentDefn* segment = SegmentReader::plainSegmentAt(context, stream, messageSetIndex);
  if (!segment) return false;
  // With no candidate at all the full read may end the message instead.
  plainName = segment->getName().view();
  plainRange = rangeOf(plainName);
  if (plainRange.first == plainRange.second || !expectedSegmentOf(*plainRange.first->second)) return false;
  SegmentReader::readPlain(context, stream, location, *segment, lookAhead.emplace_back());
  iterator = std::prev(lookAhead.end());
  return true;
}

bool StateWalk::nextMessageBegins() {
  // The read of a header tag of the message's own set, at the top level and with nothing left
  // to settle, takes a segment of the set whatever its fields hold, and a new separator list with
  // it; unless the message expects a segment of that tag, that ends the message. Anywhere else
  // the segment is read.
  if (context.warehouse.getSettings().cutFieldsWhenRead || message.parent || !pending.empty() ||
      context.fixedSeparators || !context.separatorStack.empty() || context.setIndex != messageSetIndex ||
      context.headerIndex < 0 || context.excludedSets.count(messageSetIndex)) {
    return false;
  }
  const MessageSetDefn& set = defn.getSet();
  if ((set.getSeparator(qxSepSegment).getFlags() & SeparatorDefn::kInitiator) || set.getMessageCount() == 0) {
    return false;
  }
  const MessageDefn& first = *set.getMessages().front();
  const int32_t headers = std::min(set.getHeaderItemCount(), first.getItemCount());
  // Most segments start with no header's first character: they go to the reader at once.
  bool mayBeHeader = false;
  for (int32_t i = 0; i < headers && !mayBeHeader; ++i) {
    const SegmentDefn* header = first.getItem(i).getSegment();
    mayBeHeader = header && !header->getTag().view().empty() && stream.nextIs(header->getTag().view().front());
  }
  if (!mayBeHeader) return false;
  const SegmentTagMap::Entry* entry = set.getTagMap().matchStream(stream);
  if (!entry || entry->empty()) return false;
  int32_t place = headers;
  for (int32_t i = 0; i < headers; ++i) {
    const SegmentDefn* header = first.getItem(i).getSegment();
    if (header && header->getTag() == entry->front()->getTag()) {
      place = i;
      break;
    }
  }
  if (place >= headers || place > context.headerIndex) return false;
  bool takenWhateverItHolds = false;
  for (const SegmentDefn* segment : *entry) {
    if (segment->getMatches().empty()) takenWhateverItHolds = true;
    for (const auto& [key, target] : *candidates) {
      if (key == segment->getName().view() || expectedSegmentOf(*target) == segment) return false;
    }
  }
  return takenWhateverItHolds;
}

const SegmentDefn* StateWalk::expectedSegmentOf(const ParseState& target) {
  const MessageItemDefn* item = target.getItem();
  if (!item) return nullptr;
  if (item->getMessageItemType() == MessageItemDefn::kSegmentItem) return item->getSegment();
  if (item->getMessageItemType() == MessageItemDefn::kMessageSetItem && item->getMessageSet() &&
      item->getMessageSet()->getMessageCount() > 0) {
    const MessageDefn& first = *item->getMessageSet()->getMessages().front();
    if (first.getItemCount() > 0) return first.getItem(0).getSegment();
  }
  return nullptr;
}

void StateWalk::matchCandidates(ParsePath& path,
                                std::pair<Candidates::const_iterator, Candidates::const_iterator> range, int& count) {
  SegmentElement* segment = path.entry->getElement();
  for (auto at = range.first; at != range.second; ++at) {
    const ParseState* target = at->second;
    const size_t bit = static_cast<size_t>(target->getIndex());
    if (path.holds(target->getIndex())) continue;
    bool holds = true;
    if (const MessageItemDefn* item = target->getItem()) {
      for (const auto& entry : item->getMatches()) {
        if (entry->getFieldPath().view().empty()) continue;
        try {
          MessageElement* field = segment->getElementAt(entry->getFieldPath().c_str());
          if (!entry->accepts(field->getValue())) holds = false;
        } catch (const BadParameter&) {
          holds = false;
        }
        if (!holds) break;
      }
    }
    if (!holds) continue;
    // A target reached through the relaxed table goes on by the strict one, like the current
    // state does: one missing segment lets the walk skip ahead once, not for the rest of the
    // ambiguity.
    path.states.push_back(defn.getStrictStates()[bit].get());
    ++count;
  }
}

bool StateWalk::belongsHere(const SegmentMatch& match) const {
  SegmentElement* element = match.getElement();
  return element && element->getMessageSetDefn() == &defn.getSet();
}

int StateWalk::handleUnexpected() {
  SegmentMatch& match = *iterator;
  if (match.newSeparators || !belongsHere(match)) return 3;
  const std::string_view name = match.getElement()->getName();
  const StateTable& relaxed = defn.getRelaxedStates();
  gathered.clear();
  candidates = &gathered;
  if (pending.empty()) {
    for (const ParseTransition& transition : relaxed[static_cast<size_t>(currentState)]->getTransitions()) {
      if (transition.key == name) gathered.emplace_back(transition.key, transition.target);
    }
  } else {
    const ParseTransition* best = nullptr;
    for (const ParseState* state : pending.back().states) {
      for (const ParseTransition& transition : relaxed[static_cast<size_t>(state->getIndex())]->getTransitions()) {
        if (transition.key != name) continue;
        if (!best || transition.distance < best->distance ||
            (transition.distance == best->distance && transition.target->getIndex() < best->target->getIndex())) {
          best = &transition;
        }
      }
    }
    int32_t chosen = -1;
    if (best) {
      gathered.emplace_back(best->key, best->target);
      chosen = best->target->getIndex();
    } else {
      for (const ParseState* state : pending.back().states) {
        if (message.canStartOnPath(state->getPath().begin(), state->getPath().end()) &&
            (chosen < 0 || state->getIndex() < chosen)) {
          chosen = state->getIndex();
        }
      }
      if (chosen < 0) {
        for (const ParseState* state : pending.back().states) {
          if (chosen < 0 || state->getIndex() < chosen) chosen = state->getIndex();
        }
      }
    }
    if (!resolvePending(chosen) || !placePending()) return 0;
  }
  if (gathered.empty()) {
    reportUnplaceable(match, false);
    ++iterator;
    return 1;
  }
  return 2;
}

bool StateWalk::resolvePending(int32_t target) {
  if (pending.empty()) return true;
  const StateTable& strict = defn.getStrictStates();
  const StateTable& relaxed = defn.getRelaxedStates();
  if (pending.size() == 1) {
    for (const ParseState* state : pending.front().states) {
      if (state->getIndex() == target) {
        pending.front().states = {state};
        return true;
      }
    }
  }
  const MessageItemDefn* currentItem = strict[static_cast<size_t>(currentState)]->getItem();
  const MessageItemDefn* currentParent = currentItem ? currentItem->getParentItem() : nullptr;
  const bool inUnordered =
      currentParent && currentParent->getGroup() && currentParent->getGroup()->isUnorderedGroup();
  // Among states at or after the current one the lowest wins, and any of them beats one before it.
  const auto ranksBefore = [this](int32_t a, int32_t b) {
    const bool aBefore = a < currentState;
    const bool bBefore = b < currentState;
    return aBefore != bBefore ? !aBefore : a < b;
  };
  for (auto path = pending.rbegin(); path != pending.rend(); ++path) {
    const ParseState* chosen = nullptr;
    for (const StateTable* table : {&strict, &relaxed}) {
      for (const ParseState* state : path->states) {
        const ParseState& source = *(*table)[static_cast<size_t>(state->getIndex())];
        const auto& transitions = source.getTransitions();
        const bool leads = std::any_of(transitions.begin(), transitions.end(), [&](const ParseTransition& t) {
          return t.target->getIndex() == target;
        });
        if (!leads) continue;
        const MessageItemDefn* item = state->getItem();
        if (inUnordered && item && item->getParentItem() == currentParent && item->getMaxRepeats() != 1 &&
            !isPathPresent(state->getPath())) {
          chosen = state;
          break;
        }
        if (!chosen || ranksBefore(state->getIndex(), chosen->getIndex())) chosen = state;
      }
      if (chosen) break;
    }
    if (!chosen) return false;
    const ParseState* strictState = strict[static_cast<size_t>(chosen->getIndex())].get();
    path->states = {strictState};
    target = strictState->getIndex();
  }
  return true;
}

bool StateWalk::placePending() {
  // The iterator comes back to where the walk stood; the segments between were seen already.
  const LookAheadList::iterator resume = iterator;
  for (ParsePath& path : pending) {
    const ParseState* state = path.states.front();
    if (!placeSegment(path)) return false;
    currentState = state->getIndex();
    currentPath = state->getPath();
  }
  pending.clear();
  iterator = resume;
  return true;
}

bool StateWalk::isPathPresent(const std::vector<int32_t>& path) const {
  InternalElement* node = &message;
  for (int32_t index : path) {
    if (!node->isChildPresent(index)) return false;
    node = node->getChildCreating(index);
    if (node->getNodeType() == qxRepeating) {
      const int count = node->getElementCount();
      if (count == 0) return false;
      node = node->getChildCreating(count - 1);
    }
  }
  return true;
}

bool StateWalk::needsNewRepeat(InternalElement& repeat, const std::vector<int32_t>& current, size_t currentAt,
                               size_t previousAt) const {
  InternalElement* element = repeat.getChildCreating(repeat.getElementCount() - 1);
  while (true) {
    const ENodeType type = element->getNodeType();
    if (type == qxRepeating || type == qxMessageSet) return false;
    if (currentAt >= current.size() || previousAt >= currentPath.size()) return true;
    const int32_t now = current[currentAt++];
    const int32_t before = currentPath[previousAt++];
    SegmentGroupImpl* group = element->asGroup();
    if (group && group->getItemDefn().getGroup()->isChoiceGroup() && now != before) return true;
    if (group && group->isUnordered()) {
      if (group->getItem(now).getMaxRepeats() != 1) return false;
      return group->isChildPresent(now);
    }
    if (now < before) return true;
    if (now > before) return false;
    element = element->getChildCreating(now);
  }
}

InternalElement* StateWalk::placeSegment(ParsePath& path) {
  const ParseState& target = *path.states.front();
  const std::vector<int32_t>& way = target.getPath();
  SegmentMatch& match = *path.entry;
  iterator = path.entry;
  InternalElement* node = &message;
  bool previousRuns = !currentPath.empty() && currentPath.front() != -1;
  for (size_t step = 0; step + 1 < way.size(); ++step) {
    const int32_t index = way[step];
    InternalElement* child = node->getChildCreating(index);
    const bool sameAsBefore = previousRuns && step < currentPath.size() && currentPath[step] == index;
    if (child->getNodeType() == qxRepeating) {
      const int count = child->getElementCount();
      if (count == 0 || (sameAsBefore && needsNewRepeat(*child, way, step + 1, step + 1))) {
        child = static_cast<InternalElement*>(child->appendElement(nullptr));
      } else {
        child = child->getChildCreating(count - 1);
      }
    }
    if (!sameAsBefore) previousRuns = false;
    node = child;
  }
  const int32_t last = way.empty() ? 0 : way.back();
  // A segment that opens a list of another set, or any segment at an embedded set's place, starts
  // an embedded message.
  const MessageItemDefn* item = target.getItem();
  if ((match.newSeparators && match.setIndex != messageSetIndex) ||
      (item && item->getMessageItemType() == MessageItemDefn::kMessageSetItem)) {
    return placeEmbedded(*node, last, match);
  }
  SegmentElement* segment = match.getElement();
  if (node->attachSegment(segment, last)) {
    match.release();
  } else {
    const SeparatorList& list = *message.getSeparatorList();
    const EVErrType severity = list.getValidationErrorSetting(verr::kUnexpectedSegment);
    if (severity != qxVESIgnore) {
      const std::u16string text =
          formatWide(u"Segment %S: ", segment->getName()) + kUnexpectedSegment;
      ValidationLocation at;
      at.segmentNumber = match.segmentNumber;
      context.errors.record(&message, ValidationError(at, text, verr::kUnexpectedSegment, severity));
    }
    keepUnknown(match, node);
  }
  ++iterator;
  if (!defn.getMatches().empty() && !segmentMatchesHold(*segment)) return nullptr;
  return node;
}

bool StateWalk::segmentMatchesHold(SegmentElement& segment) const {
  const std::string own = plainPathBelow(segment) + "/";
  for (const auto& entry : defn.getMatches()) {
    if (!entry->getPattern()) continue;
    const std::string_view path = entry->getFieldPath().view();
    if (path.substr(0, own.size()) != own) continue;
    try {
      if (!entry->accepts(message.getElementAt(entry->getFieldPath().c_str())->getValue())) return false;
    } catch (const BadParameter&) {
      return false;
    }
  }
  return true;
}

InternalElement* StateWalk::placeEmbedded(InternalElement& parent, int32_t index, SegmentMatch& match) {
  auto* set = dynamic_cast<MessageSetImpl*>(parent.getChildCreating(index));
  if (!set) return nullptr;
  match.newSeparators = false;
  MessageElement* parsed = MessageParser::parseMessage(*set, context, lookAhead, iterator, stream, callback, location);
  if (parsed) {
    if (callback && (*callback)(parsed)) set->removeElementAt(parsed->getElementIndex());
    return set;
  }
  const SeparatorList& list = *message.getSeparatorList();
  const EVErrType severity = list.getValidationErrorSetting(verr::kEmbeddedParseFailed);
  const SegmentMatch* at = iterator != lookAhead.end() ? &*iterator : nullptr;
  if (severity != qxVESIgnore) {
    const SegmentImplBase* segment = at ? definedSegment(*at) : nullptr;
    const std::u16string text =
        segment && segment->getItemDefn()
            ? formatWide(u"Failed to parse embedded %S message", segment->getItemDefn()->getMessage().getName().c_str())
            : std::u16string(u"Failed to parse embedded message");
    ValidationLocation where;
    where.segmentNumber = at ? at->segmentNumber : -1;
    message.getRecordedErrors().record(&message, ValidationError(where, text, verr::kEmbeddedParseFailed, severity));
  }
  // The embedded text is passed over up to a segment of another set or with a list of its own. Its
  // segments stay with the message as unknown segments, where the host still finds them.
  while (true) {
    if (iterator == lookAhead.end() && stream.atEnd()) break;
    if (iterator == lookAhead.end()) {
      lookAhead.push_back(SegmentReader::readNextSegment(context, stream, location, nullptr, nullptr, nullptr, false));
      iterator = std::prev(lookAhead.end());
    }
    const SegmentMatch& skipped = *iterator;
    if (!skipped.getElement()) {
      if (skipped.isDeadEnd()) return nullptr;
    } else if (skipped.newSeparators || skipped.getElement()->getMessageSetDefn() != set->getMessageSetDefn()) {
      break;
    } else if (iterator->ownsElement()) {
      keepUnknown(*iterator, &parent);
    }
    ++iterator;
  }
  return set;
}

void StateWalk::reportUnplaceable(SegmentMatch& match, bool matchListFailed) {
  const int32_t number = matchListFailed ? verr::kMatchListFailed : verr::kUnexpectedSegment;
  const EVErrType severity = message.getSeparatorList()->getValidationErrorSetting(number);
  SegmentElement* segment = match.getElement();
  if (severity != qxVESIgnore) {
    const std::string_view name = segment->getName();
    std::u16string text = name.empty() ? formatWide(u"Segment [%d]: ", match.segmentNumber)
                                       : formatWide(u"Segment \"%S\" [%d]: ", std::string(name).c_str(),
                                                    match.segmentNumber);
    text += matchListFailed ? kMatchListFailed : kUnexpectedSegment;
    ValidationLocation at;
    at.segmentNumber = match.segmentNumber;
    // Kept under the message, so that a message given up takes its findings along.
    context.errors.record(&message, ValidationError(at, std::move(text), number, severity));
  }
  keepUnknown(match, currentElement);
}

void StateWalk::keepUnknown(SegmentMatch& match, InternalElement* from) {
  InternalElement* holder = &message;
  for (InternalElement* node = from; node && node != &message; node = node->parent) {
    SegmentGroupImpl* group = node->asGroup();
    if (group && !group->isHidden()) {
      holder = group;
      break;
    }
  }
  SegmentElement* segment = match.getElement();
  match.release();
  holder->addUnknownSegment(segment);
}

void StateWalk::reportUnknownText(const SegmentMatch& match) {
  const EVErrType severity = message.getSeparatorList()->getValidationErrorSetting(verr::kUnknownSegment);
  if (severity == qxVESIgnore) return;
  std::u16string skipped = match.tagText;
  if (skipped.size() > 80) skipped = skipped.substr(0, 77) + u"...";
  const std::u16string text =
      formatWide(u"Segment [%d] ", match.segmentNumber) + skipped + u": Unknown segment, ignored";
  ValidationLocation at;
  at.segmentNumber = match.segmentNumber;
  context.errors.record(&message, ValidationError(at, text, verr::kUnknownSegment, severity));
}

bool StateWalk::messageMatchesHold() const {
  for (const auto& entry : defn.getMatches()) {
    try {
      if (!entry->getPattern()) {
        if (message.getElementCollection(entry->getFieldPath().c_str()).getCount() == 0) return false;
      } else if (!entry->accepts(message.getElementAt(entry->getFieldPath().c_str())->getValue())) {
        return false;
      }
    } catch (const BadParameter&) {
      return false;
    }
  }
  return true;
}

void StateWalk::cleanUp() {
  // An embedded message leaves its segments in the look-ahead: should the enclosing message be
  // given up, they go back to their entries with the rest of it and are offered to the next
  // candidate, instead of dying with the failed message. The outermost message clears them.
  const bool embedded = message.parent != nullptr;
  // An embedded message starts behind the entries of the messages before it; the outermost clears
  // all.
  auto entry = embedded && beforeStart ? std::next(*beforeStart) : lookAhead.begin();
  while (entry != iterator) {
    if (entry->ownsElement()) {
      entry->getElement()->forgetParserPositions(context.errors);
      entry->dropElement();
      entry = lookAhead.erase(entry);
      continue;
    }
    if (SegmentElement* kept = entry->getElement()) kept->setOwnedByTree(true);
    if (embedded) {
      ++entry;
      continue;
    }
    entry->forgetElement();
    entry = lookAhead.erase(entry);
  }
}

}  // namespace vantrelia
