#pragma once
// Texts of the engine entry and its foundations, as a host sees them.

namespace vantrelia::messages {

inline constexpr const char* kIndexBelowZero = "Specified index %d is less than zero";
inline constexpr const char* kIndexTooHigh = "Specified index %d is too high";
inline constexpr const char* kInternalError = "Internal error";
inline constexpr const char* kThreadLockError = "thread lock error";
inline constexpr const char* kThreadResourceError = "thread resource error";

inline constexpr const char* kNoFlagSpecified = "No flag was specified";
inline constexpr const char* kGetOneFlagOnly = "Can only retrieve 1 flag at a time";
inline constexpr const char* kSetOneFlagOnly = "Can only set 1 flag at a time";
inline constexpr const char* kCacheSegmentCountNotImplemented =
    "cacheSegmentCount is not implemented in the C++ engine.";
inline constexpr const char* kUnknownOptionBefore = "Unknown option '";
inline constexpr const char* kUnknownOptionAfter = "'.";
inline constexpr const char* kExpectedOptionBefore = "Expected option '";
inline constexpr const char* kExpectedOptionWanted = "' to be type '";
inline constexpr const char* kExpectedOptionGiven = "' instead it was type '";
inline constexpr const char* kExpectedOptionAfter = "'.";
inline constexpr const char* kNoMessageSetsLoaded = "No message sets loaded.";
inline constexpr const char* kMessageSetNotFound = "Couldn't find Message Set ";
inline constexpr const char* kErrorNumberNotFound = "Couldn't find the error number ";

}  // namespace vantrelia::messages
