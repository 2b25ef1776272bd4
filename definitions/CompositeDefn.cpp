#include "definitions/CompositeDefn.h"

#include "definitions/InputStream.h"
#include "definitions/PcfMessages.h"
#include "definitions/PcfVersion.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

CompositeDefn::CompositeDefn() = default;
CompositeDefn::~CompositeDefn() = default;

void CompositeDefn::load(const MessageSetDefn& set, InputStream& stream, int version, FieldUpdates& updates) {
  stream.read(Name).read(SpecialSeparatorString).read(SeparatorType);
  bool fixedWidth = false;
  stream.read(fixedWidth);
  FixedWidth = fixedWidth ? 1 : 0;
  stream.read(id);
  readFields(set, stream, version, updates);

  readRulesAndFlags(stream, version);
  if (flags & kHasVariableField) workOutVariableKeys(false);
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
    if (!field.isComposite() || !field.composite) throw InvalidFile(messages::kExpectedNestedComposite);
    // Marks work on the shared definitions: every user of the composite sees them.
    current = field.composite;
  }
}

void CompositeDefn::workOutQuotedText() {
  if (quotedText != QuotedText::NotWorkedOut) return;
  quotedText = QuotedText::WorkingOut;
  for (const auto& field : fields) {
    if (field->isComposite()) {
      if (CompositeDefn* nested = field->composite) {
        nested->workOutQuotedText();
        if (nested->flags & kHoldsQuotedText) flags |= kHoldsQuotedText;
      }
    } else if (field->getKind() == FieldDefn::kPrimitive && field->getBaseType() == FieldDefn::kQuotedText) {
      flags |= kHoldsQuotedText;
    }
  }
  quotedText = QuotedText::WorkedOut;
}

ESeparatorType CompositeDefn::childSeparatorOf(const CompositeDefn* defn, ESeparatorType parentSeparator) {
  const int32_t own = defn ? defn->getSeparatorType() : qxSepAuto;
  if (own != qxSepAuto) return static_cast<ESeparatorType>(own);
  // One level deeper than the owner's separator: a field gives its components field2, a
  // component its subcomponents field3.
  if (parentSeparator == qxSepSegment) return qxSepField1;
  if (parentSeparator == qxSepRepeat) return qxSepField2;
  return static_cast<ESeparatorType>(parentSeparator + 1);
}

}  // namespace vantrelia
