#pragma once
// A segment of name/value pairs: each field stands as its name, a separator and its value, in any
// order on the wire, and is written in definition order.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "elements/SegmentImplBase.h"

namespace vantrelia {

class NVPairSegmentImpl : public SegmentImplBase {
 public:
  using SegmentImplBase::SegmentImplBase;

  bool parseSegmentFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                          ValidationLocation& location) override;
  bool writeElement(SeparatorList& list, bool minimize, int32_t& counter) override;

 private:
  // The text between a name and its value; empty when names are told apart by themselves.
  std::u16string nameValueText() const;
  // Gives one pair's token to the field it names.
  void parseFieldValue(std::u16string_view token, RecordedErrors& errors, ValidationLocation& location);
  // The field of that name, or null after reporting a name the definition doesn't know.
  FieldBase* namedField(std::u16string_view name, RecordedErrors& errors, ValidationLocation& location);
};

}  // namespace vantrelia
