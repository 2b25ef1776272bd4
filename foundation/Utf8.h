#pragma once
// Between the UTF-8 of sources and terminals and the engine's 16-bit units.

#include <optional>
#include <string>
#include <string_view>

namespace vantrelia {

// Empty when the text isn't valid UTF-8.
std::optional<std::u16string> utf8ToWide(std::string_view text);
// Unpaired surrogates, which a 16-bit text may hold, come out as U+FFFD.
std::string wideToUtf8(std::u16string_view text);

}  // namespace vantrelia
