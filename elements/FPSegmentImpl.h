#pragma once
// A segment whose fields may stand behind a presence indicator: a field marked to carry one is
// there only when its indicator is, so that an absent field leaves no trace on the wire, not even
// its separator.

#include <cstdint>
#include <string>

#include "elements/SegmentImpl.h"

namespace vantrelia {

class FPSegmentImpl : public SegmentImpl {
 public:
  using SegmentImpl::SegmentImpl;

  bool parseSegmentFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                          ValidationLocation& location) override;
  bool writeElement(SeparatorList& list, bool minimize, int32_t& counter) override;

 private:
  // The indicator's text with the separators of `list`.
  std::u16string indicatorText(const SeparatorList& list) const;
  // The level of the indicator, above the field level: a field's text ends where an indicator
  // begins.
  void pushIndicatorLevel(SeparatorList& list) const;
  // Whether field `index` is a composite that reads the segment's indicator for its first child
  // itself, and writes it.
  bool readsOwnIndicator(int index) const;
};

}  // namespace vantrelia
