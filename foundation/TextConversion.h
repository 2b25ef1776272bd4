#pragma once
// Crossings between narrow names and wide text. There is no code page: these are the engine's
// fixed rules, not a character-set conversion.

#include <string>
#include <string_view>

namespace vantrelia {

// Each 16-bit unit cut to its low byte.
std::string narrow(std::u16string_view text);

// Each byte sign-extended to 16 bits, as the definition file reader widens its byte texts:
// byte 0xE9 becomes unit 0xFFE9.
std::u16string widenSigned(std::string_view text);

// Each byte zero-extended, for ASCII names and messages built inside the engine.
std::u16string widen(std::string_view text);

}  // namespace vantrelia
