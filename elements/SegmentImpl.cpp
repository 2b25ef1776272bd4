#include "elements/SegmentImpl.h"

#include <algorithm>
#include <optional>
#include <stdexcept>

#include <string>

#include "definitions/CompositeDefn.h"
#include "definitions/DataTypeCodes.h"
#include "definitions/FieldDefn.h"
#include "definitions/FieldInstancesControl.h"
#include "definitions/SegmentFieldInstancesControl.h"
#include "definitions/FieldPathDefn.h"
#include "definitions/MatchDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SeparatorDefn.h"
#include "elements/CompositeImpl.h"
#include "elements/FactorySettings.h"
#include "elements/ParseFindings.h"
#include "elements/SegmentFactory.h"
#include "elements/TypedFieldReader.h"
#include "foundation/TextCompare.h"
#include "elements/FieldBase.h"
#include "elements/FieldImplBase.h"
#include "parsing/SeparatorTrieNode.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorList.h"
#include "parsing/StringParserStream.h"
#include "validation/RecordedErrors.h"
#include "validation/ValidationError.h"
#include "validation/ValidationErrorNumbers.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

// ----- reading

namespace {

// The header read being kept on this thread, if any: the fields it cuts note where their texts
// stood, and the settling notes the rest.
struct HeaderRecording {
  const SegmentImpl* segment;
  const char16_t* start;
  HeaderReplay::Entry entry;
  int findingsBefore;
  // What a plain value's read asked of the list for each field cut, which the settled list must
  // answer alike for the fields to read again as they did.
  std::vector<std::u16string> readingStates;
  bool valid = true;
  bool noted = false;
};

thread_local HeaderRecording* recording = nullptr;

// What reading a plain value asks of the list besides the separators it takes: the null marker,
// whether the value stands at a fixed position, and the filler that such a value is trimmed of.
std::u16string readingState(const SeparatorList& list) {
  std::u16string state;
  state += list.isSeparatorActive(SeparatorList::kCurrent) ? u'a' : u'-';
  state += list.isLevelFixedWidth() ? u'f' : u'-';
  if (list.isInUse(qxSepNull)) state += list.getSeparatorValue(qxSepNull);
  state += u'\0';
  state += list.getSeparatorValue(qxSepFiller);
  return state;
}

}  // namespace

bool SegmentImpl::parseSegmentFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                                     ValidationLocation& location) {
  if (mayLeaveUncut && separators->getVariablePending()) [[unlikely]] {
    return readHeaderFields(stream, errors, status, location);
  }
  return readFields(stream, errors, status, location);
}

bool SegmentImpl::readFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                             ValidationLocation& location) {
  std::optional<QuickUncut> quick;
  if (mayLeaveUncut) quick = planQuickUncut(stream);
#if defined(NDEBUG) && !defined(VANTRELIA_CHECK_FAST_PATHS)
  if (quick) {
    takeQuickUncut(std::move(*quick), stream, status);
    return true;
  }
#endif
  bool lastFieldFilled = true;
  uint32_t endMask = 0;
  const char16_t* const start = stream.getCursor();
  if (!beginSegmentParse(stream, status, lastFieldFilled, endMask)) return false;
  if (mayLeaveUncut && leaveFieldsUncut(stream, endMask, status, errors, location, 0, lastFieldFilled)) {
#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
    // Debug and fuzz builds read in full, and hold the plan to what that read did.
    if (quick && (stream.getCursor() - start != quick->taken || status != quick->status || uncutFrom != 0 ||
                  uncutLastFilled != quick->lastFieldFilled || uncutOffset != quick->fieldsAt ||
                  uncut != quick->cut || !separators->atBaseLevels())) {
      throw std::logic_error("a segment left uncut at once reads otherwise than its opening and its scan");
    }
#endif
    return true;
  }
#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
  if (quick) throw std::logic_error("a segment left uncut at once reads otherwise than its opening and its scan");
#endif
  (void)start;
  return parseFieldsFrom(0, stream, errors, status, location, endMask, lastFieldFilled);
}

bool SegmentImpl::readHeaderFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                                   ValidationLocation& location) {
  SeparatorList& list = *separators;
  const char16_t* const start = stream.getCursor();
  // Only a list as startOfWire made it has a state that another message's list shares.
  HeaderReplay* replay =
      start && !recording && list.isPristineCopy() && list.atBaseLevels() ? HeaderReplay::local() : nullptr;
  if (!replay) return readFields(stream, errors, status, location);
  const std::u16string_view text(start, static_cast<size_t>(stream.getWholeRemaining()));
  const uint64_t startVersion = list.getSlotsVersion();
  if (const HeaderReplay::Entry* entry = replay->find(*segmentDefn, itemDefn, startVersion, text)) {
    if (!entry->wholeSegment) return replayHeader(*entry, start, stream, errors, status, location);
#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
    // Debug and fuzz builds hold the replay to a read of the same text with the list as it stands.
    const SeparatorList before(list);
    const int findingsBefore = errors.count();
    replaySegment(*entry, start, stream, errors, status, location);
    checkReplay(before, text, *entry, errors, findingsBefore, status);
    return true;
#else
    return replaySegment(*entry, start, stream, errors, status, location);
#endif
  }
  if (!replay->worthKeeping(*segmentDefn, itemDefn, startVersion)) return readFields(stream, errors, status, location);

  HeaderRecording record{this, start, {}, errors.count(), {}};
  struct Scope {
    explicit Scope(HeaderRecording& record) { recording = &record; }
    ~Scope() { recording = nullptr; }
  };
  bool read;
  {
    const Scope scope(record);
    read = readFields(stream, errors, status, location);
  }
  if (read && record.valid && !record.noted) {
    noteWhole(record.entry, start, record.findingsBefore, record.readingStates, stream, errors, status);
  }
  if (read && record.valid && (record.noted || record.entry.wholeSegment)) {
    HeaderReplay::Entry& entry = record.entry;
    entry.segment = segmentDefn;
    entry.item = itemDefn;
    entry.startVersion = startVersion;
    replay->keep(std::move(entry));
  } else {
    replay->noteNotKept(*segmentDefn, itemDefn, startVersion);
  }
  return read;
}

bool SegmentImpl::replayHeader(const HeaderReplay::Entry& entry, const char16_t* start, ParserStream& stream,
                               RecordedErrors& errors, uint32_t& status, ValidationLocation& location) {
  SeparatorList& list = *separators;
  status = 0;
  list.takeSettled(*entry.settled);
  const int32_t resumeAt = entry.resumeAt;
  const uint32_t endMask = entry.endMask;
  const bool lastFieldFilled = entry.lastFieldFilled;
  replayFieldValues(entry, start, errors, location);
  ParserToken read;
  read.useView = true;
  stream.readChars(static_cast<int32_t>(entry.text.size()), read);
  // From here as the read went on from its settling, which the text behind may have ended.
  if (list.atOuterSeparator(stream, 1)) {
    return parseFieldsFrom(getFieldCount(), stream, errors, status, location, endMask, lastFieldFilled);
  }
  if (leaveFieldsUncut(stream, endMask, status, errors, location, resumeAt, lastFieldFilled)) return true;
  return parseFieldsFrom(resumeAt, stream, errors, status, location, endMask, lastFieldFilled, true);
}

bool SegmentImpl::replaySegment(const HeaderReplay::Entry& entry, const char16_t* start, ParserStream& stream,
                                RecordedErrors& errors, uint32_t& status, ValidationLocation& location) {
  SeparatorList& list = *separators;
  list.takeSettled(*entry.settled);
  // The values are handed over at the level they were read at, from this header's own text.
  uint32_t endMask = 0;
  pushFieldLevel(endMask);
  if (!replayFieldValues(entry, start, errors, location)) list.popSeparator();
  ParserToken read;
  read.useView = true;
  stream.readChars(static_cast<int32_t>(entry.text.size()), read);
  status = entry.status;
  return true;
}

bool SegmentImpl::replayFieldValues(const HeaderReplay::Entry& entry, const char16_t* start, RecordedErrors& errors,
                                    ValidationLocation& location) {
  bool popped = false;
  for (const HeaderReplay::FieldText& field : entry.fields) {
    // The last field is read at the segment's level.
    if (field.field == getFieldCount() - 1 && !popped) {
      separators->popSeparator();
      popped = true;
    }
    ParserToken token;
    token.useView = true;
    token.viewStart = start + field.offset;
    token.viewLength = field.length;
    location.fieldPosition = field.field + 1;
    location.fieldRepetition = 1;
    if (field.asRead) {
      // Read again, the value as the read left it stays as it is; an empty one leaves the field
      // standing empty, as the read did.
      token.viewStart = field.value.data();
      token.viewLength = static_cast<int32_t>(field.value.size());
      if (!field.present) continue;
      if (field.value.empty()) {
        getField(field.field);
        continue;
      }
    }
    parseFieldValue(field.field, token, errors, location);
  }
  location.fieldPosition = -1;
  location.fieldRepetition = -1;
  return popped;
}

void SegmentImpl::noteWhole(HeaderReplay::Entry& entry, const char16_t* start, int findingsBefore,
                            const std::vector<std::u16string>& readingStates, const ParserStream& stream,
                            const RecordedErrors& errors, uint32_t status) {
  const SeparatorList& list = *separators;
  const char16_t* const cursor = stream.getCursor();
  // A read that the end of the text stopped says nothing of a text that goes on.
  if (!cursor || cursor <= start || stream.getWholeRemaining() <= 0 || uncut || list.getVariablePending() ||
      errors.count() != findingsBefore || list.getCrlfEquivalent() >= 0 ||
      list.beginsLongerSequence(cursor[-1]) || !segmentDefn->getMatches().empty() || !allFieldsPlain(getFieldCount())) {
    return;
  }
  entry.text.assign(start, static_cast<size_t>(cursor - start));
  int32_t behind = 0;
  for (const HeaderReplay::FieldText& field : entry.fields) {
    if (field.offset < behind || field.offset + field.length > static_cast<int32_t>(entry.text.size())) return;
    behind = field.offset + field.length;
  }
  // The values were read at the field level, the last one at the segment's: the settled list must
  // answer for each as the list did at its read. A value read at a fixed position while the
  // separators were pending (UNA's) may read as delimited now, which trims other filler: such a
  // value must be the kept one, and is handed over as the read left it.
  SeparatorList atFields(list);
  atFields.pushSeparator(fieldSeparator, segmentDefn->getSpecialSeparatorString().view(), segmentDefn->isFixedWidth());
  const std::u16string stateAtFields = readingState(atFields);
  const std::u16string stateAtEnd = readingState(list);
  const std::u16string nullMarker(list.isInUse(qxSepNull) ? list.getSeparatorValue(qxSepNull) : std::u16string_view());
  for (size_t i = 0; i < entry.fields.size(); ++i) {
    HeaderReplay::FieldText& field = entry.fields[i];
    const std::u16string& replayed = field.field == getFieldCount() - 1 ? stateAtEnd : stateAtFields;
    const std::u16string& read = readingStates[i];
    if (read == replayed) continue;
    // Only whether the value stood at a fixed position may differ.
    if (read.substr(2) != replayed.substr(2)) return;
    const auto* kept = dynamic_cast<const FieldImplBase*>(fieldAt(field.field));
    if (fieldAt(field.field) && (!kept || const_cast<FieldImplBase*>(kept)->isNull())) return;
    field.varies = false;
    field.asRead = true;
    field.present = kept != nullptr;
    if (kept) field.value.assign(kept->storedValue());
    if (!nullMarker.empty() && field.value == nullMarker) return;
  }
  std::u16string stops = list.charactersThatMayStop();
  const std::u16string_view special = segmentDefn->getSpecialSeparatorString().view();
  if (!special.empty()) stops += special.front();
  entry.setStops(std::move(stops));
  entry.settled = std::make_unique<SeparatorList>(list);
  entry.settled->keepTrieKey();
  entry.status = status;
  entry.wholeSegment = true;
}

#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
void SegmentImpl::checkReplay(const SeparatorList& before, std::u16string_view text, const HeaderReplay::Entry& entry,
                              const RecordedErrors& errors, int findingsBefore, uint32_t status) {
  SeparatorList twinList(before);
  std::unique_ptr<SegmentImplBase> twin = SegmentFactory::create(*segmentDefn, itemDefn, nullptr, 0, &twinList);
  StringParserStream twinStream(text.data(), static_cast<int32_t>(text.size()));
  RecordedErrors twinErrors;
  uint32_t twinStatus = 0;
  ValidationLocation twinLocation;
  // Not replayed itself: a recording under way keeps the read from looking for kept ones.
  HeaderRecording guard{nullptr, nullptr, {}, 0, {}};
  HeaderRecording* const outer = recording;
  recording = &guard;
  bool twinRead = false;
  try {
    twinRead = twin->parseElement(twinStream, twinErrors, twinStatus, twinLocation);
  } catch (...) {
    recording = outer;
    throw;
  }
  recording = outer;
  std::vector<int32_t> numbers;
  std::vector<int32_t> twinNumbers;
  int seen = 0;
  errors.forEach([&](MessageElement*, const ValidationError& error) {
    if (seen++ >= findingsBefore) numbers.push_back(error.getErrorNumber());
  });
  twinErrors.forEach([&](MessageElement*, const ValidationError& error) { twinNumbers.push_back(error.getErrorNumber()); });
  std::sort(numbers.begin(), numbers.end());
  std::sort(twinNumbers.begin(), twinNumbers.end());
  bool same = twinRead && twinStatus == status && numbers == twinNumbers &&
              static_cast<size_t>(twinStream.getCursor() - text.data()) == entry.text.size() &&
              twinList.getVariablePending() == separators->getVariablePending();
  for (int32_t i = 0; same && i < SeparatorList::kSeparatorSlots; ++i) {
    const SeparatorImpl& ours = separators->getSlot(i);
    const SeparatorImpl& theirs = twinList.getSlot(i);
    same = ours.value == theirs.value && ours.known == theirs.known && ours.active == theirs.active &&
           ours.replacementValue == theirs.replacementValue;
  }
  for (int i = 0; same && i < getFieldCount(); ++i) {
    FieldBase* ours = fieldAt(i);
    FieldBase* theirs = twin->fieldAt(i);
    same = (ours == nullptr) == (theirs == nullptr) && (!ours || ours->getValue() == theirs->getValue());
  }
  if (!same) throw std::logic_error("a header read again as kept reads otherwise than its text");
}
#endif

bool SegmentImpl::allFieldsPlain(int count) const {
  // Fields of other kinds than plain values read more than their text, or read it by rules of
  // their own.
  for (int i = 0; i < count; ++i) {
    const FieldDefn& defn = segmentDefn->getField(i);
    if (defn.isComposite() || defn.getMaxRepeats() != 1 || (defn.getFlags() & FieldDefn::kNotPlain) ||
        defn.getBaseType() == FieldDefn::kRawBinary) {
      return false;
    }
  }
  return true;
}

void SegmentImpl::noteSettled(const ParserStream& stream, const RecordedErrors& errors, int resumeAt,
                              bool lastFieldFilled, uint32_t endMask) {
  HeaderRecording& record = *recording;
  if (record.noted) {
    // A second settling point: the first one's attempt to leave the rest uncut failed.
    record.valid = false;
    return;
  }
  record.noted = true;
  const SeparatorList& list = *separators;
  const char16_t* const cursor = stream.getCursor();
  // The read stops behind the separator that ended the settling field: a field ended by the end
  // of the text, or by a length, says nothing of a text that goes on.
  const std::u16string_view separator = list.getSeparatorValue(fieldSeparator);
  const std::u16string_view read(record.start, cursor ? static_cast<size_t>(cursor - record.start) : 0);
  const std::vector<HeaderReplay::FieldText>& fields = record.entry.fields;
  const bool endsAtSeparator =
      !separator.empty() && read.ends_with(separator) && !fields.empty() && fields.back().field == resumeAt - 1 &&
      static_cast<size_t>(fields.back().offset + fields.back().length) + separator.size() == read.size();
  if (!cursor || !endsAtSeparator || errors.count() != record.findingsBefore || list.getCrlfEquivalent() >= 0 ||
      list.beginsLongerSequence(read.back()) || !allFieldsPlain(resumeAt)) {
    record.valid = false;
    return;
  }
  HeaderReplay::Entry& entry = record.entry;
  entry.text.assign(record.start, static_cast<size_t>(cursor - record.start));
  entry.settled = std::make_unique<SeparatorList>(list);
  entry.settled->keepTrieKey();
  entry.endMask = endMask;
  entry.lastFieldFilled = lastFieldFilled;
  entry.resumeAt = resumeAt;
  for (const HeaderReplay::FieldText& field : entry.fields) {
    if (field.offset < 0 || field.offset + field.length > static_cast<int32_t>(entry.text.size())) record.valid = false;
  }
  const std::u16string settledState = readingState(list);
  for (const std::u16string& state : record.readingStates) {
    if (state != settledState) record.valid = false;
  }
}

bool SegmentImpl::resumeSegmentFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                                      ValidationLocation& location, int firstField, bool lastFieldFilled) {
  uint32_t endMask = 0;
  pushFieldLevel(endMask);
  return parseFieldsFrom(firstField, stream, errors, status, location, endMask, lastFieldFilled);
}

bool SegmentImpl::parseFieldsFrom(int firstField, ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                                  ValidationLocation& location, uint32_t endMask, bool lastFieldFilled,
                                  bool keepTryingUncut) {
  SeparatorList& list = *separators;
  // A header whose first fields carry the separators of the rest: once they are read, the rest
  // may wait in the text like the fields of any other segment.
  const bool settling = keepTryingUncut || (mayLeaveUncut && list.getVariablePending());
  const bool useGeneric = usesGenericParsing();
  const int fieldCount = getFieldCount();
  bool popped = false;
  DeferredFields deferred;
  for (int i = firstField; i < fieldCount; ++i) {
    if (stream.atEnd()) break;
    location.fieldPosition = i + 1;
    location.fieldRepetition = 1;
    const bool delimited = openField(i == fieldCount - 1, popped);
    parseField(i, stream, errors, location, useGeneric, lastFieldFilled, deferred);
    if (delimited && !consumeFieldSeparator(i, stream, errors, location, useGeneric, lastFieldFilled)) break;
    if (list.atOuterSeparator(stream, popped ? 0 : 1)) break;
    location.fieldPosition = -1;
    location.fieldRepetition = -1;
    if (settling && !popped && deferred.empty() && i + 1 < fieldCount && !list.getVariablePending()) {
      if (recording && recording->segment == this) [[unlikely]] {
        noteSettled(stream, errors, i + 1, lastFieldFilled, endMask);
      }
      if (leaveFieldsUncut(stream, endMask, status, errors, location, i + 1, lastFieldFilled)) return true;
    }
  }
  location.fieldPosition = -1;
  location.fieldRepetition = -1;

  if (!lastFieldFilled) ParseFindings::record(errors, this, list, location, verr::kUnnecessarySegmentSeparators);
  if (!popped) list.popSeparator();
  return closeFields(stream, errors, status, location, endMask, useGeneric, deferred);
}

bool SegmentImpl::closeFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                              ValidationLocation& location, uint32_t endMask, bool useGeneric,
                              const DeferredFields& deferred) {
  if (!matchFields()) {
    status = kNotThisSegment;
    return false;
  }
  finishSegmentParse(stream, endMask, useGeneric, status, errors, location);
  readDeferredFields(deferred, errors, location);
  return true;
}

void SegmentImpl::readDeferredFields(const DeferredFields& deferred, RecordedErrors& errors,
                                     ValidationLocation& location) {
  for (const auto& [index, text] : deferred) {
    // Its key has been read by now: the field is made of the type the key chose.
    FieldBase* field = getField(index);
    const VariableFieldType* type = field->getVariableType();
    // A composite reads the text as it came; any other value is cut already and only decoded.
    const std::u16string value =
        type && type->getKind() == qxVarComposite ? text : separators->decodeValue(text, DataTypeCodes::kString);
    location.fieldPosition = index + 1;
    StringParserStream fieldStream(value.data(), static_cast<int32_t>(value.size()));
    uint32_t moreFollows = 0;
    field->parseElement(fieldStream, errors, moreFollows, location);
  }
  location.fieldPosition = -1;
}

void SegmentImpl::parseField(int index, ParserStream& stream, RecordedErrors& errors, ValidationLocation& location,
                             bool useGeneric, bool& lastFieldFilled, DeferredFields& deferred) {
  SeparatorList& list = *separators;
  const FieldDefn& defn = segmentDefn->getField(index);
  const bool active = list.isSeparatorActive(fieldSeparator);
  ParserToken token;
  token.useView = true;
  constexpr uint32_t kVariableKeyBehind = FieldDefn::kNotPlain | FieldDefn::kKeyBehind;
  if ((defn.getFlags() & kVariableKeyBehind) == kVariableKeyBehind) {
    // The key that types this field comes later: its text waits, uncut, until the segment is read.
    readPlainToken(stream, token, active ? 0 : defn.getMaxLength(), false, false);
    lastFieldFilled = !token.characters().empty();
    if (lastFieldFilled) deferred.emplace_back(index, std::u16string(token.characters()));
    return;
  }
  if (defn.getMaxRepeats() != 1) {
    // A repeat cuts its own items.
    FieldBase* field = getField(index);
    uint32_t moreFollows = 0;
    lastFieldFilled = field->parseElement(stream, errors, moreFollows, location);
    if (field->isEmpty()) {
      // The empty repeat goes, but not what reading it found ("~^~" has separators too many): that
      // stays with the segment, since the nodes it named are gone.
      RecordedErrors found;
      found.takeWhere(errors, [&](MessageElement* element) {
        for (auto* node = static_cast<InternalElement*>(element); node; node = node->parent) {
          if (node == field) return true;
        }
        return false;
      });
      found.forEach([&](MessageElement*, const ValidationError& error) { errors.record(this, error); });
      destroyField(index);
    }
    return;
  }
  if (defn.getFlags() & FieldDefn::kNotPlain) {
    // Custom, array and variable fields are cut by the class they were made as.
    FieldBase* field = getField(index);
    if (TypedFieldReader::read(*field, stream, token, list, active, defn.getMaxLength(), useGeneric, errors,
                               location)) {
      lastFieldFilled = !field->isEmpty();
      return;
    }
    lastFieldFilled = !token.characters().empty();
    parseFieldValue(index, token, errors, location);
    return;
  }
  if (defn.isComposite()) {
    const CompositeDefn* composite = defn.getComposite();
    const bool readsItself = composite && (composite->getFlags() & CompositeDefn::kHoldsQuotedText);
    if (!active && defn.getMaxLength() != 0) {
      readPlainToken(stream, token, defn.getMaxLength(), false, false);
    } else if (active && !readsItself) {
      readPlainToken(stream, token, 0, false, false);
    } else {
      uint32_t moreFollows = 0;
      lastFieldFilled = getField(index)->parseElement(stream, errors, moreFollows, location);
      return;
    }
  } else {
    const int32_t base = defn.getBaseType();
    if (base == FieldDefn::kRawBinary) {
      // Raw binary has no end mark: a sibling before it carries its length.
      const int32_t length = linkedLength(index);
      if (length > 0) stream.readChars(length, token);
    } else if (!active) {
      list.readTokenEscaped(stream, token, defn.getMaxLength(), true, useGeneric, nullptr);
    } else if (base == FieldDefn::kQuotedText) {
      list.readToken(stream, token, 0, true, useGeneric, nullptr);
    } else {
      readPlainToken(stream, token, 0, true, useGeneric);
    }
  }
  if (token.characters().empty()) {
    if (index != 0) lastFieldFilled = false;
    return;
  }
  parseFieldValue(index, token, errors, location);
  lastFieldFilled = true;
}

void SegmentImpl::parseFieldValue(int index, const ParserToken& token, RecordedErrors& errors,
                                  ValidationLocation& location) {
  const std::u16string_view text = token.characters();
  // Fields behind the settling are no part of what is kept: a replay leaves them to the text.
  if (recording && recording->segment == this && !recording->noted) [[unlikely]] {
    HeaderRecording& record = *recording;
    if (token.useView && token.viewStart >= record.start) {
      // A field that may carry separators holds the header's own characters in a replay.
      const SeparatorList& list = *separators;
      const std::string_view name = segmentDefn->getName().view();
      const bool varies = !list.getVariablePending() || !list.mayTakeFromField(name, index + 1) ||
                          !list.takesFromField(FieldPathDefn::parse(std::string(name) + "/" + std::to_string(index + 1)));
      HeaderReplay::FieldText& noted = record.entry.fields.emplace_back();
      noted.field = index;
      noted.offset = static_cast<int32_t>(token.viewStart - record.start);
      noted.length = static_cast<int32_t>(token.viewLength);
      noted.varies = varies;
      record.readingStates.push_back(readingState(*separators));
    } else {
      record.valid = false;
    }
  }
  if (text.empty()) {
    destroyField(index);
    return;
  }
  TypedFieldReader::give(*getField(index), token, errors, location);
}

int32_t SegmentImpl::linkedLength(int index) {
  return FieldImplBase::lengthFromSibling(*this, segmentDefn->getFields(), index);
}

// ----- writing

bool SegmentImpl::writeElement(SeparatorList& list, bool minimize, int32_t& counter) {
  SegmentWrite write;
  // A segment that stands as it was read, in a text that is already what the fields would give,
  // goes out as that text: no field is cut or written one by one.
  write.mayWriteAsRead = !minimize;
#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
  // A header written as read settles the separators itself: debug and fuzz builds hold what it
  // leaves to what a write of its fields leaves, on a copy of the list as it stands now.
  std::optional<SeparatorList> general;
  const size_t before = list.getOutput().size();
  const int32_t counterBefore = counter;
  if (!minimize && list.getVariablePending()) general.emplace(list);
#endif
  const WriteStart start = beginSegmentWrite(list, counter, write);
  if (start != WriteStart::kFields) return start == WriteStart::kWritten;
  if (write.asRead) {
#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
    if (general) {
      // Written with the separators settled, a header's fields would show them encoded: it is
      // held to a write of its fields that settles them.
      list.writeData(*write.asRead);
      endSegmentWrite(list);
      checkHeaderWrite(list, before, *general, counterBefore);
      return true;
    }
    // Debug and fuzz builds hold it to what the fields give.
    const size_t mark = list.getOutput().size();
    writeFields(list, minimize, counter, write);
    list.flushPending();
    if (std::u16string_view(list.getOutput()).substr(mark) != *write.asRead) {
      throw std::logic_error("a segment's text as read would be written otherwise by its fields");
    }
#else
    list.writeData(*write.asRead);
#endif
    endSegmentWrite(list);
    return true;
  }
  writeFields(list, minimize, counter, write);
  endSegmentWrite(list);
  return true;
}

#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
void SegmentImpl::checkHeaderWrite(const SeparatorList& list, size_t from, SeparatorList& general, int32_t counter) {
  SegmentWrite write;
  const int32_t number = segmentNumber;
  if (beginSegmentWrite(general, counter, write) == WriteStart::kFields) {
    writeFields(general, false, counter, write);
    endSegmentWrite(general);
  }
  segmentNumber = number;
  if (std::u16string_view(list.getOutput()).substr(from) != general.getOutput() || !general.sameSlotsAs(list) ||
      general.getVariablePending() != list.getVariablePending()) {
    throw std::logic_error("a header written as read leaves otherwise than a write of its fields");
  }
}
#endif

void SegmentImpl::writeFields(SeparatorList& list, bool minimize, int32_t& counter, const SegmentWrite& write) {
  const bool fixedSegment = write.fixedSegment;
  const int lastField = write.lastField;
  const int fieldCount = getFieldCount();
  const bool outputDefaults = FactorySettings::hasFlag(getMessageSetDefn(), qxOutputDefaultValuesForOptionalFields);

  bool fixedLevel = !list.isSeparatorActive(SeparatorList::kCurrent) || list.isLevelFixedWidth();
  bool mayOmitFill = !fixedSegment;
  const bool trimSegments = getMessageSetDefn() && getMessageSetDefn()->getTrimSegments();
  list.writeSeparator(SeparatorList::kWriteInitiator, SeparatorList::kCurrent);
  for (int i = 0; i <= lastField; ++i) {
    if (i > 0) {
      list.writeSeparator(SeparatorList::kWriteInitiator | SeparatorList::kWriteSeparator |
                              SeparatorList::kWriteTerminator,
                          SeparatorList::kCurrent);
    }
    if (fixedLevel) mayOmitFill = i == lastField && trimSegments;
    if (FieldBase* field = fieldAt(i)) {
      field->writeField(mayOmitFill, list, minimize, counter);
      continue;
    }
    if (minimize || !(isFieldRequired(i) || fixedLevel || (outputDefaults && fieldHasDefault(i)))) continue;
    // An absent field that must show writes its default or its fill through a node made for it.
    std::unique_ptr<FieldBase> temporary = makeField(i);
    temporary->writeField(mayOmitFill, list, false, counter);
    if (fixedLevel && !segmentDefn->isFixedWidth() && list.isSeparatorActive(SeparatorList::kCurrent) && !list.isLevelFixedWidth()) {
      fixedLevel = false;
    }
  }
  if (!trimSegments) {
    for (int i = lastField < 0 ? 1 : lastField + 1; i < fieldCount; ++i) {
      list.writeSeparator(SeparatorList::kWriteInitiator | SeparatorList::kWriteSeparator |
                              SeparatorList::kWriteTerminator,
                          SeparatorList::kCurrent);
    }
  }
}

}  // namespace vantrelia
