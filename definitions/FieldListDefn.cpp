#include "definitions/FieldListDefn.h"

#include "definitions/CompositeDefn.h"
#include "definitions/InputStream.h"
#include "definitions/PcfMessages.h"
#include "definitions/PcfVersion.h"
#include "definitions/VariableFieldDefn.h"
#include "foundation/CheckIndex.h"
#include "foundation/InvalidFile.h"
#include "foundation/TextCompare.h"

namespace vantrelia {

FieldListDefn::FieldListDefn() = default;
FieldListDefn::~FieldListDefn() = default;

const FieldDefn& FieldListDefn::getField(int32_t index) const {
  checkIndex(index, getFieldCount());
  return *fields[static_cast<size_t>(index)];
}

void FieldListDefn::markRequiredByName(std::string_view path) {
  const size_t slash = path.find('/');
  const std::string_view name = path.substr(0, slash);
  for (const auto& field : fields) {
    if (!equalIgnoringCase(field->getName().view(), name)) continue;
    field->setRequired(true);
    if (slash != std::string_view::npos && slash + 1 < path.size() && field->isComposite() && field->composite)
      field->composite->markRequiredByName(path.substr(slash + 1));
    return;
  }
}

const ValidationEquation* FieldListDefn::getEquation(int32_t index) const {
  if (index < 0 || static_cast<size_t>(index) >= equations.size()) return nullptr;
  return equations[static_cast<size_t>(index)].get();
}

void FieldListDefn::readFields(const MessageSetDefn& set, InputStream& stream, int version, FieldUpdates& updates) {
  const int32_t count = stream.readInt();
  if (count < 0) throw InvalidFile(messages::kInvalidFieldCount);
  // No reserve: a corrupt count must not allocate before the records run out.
  for (int32_t i = 0; i < count; ++i) {
    auto field = std::make_unique<FieldDefn>();
    field->load(set, stream, version, updates);
    fields.push_back(std::move(field));
  }
}

void FieldListDefn::readRulesAndFlags(InputStream& stream, int version) {
  if (version >= pcf::kSyntaxRules) {
    bool hasSyntaxRules = false;
    stream.read(hasSyntaxRules);
    if (hasSyntaxRules) throw InvalidFile(messages::kSyntaxRulesNotSupported);
  }
  if (version >= pcf::kValidationEquations) {
    const int equationCount = stream.readCount();
    if (equationCount > getFieldCount()) throw InvalidFile(messages::kTooManyValidationEquations);
    if (equationCount > 0) throw InvalidFile(messages::kValidationEquationsNotSupported);
  }
  if (version >= pcf::kUserData) readUserData(stream, userData);
  if (version >= pcf::kDefinitionFlagWords) {
    flags = static_cast<uint32_t>(stream.readInt());
  } else if (version >= pcf::kSyntaxRules) {
    // These versions have no flag word: the variable fields say it.
    for (const auto& field : fields) {
      if (field->getDataType() == FieldDefn::kVariable) flags |= kHasVariableField;
    }
  }
}

void FieldListDefn::workOutVariableKeys(bool keyRequired) {
  auto& keys = variableKeys.emplace();
  const int32_t count = getFieldCount();
  for (int32_t j = 0; j < count; ++j) {
    FieldDefn& field = *fields[static_cast<size_t>(j)];
    if (field.getDataType() != FieldDefn::kVariable) continue;
    // A type 11 field from before variable records existed has no key at all.
    const int32_t k = field.getVariableDefn() ? field.getVariableDefn()->getKeyFieldIndex() : -1;
    if (k < 0 || k >= count) {
      if (keyRequired) throw InvalidFile(messages::kVariableTypeFieldInvalid);
      continue;
    }
    // The first field that a key rules is the one recorded.
    keys.emplace(k, j);
    FieldDefn& key = *fields[static_cast<size_t>(k)];
    key.addFlags(FieldDefn::kIsVariableTypeField);
    if (k > j) field.addFlags(FieldDefn::kKeyBehind);
    if (key.getMaxRepeats() != 1 && field.getMaxRepeats() != 1) field.addFlags(FieldDefn::kRepeatsWithKey);
  }
}

}  // namespace vantrelia
