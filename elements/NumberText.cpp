#include "elements/NumberText.h"

#include <charconv>
#include <cmath>
#include <string>

namespace vantrelia {

namespace {

// The text in bytes for the conversions. A unit that no number may contain becomes a byte that
// stops them, so that nothing beyond it can be overlooked (a zero unit among them).
std::string numberBytes(std::u16string_view text) {
  std::string bytes;
  bytes.reserve(text.size());
  for (const char16_t unit : text) bytes += unit > 0 && unit < 0x80 ? static_cast<char>(unit) : '\x01';
  return bytes;
}

bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }

// Where the number of `bytes` begins: behind white space and a "+", which the C library's
// conversions allow and std::from_chars doesn't. Null when nothing but white space stands there:
// like the C library's, the conversion then takes nothing, and only an empty text is whole.
const char* numberStart(const std::string& bytes) {
  const char* p = bytes.data();
  const char* end = p + bytes.size();
  while (p != end && isSpace(*p)) ++p;
  if (p == end) return bytes.empty() ? p : nullptr;
  if (*p == '+' && p + 1 != end && p[1] != '-' && p[1] != '+') ++p;
  return p;
}

// The whole of `text` read by std::from_chars with `form`; an empty text is 0.
template <typename Number, typename... Form>
bool readWhole(std::u16string_view text, Number& number, Form... form) {
  const std::string bytes = numberBytes(text);
  const char* start = numberStart(bytes);
  const char* end = bytes.data() + bytes.size();
  if (!start) return false;
  Number value{};
  if (start != end) {
    const auto [stop, error] = std::from_chars(start, end, value, form...);
    if (error != std::errc() || stop != end) return false;
  }
  number = value;
  return true;
}

// Letters that no decimal number has: all but the exponent's "e", as in spelled-out infinities
// and not-a-number.
bool hasLetters(std::u16string_view text) {
  for (const char16_t c : text)
    if ((c >= u'a' && c <= u'z' && c != u'e') || (c >= u'A' && c <= u'Z' && c != u'E')) return true;
  return false;
}

}  // namespace

bool NumberText::readLong(std::u16string_view text, int64_t& number) { return readWhole(text, number, 10); }

bool NumberText::readDouble(std::u16string_view text, double& number) {
  double value = 0.0;
  if (hasLetters(text) || !readWhole(text, value, std::chars_format::general) || !std::isfinite(value)) return false;
  number = value;
  return true;
}

}  // namespace vantrelia
