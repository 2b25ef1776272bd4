#include "parsing/SeparatorCut.h"

#include <algorithm>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

#include "parsing/SeparatorList.h"

namespace vantrelia {

SeparatorCut::SeparatorCut(SeparatorList& liveList, std::shared_ptr<const CutStops> stops)
    : live(&liveList), scan(std::move(stops)) {}

std::shared_ptr<const CutStops> SeparatorCut::stopsOf(const SeparatorList& liveList) {
  auto made = std::make_shared<CutStops>();
  bool& scannable = made->scannable;
  char16_t& end = made->end;
  std::u16string& stops = made->stops;
  const SeparatorImpl& segment = liveList.getSlot(qxSepSegment);
  const auto plain = [&](std::u16string_view text) { return text.empty() || text == segment.value; };
  scannable = segment.active && segment.value.size() == 1 && plain(segment.initiator()) && plain(segment.terminator());
  if (!scannable) return made;
  end = segment.value.front();
  // A zero never matches in a stream's text, so a separator read as zero ends nothing there:
  // only reading the fields can tell where such a segment ends.
  if (end == u'\0') {
    scannable = false;
    return made;
  }
  // What may make the separator part of a value: a quote, which a value may open and run to its
  // closing one, and the first character of a replacement (an escape or a release).
  std::u16string hiding = u"\"";
  for (int32_t i = 0; i < SeparatorList::kSeparatorSlots; ++i) {
    const SeparatorImpl& slot = liveList.getSlot(i);
    if (!slot.active) continue;
    // Another separator made of the same character (or holding it) ends fields as well: which of
    // the two a character is depends on where the read stands.
    const auto holdsEnd = [&](std::u16string_view text) { return text.find(end) != std::u16string_view::npos; };
    if (i != qxSepSegment && (holdsEnd(slot.value) || holdsEnd(slot.initiator()) || holdsEnd(slot.terminator()))) {
      scannable = false;
      return made;
    }
    if (!slot.replacementValue.empty()) hiding += slot.replacementValue.front();
    if (!slot.terminatorReplacement().empty()) hiding += slot.terminatorReplacement().front();
  }
  // A line end that also ends segments, where the separator is another character.
  if (liveList.getCrlfEquivalent() == qxSepSegment && end != u'\r') hiding += u'\r';
  // A separator that itself opens a replacement can't be told from one without reading the value.
  if (hiding.find(end) != std::u16string::npos) {
    scannable = false;
    return made;
  }
  stops += end;
  for (const char16_t character : hiding) {
    if (stops.find(character) == std::u16string::npos) stops += character;
  }
  return made;
}

int32_t SeparatorCut::scanFields(const char16_t* from, int32_t length) const {
  if (!scan->scannable) return -1;
  const std::u16string& stops = scan->stops;
  const char16_t end = scan->end;
  // The first stop decides: the segment's end, or something that may hide one.
  const auto decide = [&](int32_t at) { return from[at] == end ? at : -1; };
#if defined(__SSE2__)
  // A segment's fields hold none of the stops, most often: eight characters are compared with
  // each stop at once, and the first hit is read off the mask.
  constexpr int32_t kWidth = 8;
  if (stops.size() <= 4 && length >= kWidth) {
    __m128i lanes[4];
    for (size_t k = 0; k < 4; ++k) lanes[k] = _mm_set1_epi16(static_cast<short>(stops[std::min(k, stops.size() - 1)]));
    const auto hitsAt = [&](int32_t at) {
      const __m128i block = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + at));
      const __m128i hits = _mm_or_si128(_mm_or_si128(_mm_cmpeq_epi16(block, lanes[0]), _mm_cmpeq_epi16(block, lanes[1])),
                                        _mm_or_si128(_mm_cmpeq_epi16(block, lanes[2]), _mm_cmpeq_epi16(block, lanes[3])));
      return static_cast<uint32_t>(_mm_movemask_epi8(hits));
    };
    for (int32_t i = 0;; i += kWidth) {
      // The last block ends with the text; what it shares with the block before holds no stop.
      const int32_t at = std::min(i, length - kWidth);
      if (const uint32_t mask = hitsAt(at)) return decide(at + static_cast<int32_t>(__builtin_ctz(mask) / 2));
      if (at + kWidth >= length) return length;
    }
  }
#endif
  for (int32_t i = 0; i < length; ++i) {
    if (stops.find(from[i]) != std::u16string::npos) return decide(i);
  }
  return length;
}

SeparatorCut::~SeparatorCut() = default;

std::unique_ptr<SeparatorList> SeparatorCut::copyOfLive() const {
  auto made = std::make_unique<SeparatorList>(*live);
  made->resetLevels();
  return made;
}

void SeparatorCut::freeze() {
  if (live && !copy) copy = copyOfLive();
  live = nullptr;
}

SeparatorCut::Lease::Lease(SeparatorCut& owner) : cut(owner) {
  if (!cut.busy && cut.live && cut.live->atBaseLevels()) {
    // A cut pushes and pops the levels of one segment, as the read of the segment did.
    cut.busy = true;
    in = cut.live;
    return;
  }
  if (!cut.copy) cut.copy = cut.copyOfLive();
  if (cut.busy) {
    own = std::make_unique<SeparatorList>(*cut.copy);
    own->resetLevels();
    in = own.get();
  } else {
    cut.busy = true;
    in = cut.copy.get();
  }
}

SeparatorCut::Lease::~Lease() {
  if (!own) {
    cut.busy = false;
    // A cut that ended early (an exception from a field) may leave levels pushed.
    if (!in->atBaseLevels()) in->resetLevels();
  }
}

}  // namespace vantrelia
