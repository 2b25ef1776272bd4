#include "definitions/FieldInstance.h"

#include "definitions/EscapeExpansion.h"
#include "definitions/FieldDefn.h"
#include "definitions/FieldInstanceUpdate.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/PcfMessages.h"
#include "foundation/FoundationMessages.h"
#include "foundation/IllegalOperation.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

using namespace overrideflags;

FieldInstance::FieldInstance(const FieldDefn& field, const FieldOverrideValues& values, std::shared_ptr<RuleOrList> rule,
                             std::shared_ptr<AdvancedValidation> advanced)
    : FieldInstancesBase(values.flags) {
  if (flags == 0) throw InvalidFile(messages::kInvalidFieldInstanceFlags);
  const int32_t baseType = field.getBaseType();
  if (has(kDefaultValue)) takeDefaultValue(field, values.DefaultValue, baseType);
  if (has(kFormatter)) takeFormat(field, values.format, baseType);
  if (has(kValidationTable) && !values.tableName.empty()) {
    const MessageSetDefn* set = field.getSet();
    ValidationTable = set ? set->findValidationTable(values.tableName) : nullptr;
    if (!ValidationTable) throw InvalidFile(messages::kUnknownValidationTable + values.tableName);
  }
  if (has(kRequired)) Required = values.Required;
  if (has(kHidden)) Hidden = values.Hidden;
  if (has(kSituationalRule)) situationalRule = std::move(rule);
  if (has(kAdvancedValidation)) advancedValidation = std::move(advanced);
  if (has(kMinLength)) MinLength = values.MinLength;
  if (has(kMaxLength)) MaxLength = values.MaxLength;
}

FieldInstance::~FieldInstance() = default;

void FieldInstance::takeDefaultValue(const FieldDefn& field, const WideText& text, int32_t baseType) {
  DefaultValue = text;
  const std::u16string_view given = text.view();
  const bool special = DataTypeCodes::isCountBase(baseType) || baseType == FieldDefn::kRawBinary;
  if (!given.empty() && given.front() == u'#' && special) {
    if (baseType == FieldDefn::kRawBinary) throw InvalidFile(messages::kLengthFieldOverridden);
    flags |= kCountKind;
    std::u16string_view path;
    countKind = FieldDefn::splitCountItem(given.substr(1), path);
    DefaultValue = path;
  } else if (!given.empty()) {
    DefaultValue = expandEscapesToText(given);
  }
  // A raw binary field's default names its length field, which no place may change.
  if (field.getDataType() == FieldDefn::kRawBinary) throw InvalidFile(messages::kNoLengthField);
}

void FieldInstance::takeFormat(const FieldDefn& field, const WideText& text, int32_t baseType) {
  format = text;
  // A format without "@" keeps the flag with no formatter: it takes the field's formatter away.
  if (text.empty() || text.c_str()[0] != u'@') return;
  flags |= kDefaultValue;
  DefaultValue = WideText();
  format = text.substr(1);
  formatter = buildFieldFormatter(formatterKindFor(baseType, field.isComposite()), format.view());
}

bool FieldInstance::getDefaultValue(FieldPath, int32_t, const WideText*& out) const { return getDefaultValue(out); }

bool FieldInstance::getDefaultValue(const WideText*& out) const {
  if (!has(kDefaultValue)) return false;
  out = &DefaultValue;
  return true;
}

bool FieldInstance::getDefaultValue(FieldPath, const WideText*& out) const { return getDefaultValue(out); }

bool FieldInstance::getFormatter(FieldPath, Formatter*& out) const {
  if (!has(kFormatter)) return false;
  out = formatter.get();
  return true;
}

bool FieldInstance::getValidationTable(FieldPath, const ValidationTableDefn*& out) const {
  if (!has(kValidationTable)) return false;
  out = ValidationTable;
  return true;
}

bool FieldInstance::getCountKind(FieldPath, int32_t& out) const {
  if (!has(kCountKind)) return false;
  out = countKind;
  return true;
}

bool FieldInstance::isRequired(bool& out) const {
  if (!has(kRequired)) return false;
  out = Required != 0;
  return true;
}

bool FieldInstance::isRequired(FieldPath, int32_t, bool& out) const { return isRequired(out); }
bool FieldInstance::isRequired(FieldPath, bool& out) const { return isRequired(out); }

bool FieldInstance::isHidden(FieldPath, bool& out) const {
  if (!has(kHidden)) return false;
  out = Hidden != 0;
  return true;
}

bool FieldInstance::getSituationalRule(RuleOrList*& out) const {
  if (!has(kSituationalRule)) return false;
  out = situationalRule.get();
  return true;
}

bool FieldInstance::getSituationalRule(FieldPath, RuleOrList*& out) const { return getSituationalRule(out); }

bool FieldInstance::getAdvancedValidation(FieldPath, AdvancedValidation*& out) const {
  if (!has(kAdvancedValidation)) return false;
  out = advancedValidation.get();
  return true;
}

bool FieldInstance::getMinLength(FieldPath, int32_t& out) const {
  if (!has(kMinLength)) return false;
  out = MinLength;
  return true;
}

bool FieldInstance::getMaxLength(FieldPath, int32_t& out) const {
  if (!has(kMaxLength)) return false;
  out = MaxLength;
  return true;
}

void FieldInstance::addEntry(const CompositeDefn&, FieldPath, const FieldOverrideValues&, std::shared_ptr<RuleOrList>,
                             std::shared_ptr<AdvancedValidation>) {
  throw IllegalOperation(messages::kInternalError);
}

}  // namespace vantrelia
