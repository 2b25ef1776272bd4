#pragma once
// The override of one primitive field at one place. It answers only for what its flags give, and
// ignores any path below it: a primitive field has nothing below.

#include <memory>

#include "definitions/FieldInstancesBase.h"

namespace vantrelia {

class FieldDefn;

class FieldInstance : public FieldInstancesBase {
 public:
  // Interprets the values for `field`: a default text may make the field a count ("#path#S"),
  // gets its escapes expanded otherwise; a format beginning with "@" replaces the default; a table
  // name is looked up in the field's set. The rule and the advanced validation are kept only if
  // the flags name them. Throws InvalidFile for flags of 0, an unknown table, a bad count item
  // and any default on a raw binary field.
  FieldInstance(const FieldDefn& field, const FieldOverrideValues& values, std::shared_ptr<RuleOrList> rule,
                std::shared_ptr<AdvancedValidation> advancedValidation);
  ~FieldInstance() override;

  const WideText& getDefaultValueText() const { return DefaultValue; }
  // The pattern of a format override without its "@", or the format as given when it had none.
  const WideText& getFormat() const { return format; }
  Formatter* getFormatterObject() const { return formatter.get(); }
  const ValidationTableDefn* getValidationTableDefn() const { return ValidationTable; }
  int32_t getCountKindValue() const { return countKind; }
  bool getRequired() const { return Required != 0; }
  bool getHidden() const { return Hidden != 0; }
  RuleOrList* getRule() const { return situationalRule.get(); }
  AdvancedValidation* getAdvanced() const { return advancedValidation.get(); }
  int32_t getMinLengthValue() const { return MinLength; }
  int32_t getMaxLengthValue() const { return MaxLength; }

  bool getDefaultValue(FieldPath path, int32_t index, const WideText*& out) const override;
  bool getDefaultValue(const WideText*& out) const override;
  bool getDefaultValue(FieldPath path, const WideText*& out) const override;
  bool getFormatter(FieldPath path, Formatter*& out) const override;
  bool getValidationTable(FieldPath path, const ValidationTableDefn*& out) const override;
  bool getCountKind(FieldPath path, int32_t& out) const override;
  bool isRequired(bool& out) const override;
  bool isRequired(FieldPath path, int32_t index, bool& out) const override;
  bool isRequired(FieldPath path, bool& out) const override;
  bool isHidden(FieldPath path, bool& out) const override;
  bool getSituationalRule(RuleOrList*& out) const override;
  bool getSituationalRule(FieldPath path, RuleOrList*& out) const override;
  bool getAdvancedValidation(FieldPath path, AdvancedValidation*& out) const override;
  bool getMinLength(FieldPath path, int32_t& out) const override;
  bool getMaxLength(FieldPath path, int32_t& out) const override;
  void addEntry(const CompositeDefn& composite, FieldPath path, const FieldOverrideValues& values,
                std::shared_ptr<RuleOrList> rule, std::shared_ptr<AdvancedValidation> advancedValidation) override;

 private:
  void takeDefaultValue(const FieldDefn& field, const WideText& text, int32_t baseType);
  void takeFormat(const FieldDefn& field, const WideText& text, int32_t baseType);

  WideText DefaultValue;
  WideText format;
  std::shared_ptr<Formatter> formatter;
  const ValidationTableDefn* ValidationTable = nullptr;
  int32_t countKind = 0;
  uint8_t Required = 0;
  uint8_t Hidden = 0;
  std::shared_ptr<RuleOrList> situationalRule;
  std::shared_ptr<AdvancedValidation> advancedValidation;
  int32_t MinLength = 0;
  int32_t MaxLength = 0;
};

}  // namespace vantrelia
