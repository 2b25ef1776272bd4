#pragma once
// printf-style formatting of the engine's messages, narrow and wide.

#include <cstdarg>
#include <string>

namespace vantrelia {

std::string formatMessage(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string formatMessageV(const char* format, va_list args);

// The wide form takes the conversions of printf with these string rules: "%s" takes a wide
// (char16_t) zero-terminated text, "%S" a narrow one; "%c" a wide unit passed as int.
std::u16string formatWide(const char16_t* format, ...);
std::u16string formatWideV(const char16_t* format, va_list args);

}  // namespace vantrelia
