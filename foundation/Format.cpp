#include "foundation/Format.h"

#include <cstdio>
#include <cstring>
#include <string_view>

#include "foundation/TextConversion.h"

namespace vantrelia {

std::string formatMessageV(const char* format, va_list args) {
  va_list measure;
  va_copy(measure, args);
  const int size = std::vsnprintf(nullptr, 0, format, measure);
  va_end(measure);
  if (size <= 0) return {};
  std::string result(static_cast<size_t>(size) + 1, '\0');
  std::vsnprintf(result.data(), result.size(), format, args);
  result.resize(static_cast<size_t>(size));
  return result;
}

std::string formatMessage(const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::string result = formatMessageV(format, args);
  va_end(args);
  return result;
}

namespace {

// One conversion of a wide format, taken apart so that numbers can go through the narrow printf.
struct Conversion {
  std::string flags;
  int width = -1;
  int precision = -1;
  std::string length;  // h, hh, l, ll, z, j, t, L
  char kind = 0;
};

std::u16string_view wideArg(const char16_t* text, int precision) {
  if (!text) return u"(null)";
  std::u16string_view view(text);
  if (precision >= 0 && static_cast<size_t>(precision) < view.size()) view = view.substr(0, precision);
  return view;
}

void pad(std::u16string& out, std::u16string_view text, const Conversion& c) {
  const size_t width = c.width > 0 ? static_cast<size_t>(c.width) : 0;
  const size_t fill = width > text.size() ? width - text.size() : 0;
  const bool left = c.flags.find('-') != std::string::npos;
  if (!left) out.append(fill, u' ');
  out.append(text);
  if (left) out.append(fill, u' ');
}

std::string narrowFormat(const Conversion& c, bool withLength) {
  std::string printfFormat = "%" + c.flags;
  if (c.width >= 0) printfFormat += std::to_string(c.width);
  if (c.precision >= 0) printfFormat += "." + std::to_string(c.precision);
  if (withLength) printfFormat += c.length;
  printfFormat += c.kind;
  return printfFormat;
}

template <class V>
void appendNumber(std::u16string& out, const Conversion& c, V value) {
  const std::string printfFormat = narrowFormat(c, true);
  // Width and precision come from the format, so the text can be of any length: measure first.
  char buffer[128];
  const int n = std::snprintf(buffer, sizeof buffer, printfFormat.c_str(), value);
  if (n <= 0) return;
  if (static_cast<size_t>(n) < sizeof buffer) {
    out += widen(std::string_view(buffer, static_cast<size_t>(n)));
    return;
  }
  std::string large(static_cast<size_t>(n) + 1, '\0');
  std::snprintf(large.data(), large.size(), printfFormat.c_str(), value);
  large.resize(static_cast<size_t>(n));
  out += widen(large);
}

}  // namespace

std::u16string formatWideV(const char16_t* format, va_list args) {
  std::u16string out;
  if (!format) return out;
  for (const char16_t* p = format; *p;) {
    if (*p != u'%') {
      out += *p++;
      continue;
    }
    ++p;
    if (*p == u'%') {
      out += u'%';
      ++p;
      continue;
    }
    Conversion c;
    while (*p && std::strchr("-+ #0", static_cast<char>(*p)) && *p < 0x80) c.flags += static_cast<char>(*p++);
    if (*p == u'*') {
      c.width = va_arg(args, int);
      if (c.width < 0) {
        c.flags += '-';
        c.width = -c.width;
      }
      ++p;
    } else {
      while (*p >= u'0' && *p <= u'9') c.width = (c.width < 0 ? 0 : c.width * 10) + (*p++ - u'0');
    }
    if (*p == u'.') {
      ++p;
      c.precision = 0;
      if (*p == u'*') {
        c.precision = va_arg(args, int);
        ++p;
      } else {
        while (*p >= u'0' && *p <= u'9') c.precision = c.precision * 10 + (*p++ - u'0');
      }
    }
    while (*p && std::strchr("hlzjtL", static_cast<char>(*p)) && *p < 0x80) c.length += static_cast<char>(*p++);
    if (!*p) break;
    c.kind = static_cast<char>(*p < 0x80 ? *p : '?');
    ++p;
    switch (c.kind) {
      case 'd':
      case 'i':
        if (c.length == "ll" || c.length == "j") appendNumber(out, c, va_arg(args, long long));
        else if (c.length == "l" || c.length == "z" || c.length == "t") appendNumber(out, c, va_arg(args, long));
        else appendNumber(out, c, va_arg(args, int));
        break;
      case 'u':
      case 'x':
      case 'X':
      case 'o':
        if (c.length == "ll" || c.length == "j") appendNumber(out, c, va_arg(args, unsigned long long));
        else if (c.length == "l" || c.length == "z" || c.length == "t") appendNumber(out, c, va_arg(args, unsigned long));
        else appendNumber(out, c, va_arg(args, unsigned int));
        break;
      case 'e':
      case 'E':
      case 'f':
      case 'F':
      case 'g':
      case 'G':
        if (c.length == "L") appendNumber(out, c, va_arg(args, long double));
        else {
          Conversion plain = c;
          plain.length.clear();
          appendNumber(out, plain, va_arg(args, double));
        }
        break;
      case 'c': {
        const char16_t unit = static_cast<char16_t>(va_arg(args, int));
        pad(out, std::u16string_view(&unit, 1), c);
        break;
      }
      case 's':
        pad(out, wideArg(va_arg(args, const char16_t*), c.precision), c);
        break;
      case 'S': {
        const char* text = va_arg(args, const char*);
        std::string_view view = text ? std::string_view(text) : std::string_view("(null)");
        if (c.precision >= 0 && static_cast<size_t>(c.precision) < view.size()) view = view.substr(0, c.precision);
        pad(out, widen(view), c);
        break;
      }
      default:
        // An unknown conversion is written as it stood, so a bad format shows in the output.
        out += u'%';
        out += widen(c.flags);
        out += static_cast<char16_t>(c.kind);
        break;
    }
  }
  return out;
}

std::u16string formatWide(const char16_t* format, ...) {
  va_list args;
  va_start(args, format);
  std::u16string result = formatWideV(format, args);
  va_end(args);
  return result;
}

}  // namespace vantrelia
