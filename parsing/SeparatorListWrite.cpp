// Writing: a separator is held back until data follows it, so that the separators of empty
// trailing items never reach the output.

#include "parsing/SeparatorList.h"

#include "definitions/SeparatorDefn.h"

namespace vantrelia {

namespace {

// How deep a separator nests for writing, 0 the outermost.
int32_t rank(int32_t index) {
  switch (index) {
    case qxSepMessage:
    case qxSepCrlf: return 0;
    case qxSepGroup: return 1;
    case qxSepSegment: return 2;
    case qxSepField1: return 3;
    case qxSepRepeat: return 4;
    case qxSepField2: return 5;
    case qxSepField3: return 6;
    case qxSepField4: return 7;
    case qxSepField5: return 8;
    default: return 99;
  }
}

}  // namespace

void SeparatorList::writeSeparator(int32_t position, int32_t index) {
  if (index == kCurrent) index = currentSeparator;
  checkSeparatorIndex(index);
  const std::u16string_view inUse = levelText(static_cast<ESeparatorType>(index));
  if (inUse.empty()) return;
  const SeparatorImpl& slot = slots[static_cast<size_t>(index)];
  const uint32_t flags = slot.flags();
  if (!(flags & static_cast<uint32_t>(position))) return;

  std::u16string_view text = index == qxSepString        ? inUse
                             : position == kWriteInitiator  ? slot.initiator()
                             : position == kWriteTerminator ? slot.terminator()
                                                            : std::u16string_view(slot.value);
  if (!text.empty()) {
    const int32_t newRank = rank(index);
    // Pending separators of lower levels are trailing empties once a higher level closes.
    while (!pending.empty()) {
      const int32_t last = pending.back().index;
      if (last == qxSepField1 && index == qxSepSegment && !trimSegments) break;
      if ((defnOf(last).getFlags() & SeparatorDefn::kTerminator) || newRank >= rank(last)) break;
      pendingText.resize(pending.back().offset);
      pending.pop_back();
    }
    pendingLast = pending.empty() ? -1 : pending.back().index;
    const bool sameOuterLevel = !pending.empty() && newRank <= 2 && newRank == rank(pending.back().index);
    const bool alreadyOut = checkOutputTail && output.size() >= text.size() &&
                            std::u16string_view(output).substr(output.size() - text.size()) == text;
    if (!sameOuterLevel && !alreadyOut) {
      pending.push_back({index, static_cast<uint32_t>(pendingText.size())});
      pendingText += text;
      pendingLast = index;
    }
  }
  // A terminator goes out at once, so that the last item of a text keeps it.
  if ((position & kWriteTerminator) && (flags & SeparatorDefn::kTerminator)) flushPending();
  checkOutputTail = false;
}

void SeparatorList::flushPending() {
  if (pending.empty()) return;
  output += pendingText;
  pendingText.clear();
  pending.clear();
  pendingLast = -1;
}

void SeparatorList::writeData(std::u16string_view text) {
  flushPending();
  output += text;
}

void SeparatorList::clearOutput() {
  output.clear();
  pending.clear();
  pendingText.clear();
  pendingLast = -1;
}

}  // namespace vantrelia
