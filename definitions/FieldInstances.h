#pragma once
// The override of a composite field at one place: what it says about the field as a whole
// (required, hidden, lengths, a situational rule), and the overrides of the composite's fields
// below it, one child entry for each field that has any.

#include <memory>
#include <vector>

#include "definitions/FieldInstancesBase.h"

namespace vantrelia {

class FieldDefn;

class FieldInstances : public FieldInstancesBase {
 public:
  // Stores the values as given, with a child place for each field of `composite`.
  FieldInstances(const CompositeDefn& composite, const FieldOverrideValues& values, std::shared_ptr<RuleOrList> rule);
  ~FieldInstances() override;

  int32_t getChildCount() const { return static_cast<int32_t>(children.size()); }
  // Null where the field at that index has no override; also outside the children.
  const FieldInstancesBase* getChild(int32_t index) const;
  bool getRequired() const { return Required != 0; }
  bool getHidden() const { return Hidden != 0; }
  RuleOrList* getRule() const { return situationalRule.get(); }
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

  // One level of adding an override at `path`, whose first index names `field` and whose entry
  // is `slot`: a longer path goes into the entry of the composite field (made without flags if
  // there is none yet); the last index replaces what `slot` held. A path through a field that
  // isn't composite raises BadParameter "Internal error".
  static void addAt(std::unique_ptr<FieldInstancesBase>& slot, const FieldDefn& field, FieldPath path,
                    const FieldOverrideValues& values, std::shared_ptr<RuleOrList> rule,
                    std::shared_ptr<AdvancedValidation> advancedValidation);

 private:
  uint8_t Required = 0;
  uint8_t Hidden = 0;
  std::shared_ptr<RuleOrList> situationalRule;
  std::vector<std::unique_ptr<FieldInstancesBase>> children;
  int32_t MinLength = 0;
  int32_t MaxLength = 0;
};

}  // namespace vantrelia
