// Field values and the separators in them: a separator inside data goes out as its replacement (or
// the value in double quotes, for the quoted text type) and comes back on reading; a replacement
// written with the definition's separators is translated into the message's own; and a value
// checked as it stands on the wire must not hold a separator where none may stand.

#include "parsing/SeparatorList.h"

#include <algorithm>

#include "definitions/FieldPathDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "definitions/SeparatorDefn.h"

namespace vantrelia {

namespace {

bool startsWithAt(std::u16string_view text, size_t at, std::u16string_view what) {
  return !what.empty() && text.substr(at, what.size()) == what;
}

}  // namespace

// ----- replacements and the characters that call for them

void SeparatorList::takeDefaults(SeparatorImpl& slot) {
  slot.takeDefaultValue();
  slot.replacementValue = translateValue(slot.defn->getReplacementValue().view());
  slot.terminatorReplacement =
      slot.isVariable() ? translateValue(slot.defn->getTerminatorReplacement().view()) : slot.replacementValue;
}

void SeparatorList::takeReplacements() {
  for (SeparatorImpl& slot : slots) {
    slot.replacementValue = translateValue(slot.defn->getReplacementValue().view());
    slot.terminatorReplacement =
        slot.isVariable() ? translateValue(slot.defn->getTerminatorReplacement().view()) : slot.replacementValue;
  }
}

std::u16string_view SeparatorList::entryText(const ReplaceEntry& entry) const {
  const SeparatorImpl& slot = slots[static_cast<size_t>(entry.index)];
  return entry.isTerminator ? slot.terminator : slot.value;
}

std::u16string_view SeparatorList::entryReplacement(const ReplaceEntry& entry) const {
  const SeparatorImpl& slot = slots[static_cast<size_t>(entry.index)];
  return entry.isTerminator ? slot.terminatorReplacement : slot.replacementValue;
}

void SeparatorList::rebuildReplaceOrder() {
  replaceOrder.clear();
  for (int32_t i = 0; i < qxSepCrlf; ++i) {
    replaceOrder.push_back({i, false});
    if (slots[static_cast<size_t>(i)].isVariable()) replaceOrder.push_back({i, true});
  }
  // Longest first, so that a separator that begins another is never taken for it.
  std::stable_sort(replaceOrder.begin(), replaceOrder.end(), [this](const ReplaceEntry& a, const ReplaceEntry& b) {
    return entryText(a).size() > entryText(b).size();
  });
}

void SeparatorList::rebuildCharacterSets() {
  mustQuoteCharacters.clear();
  mustEncodeCharacters.clear();
  for (const ReplaceEntry& entry : replaceOrder) {
    const SeparatorImpl& slot = slots[static_cast<size_t>(entry.index)];
    const std::u16string_view text = entryText(entry);
    if (!slot.active || text.empty()) continue;
    if (!slot.replacementValue.empty()) mustEncodeCharacters += text.front();
    if (entry.index != qxSepNull && entry.index != qxSepDecimal && entry.index != qxSepFiller) {
      mustQuoteCharacters += text.front();
    }
  }
  mustQuoteCharacters += kQuote;
}

// ----- values

std::u16string SeparatorList::translateValue(std::u16string_view text) const {
  std::u16string result;
  result.reserve(text.size());
  for (size_t at = 0; at < text.size();) {
    bool replaced = false;
    for (const SeparatorImpl& slot : slots) {
      if (!(slot.known || (!fromWire && !slot.value.empty()))) continue;
      const std::u16string_view defaultText = slot.defn->getValue().view();
      if (startsWithAt(text, at, defaultText)) {
        result += slot.value;
        at += defaultText.size();
        replaced = true;
        break;
      }
    }
    if (!replaced) result += text[at++];
  }
  return result;
}

std::u16string SeparatorList::encodeValue(std::u16string_view text, int32_t fieldType) const {
  const bool quotedType = fieldType == kQuotedTextType;
  const std::u16string_view watched = quotedType ? mustQuoteCharacters : mustEncodeCharacters;
  if (text.find_first_of(watched) == std::u16string_view::npos) return std::u16string(text);

  std::u16string result;
  result.reserve(text.size() + 8);
  bool needsQuotes = false;
  for (size_t at = 0; at < text.size();) {
    if (quotedType && text[at] == kQuote.front()) {
      result += kDoubledQuote;
      needsQuotes = true;
      ++at;
      continue;
    }
    bool taken = false;
    for (const ReplaceEntry& entry : replaceOrder) {
      const SeparatorImpl& slot = slots[static_cast<size_t>(entry.index)];
      if (!slot.active) continue;
      const std::u16string_view separator = entryText(entry);
      if (!startsWithAt(text, at, separator)) continue;
      if (!slot.replacementValue.empty()) {
        result += entryReplacement(entry);
        at += separator.size();
        needsQuotes = needsQuotes || quotedType;
        taken = true;
        break;
      }
      if (quotedType && entry.index != qxSepNull && entry.index != qxSepDecimal && entry.index != qxSepFiller) {
        needsQuotes = true;
      }
    }
    if (!taken) result += text[at++];
  }
  if (needsQuotes) return std::u16string(kQuote) + result + std::u16string(kQuote);
  return result;
}

std::u16string SeparatorList::decodeValue(std::u16string_view text, int32_t fieldType) const {
  std::u16string result;
  result.reserve(text.size());
  size_t at = 0;
  const bool quoted = fieldType == kQuotedTextType && !text.empty() && text.front() == kQuote.front();
  if (quoted) at = 1;
  while (at < text.size()) {
    if (quoted && text[at] == kQuote.front()) {
      if (at + 1 == text.size()) break;
      if (text[at + 1] == kQuote.front()) {
        result += kQuote;
        at += 2;
        continue;
      }
    }
    bool replaced = false;
    for (const SeparatorImpl& slot : slots) {
      if (slot.active && startsWithAt(text, at, slot.replacementValue)) {
        result += slot.value;
        at += slot.replacementValue.size();
        replaced = true;
        break;
      }
    }
    if (!replaced) result += text[at++];
  }
  return result;
}

std::optional<int32_t> SeparatorList::findInvalidCharacters(const SeparatorField& field, std::u16string_view wireValue,
                                                            bool warningsWanted) const {
  const EVErrType setting = getValidationErrorSetting(kInvalidCharactersError);
  if (setting == qxVESIgnore || (setting == qxVESWarning && !warningsWanted)) return std::nullopt;

  const PrimitiveTypeDefn* type = field.getCustomType();
  const bool escaped = type && type->getUsingSpecialEscapeCharacters();
  const bool quotedType = field.getFieldType() == kQuotedTextType;
  std::vector<int32_t> checked;
  for (int32_t i = 0; i < kSeparatorSlots; ++i) {
    const SeparatorImpl& slot = slots[static_cast<size_t>(i)];
    if (i == qxSepDecimal || i == qxSepFiller || (escaped && i == qxSepNull)) continue;
    if (quotedType && i != qxSepSegment && i != qxSepGroup && i != qxSepMessage) continue;
    if (slot.value.empty() || (fromWire && !slot.known)) continue;
    if (field.isSeparatorAllowed(i) || !slot.replacementValue.empty()) continue;
    if (pathMatches(slot.defn->getFieldPath(), field.getFieldPath())) continue;
    checked.push_back(i);
  }

  std::u16string_view startEscape, endEscape;
  if (escaped) {
    const int32_t start = type->rawStartEscapeCharacter();
    const int32_t end = type->rawEndEscapeCharacter();
    if (start >= 0 && start < kSeparatorSlots) startEscape = slots[static_cast<size_t>(start)].value;
    if (end >= 0 && end < kSeparatorSlots) endEscape = slots[static_cast<size_t>(end)].value;
  }
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
