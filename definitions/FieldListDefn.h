#pragma once
// What composites and segments are both made of: a list of fields, the rules over them, user data
// and a flag word. Each record reads its own parts around these and keeps its own flag bits above
// the one they share.

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "definitions/FieldDefn.h"

namespace vantrelia {

class SyntaxRuleSet;
class ValidationEquation;
namespace testing {
class DefinitionSetup;
}

class FieldListDefn {
 public:
  // The flag bit both records give the same meaning: some field is variable (data type 11).
  static constexpr uint32_t kHasVariableField = 0x01;

  FieldListDefn(const FieldListDefn&) = delete;
  FieldListDefn& operator=(const FieldListDefn&) = delete;

  int32_t getFieldCount() const { return static_cast<int32_t>(fields.size()); }
  // Throws BadParameter for an index outside the fields.
  const FieldDefn& getField(int32_t index) const;
  const std::vector<std::unique_ptr<FieldDefn>>& getFields() const { return fields; }
  // Null: files with syntax rules aren't read yet.
  const SyntaxRuleSet* getSyntaxRules() const { return SyntaxRules.get(); }
  // The equation of that field, or null; a record without equations has none for any field.
  const ValidationEquation* getEquation(int32_t index) const;
  bool hasEquations() const { return !equations.empty(); }
  const UserDataMap& getUserData() const { return userData; }
  uint32_t getFlags() const { return flags; }
  // Each variable field's key index to the index of the field it rules (the first one a key
  // rules); null without variable fields.
  const std::map<int32_t, int32_t>* getVariableKeys() const { return variableKeys ? &*variableKeys : nullptr; }

 protected:
  FieldListDefn();
  virtual ~FieldListDefn();

  void readFields(const MessageSetDefn& set, InputStream& stream, int version, FieldUpdates& updates);
  // The part of the record after the fields (and a segment's matches): syntax rules and validation
  // equations, which this engine refuses with InvalidFile when a file has them, then user data and
  // the flag word; files without a flag word have kHasVariableField worked out from the fields.
  void readRulesAndFlags(InputStream& stream, int version);
  // Done at load rather than by the first tree: marks the keys (flag 0x02), a variable field whose
  // key comes after it (0x04) and one that repeats with its key (0x20), and fills variableKeys. A
  // key outside the fields throws InvalidFile "Variable type field is invalid" with `keyRequired`,
  // and is passed over without: such a field keeps the type of an empty key.
  void workOutVariableKeys(bool keyRequired);

  std::vector<std::unique_ptr<FieldDefn>> fields;
  std::shared_ptr<SyntaxRuleSet> SyntaxRules;
  // One slot for each field when the file gives equations, else empty.
  std::vector<std::shared_ptr<ValidationEquation>> equations;
  UserDataMap userData;
  uint32_t flags = 0;
  std::optional<std::map<int32_t, int32_t>> variableKeys;

 private:
  friend class MessageSetDefn;  // marks its message type fields
  friend class testing::DefinitionSetup;

  // Marks required, in the shared definitions, the first field named NAME (ignoring case) of
  // "NAME/SUB/..." and, inside its composite, the first named SUB, and so on. A name that no field
  // has marks nothing further.
  void markRequiredByName(std::string_view path);
};

}  // namespace vantrelia
