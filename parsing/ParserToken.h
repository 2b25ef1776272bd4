#pragma once
// What a read of the stream hands back: the characters of one token, either as a view into the
// stream's own text or as a copy, and the separator that ended it.

#include <cstdint>
#include <string>
#include <string_view>

namespace vantrelia {

struct ParserToken {
  // Set by the caller to ask for a view instead of a copy. A read clears it when it had to build
  // text of its own (replacements, escapes), so look at it after the read, not before.
  bool useView = false;
  // The token's characters while useView is clear.
  std::u16string text;
  // The token's characters in the stream's text while useView is set.
  const char16_t* viewStart = nullptr;
  int32_t viewLength = 0;
  // The ESeparatorType that ended the token, or -1 when it ended otherwise (end of text, maximum
  // length, a pair of line-end characters read as data).
  int32_t separator = -1;

  // The token's characters, whichever form the read left them in.
  std::u16string_view characters() const {
    return useView ? std::u16string_view(viewStart, static_cast<size_t>(viewLength))
                   : std::u16string_view(text);
  }
};

}  // namespace vantrelia
