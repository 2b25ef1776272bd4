#include "definitions/EscapeExpansion.h"

#include <optional>

namespace vantrelia {

namespace {

std::optional<char16_t> hexDigit(char16_t unit) {
  if (unit >= u'0' && unit <= u'9') return static_cast<char16_t>(unit - u'0');
  if (unit >= u'a' && unit <= u'f') return static_cast<char16_t>(unit - u'a' + 10);
  if (unit >= u'A' && unit <= u'F') return static_cast<char16_t>(unit - u'A' + 10);
  return std::nullopt;
}

// The code of `digits` hexadecimal digits at `from`, or nothing if one of them isn't a digit.
std::optional<char16_t> hexCode(std::u16string_view text, size_t from, size_t digits) {
  char16_t code = 0;
  for (size_t i = from; i < from + digits; ++i) {
    const auto digit = hexDigit(text[i]);
    if (!digit) return std::nullopt;
    code = static_cast<char16_t>((code << 4) | *digit);
  }
  return code;
}

}  // namespace

std::u16string expandEscapes(std::u16string_view text) {
  std::u16string result;
  result.reserve(text.size());
  size_t at = 0;
  while (at < text.size()) {
    const size_t backslash = text.find(u'\\', at);
    if (backslash == std::u16string_view::npos) break;
    result.append(text.substr(at, backslash - at));
    at = backslash;

    const size_t left = text.size() - backslash;
    if (left < 2) break;
    const char16_t letter = text[backslash + 1];
    // Escape length including the backslash and its letter; 0 for a backslash that stays.
    size_t length = 0;
    if (letter == u'u') length = 6;
    else if (letter == u'x') length = 4;
    if (length != 0 && left < length) break;

    const auto code = length != 0 ? hexCode(text, backslash + 2, length - 2) : std::nullopt;
    if (code) {
      result += *code;
      at = backslash + length;
    } else {
      result += u'\\';
      at = backslash + 1;
    }
  }
  result.append(text.substr(at));
  return result;
}

kestrel::TRVString<char16_t> expandEscapesToText(std::u16string_view text) {
  // Built from the zero-terminated buffer on purpose: the copy ends at the first zero character.
  return kestrel::TRVString<char16_t>(expandEscapes(text).c_str());
}

}  // namespace vantrelia
