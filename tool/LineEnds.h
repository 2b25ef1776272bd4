#pragma once
// The line ends of a message file, which the definitions don't know: HL7 segments ending in LF or
// CR LF instead of CR, or X12 and EDIFACT segment terminators followed by a line break. They are
// taken out before parsing and put back when writing, so that the file comes back as it was.

#include <string>
#include <string_view>

#include "tool/OffsetMap.h"

namespace vantrelia::tool {

class LineEnds {
 public:
  // From the first line break of the text and the segment terminator its header declares.
  static LineEnds detect(std::u16string_view text);

  // The text as the definitions expect it; `offsets` takes each position back to the text given.
  std::u16string strip(std::u16string_view text, OffsetMap& offsets) const;
  // Written text with the file's line ends again.
  std::u16string restore(std::u16string_view text) const;
  // Line breaks after the last segment of a file that has none after the others: taken off the
  // text and written once at the end.
  const std::u16string& getTrailing() const { return trailing; }
  const char* name() const;

 private:
  enum Style {
    // The segment terminator is the line break, as the definitions have it.
    AsDefined,
    // An HL7 segment ends in this break instead of CR.
    InsteadOfCr,
    // This break follows each segment terminator.
    AfterTerminator,
  };
  LineEnds(Style style, std::u16string lineBreak, char16_t terminator)
      : style(style), lineBreak(std::move(lineBreak)), terminator(terminator) {}

  Style style;
  std::u16string lineBreak;
  char16_t terminator;
  std::u16string trailing;
};

}  // namespace vantrelia::tool
