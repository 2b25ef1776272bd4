#pragma once
// Texts of the parsing subsystem, as a host sees them.

namespace vantrelia::messages {

inline constexpr const char* kInvalidSeparator = "Invalid separator specified";
inline constexpr const char* kInvalidCharactersInField = "Invalid characters in field";

}  // namespace vantrelia::messages
