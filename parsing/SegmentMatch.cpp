#include "parsing/SegmentMatch.h"

#include "elements/SegmentElement.h"

namespace vantrelia {

SegmentMatch::SegmentMatch() = default;
SegmentMatch::SegmentMatch(SegmentMatch&&) noexcept = default;
SegmentMatch& SegmentMatch::operator=(SegmentMatch&&) noexcept = default;
SegmentMatch::~SegmentMatch() = default;

SegmentElement* SegmentMatch::release() { return owned.release(); }

void SegmentMatch::reclaim(std::unique_ptr<SegmentElement> segment) {
  placed = segment.get();
  owned = std::move(segment);
}

void SegmentMatch::forgetElement() {
  static_cast<void>(owned.release());
  placed = nullptr;
}

void SegmentMatch::own(std::unique_ptr<SegmentElement> segment) {
  placed = segment.get();
  owned = std::move(segment);
}

void SegmentMatch::dropElement() {
  if (owned) {
    owned.reset();
    placed = nullptr;
  }
}

}  // namespace vantrelia
