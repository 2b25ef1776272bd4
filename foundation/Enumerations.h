#pragma once
// The public enumerations. Their numbers are part of the host interface, and some are read
// straight from definition files, so every value is written out.

namespace vantrelia {

enum EMetaType : int {
  qxMetaField = 0,
  qxMetaComposite = 1,
  qxMetaSegment = 2,
  qxMetaGroup = 3,
  qxMetaMessage = 4,
  qxMetaMessageSet = 5,
};

enum ENodeType : int {
  qxPrimitive = 0,
  qxComposite = 1,
  qxRepeating = 2,
  qxMessageSet = 3,
};

enum EMetaDataType : int {
  qxShort = 0,
  qxLong = 1,
  qxFloat = 2,
  qxDouble = 3,
  qxString = 4,
  qxBinary = 5,
  qxCustom = 6,
  qxArray = 7,
  qxVariable = 8,
};

enum EMetaVariableType : int {
  qxVarBasic = 0,
  qxVarComposite = 1,
  qxVarCustom = 2,
  qxVarArray = 3,
};

enum EMetaAlignment : int {
  qxLeft = 0,
  qxRight = 1,
  qxLeftMin = 2,
  qxRightMin = 3,
  qxLeftMax = 4,
  qxRightMax = 5,
  qxZeroMin = 6,
  qxZeroMax = 7,
};

// Severity of an error number. Note the order: 1 is ignore, not warning.
enum EMetaVErrSettingType : int {
  qxVESError = 0,
  qxVESIgnore = 1,
  qxVESWarning = 2,
};
using EVErrType = EMetaVErrSettingType;

// A separator's place in every array of separators, in the definition and at run time.
enum ESeparatorType : int {
  qxSepSegment = 0,
  qxSepRepeat = 1,
  qxSepNull = 2,
  qxSepDecimal = 3,
  qxSepFiller = 4,
  qxSepField1 = 5,
  qxSepField2 = 6,
  qxSepField3 = 7,
  qxSepField4 = 8,
  qxSepField5 = 9,
  qxSepUser1 = 10,
  qxSepUser2 = 11,
  qxSepUser3 = 12,
  qxSepUser4 = 13,
  qxSepUser5 = 14,
  qxSepNone = 15,
  qxSepAuto = 16,
  qxSepString = 17,
  qxSepMessage = 18,
  qxSepGroup = 19,
  qxSepLength = 20,
  qxSepCrlf = 21,
};
inline constexpr int kSeparatorCount = 22;

enum ESegmentType : int {
  qxSegTypeNormal = 0,
  qxSegTypeFieldPresenceIndicator = 1,
  qxSegTypeNameValuePair = 2,
};

enum ECompositeType : int {
  qxCompTypeNormal = 0,
  qxCompTypeFieldPresenceIndicator = 1,
};

enum ESyntaxRuleType : int {
  qxPaired = 0,
  qxConditional = 1,
  qxConditionalList = 2,
  qxRequired = 3,
  qxExclusive = 4,
};

enum EVantreliaMessageFactoryFlags : int {
  qxOutputDefaultValuesForOptionalFields = 1,
  qxSyntaxRulesSetRequiredFlagOnOutput = 2,
};

}  // namespace vantrelia
