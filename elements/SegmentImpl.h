#pragma once
// The ordinary segment: a tag, then its fields between field separators.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "elements/HeaderReplay.h"
#include "elements/SegmentImplBase.h"

namespace vantrelia {

class SegmentImpl : public SegmentImplBase {
 public:
  using SegmentImplBase::SegmentImplBase;

  bool parseSegmentFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                          ValidationLocation& location) override;
  bool resumeSegmentFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status, ValidationLocation& location,
                           int firstField, bool lastFieldFilled) override;
  bool writeElement(SeparatorList& list, bool minimize, int32_t& counter) override;

 protected:
  // Texts of variable fields whose key comes after them, by index, read once the segment is.
  using DeferredFields = std::vector<std::pair<int, std::u16string>>;
  // Cuts field `index` from the stream by its kind and hands it its text.
  void parseField(int index, ParserStream& stream, RecordedErrors& errors, ValidationLocation& location,
                  bool useGeneric, bool& lastFieldFilled, DeferredFields& deferred);
  void readDeferredFields(const DeferredFields& deferred, RecordedErrors& errors, ValidationLocation& location);
  // Behind the fields, their levels popped: the match list, the segment's end, then the fields
  // that waited for their key. False, with status kNotThisSegment, when the match list refuses.
  bool closeFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status, ValidationLocation& location,
                   uint32_t endMask, bool useGeneric, const DeferredFields& deferred);

 private:

  // The opening of the segment, then its fields and its end.
  bool readFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status, ValidationLocation& location);
  // readFields of a header that carries separators: done again as kept for a header that begins
  // as this one does, else done and kept.
  bool readHeaderFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status, ValidationLocation& location);
  bool replayHeader(const HeaderReplay::Entry& entry, const char16_t* start, ParserStream& stream,
                    RecordedErrors& errors, uint32_t& status, ValidationLocation& location);
  // A header kept whole, read again from this header's text: the settled list, the values at the
  // places the kept read cut them, the stream behind the segment.
  bool replaySegment(const HeaderReplay::Entry& entry, const char16_t* start, ParserStream& stream,
                     RecordedErrors& errors, uint32_t& status, ValidationLocation& location);
  // Hands each kept field its value from this header's text, at the place the kept read cut it.
  // Whether the field level was popped for the segment's last field.
  bool replayFieldValues(const HeaderReplay::Entry& entry, const char16_t* start, RecordedErrors& errors,
                         ValidationLocation& location);
  // At the end of a header being kept that never settled on the way: whether the read as a whole
  // can be done again for headers that differ in their fields, and what it leaves.
  void noteWhole(HeaderReplay::Entry& entry, const char16_t* start, int findingsBefore,
                 const std::vector<std::u16string>& readingStates, const ParserStream& stream,
                 const RecordedErrors& errors, uint32_t status);
#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
  // Throws if a read of `text` with a list as `before` stood would have read otherwise.
  void checkReplay(const SeparatorList& before, std::u16string_view text, const HeaderReplay::Entry& entry,
                   const RecordedErrors& errors, int findingsBefore, uint32_t status);
#endif
  // At the settling of a header being kept: whether the read so far can be done again, and the
  // state it leaves.
  void noteSettled(const ParserStream& stream, const RecordedErrors& errors, int resumeAt, bool lastFieldFilled,
                   uint32_t endMask);
  // Whether the first `count` fields are all plain values, cut at separators and read as they stand.
  bool allFieldsPlain(int count) const;
  // The fields from `firstField` on, behind the opening of the segment, then its end. With
  // keepTryingUncut, the rest of the fields may be left in the text as soon as nothing stops it,
  // as after a header's separators have settled.
  bool parseFieldsFrom(int firstField, ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                       ValidationLocation& location, uint32_t endMask, bool lastFieldFilled,
                       bool keepTryingUncut = false);
  // The fields behind the tag, one by one, as beginSegmentWrite left the list.
  void writeFields(SeparatorList& list, bool minimize, int32_t& counter, const SegmentWrite& write);
#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
  // Throws unless writing the fields into `general`, the list as it stood before the header, gives
  // what the header written as read gave from `from` on in `list`, and leaves the same separators.
  void checkHeaderWrite(const SeparatorList& list, size_t from, SeparatorList& general, int32_t counter);
#endif
  void parseFieldValue(int index, const ParserToken& token, RecordedErrors& errors, ValidationLocation& location);
  // The length a raw binary field takes from the sibling its definition names.
  int32_t linkedLength(int index);
};

}  // namespace vantrelia
