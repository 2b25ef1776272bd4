#pragma once
// The ordinary segment: a tag, then its fields between field separators.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

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

 private:
  // Texts of variable fields whose key comes after them, by index, read once the segment is.
  using DeferredFields = std::vector<std::pair<int, std::u16string>>;

  // The fields from `firstField` on, behind the opening of the segment, then its end.
  bool parseFieldsFrom(int firstField, ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                       ValidationLocation& location, uint32_t endMask, bool lastFieldFilled);
  // Cuts field `index` from the stream by its kind and hands it its text.
  void parseField(int index, ParserStream& stream, RecordedErrors& errors, ValidationLocation& location,
                  bool useGeneric, bool& lastFieldFilled, DeferredFields& deferred);
  // The fields behind the tag, one by one, as beginSegmentWrite left the list.
  void writeFields(SeparatorList& list, bool minimize, int32_t& counter, const SegmentWrite& write);
  void readDeferredFields(const DeferredFields& deferred, RecordedErrors& errors, ValidationLocation& location);
  void parseFieldValue(int index, const ParserToken& token, RecordedErrors& errors, ValidationLocation& location);
  // The length a raw binary field takes from the sibling its definition names.
  int32_t linkedLength(int index);
};

}  // namespace vantrelia
