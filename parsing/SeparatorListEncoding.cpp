// Field values and the separators in them: a separator inside data goes out as its replacement (or
// the value in double quotes, for the quoted text type) and comes back on reading; a replacement
// written with the definition's separators is translated into the message's own; and a value
// checked as it stands on the wire must not hold a separator where none may stand.

#include "parsing/SeparatorList.h"

#include <algorithm>
#include <optional>

#include "definitions/DataTypeCodes.h"
#include "definitions/FieldPathDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "definitions/SeparatorDefn.h"
#include "validation/ValidationErrorNumbers.h"

namespace vantrelia {

namespace {

bool startsWithAt(std::u16string_view text, size_t at, std::u16string_view what) {
  return !what.empty() && text.substr(at, what.size()) == what;
}

// Whether a value of the quoted text type that holds the separator goes out in double quotes: the
// null, decimal and filler marks belong to data and never make it.
bool forcesQuotes(int32_t index) { return index != qxSepNull && index != qxSepDecimal && index != qxSepFiller; }

// Where the text that from(slot) gives for a slot stands at `at`, puts the slot's value in result
// and steps over it; the first slot that matches wins, and an empty text matches nothing.
template <typename From>
bool putSlotValueAt(const std::array<SeparatorImpl, kSeparatorCount>& slots, std::u16string_view text, size_t& at,
                    std::u16string& result, From from) {
  for (const SeparatorImpl& slot : slots) {
    const std::u16string_view seen = from(slot);
    if (startsWithAt(text, at, seen)) {
      result += slot.value;
      at += seen.size();
      return true;
    }
  }
  return false;
}

}  // namespace

// ----- replacements and the characters that call for them

void SeparatorList::takeReplacements(SeparatorImpl& slot, std::optional<bool>& asIs) {
  slotsVersion = nextVersion();
  // Most slots have no replacement: every header that carries separators asks for all of them.
  // Whether the definition's texts stand is asked only for a slot that has one, and only once.
  const auto translated = [&](std::u16string_view defined) {
    if (!asIs) asIs = translatesAsIs();
    return *asIs ? std::u16string(defined) : translateChanged(defined);
  };
  const std::u16string_view defined = slot.defn->getReplacementValue().view();
  if (defined.empty()) {
    slot.replacementValue.clear();
  } else {
    slot.replacementValue = translated(defined);
  }
  if (slot.isVariable()) {
    const std::u16string_view terminator = slot.defn->getTerminatorReplacement().view();
    slot.setTerminatorReplacement(terminator.empty() ? std::u16string() : translated(terminator));
  }
}

void SeparatorList::takeReplacements(SeparatorImpl& slot) {
  std::optional<bool> asIs;
  takeReplacements(slot, asIs);
}

void SeparatorList::takeReplacements() {
  slotsVersion = nextVersion();
  std::optional<bool> asIs;
  for (SeparatorImpl& slot : slots.edit()) {
    if (slot.defn->getReplacementValue().length() == 0 && !slot.isVariable()) {
      slot.replacementValue.clear();
    } else {
      takeReplacements(slot, asIs);
    }
  }
}

std::u16string_view SeparatorList::entryText(const ReplaceEntry& entry) const {
  const SeparatorImpl& slot = slots[static_cast<size_t>(entry.index)];
  return entry.isTerminator ? slot.terminator() : std::u16string_view(slot.value);
}

std::u16string_view SeparatorList::entryReplacement(const ReplaceEntry& entry) const {
  const SeparatorImpl& slot = slots[static_cast<size_t>(entry.index)];
  return entry.isTerminator ? slot.terminatorReplacement() : std::u16string_view(slot.replacementValue);
}

void SeparatorList::rebuildReplaceOrder() {
  ReplaceOrderKey key{};
  for (int32_t i = 0; i < qxSepCrlf; ++i) {
    const SeparatorImpl& slot = slots[static_cast<size_t>(i)];
    key[static_cast<size_t>(2 * i)] = static_cast<uint32_t>(slot.value.size());
    if (slot.isVariable()) key[static_cast<size_t>(2 * i + 1)] = static_cast<uint32_t>(slot.terminator().size()) + 1;
  }
  if (replaceOrderKeyed && key == replaceOrderKey) return;
  replaceOrderKey = key;
  replaceOrderKeyed = true;
  replaceOrder.clear();
  for (int32_t i = 0; i < qxSepCrlf; ++i) {
    replaceOrder.push_back({static_cast<uint8_t>(i), false});
    if (slots[static_cast<size_t>(i)].isVariable()) replaceOrder.push_back({static_cast<uint8_t>(i), true});
  }
  // Longest first, so that a separator that begins another is never taken for it; equal lengths
  // keep their slot order. Sorted in place by insertion: the list is a few dozen entries, mostly in
  // order already, and made again for every message, where a library stable sort takes a buffer
  // from the general allocator each time.
  for (size_t i = 1; i < replaceOrder.size(); ++i) {
    const ReplaceEntry entry = replaceOrder[i];
    const size_t length = entryText(entry).size();
    size_t at = i;
    for (; at > 0 && entryText(replaceOrder[at - 1]).size() < length; --at) replaceOrder[at] = replaceOrder[at - 1];
    replaceOrder[at] = entry;
  }
}

void SeparatorList::rebuildCharacterSets() {
  slotsVersion = nextVersion();
  mustQuoteCharacters.clear();
  mustEncodeCharacters.clear();
  for (const ReplaceEntry& entry : replaceOrder) {
    const SeparatorImpl& slot = slots[static_cast<size_t>(entry.index)];
    const std::u16string_view text = entryText(entry);
    if (!slot.active || text.empty()) continue;
    if (!slot.replacementValue.empty()) mustEncodeCharacters += text.front();
    if (forcesQuotes(entry.index)) mustQuoteCharacters += text.front();
  }
  mustQuoteCharacters += kQuote;
}

// ----- values

std::u16string_view SeparatorList::settledDefinition(const SeparatorImpl& slot) const {
  const bool settled = slot.known || (!fromWire && !slot.value.empty());
  return settled ? slot.defn->getValue().view() : std::u16string_view();
}

bool SeparatorList::translatesAsIs() const {
  return std::all_of(slots.begin(), slots.end(), [&](const SeparatorImpl& slot) {
    const std::u16string_view defined = settledDefinition(slot);
    return defined.empty() || slot.value == defined;
  });
}

std::u16string SeparatorList::translateValue(std::u16string_view text) const {
  if (text.empty() || translatesAsIs()) return std::u16string(text);
  return translateChanged(text);
}

std::u16string SeparatorList::translateChanged(std::u16string_view text) const {
  std::u16string result;
  result.reserve(text.size());
  const auto defaultText = [this](const SeparatorImpl& slot) { return settledDefinition(slot); };
  for (size_t at = 0; at < text.size();) {
    if (!putSlotValueAt(slots.all(), text, at, result, defaultText)) result += text[at++];
  }
  return result;
}

std::u16string SeparatorList::untranslateValue(std::u16string_view text) const {
  if (text.empty()) return {};
  const auto counts = [this](const SeparatorImpl& slot) {
    return slot.defn && !slot.value.empty() && (!fromWire || slot.known);
  };
  if (untranslatedVersion != slotsVersion) {
    untranslatesAsIs = std::all_of(slots.begin(), slots.end(), [&](const SeparatorImpl& slot) {
      return !counts(slot) || slot.value == slot.defn->getValue().view();
    });
    untranslatedVersion = slotsVersion;
  }
  if (untranslatesAsIs) return std::u16string(text);
  std::u16string result;
  result.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    bool taken = false;
    for (const SeparatorImpl& slot : slots) {
      if (!counts(slot)) continue;
      if (startsWithAt(text, at, slot.value)) {
        result += slot.defn->getValue().view();
        at += slot.value.size();
        taken = true;
        break;
      }
    }
    if (!taken) result += text[at++];
  }
  return result;
}

std::u16string SeparatorList::encodeValue(std::u16string_view text, int32_t fieldType) const {
  const bool quotedType = fieldType == DataTypeCodes::kQuotedText;
  const std::u16string_view watched = quotedType ? mustQuoteCharacters : mustEncodeCharacters;
  if (text.find_first_of(watched) == std::u16string_view::npos) return std::u16string(text);
  return encodeWith(text, fieldType, nullptr);
}

std::u16string SeparatorList::encodeCustomValue(std::u16string_view text, const PrimitiveTypeDefn& type,
                                                int32_t fieldType) const {
  return encodeWith(text, fieldType, &type);
}

std::u16string SeparatorList::encodeWith(std::u16string_view text, int32_t fieldType,
                                         const PrimitiveTypeDefn* type) const {
  const bool quotedType = fieldType == DataTypeCodes::kQuotedText;
  const int32_t start = type ? type->rawStartEscapeCharacter() : PrimitiveTypeDefn::kNoEscape;
  const int32_t end = type ? type->rawEndEscapeCharacter() : PrimitiveTypeDefn::kNoEscape;
  const auto allowed = [type](int32_t index) {
    return type && index >= 0 && index < kSeparatorSlots && type->isSeparatorAllowed(static_cast<ESeparatorType>(index));
  };
  // With escapes in force, the escapes decide what stays as it is; a type that allows both escape
  // separators in its values has nothing to mark, and its allow-list decides.
  const bool escaping = type && type->getUsingSpecialEscapeCharacters() && !(allowed(start) && allowed(end));
  // A region from a start mark to the next end mark goes out as it stands only where reading it
  // back gives the same value: something between the marks, nothing there that a read would take
  // for a separator or a quote, and no replacement beginning at either mark. Where one character
  // is both marks (HL7's escape character) a read takes each mark for a region of its own and
  // reads what lies between as any text, replacements and all, so these count too. Elsewhere the
  // start mark is a character like any other and goes out as its replacement: a separator inside
  // the marks is never written bare.
  const std::u16string_view startText = escaping ? escapeText(start) : std::u16string_view();
  const std::u16string_view endText = escaping ? escapeText(end) : std::u16string_view();
  std::u16string special(quotedType ? kQuote : std::u16string_view());
  if (escaping) {
    for (const ReplaceEntry& entry : replaceOrder) {
      if (!slots[static_cast<size_t>(entry.index)].active) continue;
      // The null, decimal and filler marks belong to data and end nothing.
      if (!entryText(entry).empty() && forcesQuotes(entry.index)) special += entryText(entry).front();
      if (startText == endText && !entryReplacement(entry).empty()) special += entryReplacement(entry).front();
    }
  }
  const auto replacementAt = [&](size_t at) {
    return std::any_of(replaceOrder.begin(), replaceOrder.end(), [&](const ReplaceEntry& entry) {
      return slots[static_cast<size_t>(entry.index)].active && startsWithAt(text, at, entryReplacement(entry));
    });
  };
  // Both searches only move forward, so that a text of many marks is looked through once.
  size_t nextEnd = 0;
  size_t nextSpecial = 0;
  const auto keptRegionEnd = [&](size_t at) -> size_t {
    const size_t from = at + startText.size();
    if (nextEnd < from) nextEnd = endText.empty() ? std::u16string_view::npos : text.find(endText, from);
    if (nextEnd == std::u16string_view::npos || nextEnd == from) return 0;
    if (nextSpecial < from) nextSpecial = text.find_first_of(special, from);
    if (nextSpecial < nextEnd || replacementAt(at) || replacementAt(nextEnd)) return 0;
    return nextEnd + endText.size();
  };

  // Whatever changes what goes out (a quote, a start mark, a separator to replace or to quote for)
  // begins with one of these characters: the text between them goes out as it stands, looked at
  // once instead of against every separator at every character.
  std::u16string stops;
  if (quotedType) stops += kQuote.front();
  if (!startText.empty()) stops += startText.front();
  for (const ReplaceEntry& entry : replaceOrder) {
    if (!slots[static_cast<size_t>(entry.index)].active || (!escaping && allowed(entry.index))) continue;
    const std::u16string_view entryValue = entryText(entry);
    if (!entryValue.empty() && stops.find(entryValue.front()) == std::u16string::npos) stops += entryValue.front();
  }

  bool keptRegion = false;
  const auto encode = [&](bool keepRegions) {
    std::u16string result;
    result.reserve(text.size() + 8);
    bool needsQuotes = false;
    for (size_t at = 0; at < text.size();) {
      if (stops.find(text[at]) == std::u16string::npos) {
        const size_t stop = std::min(text.find_first_of(stops, at), text.size());
        result.append(text.substr(at, stop - at));
        at = stop;
        continue;
      }
      if (quotedType && text[at] == kQuote.front()) {
        // Doubled quotes mean one only inside quotes: a value with a quote is always quoted, else
        // each read and write would double its quotes again.
        result += kDoubledQuote;
        needsQuotes = true;
        ++at;
        continue;
      }
      if (keepRegions && startsWithAt(text, at, startText)) {
        if (const size_t regionEnd = keptRegionEnd(at)) {
          result.append(text.substr(at, regionEnd - at));
          at = regionEnd;
          keptRegion = true;
          continue;
        }
      }
      bool taken = false;
      for (const ReplaceEntry& entry : replaceOrder) {
        const SeparatorImpl& slot = slots[static_cast<size_t>(entry.index)];
        if (!slot.active || (!escaping && allowed(entry.index))) continue;
        if (!startsWithAt(text, at, entryText(entry))) continue;
        if (!entryReplacement(entry).empty()) {
          result += entryReplacement(entry);
          at += entryText(entry).size();
          needsQuotes = true;
          taken = true;
          break;
        }
        if (quotedType && forcesQuotes(entry.index)) needsQuotes = true;
      }
      if (!taken) result += text[at++];
    }
    if (quotedType && needsQuotes) return std::u16string(kQuote) + result + std::u16string(kQuote);
    return result;
  };
  std::u16string result = encode(escaping);
  // Where one character is both marks, a mark kept as it stands may make a replacement with what
  // is written behind it ("\T.\" before "S~" gives "\S\" and then "\R\"): a value that doesn't
  // read back goes out with no region kept, every mark replaced.
  if (keptRegion && startText == endText && decodeValue(result, fieldType) != text) result = encode(false);
  return result;
}

std::u16string SeparatorList::decodeValue(std::u16string_view text, int32_t fieldType) const {
  std::u16string result;
  result.reserve(text.size());
  size_t at = 0;
  const bool quoted = fieldType == DataTypeCodes::kQuotedText && !text.empty() && text.front() == kQuote.front();
  if (quoted) at = 1;
  const auto replacementText = [](const SeparatorImpl& slot) {
    return slot.active ? std::u16string_view(slot.replacementValue) : std::u16string_view();
  };
  while (at < text.size()) {
    if (quoted && text[at] == kQuote.front()) {
      if (at + 1 == text.size()) break;
      if (text[at + 1] == kQuote.front()) {
        result += kQuote;
        at += 2;
        continue;
      }
    }
    if (!putSlotValueAt(slots.all(), text, at, result, replacementText)) result += text[at++];
  }
  return result;
}

// ----- the check of a value on the wire

std::u16string_view SeparatorList::escapeText(int32_t index) const {
  return index >= 0 && index < kSeparatorSlots ? std::u16string_view(slots[static_cast<size_t>(index)].value)
                                               : std::u16string_view();
}

std::optional<int32_t> SeparatorList::findInvalidCharacters(const SeparatorField& field, std::u16string_view wireValue,
                                                            bool warningsWanted) const {
  const EVErrType setting = getValidationErrorSetting(verr::kInvalidCharacters);
  if (setting == qxVESIgnore || (setting == qxVESWarning && !warningsWanted)) return std::nullopt;

  const PrimitiveTypeDefn* type = field.getCustomType();
  const bool escaped = isEscapedField(field);
  const bool quotedType = field.getFieldType() == DataTypeCodes::kQuotedText;
  std::vector<int32_t> checked;
  // The field's path as text, made once and only if some slot gets that far.
  std::optional<std::string> element;
  for (int32_t i = 0; i < kSeparatorSlots; ++i) {
    const SeparatorImpl& slot = slots[static_cast<size_t>(i)];
    if (i == qxSepDecimal || i == qxSepFiller || (escaped && i == qxSepNull)) continue;
    if (quotedType && i != qxSepSegment && i != qxSepGroup && i != qxSepMessage) continue;
    if (slot.value.empty() || (fromWire && !slot.known)) continue;
    if (field.isSeparatorAllowed(i) || !slot.replacementValue.empty()) continue;
    if (!element) element = pathText(field.getFieldPath());
    if (pathMatches(slot.defn->getFieldPath(), field.getFieldPath(), *element)) continue;
    checked.push_back(i);
  }

  const std::u16string_view startEscape = escaped ? escapeText(type->rawStartEscapeCharacter()) : std::u16string_view();
  const std::u16string_view endEscape = escaped ? escapeText(type->rawEndEscapeCharacter()) : std::u16string_view();
  for (size_t at = 0; at < wireValue.size();) {
    if (escaped && startsWithAt(wireValue, at, startEscape)) {
      const size_t close = endEscape.empty() ? std::u16string_view::npos
                                             : wireValue.find(endEscape, at + startEscape.size());
      if (close == std::u16string_view::npos) return -1;
      at = close + endEscape.size();
      continue;
    }
    for (const int32_t i : checked) {
      if (startsWithAt(wireValue, at, slots[static_cast<size_t>(i)].value)) return i;
    }
    ++at;
  }
  return std::nullopt;
}

}  // namespace vantrelia
