#pragma once
// The numbers of every finding the engine can make, their texts and their default severities.
// A finding's number is fixed forever: hosts filter on it and definition files set severities by it.

#include <cstdint>

#include "foundation/Enumerations.h"

namespace vantrelia::verr {

inline constexpr int32_t kFirst = 1001;
inline constexpr int32_t kLast = 1052;
inline constexpr int32_t kCount = kLast - kFirst + 1;

inline constexpr int32_t kRequiredSegmentMissing = 1001;
inline constexpr int32_t kRequiredGroupMissing = 1002;
inline constexpr int32_t kUnknownSegment = 1003;
inline constexpr int32_t kUnexpectedSegment = 1004;
inline constexpr int32_t kEmbeddedParseFailed = 1005;
inline constexpr int32_t kRequiredFieldMissing = 1006;
inline constexpr int32_t kFieldTooShort = 1007;
inline constexpr int32_t kFieldTooLong = 1008;
inline constexpr int32_t kExtraDataAfterField = 1009;
inline constexpr int32_t kExtraDataAfterComposite = 1010;
inline constexpr int32_t kFieldCountMismatch = 1011;
inline constexpr int32_t kRegularExpressionMismatch = 1012;
inline constexpr int32_t kFieldTruncated = 1013;
inline constexpr int32_t kValueNotInTable = 1014;
inline constexpr int32_t kInvalidCharacters = 1015;
inline constexpr int32_t kNotEnoughMessages = 1016;
inline constexpr int32_t kTooManyMessages = 1017;
inline constexpr int32_t kNotEnoughRepeats = 1018;
inline constexpr int32_t kTooManyRepeats = 1019;
inline constexpr int32_t kRepeatSeparatorUndefined = 1020;
inline constexpr int32_t kChoiceGroupHasMany = 1021;
inline constexpr int32_t kExtraDataAfterSegment = 1022;
inline constexpr int32_t kMatchListFailed = 1023;
inline constexpr int32_t kPairedRuleViolated = 1024;
inline constexpr int32_t kConditionalRuleViolated = 1025;
inline constexpr int32_t kConditionalListRuleViolated = 1026;
inline constexpr int32_t kRequiredRuleViolated = 1027;
inline constexpr int32_t kExclusiveRuleViolated = 1028;
inline constexpr int32_t kNotEnoughUnorderedItems = 1029;
inline constexpr int32_t kTooManyUnorderedItems = 1030;
inline constexpr int32_t kArrayTooFewItems = 1031;
inline constexpr int32_t kArrayTooManyItems = 1032;
inline constexpr int32_t kArraySeparatorUndefined = 1033;
inline constexpr int32_t kValidationExpressionViolated = 1034;
inline constexpr int32_t kSituationalRuleViolated = 1035;
inline constexpr int32_t kRequiredBySituationalRule = 1036;
inline constexpr int32_t kEquationValueMismatch = 1037;
inline constexpr int32_t kNameValueFieldNotFound = 1038;
inline constexpr int32_t kNameValueNameMissing = 1039;
inline constexpr int32_t kAdvancedElseMismatch = 1040;
inline constexpr int32_t kAdvancedRuleMismatch = 1041;
inline constexpr int32_t kUnknownEmbeddedMessage = 1042;
inline constexpr int32_t kHiddenFieldUsed = 1043;
inline constexpr int32_t kInvalidPlusSign = 1044;
inline constexpr int32_t kCharacterOutOfRange = 1045;
inline constexpr int32_t kUnnecessarySegmentSeparators = 1046;
inline constexpr int32_t kUnnecessaryCompositeSeparators = 1047;
inline constexpr int32_t kTrailingZeros = 1048;
inline constexpr int32_t kDecimalPointAfterInteger = 1049;
inline constexpr int32_t kTooManyLeadingZeros = 1050;
inline constexpr int32_t kRepeatCountMismatch = 1051;
inline constexpr int32_t kRepeatCountNotInteger = 1052;

// Raised forms that a number has besides the one getRaisedText returns. Formats go through
// formatWide: "%S" takes narrow text, "%s" wide text.
inline constexpr const char16_t* kUnexpectedSegmentNumbered = u"Segment [%d]: Unexpected segment";
inline constexpr const char16_t* kUnexpectedSegmentTagged = u"Segment %S: Unexpected segment";
inline constexpr const char16_t* kEmbeddedParseFailedNamed = u"Failed to parse embedded %S message";
inline constexpr const char16_t* kInvalidCharactersPlural = u"Invalid characters in field";
inline constexpr const char16_t* kSituationalRuleViolatedOnField = u"Situational rule violated";
inline constexpr const char16_t* kTaggedFieldUndetermined =
    u"Unable to determine field for value in tagged segment: %s";
inline constexpr const char16_t* kUnknownEmbeddedMessageNamed = u"Unknown embedded message found: %S";

}  // namespace vantrelia::verr

namespace vantrelia::messages {

inline constexpr const char16_t* kNoErrorDescription =
    u"No error description available. (Time to update your engine?)";
inline constexpr const char* kErrorNumberOutOfRange = "Specified error number is out of the valid range";
inline constexpr const char* kSpecifiedErrorNumberNotFound = "Specified error number not found";
inline constexpr const char* kSpecifiedErrorTypeInvalid = "Specified error type is invalid";
inline constexpr const char* kSpecifiedErrorTypeNotValid = "Specified error type is not valid";

}  // namespace vantrelia::messages

namespace vantrelia {

inline constexpr bool isErrorNumber(int32_t number) { return number >= verr::kFirst && number <= verr::kLast; }

// Throws BadParameter "Specified error number is out of the valid range" outside 1001 to 1052.
void checkErrorNumber(int32_t number);

// The default text of a number, as the metadata viewer shows it; a number the engine doesn't know
// gets kNoErrorDescription.
const char16_t* getErrorDescription(int32_t number);

// The text a finding of this number carries when raised: the description unless the number has a
// text of its own. Some are formats for formatWide, some are prefixes that the caller completes
// (1009, 1010, 1022, 1038 take the data or name after them). Throws like checkErrorNumber.
const char16_t* getRaisedText(int32_t number);

// The severity of a number whose setting a definition file doesn't carry (the file predates the
// number): every number is an error except 1043 to 1050, which a definition must turn on.
EVErrType getDefaultSeverity(int32_t number);

// The severity a fresh separator list starts with before any message set is applied to it.
// Differs from getDefaultSeverity: only 1043, 1044, 1046 and 1047 start ignored.
EVErrType getInitialSeverity(int32_t number);

// The test every check makes before it records a finding of a number with this severity.
inline constexpr bool isReported(EVErrType type, bool includeWarnings) {
  return type == qxVESError || (type == qxVESWarning && includeWarnings);
}

}  // namespace vantrelia
