// What the element walks ask of the list beyond single reads: settling the separators that the
// headers before a node carry, whether the text at the cursor closes an outer level, and, at the
// end of a walk, giving every separator that the walk never read the definition's texts.
#include <algorithm>

#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/SegmentDefn.h"
#include "foundation/TextCompare.h"
#include "parsing/SeparatorList.h"

namespace vantrelia {

const std::u16string SeparatorList::kCarriageReturnLineFeed = u"\r\n";

void SeparatorList::settleHeadersBefore(const MessageSetDefn* setDefn, const SegmentDefn* segmentDefn,
                                        int32_t childCount) {
  if (!setDefn || setDefn->getHeaderItemCount() == 0 || setDefn->getMessages().empty()) return;
  const MessageDefn& first = *setDefn->getMessages().front();
  const int32_t headers = std::min(setDefn->getHeaderItemCount(), first.getItemCount());
  for (int32_t i = 0; i < headers; ++i) {
    const std::string_view name = first.getItem(i).getName().view();
    if (segmentDefn && equalIgnoringCase(name, segmentDefn->getName().view())) {
      if (childCount > 0) {
        markKnownForChildren(segmentDefn->getName().view(), childCount, [segmentDefn](std::string_view child) {
          for (int32_t f = 0; f < segmentDefn->getFieldCount(); ++f) {
            if (equalIgnoringCase(child, segmentDefn->getField(f).getName().view())) return f;
          }
          return int32_t{-1};
        });
      }
      return;
    }
    markKnownForPath(name);
  }
}

bool SeparatorList::isInUse(int32_t index) const {
  if (index == kCurrent) index = currentSeparator;
  if (index == qxSepNone) return false;
  if (index == qxSepString) return !specialStrings.empty() && !specialStrings.back().empty();
  return getSlot(index).active;
}

bool SeparatorList::atOuterSeparator(ParserStream& stream, int32_t innerLevels) const {
  const auto outer = levels.end() - std::min<std::ptrdiff_t>(innerLevels, static_cast<std::ptrdiff_t>(levels.size()));
  if (crlfEquivalent != -1 && stream.startsWith(kCarriageReturnLineFeed)) {
    return std::find(levels.begin(), outer, static_cast<ESeparatorType>(crlfEquivalent)) != outer;
  }
  // A pushed string is compared with the string pushed with it: count those above the outer part.
  auto special = specialStrings.rbegin();
  for (auto level = levels.end(); level != outer;) {
    if (*--level == qxSepString && special != specialStrings.rend()) ++special;
  }
  for (auto level = outer; level != levels.begin();) {
    const ESeparatorType index = *--level;
    if (index == qxSepNone) continue;
    std::u16string_view text;
    if (index == qxSepString) {
      if (special == specialStrings.rend()) continue;
      text = *special++;
    } else if (slots[static_cast<size_t>(index)].active) {
      text = slots[static_cast<size_t>(index)].value;
    }
    if (text.empty()) continue;
    if (text.size() == 1 ? stream.nextIs(text.front()) : stream.startsWith(text)) return true;
  }
  return false;
}

void SeparatorList::restoreSavedSlots() {
  beforeSlotsChange();
  slots = savedOrDefinedSlots();
  trieDirty = true;
}

void SeparatorList::finishWalk() {
  beforeSlotsChange();
  if (variablePending) {
    for (SeparatorImpl& slot : slots.edit()) {
      if (!slot.known && !(slot.flags() & SeparatorDefn::kFixed)) settleToDefault(slot);
    }
  }
  fromWire = false;
  uint32_t flipped = 0;
  const Slots& current = slots.all();
  for (size_t i = 0; i < current.size(); ++i) {
    flipped |= static_cast<uint32_t>(current[i].active == current[i].value.empty()) << i;
  }
  if (flipped) flipActive(flipped);
  variablePending = false;
  rebuildReplaceOrder();
  rebuildCharacterSets();
}

}  // namespace vantrelia
