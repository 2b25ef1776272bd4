// Separators carried by header fields: a message may name its own in a field of its header, read
// there by position; until that field is read they are pending, and the items around it settle
// them.

#include "parsing/SeparatorList.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstdlib>
#include <optional>
#include <string>

#include "definitions/FieldPathDefn.h"
#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/SeparatorDefn.h"
#include "foundation/TextCompare.h"
#include "parsing/ParserStream.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorSlotIndex.h"

namespace vantrelia {

std::string SeparatorList::pathText(const FieldPathDefn& path) {
  std::string text = path.getName().str();
  for (const int32_t index : path.getIndexes()) {
    char digits[16];
    const char* const end = std::to_chars(digits, digits + sizeof digits, index).ptr;
    text += '/';
    text.append(digits, static_cast<size_t>(end - digits));
  }
  return text;
}

namespace {

bool startsWithIgnoringCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && equalIgnoringCase(text.substr(0, prefix.size()), prefix);
}

}  // namespace

// Compared piece by piece, with no text made: every header written asks it of every slot.
bool SeparatorList::fieldLiesUnder(const FieldPathDefn& fieldPath, std::string_view path) {
  const std::string_view name = fieldPath.getName().view();
  if (name.empty()) return false;
  std::string_view rest = path;
  // False when a piece differs from what is left of path; else takes it off.
  const auto takes = [&rest](std::string_view piece) {
    const size_t common = std::min(piece.size(), rest.size());
    if (!equalIgnoringCase(piece.substr(0, common), rest.substr(0, common))) return false;
    rest.remove_prefix(common);
    return true;
  };
  if (!takes(name)) return false;
  for (const int32_t index : fieldPath.getIndexes()) {
    if (rest.empty()) return true;
    char digits[16];
    const char* const end = std::to_chars(digits, digits + sizeof digits, index).ptr;
    if (!takes("/") || !takes(std::string_view(digits, static_cast<size_t>(end - digits)))) return false;
  }
  return rest.empty();
}

bool SeparatorList::pathMatches(const FieldPathDefn& separatorPath, const FieldPathDefn& elementPath,
                                std::string_view element) {
  const std::string_view wanted = separatorPath.getName().view();
  if (wanted.empty()) return false;
  if (separatorPath.isNumeric()) {
    return elementPath.isNumeric() && equalIgnoringCase(wanted, elementPath.getName().view()) &&
           separatorPath.getIndexes() == elementPath.getIndexes();
  }
  if (equalIgnoringCase(wanted, element)) return true;
  // The end of a longer element path, starting behind a "/".
  return element.size() > wanted.size() && element[element.size() - wanted.size() - 1] == '/' &&
         equalIgnoringCase(element.substr(element.size() - wanted.size()), wanted);
}

const std::vector<int32_t>& SeparatorList::slotsOfField(const FieldPathDefn& fieldPath, bool endPositions,
                                                       bool exactPath) const {
  const uint8_t mode = (endPositions ? 1 : 0) | (exactPath ? 2 : 0);
  if (const std::vector<int32_t>* kept = slotIndex->find(fieldPath, mode)) return *kept;
  return slotIndex->keep(fieldPath, mode, findSlotsOfField(fieldPath, endPositions, exactPath));
}

std::vector<int32_t> SeparatorList::findSlotsOfField(const FieldPathDefn& fieldPath, bool endPositions,
                                                     bool exactPath) const {
  std::vector<int32_t> found;
  // The element's path as text, made once for all slots.
  const std::string element = exactPath ? std::string() : pathText(fieldPath);
  for (int32_t i = 0; i < kSeparatorSlots; ++i) {
    const SeparatorDefn& defn = defnOf(i);
    const FieldPathDefn& path = defn.getFieldPath();
    if ((defn.getPosition() < 0) != endPositions) continue;
    const bool matches = exactPath ? !path.isNumeric() && !fieldPath.isNumeric() && path.getName().length() != 0 &&
                                         equalIgnoringCase(path.getName().view(), fieldPath.getName().view())
                                   : pathMatches(path, fieldPath, element);
    if (matches) found.push_back(i);
  }
  // Sorted by position in place, equal positions in slot order: a few slots, and every header that
  // carries separators asks, where a library stable sort takes a buffer from the allocator.
  for (size_t i = 1; i < found.size(); ++i) {
    const int32_t slot = found[i];
    const int32_t position = std::abs(defnOf(slot).getPosition());
    size_t at = i;
    for (; at > 0 && std::abs(defnOf(found[at - 1]).getPosition()) > position; --at) found[at] = found[at - 1];
    found[at] = slot;
  }
  return found;
}

// ----- reading them

void SeparatorList::readSlotsFromStream(const std::vector<int32_t>& slotIndexes, ParserStream& stream) {
  if (stream.atEnd()) return;
  bool changed = false;
  std::optional<int32_t> lastPosition;
  for (const int32_t i : slotIndexes) {
    const SeparatorDefn& defn = defnOf(i);
    if (lastPosition == defn.getPosition()) continue;  // each position once
    lastPosition = defn.getPosition();
    const int32_t length = static_cast<int32_t>(defn.getValue().length());
    if (length == 0) continue;
    ParserToken token;
    stream.readChars(length, token);
    // A value cut short by the end of the text leaves the slot to its default.
    if (slots[static_cast<size_t>(i)].known || token.text.size() != static_cast<size_t>(length)) continue;
    beforeSlotsChange();
    SeparatorImpl& slot = slots.edit(static_cast<size_t>(i));
    slot.known = true;
    slot.setValue(token.text);
    changed = true;
  }
  if (changed) {
    takeReplacements();
    trieDirty = true;
    updateActive();
  }
}

void SeparatorList::readFromStream(const FieldPathDefn& fieldPath, ParserStream& stream) {
  readSlotsFromStream(slotsOfField(fieldPath, false, true), stream);
}

void SeparatorList::readFromStreamEnd(const FieldPathDefn& fieldPath, ParserStream& stream) {
  readSlotsFromStream(slotsOfField(fieldPath, true, true), stream);
}

std::u16string_view SeparatorList::fillerText() const {
  const std::u16string_view filler = slots[qxSepFiller].value;
  return filler.empty() ? std::u16string_view(u" ") : filler.substr(0, 1);
}

bool SeparatorList::holdsSeparatorsOf(const FieldPathDefn& fieldPath) const {
  for (const int32_t i : slotsOfField(fieldPath, false, false)) {
    if (defnOf(i).getFlags() & SeparatorDefn::kFromField) return true;
  }
  return false;
}

bool SeparatorList::mayTakeFromField(std::string_view segmentName, int32_t fieldNumber) const {
  // Separators behind a segment are read from the text, never taken from a field's value.
  for (uint32_t left = fieldSlots; left != 0; left &= left - 1) {
    const SeparatorImpl& slot = slots[static_cast<size_t>(std::countr_zero(left))];
    if (slot.known) continue;
    const FieldPathDefn& path = slot.defn->getFieldPath();
    if (!equalIgnoringCase(path.getName().view(), segmentName)) continue;
    if (fieldNumber > 0 && path.isNumeric() && !path.getIndexes().empty() && path.getIndexes().front() != fieldNumber) {
      continue;
    }
    return true;
  }
  return false;
}

bool SeparatorList::takesFromField(const FieldPathDefn& fieldPath) const {
  const std::vector<int32_t>& ofField = slotsOfField(fieldPath, false, false);
  return std::any_of(ofField.begin(), ofField.end(), [this](int32_t i) { return !slots[static_cast<size_t>(i)].known; });
}

std::u16string SeparatorList::takeFromField(const FieldPathDefn& fieldPath, std::u16string_view text) {
  const std::vector<int32_t>& ofField = slotsOfField(fieldPath, false, false);
  bool taken = false;
  for (const int32_t i : ofField) {
    if (slots[static_cast<size_t>(i)].known) continue;
    beforeSlotsChange();
    SeparatorImpl& slot = slots.edit(static_cast<size_t>(i));
    const SeparatorDefn& defn = defnOf(i);
    const size_t position = static_cast<size_t>(defn.getPosition());
    if (defn.getValue().length() != 0 && position < text.size()) {
      slot.setValue(std::u16string(text.substr(position, defn.getValue().length())));
    } else if (defn.getValue().length() == 0 || slot.value.empty()) {
      slot.takeDefaultValue();
    }
    slot.known = true;
    taken = true;
  }
  if (taken) takeReplacements();

  // The text comes back with every separator of the field at its place.
  std::u16string completed(text);
  for (const int32_t i : ofField) {
    const SeparatorDefn& defn = defnOf(i);
    const size_t position = static_cast<size_t>(defn.getPosition());
    if (defn.getValue().length() != 0 && position < completed.size()) continue;
    if (completed.size() < position) completed.append(position - completed.size(), fillerText().front());
    completed.replace(position, defn.getValue().length(), defn.getValue().view());
  }
  trieDirty = true;
  updateActive();
  return completed;
}

// ----- writing them

std::u16string SeparatorList::collectSlots(const FieldPathDefn& fieldPath, bool endPositions) const {
  std::u16string text;
  for (const int32_t i : slotsOfField(fieldPath, endPositions, false)) {
    const SeparatorImpl& slot = slots[static_cast<size_t>(i)];
    text += slot.known ? std::u16string_view(slot.value) : slot.defn->getValue().view();
  }
  return text;
}

bool SeparatorList::carriesSeparators(std::string_view segmentName) const {
  const FieldPathDefn path = FieldPathDefn::parse(segmentName);
  return !slotsOfField(path, false, true).empty() || !slotsOfField(path, true, true).empty();
}

void SeparatorList::writeSeparatorsOf(const FieldPathDefn& segmentPath, bool endPositions) {
  std::u16string text;
  bool changed = false;
  std::optional<int32_t> lastPosition;
  for (const int32_t i : slotsOfField(segmentPath, endPositions, true)) {
    const auto at = static_cast<size_t>(i);
    if (lastPosition == slots[at].defn->getPosition()) continue;  // each position once
    lastPosition = slots[at].defn->getPosition();
    if (!slots[at].known) {
      beforeSlotsChange();
      SeparatorImpl& slot = slots.edit(at);
      // A message parsed with other separators keeps them; a new one takes the definition's.
      if (slot.value.empty()) slot.takeDefaultValue();
      slot.known = true;
      changed = true;
    }
    text += slots[at].value;
  }
  if (changed) {
    takeReplacements();
    trieDirty = true;
    updateActive();
  }
  if (text.empty()) return;
  writeData(text);
  checkOutputTail = true;
}

std::u16string SeparatorList::collectForField(const FieldPathDefn& fieldPath) const {
  return collectSlots(fieldPath, false);
}

std::u16string SeparatorList::collectForFieldEnd(const FieldPathDefn& fieldPath) const {
  return collectSlots(fieldPath, true);
}

// ----- settling them without a read

void SeparatorList::settleToDefault(SeparatorImpl& slot) {
  slotsVersion = nextVersion();
  slot.takeDefaultValue();
  takeReplacements(slot);
  slot.known = true;
  trieDirty = true;
}

uint32_t SeparatorList::settleForPath(std::string_view path, bool takeDefaults) {
  if (!variablePending) return 0;
  beforeSlotsChange();
  uint32_t settled = 0;
  for (size_t i = 0; i < slots.size(); ++i) {
    if (slots[i].known || !fieldLiesUnder(slots[i].defn->getFieldPath(), path)) continue;
    settled |= 1u << i;
    if (takeDefaults) {
      settleToDefault(slots.edit(i));
    } else {
      slots.edit(i).known = true;
    }
  }
  updateActive();
  return settled;
}

bool SeparatorList::settleAsRead(std::string_view segmentName, const SeparatorList& read) {
  if (!variablePending || messageSet != read.messageSet || read.variablePending) return false;
  // A write of the fields would take each value from the text: it must be the one read there.
  for (size_t i = 0; i < slots.size(); ++i) {
    const SeparatorImpl& slot = slots[i];
    if (!slot.known && fieldLiesUnder(slot.defn->getFieldPath(), segmentName) && slot.value != read.slots[i].value) {
      return false;
    }
  }
  const uint32_t marked = settleForPath(segmentName, false);
  if (sameSlotsAs(read) && !variablePending) return true;
  // Back as it was: marking changed nothing but whether those slots are known.
  beforeSlotsChange();
  for (size_t i = 0; i < slots.size(); ++i) {
    if (marked >> i & 1u) slots.edit(i).known = false;
  }
  trieDirty = true;
  updateActive();
  return false;
}

void SeparatorList::markKnownForPath(std::string_view path) { settleForPath(path, false); }

void SeparatorList::applyDefaultForPath(std::string_view path) { settleForPath(path, true); }

void SeparatorList::markKnownForChildren(std::string_view path, int32_t count,
                                         const std::function<int32_t(std::string_view)>& childIndex) {
  if (!variablePending) return;
  beforeSlotsChange();
  for (SeparatorImpl& slot : slots.edit()) {
    const FieldPathDefn& fieldPath = slot.defn->getFieldPath();
    if (slot.known || fieldPath.getName().length() == 0) continue;
    bool below = false;
    if (fieldPath.isNumeric()) {
      // A numeric path names its segment and then 1-based field numbers.
      below = equalIgnoringCase(fieldPath.getName().view(), path) && !fieldPath.getIndexes().empty() &&
              fieldPath.getIndexes().front() >= 1 && fieldPath.getIndexes().front() <= count;
    } else {
      const std::string text = pathText(fieldPath);
      if (text.size() > path.size() + 1 && startsWithIgnoringCase(text, path) && text[path.size()] == '/') {
        const std::string_view rest = std::string_view(text).substr(path.size() + 1);
        const int32_t child = childIndex ? childIndex(rest.substr(0, rest.find('/'))) : -1;
        below = child >= 0 && child < count;
      }
    }
    if (below) slot.known = true;
  }
  updateActive();
}

void SeparatorList::restoreForItem(const MessageDefn& messageDefn, std::string_view name) {
  beforeSlotsChange();
  if (savedSlots) {
    *savedSlots = slots.all();
  } else {
    savedSlots = std::make_unique<Slots>(slots.all());
  }
  Slots& own = slots.edit();
  for (SeparatorImpl& slot : own) {
    if (slot.flags() & SeparatorDefn::kFromField) slot.known = false;
  }
  for (const auto& item : messageDefn.getItems()) {
    const std::string_view itemName = item->getName().view();
    if (equalIgnoringCase(itemName, name)) break;
    for (int32_t i = 0; i < kSeparatorSlots; ++i) {
      SeparatorImpl& slot = own[static_cast<size_t>(i)];
      if (!fieldLiesUnder(slot.defn->getFieldPath(), itemName)) continue;
      slot = (*savedSlots)[static_cast<size_t>(i)];
      if (!slot.known) settleToDefault(slot);
    }
  }
  updateActive();
}

}  // namespace vantrelia
