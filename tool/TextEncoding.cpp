#include "tool/TextEncoding.h"

#include "foundation/Utf8.h"

namespace vantrelia::tool {

namespace {

bool startsWith(std::string_view bytes, std::string_view prefix) { return bytes.substr(0, prefix.size()) == prefix; }

// The length of the UTF-8 character at the start of `bytes` and its code point, or 0 when the bytes
// aren't one.
size_t utf8Character(std::string_view bytes, char32_t& code) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned char lead = byte(0);
  size_t length;
  if (lead < 0x80) {
    code = lead;
    return 1;
  }
  if (lead >= 0xC2 && lead <= 0xDF) length = 2, code = lead & 0x1F;
  else if (lead >= 0xE0 && lead <= 0xEF) length = 3, code = lead & 0x0F;
  else if (lead >= 0xF0 && lead <= 0xF4) length = 4, code = lead & 0x07;
  else return 0;
  if (bytes.size() < length) return 0;
  for (size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0) != 0x80) return 0;
    code = (code << 6) | (byte(i) & 0x3F);
  }
  const bool overlong = (length == 3 && code < 0x800) || (length == 4 && code < 0x10000);
  if (overlong || code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return 0;
  return length;
}

// Bytes that aren't UTF-8 inside a text taken as UTF-8 become lone low surrogates that stand for
// them, and go out as the same bytes: nothing is lost.
constexpr char16_t kRawByteBase = 0xDC00;

}  // namespace

TextEncoding TextEncoding::detect(std::string_view bytes) {
  if (startsWith(bytes, "\xEF\xBB\xBF")) return TextEncoding(Utf8, 3);
  if (startsWith(bytes, "\xFF\xFE")) return TextEncoding(Utf16LE, 2);
  if (startsWith(bytes, "\xFE\xFF")) return TextEncoding(Utf16BE, 2);
  return TextEncoding(utf8ToWide(bytes) ? Utf8 : Latin1);
}

const char* TextEncoding::name() const {
  switch (kind) {
    case Utf8: return bomLength ? "UTF-8 with BOM" : "UTF-8";
    case Latin1: return "Latin-1";
    case Utf16LE: return "UTF-16LE";
    case Utf16BE: return "UTF-16BE";
  }
  return "";
}

std::u16string TextEncoding::decode(std::string_view all, OffsetMap& offsets) const {
  const std::string_view bytes = all.substr(bomLength);
  std::u16string text;
  text.reserve(bytes.size());
  if (kind == Latin1) {
    for (const char c : bytes) text.push_back(static_cast<unsigned char>(c));
    offsets.settle(0, static_cast<int64_t>(bomLength));
    return text;
  }
  if (kind == Utf16LE || kind == Utf16BE) {
    const int high = kind == Utf16LE ? 1 : 0;
    for (size_t i = 0; i + 1 < bytes.size(); i += 2)
      text.push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i + high]) << 8 |
                                           static_cast<unsigned char>(bytes[i + 1 - high])));
    // An odd last byte is kept as a unit of its own rather than dropped.
    if (bytes.size() % 2) text.push_back(kRawByteBase + static_cast<unsigned char>(bytes.back()));
    offsets.setScale(2);
    offsets.settle(0, static_cast<int64_t>(bomLength));
    return text;
  }
  offsets.settle(0, static_cast<int64_t>(bomLength));
  for (size_t at = 0; at < bytes.size();) {
    char32_t code = 0;
    const size_t length = utf8Character(bytes.substr(at), code);
    if (length == 0) {
      text.push_back(kRawByteBase + static_cast<unsigned char>(bytes[at]));
      ++at;
    } else if (code >= 0x10000) {
      text.push_back(static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10)));
      text.push_back(static_cast<char16_t>(0xDC00 + ((code - 0x10000) & 0x3FF)));
      at += length;
    } else {
      text.push_back(static_cast<char16_t>(code));
      at += length;
    }
    offsets.settle(static_cast<int64_t>(text.size()), static_cast<int64_t>(bomLength + at) - static_cast<int64_t>(text.size()));
  }
  return text;
}

std::string TextEncoding::encode(std::u16string_view text) const {
  std::string bytes;
  bytes.reserve(text.size());
  const auto isRawByte = [](char16_t unit) { return unit >= kRawByteBase + 0x80 && unit <= kRawByteBase + 0xFF; };
  switch (kind) {
    case Latin1:
      for (const char16_t unit : text) {
        if (unit <= 0xFF) bytes.push_back(static_cast<char>(unit));
        else if (isRawByte(unit)) bytes.push_back(static_cast<char>(unit - kRawByteBase));
        else bytes.push_back('?');  // Latin-1 has no such character
      }
      return bytes;
    case Utf16LE:
    case Utf16BE:
      for (const char16_t unit : text) {
        const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
        if (kind == Utf16LE) bytes += {low, high};
        else bytes += {high, low};
      }
      return bytes;
    case Utf8: {
      size_t start = 0;
      for (size_t i = 0; i <= text.size(); ++i) {
        const bool raw = i < text.size() && isRawByte(text[i]) && !(i > 0 && text[i - 1] >= 0xD800 && text[i - 1] < 0xDC00);
        if (i < text.size() && !raw) continue;
        bytes += wideToUtf8(text.substr(start, i - start));
        if (raw) bytes.push_back(static_cast<char>(text[i] - kRawByteBase));
        start = i + 1;
      }
      return bytes;
    }
  }
  return bytes;
}

}  // namespace vantrelia::tool
