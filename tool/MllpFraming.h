#pragma once
// HL7 messages as captured from an interface: each framed by a start byte (0x0B) before it and an
// end byte and CR (0x1C 0x0D) after it. The frames are taken off before parsing and put back around
// each message written.

#include <string>
#include <string_view>

#include "tool/OffsetMap.h"

namespace vantrelia::tool {

class MllpFraming {
 public:
  // Framed when the text starts with the start byte.
  static MllpFraming detect(std::u16string_view text);

  std::u16string strip(std::u16string_view text, OffsetMap& offsets) const;
  std::u16string frame(std::u16string_view message) const;
  bool isFramed() const { return framed; }

 private:
  explicit MllpFraming(bool framed) : framed(framed) {}
  bool framed;
};

}  // namespace vantrelia::tool
