#include "elements/BinaryEncoding.h"

#include <algorithm>
#include <iterator>

#include <boost/algorithm/hex.hpp>

namespace vantrelia {

namespace {

constexpr char kBase64Digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
// Bytes per uuencoded line; a multiple of three, so that only the very last group is ever short.
constexpr size_t kUuencodeLineBytes = 45;

// Base64 and uuencode both cut three bytes into four 6-bit digits. Bytes past the end count as 0.
uint32_t groupAt(std::span<const unsigned char> bytes, size_t at) {
  uint32_t group = 0;
  for (size_t k = at; k < at + 3; ++k) group = group << 8 | (k < bytes.size() ? bytes[k] : 0);
  return group;
}

unsigned digitOf(uint32_t group, int k) { return (group >> (18 - 6 * k)) & 0x3F; }

void appendBytes(uint32_t group, size_t count, std::vector<unsigned char>& bytes) {
  for (size_t k = 0; k < count; ++k) bytes.push_back(static_cast<unsigned char>(group >> (16 - 8 * k)));
}

void encodeBase64(std::span<const unsigned char> bytes, std::u16string& text) {
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t at = 0; at < bytes.size(); at += 3) {
    // A short last group of n bytes keeps n + 1 digits; "=" fills it up to four.
    const size_t count = std::min<size_t>(3, bytes.size() - at);
    const uint32_t group = groupAt(bytes, at);
    for (int k = 0; k < 4; ++k) text += static_cast<size_t>(k) <= count ? kBase64Digits[digitOf(group, k)] : u'=';
  }
}

int base64Value(char16_t c) {
  if (c >= u'A' && c <= u'Z') return c - u'A';
  if (c >= u'a' && c <= u'z') return c - u'a' + 26;
  if (c >= u'0' && c <= u'9') return c - u'0' + 52;
  if (c == u'+') return 62;
  if (c == u'/') return 63;
  return -1;
}

// Strict, as the encoder writes it: whole groups of four, "=" only at the end of the last group
// and at most two of them, and no character outside the alphabet (line breaks and blanks
// included). Bits below the last byte of a short group are ignored.
bool decodeBase64(std::u16string_view text, std::vector<unsigned char>& bytes) {
  if (text.size() % 4 != 0) return false;
  bytes.reserve(text.size() / 4 * 3);
  for (size_t at = 0; at < text.size(); at += 4) {
    size_t digits = 4;
    if (at + 4 == text.size())
      while (digits > 2 && text[at + digits - 1] == u'=') --digits;
    uint32_t group = 0;
    for (size_t k = 0; k < 4; ++k) {
      const int value = k < digits ? base64Value(text[at + k]) : 0;
      if (value < 0) return false;
      group = group << 6 | static_cast<uint32_t>(value);
    }
    appendBytes(group, digits - 1, bytes);
  }
  return true;
}

// A 6-bit digit, or a line's byte count, as a character. 0 is written as "`" rather than a blank,
// which mail and editors would strip from the line end. A count never exceeds a line's 45 bytes.
char16_t uuCharacter(size_t value) { return static_cast<char16_t>(value == 0 ? 96 : 32 + value); }

int uuValue(char16_t c) { return c >= 32 && c <= 96 ? (c - 32) & 0x3F : -1; }

void encodeUuencode(std::span<const unsigned char> bytes, std::u16string& text) {
  const size_t lines = (bytes.size() + kUuencodeLineBytes - 1) / kUuencodeLineBytes;
  text.reserve(lines * (kUuencodeLineBytes / 3 * 4 + 3));
  for (size_t line = 0; line < bytes.size(); line += kUuencodeLineBytes) {
    const size_t end = std::min(bytes.size(), line + kUuencodeLineBytes);
    text += uuCharacter(end - line);
    for (size_t at = line; at < end; at += 3) {
      const uint32_t group = groupAt(bytes, at);
      for (int k = 0; k < 4; ++k) text += uuCharacter(digitOf(group, k));
    }
    text += u"\r\n";
  }
}

// Each line is taken at its word: its length character says how many bytes follow, and exactly
// the whole groups of four for that many must be there, every character in " " to "`". The line
// then ends with CR LF, a bare LF, or the end of the text; anything else behind the groups is
// refused. A line of count 0 (a closing "`" line) adds nothing.
bool decodeUuencode(std::u16string_view text, std::vector<unsigned char>& bytes) {
  size_t at = 0;
  while (at < text.size()) {
    const int count = uuValue(text[at++]);
    if (count < 0) return false;
    const size_t groups = (static_cast<size_t>(count) + 2) / 3;
    if (text.size() - at < groups * 4) return false;
    for (size_t g = 0; g < groups; ++g) {
      uint32_t group = 0;
      for (int k = 0; k < 4; ++k) {
        const int value = uuValue(text[at++]);
        if (value < 0) return false;
        group = group << 6 | static_cast<uint32_t>(value);
      }
      appendBytes(group, std::min<size_t>(3, count - g * 3), bytes);
    }
    if (at < text.size() && text[at] == u'\r') ++at;
    if (at < text.size() && text[at++] != u'\n') return false;
  }
  return true;
}

void encodeHexadecimal(std::span<const unsigned char> bytes, std::u16string& text) {
  text.reserve(bytes.size() * 2);
  boost::algorithm::hex(bytes.begin(), bytes.end(), std::back_inserter(text));
}

// Pairs of hex digits of either case; an odd last character is dropped unread. A pair must be
// two digits: the blank or sign that strtol would also take is never written by an encoder, and
// "-1" would come out as a byte. unhex looks only at the low byte of each unit, so wide
// characters are refused before it sees them.
bool decodeHexadecimal(std::u16string_view text, std::vector<unsigned char>& bytes) {
  const std::u16string_view pairs = text.substr(0, text.size() & ~size_t{1});
  if (std::any_of(pairs.begin(), pairs.end(), [](char16_t c) { return c > 0x7F; })) return false;
  bytes.reserve(pairs.size() / 2);
  try {
    boost::algorithm::unhex(pairs.begin(), pairs.end(), std::back_inserter(bytes));
  } catch (const boost::algorithm::hex_decode_error&) {
    return false;
  }
  return true;
}

}  // namespace

bool BinaryEncoding::encode(int32_t dataType, std::span<const unsigned char> bytes, std::u16string& text) {
  text.clear();
  if (bytes.empty()) return false;
  switch (dataType) {
    case kBase64: encodeBase64(bytes, text); return true;
    case kUuencode: encodeUuencode(bytes, text); return true;
    case kHexadecimal: encodeHexadecimal(bytes, text); return true;
    default: return false;
  }
}

bool BinaryEncoding::decode(int32_t dataType, std::u16string_view text, std::vector<unsigned char>& bytes) {
  bytes.clear();
  bool wellFormed = false;
  switch (dataType) {
    case kBase64: wellFormed = decodeBase64(text, bytes); break;
    case kUuencode: wellFormed = decodeUuencode(text, bytes); break;
    case kHexadecimal: wellFormed = decodeHexadecimal(text, bytes); break;
    default: break;
  }
  // Like an empty block on the way out, text that stands for no bytes at all is a failure.
  if (wellFormed && !bytes.empty()) return true;
  bytes.clear();
  return false;
}

}  // namespace vantrelia
