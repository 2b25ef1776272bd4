#include "elements/NCPDPSegmentImpl.h"

#include <algorithm>
#include <climits>
#include <string>

#include "definitions/FieldDefn.h"
#include "definitions/SegmentDefn.h"
#include "elements/FieldBase.h"
#include "elements/ParseFindings.h"
#include "elements/TypedFieldReader.h"
#include "foundation/Format.h"
#include "parsing/ParserStream.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorList.h"
#include "validation/ValidationErrorNumbers.h"
#include "validation/ValidationLocation.h"

namespace vantrelia {

namespace {

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

// The leading digits of a text as a number, as many as an int holds.
int32_t leadingNumber(std::u16string_view text) {
  int64_t number = 0;
  for (const char16_t c : text) {
    if (!isDigit(c)) break;
    number = std::min<int64_t>(number * 10 + (c - u'0'), INT32_MAX);
  }
  return static_cast<int32_t>(number);
}

// A token over text that may lie in the segment's source: the field keeps a view where it does.
ParserToken tokenOf(std::u16string_view text) {
  ParserToken token;
  token.useView = true;
  token.viewStart = text.data();
  token.viewLength = static_cast<int32_t>(text.size());
  return token;
}

// The node a value goes into: a repeating field gets a new item, and an item that is an array
// gets a new entry of its own.
FieldBase& newLeaf(FieldBase& field) {
  FieldBase* leaf = &field;
  while (leaf->getNodeType() == qxRepeating) leaf = static_cast<FieldBase*>(leaf->appendElement(nullptr));
  return *leaf;
}

// The item at `at` of a repeating field, made with the items before it when missing.
FieldBase& itemAt(FieldBase& repeating, int at) {
  while (repeating.getElementCount() <= at) repeating.appendElement(nullptr);
  return *static_cast<FieldBase*>(repeating.getElementAt(at));
}

// The item at `at` of a repeating field, null when it has none there.
FieldBase* existingItem(FieldBase* repeating, int at) {
  return repeating && at >= 0 && at < repeating->getElementCount()
             ? static_cast<FieldBase*>(repeating->getElementAt(at))
             : nullptr;
}

}  // namespace

// ----- the fields of the definition

int NCPDPSegmentImpl::findFieldByTag(std::u16string_view& text) const {
  const auto& defns = segmentDefn->getFields();
  for (size_t i = 0; i < defns.size(); ++i) {
    const std::u16string_view tag = defns[i]->getTag().view();
    if (text.size() >= tag.size() && text.substr(0, tag.size()) == tag) {
      text.remove_prefix(tag.size());
      return static_cast<int>(i);
    }
  }
  return -1;
}

bool NCPDPSegmentImpl::repeats(int index) const {
  return index >= 0 && index < segmentDefn->getFieldCount() && segmentDefn->getField(index).getMaxRepeats() != 1;
}

int NCPDPSegmentImpl::runEnd(int countField, bool nested) const {
  int end = countField + 1;
  while (repeats(end) && !(nested && segmentDefn->isRepeatCountField(end))) ++end;
  return end;
}

int32_t NCPDPSegmentImpl::countRunRepeats(int32_t repeat, int32_t index) {
  const bool nested = repeats(index);
  int32_t largest = 0;
  for (int j = index + 1; j < runEnd(index, nested); ++j) {
    FieldBase* field = fieldAt(j);
    if (!nested) {
      if (field) largest = std::max(largest, static_cast<int32_t>(field->getElementCount()));
    } else if (FieldBase* item = existingItem(field, repeat)) {
      largest = std::max(largest, static_cast<int32_t>(item->getElementCount()));
    }
  }
  return largest;
}

// ----- reading

bool NCPDPSegmentImpl::parseSegmentFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                                          ValidationLocation& location) {
  SeparatorList& list = *separators;
  bool lastFieldFilled = true;
  uint32_t endMask = 0;
  if (!beginSegmentParse(stream, status, lastFieldFilled, endMask)) return false;
  const std::u16string separator(list.getSeparatorValue(SeparatorList::kCurrent));
  const bool useGeneric = usesGenericParsing();

  while (!stream.atEnd()) {
    const char16_t* const before = stream.getCursor();
    ParserToken token;
    token.useView = true;
    readPlainToken(stream, token, 0, true, useGeneric);
    // Right behind the segment's tag the token is empty: the tag ends where the first field begins.
    std::u16string_view text = token.characters();
    if (!text.empty()) {
      const int index = findFieldByTag(text);
      if (index < 0) {
        reportUnknownTag(text, errors, location);
      } else {
        location.fieldPosition = index + 1;
        storeValue(index, text, errors, location);
        if (segmentDefn->isRepeatCountField(index)) {
          const int32_t count = readCount(index, text, errors, location);
          int lastField = index;
          parseCountedFields(stream, count, useGeneric, -1, index, lastField, errors, location);
        }
        location.fieldPosition = -1;
      }
    }
    stream.consume(separator);
    if (list.atOuterSeparator(stream, 1)) break;
    // A separator of some other level stands here and nothing of it belongs to a field.
    if (before && stream.getCursor() == before) break;
  }
  location.fieldPosition = -1;
  location.fieldRepetition = -1;

  list.popSeparator();
  if (!matchFields()) {
    status = kNotThisSegment;
    return false;
  }
  finishSegmentParse(stream, endMask, useGeneric, status, errors, location);
  return true;
}

void NCPDPSegmentImpl::parseCountedFields(ParserStream& stream, int32_t count, bool useGeneric, int outer,
                                          int countField, int& lastField, RecordedErrors& errors,
                                          ValidationLocation& location) {
  SeparatorList& list = *separators;
  const std::u16string separator(list.getSeparatorValue(SeparatorList::kCurrent));
  stream.consume(separator);
  const int first = countField + 1;
  // A count with nothing to count behind it.
  if (!repeats(first)) return;

  int32_t repeat = 0;
  while (repeat < count && !stream.atEnd()) {
    int previous = -1;
    int expected = first;
    // One repeat of the run, and more when the tags go back before it ends.
    while (true) {
      if (!repeats(expected)) {
        ++repeat;
        break;
      }
      const char16_t* const before = stream.getCursor();
      ParserToken token;
      token.useView = true;
      readPlainToken(stream, token, 0, true, useGeneric);
      std::u16string_view text = token.characters();
      const int index = text.empty() ? -1 : findFieldByTag(text);
      if (!text.empty() && index < 0) reportUnknownTag(text, errors, location);
      if (index >= 0) {
        location.fieldPosition = index + 1;
        if (!repeats(index) && expected == first) {
          // The run is over before this repeat began.
          storeValue(index, text, errors, location);
          stream.consume(separator);
          return;
        }
        if (index <= previous) {
          // The tag went back: a new repeat begins. What the last one lacked behind its last field
          // gets empty items, and so does what this one lacks before its first.
          fillRun(previous + 1, INT_MAX, outer);
          ++repeat;
          expected = first;
        }
        fillRun(expected, index, outer);
        lastField = expected = previous = index;
        if (!repeats(index)) {
          // The run has ended at a field behind it.
          storeValue(index, text, errors, location);
          stream.consume(separator);
          return;
        }
        location.fieldRepetition = repeat + 1;
        // Only a count inside this run opens a run of its own: each one lies further on, so that
        // no text can nest them deeper than the definition does.
        const bool counts = segmentDefn->isRepeatCountField(index) && index > countField;
        storeRunValue(index, text, counts ? -1 : outer, errors, location);
        location.fieldRepetition = -1;
        if (counts) {
          const int32_t inner = readCount(index, text, errors, location);
          if (inner == 0) {
            fillRun(index + 1, INT_MAX, -1);
          } else {
            parseCountedFields(stream, inner, useGeneric, outer >= 0 ? outer : repeat, index, expected, errors,
                               location);
          }
          if (outer >= 0) return;
        }
      }
      stream.consume(separator);
      // The segment ends here, whatever the count said.
      if (list.atOuterSeparator(stream, 1) || (before && stream.getCursor() == before)) return;
      ++expected;
    }
  }
}

int32_t NCPDPSegmentImpl::readCount(int index, std::u16string_view text, RecordedErrors& errors,
                                    ValidationLocation& location) {
  if (!text.empty() && isDigit(text.front())) return leadingNumber(text);
  const std::u16string value(text);
  ParseFindings::recordText(errors, getField(index), *separators, location, verr::kRepeatCountNotInteger,
                            formatWide(getRaisedText(verr::kRepeatCountNotInteger), value.c_str()));
  return INT32_MAX;
}

void NCPDPSegmentImpl::storeValue(int index, std::u16string_view text, RecordedErrors& errors,
                                  ValidationLocation& location) {
  // A field that repeats outside a run takes each value as its next repeat.
  TypedFieldReader::give(newLeaf(*getField(index)), tokenOf(text), errors, location);
}

void NCPDPSegmentImpl::storeRunValue(int index, std::u16string_view text, int outer, RecordedErrors& errors,
                                     ValidationLocation& location) {
  FieldBase* field = getField(index);
  // Inside another run the field's items are the outer repeats, each holding this run's values.
  if (outer >= 0) field = &itemAt(*field, outer);
  TypedFieldReader::give(newLeaf(*field), tokenOf(text), errors, location);
}

void NCPDPSegmentImpl::fillRun(int from, int to, int outer) {
  for (int j = from; j < to && repeats(j); ++j) {
    if (outer >= 0 && segmentDefn->isRepeatCountField(j)) break;
    FieldBase* field = getField(j);
    if (outer >= 0) field = &itemAt(*field, outer);
    // One level down only: an empty repeat, not a repeat holding one empty value.
    if (field->getNodeType() == qxRepeating) field->appendElement(nullptr);
  }
}

void NCPDPSegmentImpl::reportUnknownTag(std::u16string_view text, RecordedErrors& errors,
                                        ValidationLocation& location) {
  const std::u16string value(text);
  const int32_t position = location.fieldPosition;
  location.fieldPosition = -1;
  ParseFindings::recordText(errors, this, *separators, location, verr::kNameValueFieldNotFound,
                            formatWide(verr::kTaggedFieldUndetermined, value.c_str()));
  location.fieldPosition = position;
}

// ----- writing

bool NCPDPSegmentImpl::countOf(FieldBase& field, int32_t& count) {
  const std::u16string text = field.getValue();
  if (text.empty() || !isDigit(text.front())) return false;
  count = leadingNumber(text);
  return true;
}

bool NCPDPSegmentImpl::writeElement(SeparatorList& list, bool minimize, int32_t& counter) {
  SegmentWrite write;
  const WriteStart start = beginSegmentWrite(list, counter, write);
  if (start != WriteStart::kFields) return start == WriteStart::kWritten;
  list.writeSeparator(SeparatorList::kWriteInitiator, SeparatorList::kCurrent);
  // The first tag needs no separator of its own: the segment's tag ends with one.
  bool first = true;
  const int fieldCount = getFieldCount();
  for (int i = 0; i < fieldCount; ++i) {
    if (repeats(i)) {
      // Repeating fields with no count before them: all fields of one repeat together, as a run.
      const int32_t count = countRunRepeats(0, i - 1);
      i = writeCountedFields(i - 1, count, list, minimize, first, counter, -1) - 1;
      continue;
    }
    const bool wrote = writeTaggedField(i, fieldAt(i), list, minimize, first, counter, -1);
    if (!segmentDefn->isRepeatCountField(i)) continue;
    int32_t count = 0;
    if (wrote && countOf(*getField(i), count)) {
      i = writeCountedFields(i, count, list, minimize, first, counter, -1) - 1;
    } else {
      i = runEnd(i, false) - 1;
    }
  }
  endSegmentWrite(list);
  return true;
}

bool NCPDPSegmentImpl::writeTaggedField(int index, FieldBase* slot, SeparatorList& list, bool minimize, bool& first,
                                        int32_t& counter, int repeat) {
  const bool counts = segmentDefn->isRepeatCountField(index);
  if (!slot && (counts || isFieldRequired(index))) {
    if (!repeats(index)) {
      slot = getField(index);
    } else if (repeat >= 0) {
      slot = &itemAt(*getField(index), repeat);
    }
  }
  if (!slot) return false;
  if (!slot->isRequired() && slot->isEmpty()) return false;
  if (counts && slot->getValue() == u"0") {
    // A count of nothing stands only where its run has a field that must be there.
    bool needed = false;
    for (int j = index + 1; j < runEnd(index, true); ++j) needed = needed || segmentDefn->getField(j).isRequired();
    if (!needed) return false;
  }
  if (first) {
    first = false;
  } else {
    list.writeSeparator(SeparatorList::kWriteInitiator | SeparatorList::kWriteSeparator |
                            SeparatorList::kWriteTerminator,
                        SeparatorList::kCurrent);
  }
  list.writeData(segmentDefn->getField(index).getTag().view());
  slot->writeField(false, list, minimize, counter);
  return true;
}

int NCPDPSegmentImpl::writeCountedFields(int index, int32_t count, SeparatorList& list, bool minimize, bool& first,
                                         int32_t& counter, int outer) {
  const bool nested = outer >= 0;
  const int end = runEnd(index, nested);
  for (int32_t repeat = 0; repeat < count; ++repeat) {
    for (int j = index + 1; j < end; ++j) {
      FieldBase* field = nested ? existingItem(fieldAt(j), outer) : fieldAt(j);
      FieldBase* item = existingItem(field, repeat);
      const bool counts = segmentDefn->isRepeatCountField(j);
      if (!item && !counts) continue;
      const bool wrote = writeTaggedField(j, item, list, minimize, first, counter, repeat);
      if (!counts) continue;
      // A count that its write made stands at `repeat` of the field now.
      if (!item) item = existingItem(fieldAt(j), repeat);
      int32_t inner = 0;
      if (wrote && item && countOf(*item, inner)) {
        j = writeCountedFields(j, inner, list, minimize, first, counter, repeat) - 1;
      } else {
        j = runEnd(j, true) - 1;
      }
    }
  }
  return end;
}

}  // namespace vantrelia
