#include "elements/SimpleNumberFormatter.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "elements/NumberText.h"

namespace vantrelia {

namespace {

constexpr size_t kNone = std::u16string::npos;

bool isDigit(char16_t c) { return c >= u'0' && c <= u'9'; }

// A digit that carries the sign as well, the way zoned numbers overpunch their last digit.
char16_t signedDigit(char16_t digit, bool negative) {
  if (!isDigit(digit)) return digit;
  if (digit == u'0') return negative ? u'}' : u'{';
  return static_cast<char16_t>((negative ? u'J' : u'A') + (digit - u'1'));
}

// The other way, in place: the digit that a sign-carrying character stands for. Flips `negative`
// for a negative one; any other character stays.
void readSignedDigit(char16_t& c, bool& negative) {
  if (c == u'{' || c == u'}') {
    negative ^= c == u'}';
    c = u'0';
  } else if (c >= u'A' && c <= u'I') {
    c = static_cast<char16_t>(u'1' + (c - u'A'));
  } else if (c >= u'J' && c <= u'R') {
    c = static_cast<char16_t>(u'1' + (c - u'J'));
    negative = !negative;
  }
}

// The digits of `value` with `fraction` places behind the point, rounded as formatted output
// rounds, and zeros in front up to `width` characters. Independent of the host's locale.
std::u16string digitText(double value, size_t width, size_t fraction) {
  std::string bytes(330 + fraction, '\0');
  const auto result = fraction > 0 ? std::to_chars(bytes.data(), bytes.data() + bytes.size(), value,
                                                   std::chars_format::fixed, static_cast<int>(fraction))
                                   : std::to_chars(bytes.data(), bytes.data() + bytes.size(), value,
                                                   std::chars_format::fixed, 0);
  bytes.resize(static_cast<size_t>(result.ptr - bytes.data()));
  std::u16string text(bytes.begin(), bytes.end());
  if (text.size() < width) text.insert(0, width - text.size(), u'0');
  return text;
}

}  // namespace

SimpleNumberFormatter::SimpleNumberFormatter(std::u16string_view section) {
  format.reserve(section.size());
  for (const char16_t c : section) format.push_back({c, false});
  // A backslash escapes the character behind it, a backslash too, which then escapes nothing.
  for (size_t k = 0; k + 1 < format.size(); ++k) {
    if (is(k, u'\\')) format[++k].escaped = true;
  }
  decimalPos = std::min(find(u'.'), find(u'v'));
  // Commas right before the decimal mark (or the end) scale by a thousand each.
  while (decimalPos > 0 && is(decimalPos - 1, u',')) {
    erase(--decimalPos);
    multiplier *= 1000.0;
  }
  // Any other comma asks for grouping; those in the integer part go, those behind it are literals.
  if (find(u',') != format.size()) {
    hasThousands = true;
    for (size_t k = 0; k < decimalPos;) {
      if (is(k, u',')) {
        erase(k);
        --decimalPos;
      } else {
        ++k;
      }
    }
  }
  if (find(u'%') != format.size()) multiplier /= 100.0;
  // Once a place always shows a digit, so do the places between it and the decimal mark...
  const size_t first = std::min(find(u'0'), find(u'!'));
  for (size_t k = first; k < decimalPos; ++k)
    if (is(k, u'#')) format[k].character = u'0';
  // ...and behind the mark up to the last such place; implied decimals always show.
  size_t last = kNone;
  for (size_t k = 0; k < format.size(); ++k)
    if (is(k, u'0') || is(k, u'!')) last = k;
  if (is(decimalPos, u'v')) last = format.size() - 1;
  if (last != kNone && last > decimalPos) {
    for (size_t k = decimalPos + 1; k <= last; ++k)
      if (is(k, u'#')) format[k].character = u'0';
  }
  for (size_t k = 0; k < format.size(); ++k) {
    if (!isDigitPlace(k)) continue;
    ++digitPlaces;
    if (k > decimalPos) ++fractionPlaces;
  }
}

SimpleNumberFormatter::~SimpleNumberFormatter() = default;

size_t SimpleNumberFormatter::find(char16_t c, size_t from) const {
  for (size_t k = from; k < format.size(); ++k)
    if (is(k, c)) return k;
  return format.size();
}

std::u16string SimpleNumberFormatter::getFormat() const {
  std::u16string text;
  for (const Place& place : format) text += place.character;
  return text;
}

size_t SimpleNumberFormatter::copyLiteral(size_t k, std::u16string& out) const {
  if (isEscapePair(k)) {
    out += format[k + 1].character;
    return k + 2;
  }
  out += format[k].character;
  return k + 1;
}

bool SimpleNumberFormatter::takeLiterals(std::u16string& t, bool& negative) const {
  size_t i = 0;
  size_t j = 0;
  for (;;) {
    size_t next = j;
    while (next < format.size() && (is(next, u'0') || is(next, u'#'))) ++next;
    if (next >= format.size()) return true;
    if (j != next) {
      // A run of digits; how many there are isn't held against the places. Grouping commas go
      // while the run lies in the integer part.
      while (i < t.size()) {
        if (isDigit(t[i])) {
          ++i;
        } else if (t[i] == u',' && j <= decimalPos) {
          t.erase(i, 1);
        } else {
          break;
        }
      }
      j = next;
    }
    if (is(j, u'!')) {
      if (i < t.size()) readSignedDigit(t[i], negative);
      ++i;
      ++j;
    } else if (is(j, u'.') || is(j, u'v')) {
      ++i;
      ++j;
    } else {
      const size_t start = j;
      while (i < t.size() && j < format.size() && !isDigitPlace(j) && !is(j, u'.') && !is(j, u'v')) {
        if (isEscapePair(j) && format[j + 1].character == t[i]) {
          j += 2;
        } else if (!isEscapePair(j) && format[j].character == t[i]) {
          j += 1;
        } else {
          break;
        }
        t.erase(i, 1);
      }
      if (j == start) return false;
    }
  }
}

bool SimpleNumberFormatter::parse(std::u16string_view text) {
  std::u16string t(text);
  bool negative = false;
  if (!t.empty() && t.front() == u'-' && !is(0, u'-')) {
    negative = true;
    t.erase(0, 1);
  }
  // The implied point goes into the text where the picture has it, counted from the end.
  if (is(decimalPos, u'v') && fractionPlaces != 0) {
    size_t behind = 0;
    for (size_t k = decimalPos + 1; k < format.size(); ++k)
      if (!is(k, u'\\')) ++behind;
    if (t.size() < behind) t.insert(0, behind - t.size(), u'0');
    t.insert(t.size() - behind, 1, u'.');
  }
  if (!takeLiterals(t, negative)) return false;
  double converted = 0.0;
  if (fractionPlaces == 0) {
    int64_t whole = 0;
    if (!NumberText::readLong(t, whole)) return false;
    converted = static_cast<double>(whole);
  } else if (!NumberText::readDouble(t, converted)) {
    return false;
  }
  number = multiplier * converted;
  if (negative) number = -number;
  return true;
}

std::u16string SimpleNumberFormatter::getText() {
  double v = number / multiplier;
  bool negative = v < 0;
  v = std::fabs(v);
  // Only a picture that scales beyond the range of a double gets here without a number.
  if (!std::isfinite(v)) v = 0.0;

  std::u16string digits = fractionPlaces > 0 ? digitText(v, digitPlaces + 1, fractionPlaces)
                                              : digitText(v, digitPlaces, 0);
  const size_t firstNonZero = digits.find_first_not_of(u'0');
  if (firstNonZero != kNone) {
    digits.erase(0, firstNonZero);
    if (fractionPlaces > 0) digits.erase(digits.find_last_not_of(u'0') + 1);
  }
  const size_t point = digits.find(u'.');
  const size_t allDigits = digits.size() - (point == kNone ? 0 : 1);
  const size_t fractionDigits = point == kNone ? 0 : digits.size() - point - 1;

  std::u16string out;
  size_t p = 0;  // place in the picture
  while (p < format.size() && !isDigitPlace(p) && !is(p, u'.') && !is(p, u'v')) p = copyLiteral(p, out);
  if (p == format.size()) return out;

  size_t q = 0;  // place in the digits
  const auto group = [&](size_t placesLeft) {
    if (hasThousands && placesLeft != 1 && placesLeft % 3 == 1) out += u',';
  };
  const auto nextDigit = [&]() -> char16_t { return q < digits.size() ? digits[q++] : u'\0'; };
  // Integer digits beyond the picture's places go out first: a number is never cut.
  size_t integerDigits = allDigits - fractionDigits;
  const size_t integerPlaces = digitPlaces - fractionPlaces;
  while (integerDigits > integerPlaces) {
    out += nextDigit();
    group(integerDigits);
    --integerDigits;
  }
  size_t left = integerPlaces;
  while (left > integerDigits && p < format.size()) {
    if (is(p, u'#')) {
      --left;
      ++p;
    } else if (is(p, u'0') || is(p, u'!')) {
      out += is(p, u'0') ? u'0' : negative ? u'}' : u'{';
      group(left);
      --left;
      ++p;
    } else {
      p = copyLiteral(p, out);
    }
  }
  while (left > 0 && p < format.size()) {
    if (is(p, u'#') || is(p, u'0') || is(p, u'!')) {
      const char16_t digit = nextDigit();
      if (digit != u'\0' && is(p, u'!')) {
        out += signedDigit(digit, negative);
        negative = false;
      } else if (digit != u'\0') {
        out += digit;
      }
      group(left);
      --left;
      ++p;
    } else {
      p = copyLiteral(p, out);
    }
  }
  if (q < digits.size() && digits[q] == u'.') ++q;
  // The rest of the integer part goes out as it stands, a backslash and all.
  while (p < format.size() && !is(p, u'.') && !is(p, u'v')) out += format[p++].character;
  if (is(p, u'.')) {
    out += u'.';
    ++p;
  } else if (is(p, u'v')) {
    ++p;
  }
  size_t fractionLeft = fractionPlaces;
  while (p < format.size()) {
    if (fractionLeft > 0 && isDigitPlace(p)) {
      if (q < digits.size()) {
        const char16_t digit = digits[q++];
        if (is(p, u'!')) {
          out += signedDigit(digit, negative);
          negative = false;
        } else {
          out += digit;
        }
      } else if (is(p, u'0')) {
        out += u'0';
      } else if (is(p, u'!')) {
        out += negative ? u'}' : u'{';
        negative = false;
      }
      --fractionLeft;
      ++p;
    } else {
      p = copyLiteral(p, out);
    }
  }
  if (negative) out.insert(0, 1, u'-');
  return out;
}

}  // namespace vantrelia
