#pragma once
// Every version of the definition file format at which something changed. The reader and the
// compiler both gate on these names, so a gate is changed in one place for both.

namespace vantrelia::pcf {

inline constexpr int kOldestVersion = 512;
inline constexpr int kNewestVersion = 883;

inline constexpr int kMessageTypeText = 513;        // message type text on messages; set header item count
inline constexpr int kInitSeparatorsFromParent = 514;
inline constexpr int kValidationTableName = 515;    // table name on fields
inline constexpr int kHiddenFlags = 516;            // hidden flags on fields and message items
inline constexpr int kEmptyTagStaysEmpty = 517;     // an empty segment tag no longer defaults to the name
inline constexpr int kFormatPatterns = 519;         // a field's format may start with "@"
inline constexpr int kCountDefaults = 769;          // count items: a default may start with "#"
inline constexpr int kSeparatorWritingStyle = 784;
inline constexpr int kFieldOverrides = 800;
inline constexpr int kOverrideFlagsAndHeader = 801;
inline constexpr int kHasOverrides = 802;
inline constexpr int kHiddenOverride = 803;
inline constexpr int kGenericParsing = 804;
inline constexpr int kMatchLists = 816;
inline constexpr int kCountEncodedLength = 817;     // also: an empty message type stays empty
inline constexpr int kWideValueTexts = 832;         // textv becomes text16
inline constexpr int kSyntaxRules = 848;
inline constexpr int kUnorderedGroups = 849;
inline constexpr int kVisibleChildTables = 850;
inline constexpr int kItemIdsAndStateTables = 851;
inline constexpr int kValidationEquations = 852;
inline constexpr int kTypeTables = 853;             // primitive and array type tables
inline constexpr int kHasVariableFields = 854;
inline constexpr int kUserData = 855;
inline constexpr int kSituationalRules = 856;
inline constexpr int kDefinitionFlagWords = 857;    // flag word on composites and segments
inline constexpr int kVariableSeparators = 864;
inline constexpr int kSpecialRecords = 865;         // field presence indicators, special separators
inline constexpr int kFileHeader = 866;             // also a second special record on segments
inline constexpr int kTerminatorReplacement = 867;
inline constexpr int kOverrideValidationFlags = 868;
inline constexpr int kValidationErrorSettings = 869;
inline constexpr int kTypeEscapeCharacters = 870;
inline constexpr int kWideOverrideFlags = 871;      // also length overrides
inline constexpr int kCharacterRanges = 873;
inline constexpr int kInitialFlags = 880;
inline constexpr int kTableDescriptions = 881;

// The text that follows the version from kFileHeader on.
inline constexpr const char* kHeaderText = "PCFFILE";

inline constexpr bool isSupportedVersion(int version) {
  return version >= kOldestVersion && version <= kNewestVersion;
}

}  // namespace vantrelia::pcf
