#pragma once
// The root of a tree of field overrides held by one place: a message item for its segment, or a
// composite field for its composite. Entries exist only where the place overrides something; every
// look-up asks the tree first and falls back, level by level, on the overrides of the composite
// fields on the way down and finally on the field's definition.
//
// A holder answers what its definition is through three operations; the segment holder of a
// message item derives from this class the same way the composite holder does.

#include <cstdint>
#include <memory>
#include <vector>

#include "definitions/FieldInstancesBase.h"

namespace vantrelia {

class FieldDefn;

class FieldInstancesControl {
 public:
  using WideText = kestrel::TRVString<char16_t>;

  virtual ~FieldInstancesControl();
  FieldInstancesControl(const FieldInstancesControl&) = delete;
  FieldInstancesControl& operator=(const FieldInstancesControl&) = delete;

  // The number of fields of the holder's definition.
  virtual int32_t getFieldCount() const = 0;
  // The composite of the field at that index; a field that isn't composite raises BadParameter
  // "Internal error".
  virtual const CompositeDefn& getComposite(int32_t index) const = 0;
  virtual const FieldDefn& getFieldDefn(int32_t index) const = 0;

  int32_t getCount() const { return static_cast<int32_t>(entries.size()); }
  // The entry of the field at that index, or null.
  const FieldInstancesBase* getEntry(int32_t index) const;

  // The field at that index of this holder.
  const WideText& getDefaultValue(int32_t index) const;
  bool isRequired(int32_t index) const;

  // The field that a whole path of indexes reaches. An empty path raises BadParameter.
  const WideText& getDefaultValue(FieldPath path) const;
  Formatter* getFormatter(FieldPath path) const;
  const ValidationTableDefn* getValidationTable(FieldPath path) const;
  int32_t getCountKind(FieldPath path) const;
  bool isRequired(FieldPath path) const;
  bool isHidden(FieldPath path) const;
  int32_t getMinLength(FieldPath path) const;
  int32_t getMaxLength(FieldPath path) const;
  // Only overrides carry these; a field definition has neither, so the answer may be null.
  RuleOrList* getSituationalRule(FieldPath path) const;
  AdvancedValidation* getAdvancedValidation(FieldPath path) const;

  // Field `index` of the composite that `path` reaches.
  const WideText& getDefaultValue(FieldPath path, int32_t index) const;
  bool isRequired(FieldPath path, int32_t index) const;

  // True if a field on the path is variable (data type 11).
  bool hasVariableField(FieldPath path) const;

  // Builds the entry at `path`; a later entry at the same place replaces the earlier one. The rule
  // and the advanced validation stay with the entry only if its flags name them. Throws what the
  // entry's construction throws (InvalidFile for bad override values).
  void add(FieldPath path, const FieldOverrideValues& values, std::shared_ptr<RuleOrList> rule = nullptr,
           std::shared_ptr<AdvancedValidation> advancedValidation = nullptr);

 protected:
  explicit FieldInstancesControl(int32_t fieldCount);

 private:
  std::vector<std::unique_ptr<FieldInstancesBase>> entries;
};

}  // namespace vantrelia
