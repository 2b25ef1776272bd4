#include "definitions/CompositeDefn.h"

#include "definitions/InputStream.h"
#include "definitions/PcfMessages.h"
#include "definitions/PcfVersion.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "foundation/CheckIndex.h"
#include "foundation/InvalidFile.h"
#include "foundation/TextCompare.h"

namespace vantrelia {

CompositeDefn::CompositeDefn() = default;
CompositeDefn::~CompositeDefn() = default;

const FieldDefn& CompositeDefn::getField(int32_t index) const {
  checkIndex(index, getFieldCount());
  return *fields[static_cast<size_t>(index)];
}

FieldDefn& CompositeDefn::getField(int32_t index) {
  checkIndex(index, getFieldCount());
  return *fields[static_cast<size_t>(index)];
}

const ValidationEquation* CompositeDefn::getEquation(int32_t index) const {
  if (index < 0 || static_cast<size_t>(index) >= equations.size()) return nullptr;
  return equations[static_cast<size_t>(index)].get();
}

void CompositeDefn::load(const MessageSetDefn& set, InputStream& stream, int version, FieldUpdates& updates) {
  stream.read(Name).read(SpecialSeparatorString).read(SeparatorType);
  bool fixedWidth = false;
  stream.read(fixedWidth);
  FixedWidth = fixedWidth ? 1 : 0;
  stream.read(id);
  readFields(set, stream, version, updates);

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
    for (const auto& field : fields)
      if (field->getDataType() == FieldDefn::kVariable) flags |= kHasVariableField;
  }
  if (version >= pcf::kSpecialRecords) {
    bool presenceIndicator = false;
    stream.read(presenceIndicator);
    CompositeType = presenceIndicator ? 1 : 0;
    if (presenceIndicator) {
      stream.read(SpecialSeparatorType);
      stream.readWide(indicatorSeparatorString);
    }
  }
}

void CompositeDefn::readFields(const MessageSetDefn& set, InputStream& stream, int version, FieldUpdates& updates) {
  const int32_t count = stream.readInt();
  if (count < 0) throw InvalidFile(messages::kInvalidFieldCount);
  // No reserve: a corrupt count must not allocate before the records run out.
  for (int32_t i = 0; i < count; ++i) {
    auto field = std::make_unique<FieldDefn>();
    field->load(set, stream, version, updates);
    fields.push_back(std::move(field));
  }
}

void CompositeDefn::markRequiredPath(std::span<const int32_t> indexes) {
  CompositeDefn* current = this;
  for (size_t i = 0; i < indexes.size(); ++i) {
    const int32_t position = indexes[i] - 1;
    if (position < 0 || position >= current->getFieldCount()) throw InvalidFile(messages::kInvalidCompositeIndex);
    FieldDefn& field = *current->fields[static_cast<size_t>(position)];
    if (i + 1 == indexes.size()) {
      field.setRequired(true);
      return;
    }
    if (!field.isComposite() || !field.getComposite()) throw InvalidFile(messages::kExpectedNestedComposite);
    // Marks work on the shared definitions: every user of the composite sees them.
    current = field.getComposite();
  }
}

void CompositeDefn::markRequiredByName(std::string_view path) {
  const size_t slash = path.find('/');
  const std::string_view name = path.substr(0, slash);
  for (const auto& field : fields) {
    if (!equalIgnoringCase(field->getName().view(), name)) continue;
    field->setRequired(true);
    if (slash != std::string_view::npos && slash + 1 < path.size() && field->isComposite() && field->getComposite())
      field->getComposite()->markRequiredByName(path.substr(slash + 1));
    return;
  }
}

void CompositeDefn::workOutQuotedText() {
  if (quotedText != QuotedText::NotWorkedOut) return;
  quotedText = QuotedText::WorkingOut;
  for (const auto& field : fields) {
    if (field->isComposite()) {
      if (CompositeDefn* nested = field->getComposite()) {
        nested->workOutQuotedText();
        if (nested->flags & kHoldsQuotedText) flags |= kHoldsQuotedText;
      }
    } else if (field->getKind() == FieldDefn::kPrimitive && field->getBaseType() == FieldDefn::kQuotedText) {
      flags |= kHoldsQuotedText;
    }
  }
  quotedText = QuotedText::WorkedOut;
}

}  // namespace vantrelia
