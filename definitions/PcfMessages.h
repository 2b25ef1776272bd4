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

}  // namespace vantrelia::messages

namespace vantrelia::messages {

// A separator read from a header field can't also have an initiator and terminator of its own.
inline constexpr const char* kVariableSeparatorFromField =
    "Invalid PCF: A separator with different initiator, separator, and terminator values cannot be variable";

}  // namespace vantrelia::messages

namespace vantrelia::messages {

// Records of custom types, array types, validation tables and error settings.
inline constexpr const char* kValidationErrorTypeUnknown = "Validation error type unknown";
// A custom type has one allowed-separator entry per separator, 22 at most.
inline constexpr const char* kInvalidSeparatorEntryCount = "PCF is corrupt: Invalid number of allowed separators in custom type";
// IllegalOperation of a custom type's escape accessors when it has no escape characters.
inline constexpr const char* kNoCustomEscapeCharacters = "This custom type does not have custom escape characters";

}  // namespace vantrelia::messages

namespace vantrelia::messages {

// Fields, composites and the overrides of composite fields.
inline constexpr const char* kNoLengthField = "No length field specified for raw binary field";
inline constexpr const char* kInvalidCountItem = "Invalid count item specified";
inline constexpr const char* kTooManyValidationEquations = "Too many validation equations";
inline constexpr const char* kCompositeOverrideSituational = "Fields instances on composites do not support situational fields";
inline constexpr const char* kCompositeOverrideAdvanced = "Fields instances on composites do not support advanced validation";
inline constexpr const char* kInvalidFieldInstanceFlags = "Invalid flags for field instance";
inline constexpr const char* kLengthFieldOverridden = "The associated length field of a raw binary field may not be overridden";
// Required marks of numeric message type fields, inside composites.
inline constexpr const char* kInvalidCompositeIndex = "Invalid composite index in indexed message type field";
inline constexpr const char* kExpectedNestedComposite = "Expected a nested composite in indexed message type field";
// What no valid file holds, refused rather than left to break later users.
inline constexpr const char* kInvalidFieldCount = "PCF is corrupt: Invalid number of fields";
inline constexpr const char* kUnknownValidationTable = "PCF is corrupt: A field names an unknown validation table: ";
inline constexpr const char* kUnknownComposite = "PCF is corrupt: A composite field names an unknown composite";
inline constexpr const char* kOverrideIndexOutside = "PCF is corrupt: A field override names a field outside its composite";
inline constexpr const char* kOverrideLevelNotOpen = "PCF is corrupt: A field override closes a composite that isn't open";
// Rules of composites that this build doesn't read yet.
inline constexpr const char* kSyntaxRulesNotSupported = "Syntax rules are not supported yet";
inline constexpr const char* kValidationEquationsNotSupported = "Validation equations are not supported yet";

}  // namespace vantrelia::messages

namespace vantrelia::messages {

// Segment records: a variable field whose key field lies outside the segment's fields.
inline constexpr const char* kVariableTypeFieldInvalid = "Variable type field is invalid";

}  // namespace vantrelia::messages

namespace vantrelia::messages {

// Messages, message items, groups and state tables.
inline constexpr const char* kInvalidSituationalInstancesData = "Invalid situational field instances data";
inline constexpr const char* kInvalidSituationalInstanceData = "Invalid situational field instance data";
inline constexpr const char* kInvalidUnorderedItemType = "Invalid message item type in unordered group";
// Rule kinds of message items that this build doesn't read yet.
inline constexpr const char* kSituationalRulesNotSupported = "Situational rules are not supported yet";
inline constexpr const char* kAdvancedValidationNotSupported = "Advanced validation is not supported yet";
// What no valid file holds, refused rather than left to break the parser later.
inline constexpr const char* kInvalidMessageItemCount = "PCF is corrupt: Invalid number of message items";
inline constexpr const char* kInvalidMatchCount = "PCF is corrupt: Invalid number of matches";
inline constexpr const char* kInvalidMessageItemType = "PCF is corrupt: Invalid message item type";
inline constexpr const char* kUnknownSegment = "PCF is corrupt: A message item names an unknown segment";
inline constexpr const char* kItemOverrideIndexOutside = "PCF is corrupt: A message item override names a field outside its segment or composite";
inline constexpr const char* kItemsNestedTooDeeply = "PCF is corrupt: Message items are nested too deeply";
inline constexpr const char* kInvalidVisibleChildTable = "PCF is corrupt: Invalid visible child table";
inline constexpr const char* kInvalidStateCount = "PCF is corrupt: Invalid state table";
inline constexpr const char* kUnknownStateItem = "PCF is corrupt: A state names an unknown message item";
inline constexpr const char* kInvalidStateTarget = "PCF is corrupt: A transition names a state outside its table";

// The message set record.
inline constexpr const char* kTooManySeparators = "PCF is corrupt: Invalid number of separators";
inline constexpr const char* kInvalidFirstTypeFieldIndex = "Indexed message type field has an invalid index for the first field";
inline constexpr const char* kFirstTypeFieldNotComposite =
    "Expected the first field of an indexed message type field to be a composite";

}  // namespace vantrelia::messages

namespace vantrelia::messages {

// A field's number picture, or one of its sections, that has no character to go by.
inline constexpr const char* kEmptyNumberFormatSection = "Number format has an empty section";
inline constexpr const char* kInvalidMatchPattern = "Match value is not a valid regular expression";

}  // namespace vantrelia::messages
