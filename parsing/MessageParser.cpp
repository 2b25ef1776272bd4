#include "parsing/MessageParser.h"

#include <algorithm>
#include <optional>
#include <span>

#include <boost/container/small_vector.hpp>

#include "definitions/MatchDefn.h"
#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SeparatorDefn.h"
#include "elements/MessageImpl.h"
#include "elements/MessageSetImpl.h"
#include "elements/SegmentImplBase.h"
#include "foundation/BadParameter.h"
#include "foundation/IllegalOperation.h"
#include "parsing/FailedSegmentEnds.h"
#include "parsing/ParseContext.h"
#include "parsing/ParseFindingsScope.h"
#include "parsing/ParserStream.h"
#include "parsing/ParserToken.h"
#include "parsing/SegmentReader.h"
#include "parsing/SeparatorList.h"
#include "parsing/StateWalk.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

namespace {

int32_t offsetOf(const std::u16string& text, ParserStream& stream) {
  const int32_t remaining = stream.getRemaining();
  return remaining < 0 ? -1 : static_cast<int32_t>(text.size()) - remaining;
}

// Whether the text at the cursor begins with the tag of a header that opens a message of some set.
bool atHeaderTag(ParseContext& context, ParserStream& stream) {
  const char16_t* cursor = stream.getCursor();
  if (cursor) return context.headerTags().startsAt(cursor, cursor + stream.getWholeRemaining());
  for (const std::u16string& tag : SegmentReader::headerTags(context.warehouse)) {
    if (stream.startsWith(tag)) return true;
  }
  return false;
}

bool isWithin(InternalElement* node, const InternalElement* root) {
  for (; node; node = node->parent) {
    if (node == root) return true;
  }
  return false;
}

// Drops what was read ahead of the end of a message: it belongs to no tree.
void dropEntries(LookAheadList& lookAhead, ParseContext& context, MessageImpl* message) {
  for (SegmentMatch& entry : lookAhead) {
    if (SegmentElement* element = entry.getElement()) {
      element->forgetParserPositions(context.errors);
      if (message) element->forgetParserPositions(message->getRecordedErrors());
      entry.dropElement();
    }
  }
  lookAhead.clear();
}

// The value of one message type field, looked for in the look-ahead and read on for when needed.
// Null when the text ends first.
std::optional<std::u16string> typeValue(const MessageSetDefn& set, const FieldPathDefn& field, ParseContext& context,
                                        LookAheadList& lookAhead,
                                        LookAheadList::iterator from, ParserStream& stream,
                                        ValidationLocation& location) {
  const std::string_view whole = field.getName().view();
  const size_t slash = whole.find('/');
  const std::string_view segmentName = whole.substr(0, slash);
  // A view into the definition, which outlives the parse.
  const std::string_view fieldPath = slash == std::string_view::npos ? std::string_view() : whole.substr(slash + 1);

  // Entries before `from` belong to messages placed already (an embedded message leaves its own).
  auto entry = std::find_if(from, lookAhead.end(), [&](const SegmentMatch& match) {
    return match.getElement() && segmentName == match.getElement()->getName();
  });
  bool begun = from != lookAhead.end();
  const char16_t* const searchFrom = stream.getCursor();
  const char16_t* const textEnd = searchFrom ? searchFrom + stream.getWholeRemaining() : nullptr;
  const bool remembered = context.typeSearches && searchFrom && entry == lookAhead.end();
  if (remembered && context.typeSearches->knownToFail(&set, segmentName, searchFrom, textEnd)) return std::nullopt;
  // Nothing found up to `to`: the next search that starts in between fails at once.
  const auto notFound = [&](const char16_t* to) -> std::optional<std::u16string> {
    if (remembered) context.typeSearches->failedBefore(&set, segmentName, searchFrom, to, textEnd);
    return std::nullopt;
  };
  while (entry == lookAhead.end()) {
    if (stream.atEnd()) return notFound(textEnd);
    const char16_t* const segmentStart = stream.getCursor();
    lookAhead.push_back(SegmentReader::readNextSegment(context, stream, location, nullptr, nullptr, nullptr, false));
    const SegmentMatch& read = lookAhead.back();
    if (read.isDeadEnd()) return std::nullopt;
    // A segment with separators of its own begins another message (a header seen again, or one of
    // another set): the type fields of this one lie before it. Reading on to the end of the text
    // instead would read it all once for every header in it.
    if (begun && read.newSeparators) return notFound(segmentStart);
    // So does the tag of a header that didn't even make a segment.
    if (begun && !read.getElement() && !read.tagText.empty() &&
        context.headerTags().startsAt(read.tagText.data(), read.tagText.data() + read.tagText.size())) {
      return notFound(segmentStart);
    }
    begun = true;
    SegmentElement* element = read.getElement();
    if (!element) continue;
    auto* defined = element->asDefined();
    if (!defined || segmentName == defined->getSegmentDefn().getName().view()) entry = std::prev(lookAhead.end());
  }
  MessageElement* element = entry->getElement();
  // A header left uncut is read where it stands: cutting all of it for one value costs more than
  // the rest of its message.
  if (auto* segment = entry->getElement()->asDefined(); segment && segment->hasUncutFields()) {
    std::optional<std::u16string> value;
    if (!fieldPath.empty()) {
      value = segment->peekUncutValue(fieldPath);
    } else {
      boost::container::small_vector<int32_t, 8> indexes(field.getIndexes().begin(), field.getIndexes().end());
      for (int32_t& index : indexes) --index;
      value = segment->peekUncutValue(std::span<const int32_t>(indexes.data(), indexes.size()));
    }
    if (value) return entry->separators->untranslateValue(*value);
  }
  if (!fieldPath.empty()) {
    element = element->getElementAt(std::string(fieldPath).c_str());
  } else {
    try {
      // The path counts from 1, as definitions number fields.
      for (int32_t index : field.getIndexes()) element = element->getElementAt(index - 1);
    } catch (const IllegalOperation& refused) {
      throw BadParameter(refused.what());
    }
  }
  return entry->separators->untranslateValue(element->getValue());
}

bool typesFit(const MessageDefn& message, const std::vector<std::u16string>& values, const std::u16string& key,
              size_t fieldCount) {
  const auto& types = message.getTypes();
  if (values.empty() || types.empty()) return true;
  if (types.size() == 1) {
    if (message.getHasWildType()) return true;
    return types.front().view() == (fieldCount > 1 ? std::u16string_view(key) : std::u16string_view(values.front()));
  }
  const auto& wild = message.getWildTypes();
  for (size_t i = 0; i < types.size() && i < values.size(); ++i) {
    if (i < wild.size() && wild[i]) continue;
    if (types[i].view() != values[i]) return false;
  }
  return true;
}

// A message with a parent whose match list names a value in the enclosing message: checked
// before anything is read.
bool parentMatchesHold(MessageImpl& message) {
  for (const auto& entry : message.getMessageDefn().getMatches()) {
    if (!entry->getPattern() || !entry->getFieldPath().view().starts_with("(parent)")) continue;
    if (!entry->accepts(message.getElementAt(entry->getFieldPath().c_str())->getValue())) return false;
  }
  return true;
}

}  // namespace

void MessageParser::detachForRetry(MessageImpl& message, LookAheadList& lookAhead, ParseContext& context) {
  for (SegmentMatch& entry : lookAhead) {
    SegmentElement* segment = entry.getElement();
    if (!segment || entry.ownsElement() || !isWithin(segment->parent, &message)) continue;
    // What reading the segment found goes back with it: the message that took it (this one, or
    // one embedded in it) is given up.
    for (InternalElement* holder = segment->parent; holder; holder = holder->parent) {
      if (auto* taker = dynamic_cast<MessageImpl*>(holder)) {
        context.errors.takeWhere(taker->getRecordedErrors(), [&](MessageElement* element) {
          return isWithin(static_cast<InternalElement*>(element), segment);
        });
      }
      if (holder == &message) break;
    }
    std::unique_ptr<SegmentElement> back = segment->parent->releaseSegment(segment);
    if (!back) continue;
    back->parent = nullptr;
    back->index = 0;
    if (auto* defined = back->asDefined()) defined->setItemDefn(nullptr);
    back->setSeparatorList(entry.separators.get());
    entry.reclaim(std::move(back));
  }
}

MessageElement* MessageParser::parseMessage(MessageSetImpl& set, ParseContext& context, LookAheadList& lookAhead,
                                            LookAheadList::iterator& iterator, ParserStream& stream,
                                            const ParseCallback* callback, ValidationLocation& location) {
  const MessageSetDefn& setDefn = *set.getMessageSetDefn();
  const auto& typeFields = setDefn.getMessageTypeFields();
  std::vector<std::u16string> typeValues;
  typeValues.reserve(typeFields.size());
  for (const FieldPathDefn& field : typeFields) {
    std::optional<std::u16string> value =
        typeValue(setDefn, field, context, lookAhead, iterator == lookAhead.end() ? lookAhead.begin() : iterator, stream, location);
    if (!value) return nullptr;
    typeValues.push_back(std::move(*value));
  }
  if (iterator == lookAhead.end()) iterator = lookAhead.begin();
  while (iterator == lookAhead.end() || !iterator->getElement()) {
    if (iterator != lookAhead.end()) {
      ++iterator;
      continue;
    }
    if (stream.atEnd()) return nullptr;
    lookAhead.push_back(SegmentReader::readNextSegment(context, stream, location, nullptr, nullptr, nullptr, false));
    if (lookAhead.back().isDeadEnd()) return nullptr;
    iterator = std::prev(lookAhead.end());
  }
  std::u16string typeKey;
  if (typeFields.size() > 1) {
    for (const auto& value : typeValues) typeKey += value;
  }

  const auto& byType = setDefn.getMessagesByType();
  auto passStart = byType.begin();
  if (!typeValues.empty()) {
    passStart = byType.find(typeValues.front());
    if (passStart == byType.end() && !typeKey.empty()) passStart = byType.find(typeKey);
  }
  SegmentElement* first = iterator->getElement();
  auto* firstDefined = first ? first->asDefined() : nullptr;
  for (int pass = 0; pass < 3; ++pass) {
    for (auto at = passStart; at != byType.end(); ++at) {
      const MessageDefn& candidate = *at->second;
      const bool hasMatches = !candidate.getMatches().empty();
      const bool wild = candidate.getHasWildType();
      if ((pass == 0 && (!hasMatches || wild)) || (pass == 1 && (hasMatches || wild)) || (pass == 2 && !wild)) continue;
      if (typeValues.empty()) {
        if (firstDefined && candidate.getItemCount() > 0) {
          const MessageItemDefn& head = candidate.getItem(0);
          if (head.isRequired() && head.getMessageItemType() == MessageItemDefn::kSegmentItem &&
              head.getSegment() != &firstDefined->getSegmentDefn()) {
            continue;
          }
        }
      } else if (!typesFit(candidate, typeValues, typeKey, typeFields.size())) {
        continue;
      }

      InternalElement* parent = set.hasParent() ? &set : nullptr;
      const int32_t index = parent ? set.getElementCount() : 0;
      std::unique_ptr<MessageImpl> message;
      if (first->getMessageSetDefn() == &setDefn) {
        iterator->newSeparators = false;
        message = std::make_unique<MessageImpl>(candidate, parent, index, iterator->separators);
      } else {
        message = std::make_unique<MessageImpl>(candidate, parent, index, set.getSeparatorList());
        message->getSeparatorList()->reset(true, true, true);
      }
      const LookAheadList::iterator saved = iterator;
      bool parsed = false;
      try {
        parsed = (!parent || parentMatchesHold(*message)) &&
                 message->parseSegments(context, lookAhead, iterator, stream, callback, location);
      } catch (...) {
        // Whatever goes wrong in a candidate only refuses it.
        parsed = false;
      }
      if (parsed) {
        MessageImpl* result = message.get();
        if (parent) set.addParsedMessage(std::move(message));
        else message.release();
        return result;
      }
      iterator = saved;
      detachForRetry(*message, lookAhead, context);
      context.errors.forget(message.get());
    }
    if (passStart == byType.end()) break;
  }
  return nullptr;
}

std::unique_ptr<MessageElement> MessageParser::parseTopLevel(const MessageWarehouseDefn& warehouse,
                                                             std::shared_ptr<const std::u16string> text,
                                                             ParserStream& stream, const ParseCallback* callback,
                                                             Extent* extent, HeaderTagFinder* tagFinder,
                                                             TypeSearchMemory* typeSearches) {
  const auto& sets = warehouse.getMessageSets();
  if (sets.empty()) return nullptr;
  std::optional<HeaderTagFinder> ownTagFinder;
  if (!tagFinder) tagFinder = &ownTagFinder.emplace(warehouse);
  TypeSearchMemory ownTypeSearches;
  if (!typeSearches) typeSearches = &ownTypeSearches;
  const SeparatorDefn& leading = sets.front()->getSeparator(qxSepSegment);
  if ((leading.getFlags() & SeparatorDefn::kInitiator) && !leading.getValue().view().empty()) {
    stream.consume(leading.getValue());
  }
  // Text that no set takes, up to where a header begins: the parse begins again there, afresh,
  // as a reader of many messages would. Carrying on with the state the junk left would let every
  // later attempt read all of the junk again.
  // Segments are numbered from the start of the text, the skipped ones included.
  int32_t segmentsRead = 0;
  FailedSegmentEnds failures;
  while (true) {
    bool headerAhead = false;
    int32_t failedEnd = -1;
    std::unique_ptr<MessageElement> message =
        parseFrom(warehouse, text, stream, callback, extent, *tagFinder, *typeSearches, segmentsRead, failedEnd,
                  headerAhead);
    if (message || !headerAhead) return message;
    if (failedEnd < 0) continue;
    const int32_t at = offsetOf(*text, stream);
    const auto goOn = static_cast<int32_t>(failures.note(failedEnd, at));
    if (goOn > at) {
      ParserToken skipped;
      skipped.useView = true;
      stream.readChars(goOn - at, skipped);
    }
  }
}

std::unique_ptr<MessageElement> MessageParser::parseFrom(const MessageWarehouseDefn& warehouse,
                                                         const std::shared_ptr<const std::u16string>& text,
                                                         ParserStream& stream, const ParseCallback* callback,
                                                         Extent* extent, HeaderTagFinder& tagFinder,
                                                         TypeSearchMemory& typeSearches, int32_t& segmentsRead,
                                                         int32_t& failedEnd, bool& headerAhead) {
  const auto& sets = warehouse.getMessageSets();
  ParseContext context(warehouse, text);
  context.tagFinder = &tagFinder;
  context.typeSearches = &typeSearches;
  context.segmentCount = segmentsRead;
  const ParseFindingsScope findingsScope(context.errors);
  ValidationLocation location(true);
  // On failure: the first segment of the last message that failed, or the end of the text.
  if (extent) extent->start = extent->end = static_cast<int32_t>(text->size());

  while (true) {
    const std::unique_ptr<ParserPosition> position = stream.savePosition();
    const ParseContextSnapshot snapshot = context.snapshot();
    const int32_t segmentCount = context.segmentCount;
    const auto restore = [&] {
      stream.restorePosition(*position);
      context.segmentCount = segmentCount;
      context.restore(snapshot);
    };

    int32_t start = offsetOf(*text, stream);
    SegmentMatch match;
    bool atEnd = false;
    while (true) {
      if (stream.atEnd()) {
        atEnd = true;
        break;
      }
      start = offsetOf(*text, stream);
      match = SegmentReader::readNextSegment(context, stream, location, nullptr, nullptr, nullptr, true);
      if (match.getElement()) break;
      if (match.isDeadEnd()) return nullptr;
      if (atHeaderTag(context, stream)) {
        headerAhead = true;
        segmentsRead = context.segmentCount;
        return nullptr;
      }
    }
    if (atEnd) {
      restore();
      return nullptr;
    }
    const int32_t firstEnd = offsetOf(*text, stream);
    if (extent) {
      extent->start = start;
      extent->end = firstEnd;
    }

    const int32_t setIndex = match.setIndex;
    int32_t chosen = setIndex;
    const MessageSetDefn* segmentSet = match.getElement()->getMessageSetDefn();
    const std::string_view segmentName = match.getElement()->getName();
    for (int32_t i = 0; i < setIndex && chosen == setIndex; ++i) {
      const MessageSetDefn& outer = *sets[static_cast<size_t>(i)];
      if (outer.getMessageCount() == 0) continue;
      const StateTable& states = outer.getMessages().front()->getStrictStates();
      if (states.empty()) continue;
      for (const ParseTransition& transition : states.front()->getTransitions()) {
        const MessageItemDefn* item = transition.target ? transition.target->getItem() : nullptr;
        if (transition.key == segmentName && item && item->getMessageItemType() == MessageItemDefn::kMessageSetItem &&
            item->getMessageSet() == segmentSet) {
          chosen = i;
          break;
        }
      }
    }

    LookAheadList lookAhead;
    lookAhead.push_back(std::move(match));
    LookAheadList::iterator iterator = lookAhead.begin();
    MessageSetImpl holder(nullptr, sets[static_cast<size_t>(chosen)].get(), nullptr, 0, nullptr);
    std::unique_ptr<MessageImpl> message;
    try {
      message.reset(static_cast<MessageImpl*>(
          parseMessage(holder, context, lookAhead, iterator, stream, callback, location)));
    } catch (const BadParameter&) {
      if (context.excludedSets.count(chosen)) {
        dropEntries(lookAhead, context, nullptr);
        restore();
        return nullptr;
      }
    }
    if (message) {
      message->setChanged(false);
      // The next message with these separators reads with this trie; a later read of this one
      // takes or builds another.
      if (SeparatorList* list = message->getSeparatorList()) list->releaseTrie();
      const int32_t end = lookAhead.empty() || lookAhead.front().remainingAtStart < 0
                              ? offsetOf(*text, stream)
                              : static_cast<int32_t>(text->size()) - lookAhead.front().remainingAtStart;
      message->setSourceText(text, start, end);
      if (extent) {
        extent->start = start;
        extent->end = end;
      }
    }
    dropEntries(lookAhead, context, message.get());
    if (message) return message;
    failedEnd = firstEnd;
    context.excludedSets.insert(setIndex);
    restore();
    if (context.excludedSets.size() >= sets.size()) return nullptr;
  }
}

}  // namespace vantrelia
