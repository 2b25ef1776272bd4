#pragma once
// The escapes that definition texts may carry: "\xHH" and "\uHHHH" stand for the one character of
// that code. Separators and default values of fields are written this way in definition files, so
// that control characters and characters beyond a byte survive the byte texts of the file.

#include <string>
#include <string_view>

#include "foundation/TRVString.h"

namespace vantrelia {

// Replaces each "\xHH" and "\uHHHH" (hexadecimal digits of either case; the "x" and "u" must be
// small) by the character of that code. A backslash followed by anything else stays as it is, and
// a character produced by an escape is never read again as the start of one. Expansion stops at
// the first backslash that has too few characters behind it for its escape, so "ab\x0" stays.
// The result may hold a zero character ("\u0000").
std::u16string expandEscapes(std::u16string_view text);

// The expansion as a definition record keeps it: a zero character produced by "\u0000" or "\x00"
// ends the text, just as the file's own texts end at their first zero.
kestrel::TRVString<char16_t> expandEscapesToText(std::u16string_view text);

}  // namespace vantrelia
