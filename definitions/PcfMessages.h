#pragma once
// Failure texts of the definition file reader, as a host sees them.

namespace vantrelia::messages {

inline constexpr const char* kCouldNotOpenInputFile = "Could not open input file";
inline constexpr const char* kInputFileNotOpened = "Input file was not opened";
inline constexpr const char* kUnexpectedEndOfInput = "Unexpected end of input file";
inline constexpr const char* kPcfTooNew = "The PCF is newer than this version of Vantrelia";
inline constexpr const char* kInvalidVersion = "Invalid version number in PCF";
inline constexpr const char* kInvalidHeader = "Corrupt PCF: Header is invalid";
inline constexpr const char* kInvalidPrimitiveTypeCount = "PCF is corrupt: Invalid number of primitive types";
inline constexpr const char* kInvalidArrayTypeCount = "PCF is corrupt: Invalid number of array types";
inline constexpr const char* kUnexpectedLoadError = "Unexpected error occurred while loading parser control file";

// Record kinds this build of the engine doesn't read yet; each names what it refuses.
inline constexpr const char* kPrimitiveTypesNotSupported = "Primitive type records are not supported yet";
inline constexpr const char* kArrayTypesNotSupported = "Array type records are not supported yet";
inline constexpr const char* kMessageSetsNotSupported = "Message set records are not supported yet";

}  // namespace vantrelia::messages
