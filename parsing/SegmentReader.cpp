#include "parsing/SegmentReader.h"

#include <algorithm>
#include <iterator>
#include <string>

#include <boost/container/small_vector.hpp>

#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SegmentTagMap.h"
#include "definitions/SeparatorDefn.h"
#include "elements/SegmentFactory.h"
#include "elements/SegmentImplBase.h"
#include "parsing/ParseContext.h"
#include "parsing/ParserStream.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorList.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

namespace {

using Entry = SegmentTagMap::Entry;

bool inEntry(const Entry& entry, const SegmentDefn* segment) {
  return std::find(entry.begin(), entry.end(), segment) != entry.end();
}

bool hasMatchList(const SegmentDefn* segment) { return !segment->getMatches().empty(); }

// The segment separator stands before each segment of such a set.
bool segmentSeparatorLeads(const MessageSetDefn& set) {
  return (set.getSeparator(qxSepSegment).getFlags() & SeparatorDefn::kInitiator) != 0;
}

int32_t setIndexOf(const MessageWarehouseDefn& warehouse, const MessageSetDefn* set) {
  const auto& sets = warehouse.getMessageSets();
  for (size_t i = 0; i < sets.size(); ++i) {
    if (sets[i].get() == set) return static_cast<int32_t>(i);
  }
  return -1;
}

// The header items of a set: the first items of its first message.
int32_t headerCount(const MessageSetDefn& set) {
  if (set.getMessageCount() == 0) return 0;
  return std::min(set.getHeaderItemCount(), set.getMessages().front()->getItemCount());
}

const MessageItemDefn& headerItem(const MessageSetDefn& set, int32_t index) {
  return set.getMessages().front()->getItem(index);
}

std::shared_ptr<SeparatorList> newList(const MessageSetDefn& set, std::shared_ptr<SeparatorList> parent) {
  std::shared_ptr<SeparatorList> list = SeparatorList::startOfWire(set, parent.get());
  list->holdParent(std::move(parent));
  return list;
}

class Reader {
 public:
  Reader(ParseContext& context, ParserStream& stream, ValidationLocation& location, SegmentMatch& match)
      : context(context), stream(stream), location(location),
        sets(context.warehouse.getMessageSets()),
        setCount(static_cast<int32_t>(sets.size())), match(match) {}

  void read(const std::vector<const SegmentDefn*>* expected, const std::vector<int32_t>* states,
            const StateTable* relaxedStates);
  void readPlain(const SegmentDefn& segment);

 private:
  int32_t rotated(int32_t start, int32_t turn) const { return (start + turn) % setCount; }
  // The sets whose tag maps are searched, in turn: the current set, then the sets enclosing it
  // from the innermost out, then the rest in order after the current one. A segment that closes
  // an embedded message (an X12 GE) belongs to the interchange around it, even when another set
  // (the interchange of another version) has a segment of that tag too.
  // Kept inline up to a few sets.
  using SetOrder = boost::container::small_vector<int32_t, 8>;
  SetOrder setOrder() const;
  const MessageSetDefn& set(int32_t index) const { return *sets[static_cast<size_t>(index)]; }
  bool excluded(int32_t index) const { return context.excludedSets.count(index) != 0; }

  // The entry of the tag at the cursor in one set's map, with a leading segment separator looked
  // past and left in the stream.
  const Entry* tagEntry(int32_t setIndex);
  // Makes the segment and lets its parser decide; the stream goes back when it refuses.
  bool attempt(const SegmentDefn* segment, bool unconditional);
  bool attemptFromOwner(const SegmentDefn* segment, bool unconditional) {
    match.setIndex = setIndexOf(context.warehouse, segment->getSet());
    SegmentReader::selectSeparators(context, segment, match);
    return attempt(segment, unconditional);
  }
  // The segments of the relaxed transitions out of the walk's states that `wanted` takes, in name
  // order, each once; none when the walk has no relaxed table.
  template <typename Wanted>
  std::vector<const SegmentDefn*> relaxedSegments(Wanted wanted) const;
  // The candidates of one list that are in `entry`: those with a match list get an attempt, then
  // the first without one is taken unconditionally.
  bool tryCandidates(const std::vector<const SegmentDefn*>& candidates, const Entry& entry, bool fromOwner);
  bool workOnSet(int32_t setIndex, const Entry& entry, int32_t start, const std::vector<const SegmentDefn*>* expected);
  bool tryUntagged(int32_t start, const std::vector<const SegmentDefn*>* expected);
  void nothingFits();
  void skipText(bool plainConsume);
  // Where groups open with their separator (the transactions of an NCPDP transmission), it stands
  // before the first segment of each group, and no segment's text takes it.
  void skipGroupInitiator();

  ParseContext& context;
  ParserStream& stream;
  ValidationLocation& location;
  const std::vector<std::unique_ptr<MessageSetDefn>>& sets;
  const int32_t setCount;
  SegmentMatch& match;
  // The context's setIndex when the read began.
  int32_t startSet = -1;
  const std::vector<int32_t>* currentStates = nullptr;
  const StateTable* relaxedTable = nullptr;
};

Reader::SetOrder Reader::setOrder() const {
  SetOrder order;
  order.reserve(static_cast<size_t>(setCount));
  const auto add = [&](int32_t index) {
    if (index >= 0 && index < setCount && std::find(order.begin(), order.end(), index) == order.end())
      order.push_back(index);
  };
  const int32_t first = startSet < 0 ? 0 : startSet;
  add(first);
  for (auto enclosing = context.setStack.rbegin(); enclosing != context.setStack.rend(); ++enclosing) add(*enclosing);
  for (int32_t turn = 1; turn < setCount; ++turn) add(rotated(first, turn));
  return order;
}

const Entry* Reader::tagEntry(int32_t setIndex) {
  const MessageSetDefn& candidate = set(setIndex);
  std::unique_ptr<ParserPosition> saved;
  if (segmentSeparatorLeads(candidate)) {
    saved = stream.savePosition();
    const bool inForce = context.separators && &context.separators->getMessageSet() == &candidate;
    const std::u16string leading(inForce ? context.separators->getSeparatorValue(qxSepSegment)
                                         : candidate.getSeparator(qxSepSegment).getValue().view());
    if (leading.empty() || !stream.consume(leading)) saved.reset();
  }
  const Entry* entry = excluded(setIndex) ? nullptr : candidate.getTagMap().matchStream(stream);
  if (saved) stream.restorePosition(*saved);
  return entry;
}

bool Reader::attempt(const SegmentDefn* segment, bool unconditional) {
  std::unique_ptr<SegmentImplBase> made =
      SegmentFactory::create(*segment, nullptr, nullptr, 0, match.separators.get());
  made->setSegmentNumber(match.segmentNumber);
  made->setSourceText(context.text);
  if (!context.warehouse.getSettings().cutFieldsWhenRead) made->allowUncutFields();
  uint32_t endKind = 0;
  const bool accepted = made->parseElement(stream, context.errors, endKind, location);
  if (accepted || unconditional) {
    match.endKind = accepted ? endKind : 0;
    match.own(std::move(made));
    return true;
  }
  stream.restorePosition(*match.position);
  return false;
}

template <typename Wanted>
std::vector<const SegmentDefn*> Reader::relaxedSegments(Wanted wanted) const {
  std::vector<const SegmentDefn*> result;
  if (!currentStates || !relaxedTable) return result;
  for (int32_t state : *currentStates) {
    if (state < 0 || state >= static_cast<int32_t>(relaxedTable->size())) continue;
    for (const ParseTransition& transition : (*relaxedTable)[static_cast<size_t>(state)]->getTransitions()) {
      const MessageItemDefn* item = transition.target ? transition.target->getItem() : nullptr;
      if (!item || item->getMessageItemType() != MessageItemDefn::kSegmentItem || !item->getSegment()) continue;
      const SegmentDefn* segment = item->getSegment();
      if (wanted(segment) && std::find(result.begin(), result.end(), segment) == result.end()) {
        result.push_back(segment);
      }
    }
  }
  // In name order, equal names in the order of the transitions. Only the few the caller wants are
  // sorted: a relaxed state may lead to every segment of its message, and the end of every message
  // asks.
  for (size_t i = 1; i < result.size(); ++i) {
    const SegmentDefn* segment = result[i];
    size_t at = i;
    for (; at > 0 && segment->getName().view() < result[at - 1]->getName().view(); --at) result[at] = result[at - 1];
    result[at] = segment;
  }
  return result;
}

bool Reader::tryCandidates(const std::vector<const SegmentDefn*>& candidates, const Entry& entry, bool fromOwner) {
  if (entry.size() == 1) {
    // Most tags name one segment: whether the candidates hold it is the whole question.
    const SegmentDefn* segment = entry.front();
    if (std::find(candidates.begin(), candidates.end(), segment) == candidates.end()) return false;
    const bool unconditional = !hasMatchList(segment);
    return fromOwner ? attemptFromOwner(segment, unconditional) : attempt(segment, unconditional);
  }
  for (const SegmentDefn* segment : candidates) {
    if (!inEntry(entry, segment) || !hasMatchList(segment)) continue;
    if (fromOwner ? attemptFromOwner(segment, false) : attempt(segment, false)) return true;
  }
  for (const SegmentDefn* segment : candidates) {
    if (!inEntry(entry, segment) || hasMatchList(segment)) continue;
    return fromOwner ? attemptFromOwner(segment, true) : attempt(segment, true);
  }
  return false;
}

bool Reader::workOnSet(int32_t setIndex, const Entry& entry, int32_t start,
                       const std::vector<const SegmentDefn*>* expected) {
  match.setIndex = setIndex;
  SegmentReader::selectSeparators(context, entry.front(), match);
  if (start == -1) {
    const MessageSetDefn& candidate = set(setIndex);
    for (int32_t i = 0; i < headerCount(candidate); ++i) {
      const SegmentDefn* header = headerItem(candidate, i).getSegment();
      if (header && inEntry(entry, header) && attempt(header, false)) return true;
    }
  }
  if (expected && tryCandidates(*expected, entry, true)) return true;
  const std::vector<const SegmentDefn*> relaxedList =
      relaxedSegments([&](const SegmentDefn* segment) { return inEntry(entry, segment); });
  if (tryCandidates(relaxedList, entry, false)) return true;
  return tryCandidates(entry, entry, false);
}

bool Reader::tryUntagged(int32_t start, const std::vector<const SegmentDefn*>* expected) {
  // Each failed attempt puts back what selecting separators changed.
  const int32_t savedHeader = context.headerIndex;
  const int32_t savedSet = context.setIndex;
  const ParseContextSnapshot saved = context.snapshot();
  const std::vector<int32_t> savedSetStack = context.setStack;
  const auto putBack = [&] {
    context.headerIndex = savedHeader;
    context.setIndex = savedSet;
    context.restore(saved);
    context.setStack = savedSetStack;
    match.setIndex = start;
  };
  match.setIndex = start;
  const int32_t first = start < 0 ? 0 : start;
  if (context.setIndex == -1) {
    for (int32_t turn = 0; turn < setCount; ++turn) {
      const int32_t index = rotated(first, turn);
      const Entry* untagged = set(index).getTagMap().lookupEmptyTag();
      if (!untagged) continue;
      for (int32_t i = 0; i < headerCount(set(index)); ++i) {
        const SegmentDefn* header = headerItem(set(index), i).getSegment();
        if (!header || !inEntry(*untagged, header)) continue;
        match.setIndex = index;
        SegmentReader::selectSeparators(context, header, match);
        if (attempt(header, false)) return true;
        putBack();
      }
    }
  }
  const auto untagged = [](const SegmentDefn* segment) { return segment->getTag().empty(); };
  for (int pass = 0; pass < 2; ++pass) {
    std::vector<const SegmentDefn*> candidates;
    if (pass == 0 && expected) {
      std::copy_if(expected->begin(), expected->end(), std::back_inserter(candidates), untagged);
    } else if (pass == 1) {
      candidates = relaxedSegments(untagged);
    }
    for (const SegmentDefn* segment : candidates) {
      if (!hasMatchList(segment)) continue;
      if (attemptFromOwner(segment, false)) return true;
      putBack();
    }
    for (const SegmentDefn* segment : candidates) {
      if (!hasMatchList(segment)) return attemptFromOwner(segment, true);
    }
  }
  for (int32_t turn = 0; turn < setCount; ++turn) {
    const int32_t index = rotated(first, turn);
    if (excluded(index)) continue;
    const Entry* untagged = set(index).getTagMap().lookupEmptyTag();
    if (!untagged) continue;
    for (const SegmentDefn* segment : *untagged) {
      if (!hasMatchList(segment)) continue;
      match.setIndex = index;
      SegmentReader::selectSeparators(context, segment, match);
      if (attempt(segment, false)) return true;
      putBack();
    }
    for (const SegmentDefn* segment : *untagged) {
      if (hasMatchList(segment)) continue;
      match.setIndex = index;
      SegmentReader::selectSeparators(context, segment, match);
      return attempt(segment, true);
    }
  }
  return false;
}

void Reader::skipText(bool plainConsume) {
  SeparatorList& list = *match.separators;
  if (!list.isSeparatorActive(qxSepSegment)) {
    match.tagText = stream.readRest();
    return;
  }
  if (list.isTrieDirty()) list.buildTrie();
  ParserToken token;
  token.useView = true;
  const std::unique_ptr<ParserPosition> start = stream.savePosition();
  const char16_t* const startCursor = stream.getCursor();
  // Skipped text is kept as it stood, replacement sequences and all. The skipping ends where a
  // message of some set may begin: text of another standard behind the junk is read with its own
  // separators, not swallowed with the wrong ones. The read stops there too, so that junk without
  // a separator is read once, not once for each header in it.
  const bool inMemory = startCursor && stream.getWholeRemaining() > 0;
  int32_t limit = 0;
  if (inMemory) {
    const char16_t* const end = startCursor + stream.getWholeRemaining();
    const char16_t* const header = context.headerTags().next(startCursor + 1, end);
    if (header != end) limit = static_cast<int32_t>(header - startCursor);
  }
  stream.readToken(list.getTrie(), token, limit, false);
  const std::u16string_view skipped = token.characters();
  if (limit > 0 && token.separator < 0 && skipped.size() == static_cast<size_t>(limit)) {
    match.tagText.assign(skipped);
    match.endKind = 0;
    return;
  }
  if (!inMemory) {
    // A stream without its text in memory: the header is looked for in what was read.
    size_t header = skipped.size();
    for (const std::u16string& tag : SegmentReader::headerTags(context.warehouse)) {
      const size_t at = skipped.find(tag, 1);
      if (at < header) header = at;
    }
    if (header < skipped.size()) {
      match.tagText.assign(skipped.substr(0, header));
      stream.restorePosition(*start);
      ParserToken taken;
      stream.readChars(static_cast<int32_t>(header), taken);
      match.endKind = 0;
      return;
    }
  }
  match.tagText.assign(skipped);
  match.endKind = SegmentMatch::kEndedBySeparator;
  if (token.separator == qxSepSegment) match.endKind |= SegmentMatch::kEndSegment;
  if (token.separator == qxSepGroup) match.endKind |= SegmentMatch::kEndGroup;
  if (token.separator == qxSepMessage) match.endKind |= SegmentMatch::kEndMessage;
  const auto& levels = list.getLevels();
  if (token.separator >= 0 &&
      std::find(levels.begin(), levels.end(), static_cast<ESeparatorType>(token.separator)) != levels.end() &&
      list.isInUse(token.separator)) {
    if (!stream.consume(std::u16string(list.getSeparatorValue(token.separator)))) match.setIndex = -1;
  }
    for (const int32_t end : {qxSepSegment, qxSepGroup, qxSepMessage}) {
    if (!list.isSeparatorActive(end)) continue;
    const std::u16string value(list.getSeparatorValue(end));
    if (!plainConsume && list.getCrlfEquivalent() == end) {
      stream.consumeLonger(value, SeparatorList::kCarriageReturnLineFeed);
    } else {
      stream.consume(value);
    }
  }
  // Every skip moves on: a separator at the cursor that ends no segment (one of a field, say) would
  // otherwise be read again and again. It goes with the skipped text.
  if (skipped.empty() && startCursor && stream.getCursor() == startCursor && !stream.atEnd()) {
    ParserToken taken;
    stream.readChars(1, taken);
    match.tagText.assign(taken.characters());
  }
}

void Reader::skipGroupInitiator() {
  if (!context.separators) return;
  const SeparatorList& list = *context.separators;
  if (!list.isSeparatorActive(qxSepGroup) || !(list.getSlot(qxSepGroup).flags() & SeparatorDefn::kInitiator)) return;
  stream.consume(std::u16string(list.getSeparatorValue(qxSepGroup)));
}

void Reader::nothingFits() {
  if (!context.separators) {
    context.separators = newList(set(0), nullptr);
    match.newSeparators = true;
    context.headerIndex = -1;
    context.setIndex = 0;
  }
  match.separators = context.separators;
  if (context.segmentCount == 1 && set(0).getMessageCount() == 0 && context.setIndex >= 0) {
    for (const auto& segment : set(context.setIndex).getSegments()) {
      context.separators->markKnownForPath(segment->getName().view());
    }
  }
  // Generic segments have their own reader; until it exists the text is skipped as it is with
  // generic segments switched off.
  skipText(true);
}

void Reader::read(const std::vector<const SegmentDefn*>* expected, const std::vector<int32_t>* states,
                  const StateTable* relaxedStates) {
  currentStates = states;
  relaxedTable = relaxedStates;
  match.segmentNumber = context.segmentCount++;
  match.remainingAtStart = stream.getRemaining();
  startSet = context.setIndex;
  skipGroupInitiator();
  if (expected && expected->empty() && context.warehouse.getSettings().ignoreGenericSegments) {
    match.endKind = SegmentMatch::kEndMessage;
    return;
  }
  if (setCount == 0) return;

  // A header segment at the very start names its set.
  if (startSet == -1) {
    for (int32_t index = 0; index < setCount; ++index) {
      if (headerCount(set(index)) == 0) continue;
      const Entry* entry = set(index).getTagMap().matchStream(stream);
      if (!entry) continue;
      match.setIndex = index;
      SegmentReader::selectSeparators(context, entry->front(), match);
      match.position = stream.savePosition();
      const SegmentDefn* first = headerItem(set(index), 0).getSegment();
      if (first && attempt(first, false)) return;
      context.setIndex = startSet;
    }
  }

  // Most segments are of the current set, which comes first in the order: the rest of the order
  // is made only when that set has no segment of the tag, or none of its segments takes the text.
  const int32_t current = startSet >= 0 && startSet < setCount ? startSet : 0;
  int32_t tagged = current;
  const Entry* entry = tagEntry(tagged);
  SetOrder order;
  if (!entry) {
    order = setOrder();
    for (size_t turn = 0; turn < order.size() && !entry; ++turn) {
      if (order[turn] == current) continue;
      tagged = order[turn];
      entry = tagEntry(tagged);
    }
  }
  if (entry) {
    match.position = stream.savePosition();
    if (workOnSet(tagged, *entry, startSet, expected)) return;
    if (order.empty()) order = setOrder();
    for (const int32_t index : order) {
      if (index == tagged || excluded(index)) continue;
      const Entry* other = tagEntry(index);
      if (other && workOnSet(index, *other, startSet, expected)) return;
    }
    // Every segment of the tag had a match list, and each refused the text.
    match.setIndex = startSet;
    SegmentReader::selectSeparators(context, nullptr, match);
    skipText(false);
    return;
  }

  match.position = stream.savePosition();
  if (tryUntagged(startSet, expected)) return;
  nothingFits();
}

void Reader::readPlain(const SegmentDefn& segment) {
  match.segmentNumber = context.segmentCount++;
  match.remainingAtStart = stream.getRemaining();
  match.setIndex = context.setIndex;
  // What selectSeparators does for a segment of the set in force behind its headers.
  match.newSeparators = false;
  if (context.fixedSeparators) context.separators = context.fixedSeparators;
  ++context.headerIndex;
  match.separators = context.separators;
  // Taken whatever its fields hold: the stream never goes back, and no position is kept.
  attempt(&segment, true);
}

}  // namespace

std::vector<std::u16string> SegmentReader::headerTags(const MessageWarehouseDefn& warehouse) {
  std::vector<std::u16string> tags;
  for (const auto& set : warehouse.getMessageSets()) {
    for (int32_t i = 0; i < headerCount(*set); ++i) {
      const SegmentDefn* segment = headerItem(*set, i).getSegment();
      if (!segment || segment->getTag().empty()) continue;
      std::u16string tag = segment->getTag().str();
      if (std::find(tags.begin(), tags.end(), tag) == tags.end()) tags.push_back(std::move(tag));
    }
  }
  return tags;
}

SegmentMatch SegmentReader::readNextSegment(ParseContext& context, ParserStream& stream, ValidationLocation& location,
                                            const std::vector<const SegmentDefn*>* expected,
                                            const std::vector<int32_t>* currentStates, const StateTable* relaxedTable,
                                            bool) {
  SegmentMatch match;
  Reader reader(context, stream, location, match);
  reader.read(expected, currentStates, relaxedTable);
  return match;
}

const SegmentDefn* SegmentReader::plainSegmentAt(const ParseContext& context, ParserStream& stream, int32_t setIndex) {
  const auto& sets = context.warehouse.getMessageSets();
  if (setIndex != context.setIndex || setIndex < 0 || setIndex >= static_cast<int32_t>(sets.size()) ||
      !context.separators || context.excludedSets.count(setIndex)) {
    return nullptr;
  }
  const MessageSetDefn& set = *sets[static_cast<size_t>(setIndex)];
  const int32_t headers = headerCount(set);
  // Behind the last header (or one further), selecting separators for a segment that is no header
  // moves the count on and settles no header's defaults: the full read would do no more.
  if (context.headerIndex + 1 < headers || segmentSeparatorLeads(set)) return nullptr;
  const SeparatorList& list = *context.separators;
  if (list.isSeparatorActive(qxSepGroup) && (list.getSlot(qxSepGroup).flags() & SeparatorDefn::kInitiator)) {
    return nullptr;
  }
  const Entry* entry = set.getTagMap().matchStream(stream);
  if (!entry || entry->size() != 1) return nullptr;
  const SegmentDefn* segment = entry->front();
  if (hasMatchList(segment) || segment->getSet() != &set) return nullptr;
  // A header's tag may open a new interchange or end the message: that is the full read's to say.
  for (int32_t i = 0; i < headers; ++i) {
    const SegmentDefn* header = headerItem(set, i).getSegment();
    if (header && (header == segment || header->getTag() == segment->getTag())) return nullptr;
  }
  return segment;
}

void SegmentReader::readPlain(ParseContext& context, ParserStream& stream, ValidationLocation& location,
                              const SegmentDefn& segment, SegmentMatch& match) {
  Reader reader(context, stream, location, match);
  reader.readPlain(segment);
}

void SegmentReader::selectSeparators(ParseContext& context, const SegmentDefn* segmentDefn, SegmentMatch& match) {
  const auto& sets = context.warehouse.getMessageSets();
  if (match.setIndex < 0 || match.setIndex >= static_cast<int32_t>(sets.size())) {
    if (!context.separators && !sets.empty()) context.separators = newList(*sets.front(), nullptr);
    match.separators = context.separators;
    return;
  }
  match.newSeparators = false;
  const MessageSetDefn& set = *sets[static_cast<size_t>(match.setIndex)];
  const int32_t headers = headerCount(set);
  int32_t place = headers;
  if (segmentDefn && headers > 0) {
    const auto& items = set.getMessages().front()->getItems();
    for (int32_t i = 0; i < headers; ++i) {
      const SegmentDefn* header = items[static_cast<size_t>(i)]->getSegment();
      if (header && (header == segmentDefn || header->getTag() == segmentDefn->getTag())) {
        place = i;
        break;
      }
    }
  }
  const auto enterNested = [&] {
    if (context.separators) {
      context.separatorStack.push_back(context.separators);
      context.setStack.push_back(context.setIndex);
    }
    context.separators = newList(set, context.separators);
    match.newSeparators = true;
  };

  if (context.fixedSeparators) {
    context.separators = context.fixedSeparators;
    context.setIndex = match.setIndex;
  } else if (!(match.setIndex == context.setIndex && place >= headers && (headers != 0 || context.separators))) {
    if (place == headers) {
      const auto onStack = std::find(context.setStack.begin(), context.setStack.end(), match.setIndex);
      if (onStack != context.setStack.end()) {
        // Back to an enclosing set: every list in between ends.
        while (!context.setStack.empty() && !context.separatorStack.empty()) {
          const int32_t popped = context.setStack.back();
          context.separators = context.separatorStack.back();
          context.setStack.pop_back();
          context.separatorStack.pop_back();
          if (popped == match.setIndex) break;
        }
      } else {
        enterNested();
      }
    } else {
      if (match.setIndex != context.setIndex) {
        enterNested();
      } else if (place <= context.headerIndex) {
        // A header seen again: a new interchange with separators of its own.
        context.separators =
            newList(set, context.separatorStack.empty() ? nullptr : context.separatorStack.back());
        match.newSeparators = true;
      }
      context.headerIndex = -1;
    }
    context.setIndex = match.setIndex;
  }

  if (!context.separators) {
    context.separators = newList(set, context.separatorStack.empty() ? nullptr : context.separatorStack.back());
  }
  ++context.headerIndex;
  while (context.headerIndex < place) {
    context.separators->applyDefaultForPath(headerItem(set, context.headerIndex).getName().view());
    ++context.headerIndex;
  }
  match.separators = context.separators;
}

}  // namespace vantrelia
