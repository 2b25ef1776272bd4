#include "validation/ValidationErrorNumbers.h"

#include <array>

#include "foundation/BadParameter.h"

namespace vantrelia {

namespace {

struct ErrorNumberEntry {
  int32_t number;
  const char16_t* description;
  const char16_t* raised;  // null: raised with the description
  EVErrType defaultSeverity;
  EVErrType initialSeverity;
};

constexpr EVErrType E = qxVESError;
constexpr EVErrType I = qxVESIgnore;

// clang-format off
constexpr std::array<ErrorNumberEntry, verr::kCount> kEntries{{
    {1001, u"Required segment missing", nullptr, E, E},
    {1002, u"Required group missing", nullptr, E, E},
    {1003, u"Unknown segment, ignored", u"Segment [%d] : Unknown segment, ignored", E, E},
    {1004, u"Unexpected segment, ignored", u"Segment \"%S\" [%d]: Unexpected segment", E, E},
    {1005, u"Failed to parse embedded message", nullptr, E, E},
    {1006, u"Required field missing", nullptr, E, E},
    {1007, u"Field too short", u"Field too short: %d < %d", E, E},
    {1008, u"Field too long", u"Field too long: %d > %d", E, E},
    {1009, u"Extra data found after field", u"Extra data found after field: ", E, E},
    {1010, u"Extra data found after composite", u"Extra data found at end of composite: ", E, E},
    {1011, u"Specified field count does not match actual count", nullptr, E, E},
    {1012, u"Field value does not match regular expression", nullptr, E, E},
    {1013, u"Field too long, truncated", u"Field too long, truncated: %d > %d", E, E},
    {1014, u"Field value not found in validation table", nullptr, E, E},
    {1015, u"Invalid character(s) in field", u"Invalid character in field", E, E},
    {1016, u"Not enough messages", u"Not enough messages: %d < %d", E, E},
    {1017, u"Too many messages", u"Too many messages: %d > %d", E, E},
    {1018, u"Not enough repeats", u"Not enough repeats: %d < %d", E, E},
    {1019, u"Too many repeats", u"Too many repeats: %d > %d", E, E},
    {1020, u"Repeat separator not defined, only first will be output", nullptr, E, E},
    {1021, u"Only one item allowed in choice group", u"Only one item allowed in a choice group", E, E},
    {1022, u"Extra data found after segment", u"Extra data found at end of segment: ", E, E},
    {1023, u"Message Item Match-List failed to match correctly", nullptr, E, E},
    {1024, u"Paired Syntax Rule Violated", nullptr, E, E},
    {1025, u"Conditional Syntax Rule Violated", nullptr, E, E},
    {1026, u"Conditional List Syntax Rule Violated", nullptr, E, E},
    {1027, u"Required Syntax Rule Violated", nullptr, E, E},
    {1028, u"Exclusive Syntax Rule Violated", nullptr, E, E},
    {1029, u"Not enough message items in unordered group", nullptr, E, E},
    {1030, u"Too many message items in unordered group", nullptr, E, E},
    {1031, u"Array has less than minimum items", u"Array has Less than Minimum Items: %d < %d", E, E},
    {1032, u"Array has more than maximum items", u"Array has More than Maximum Items: %d > %d", E, E},
    {1033, u"Array separator not defined, only first will be output", nullptr, E, E},
    {1034, u"Field value violates validation regular expression", nullptr, E, E},
    {1035, u"Situational Rule Violated", nullptr, E, E},
    {1036, u"Required According to Situational Rule", nullptr, E, E},
    {1037, u"Specified field value does not match validation equation value", nullptr, E, E},
    {1038, u"Field not found in name/value pair segment", u"Field not found in name/value pair segment: ", E, E},
    {1039, u"No field name provided in name/value pair segment", nullptr, E, E},
    {1040, u"Field did not match the 'else' advanced validation rule regular expression", nullptr, E, E},
    {1041, u"Field did not match regular expression for advanced validation rule",
           u"Field did not match regular expression for advanced validation rule %d", E, E},
    {1042, u"Unknown embedded message found", nullptr, E, E},
    {1043, u"Hidden field used", nullptr, I, I},
    {1044, u"Invalid plus sign preceding number", u"Invalid '+' sign preceding Number", I, I},
    {1045, u"Character not in allowable range", u"Character '%c' not in allowable range", I, E},
    {1046, u"Unnecessary separators found at end of segment", u"Unnecessary field separator found at end of segment", I, I},
    {1047, u"Unnecessary separators found at end of composite",
           u"Unnecessary field separator found at end of composite", I, I},
    {1048, u"Trailing zeros found after decimal point", u"Trailing zero found after decimal point", I, E},
    {1049, u"Decimal point found after integer", nullptr, I, E},
    {1050, u"Too many leading zeros", nullptr, I, E},
    {1051, u"Specified number of repeats does not match actual number of repeats",
           u"Specified repeat count in tagged segment does not match actual count: %d vs %d", E, E},
    {1052, u"Repeat counter value was not an integer", u"Specified repeat count is not a valid integer: %s", E, E},
}};
// clang-format on

constexpr bool numberedByPosition() {
  for (size_t i = 0; i < kEntries.size(); ++i)
    if (kEntries[i].number != verr::kFirst + static_cast<int32_t>(i)) return false;
  return true;
}
static_assert(numberedByPosition(), "the table is indexed by number minus the first number");

const ErrorNumberEntry& entryOf(int32_t number) {
  checkErrorNumber(number);
  return kEntries[static_cast<size_t>(number - verr::kFirst)];
}

}  // namespace

void checkErrorNumber(int32_t number) {
  if (!isErrorNumber(number)) throw BadParameter(messages::kErrorNumberOutOfRange);
}

const char16_t* getErrorDescription(int32_t number) {
  return isErrorNumber(number) ? entryOf(number).description : messages::kNoErrorDescription;
}

const char16_t* getRaisedText(int32_t number) {
  const ErrorNumberEntry& entry = entryOf(number);
  return entry.raised ? entry.raised : entry.description;
}

EVErrType getDefaultSeverity(int32_t number) { return entryOf(number).defaultSeverity; }

EVErrType getInitialSeverity(int32_t number) { return entryOf(number).initialSeverity; }

}  // namespace vantrelia
