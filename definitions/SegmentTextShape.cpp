#include "definitions/SegmentTextShape.h"

#include "definitions/CompositeDefn.h"
#include "definitions/DataTypeCodes.h"
#include "definitions/FieldDefn.h"
#include "definitions/FieldInstancesControl.h"
#include "definitions/FieldPathDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SeparatorDefn.h"
#include "foundation/TextCompare.h"

namespace vantrelia {

SegmentTextShape::SegmentTextShape(const SegmentDefn& segment, const FieldInstancesControl* overrides)
    : overrides(overrides) {
  fieldSeparator = segment.getSeparatorType() == qxSepAuto ? qxSepField1
                                                           : static_cast<ESeparatorType>(segment.getSeparatorType());
  // Tagged, presence-indicator and name-value segments, variable fields and fixed widths all write
  // by rules of their own.
  if ((segment.getFlags() & ~SegmentDefn::kSituationalData) != 0 || segment.isFixedWidth() ||
      !segment.getSpecialSeparatorString().empty()) {
    return;
  }
  if (const MessageSetDefn* set = segment.getSet()) {
    for (const FieldPathDefn& typeField : set->getMessageTypeFields()) {
      typeFields = typeFields || equalIgnoringCase(typeField.getName().view(), segment.getName().view());
    }
  }
  fields.resize(segment.getFields().size());
  std::vector<int32_t> path;
  for (size_t i = 0; i < fields.size(); ++i) {
    path.assign(1, static_cast<int32_t>(i));
    if (!shapeOf(*segment.getFields()[i], path, fieldSeparator, fields[i])) {
      fields.clear();
      return;
    }
    if (fields[i].required) shownFields = static_cast<int32_t>(i) + 1;
  }
  if (const MessageSetDefn* set = segment.getSet()) {
    if (!takeCarried(segment, *set)) {
      fields.clear();
      return;
    }
    everyField = !set->getTrimSegments();
  }
  usable = true;
}

bool SegmentTextShape::takeCarried(const SegmentDefn& segment, const MessageSetDefn& set) {
  for (int32_t i = 0; i < kSeparatorCount; ++i) {
    const SeparatorDefn& separator = set.getSeparator(i);
    const FieldPathDefn& path = separator.getFieldPath();
    if (path.getName().view() != segment.getName().view()) continue;
    carrying = true;
    const std::vector<int32_t>& indexes = path.getIndexes();
    const int32_t position = separator.getPosition();
    const auto slot = static_cast<ESeparatorType>(i);
    if (indexes.empty()) {
      // Behind the tag, the field separator stands where a plain segment has it; at the end, the
      // segment separator. Anything else has rules of its own.
      if (!(slot == fieldSeparator && position == 1) && !(slot == qxSepSegment && position == -1)) return false;
    } else if (path.isNumeric() && indexes.size() == 1 && indexes.front() >= 1 &&
               static_cast<size_t>(indexes.front()) <= fields.size() && position >= 0) {
      Item& field = fields[static_cast<size_t>(indexes.front() - 1)];
      if (field.repeats || !field.children.empty()) return false;
      field.carried.emplace_back(slot, position);
    } else {
      return false;
    }
  }
  return true;
}

bool SegmentTextShape::shapeOf(const FieldDefn& field, std::vector<int32_t>& path, ESeparatorType parentSeparator,
                               Item& item) const {
  constexpr uint32_t kOwnRules = FieldDefn::kNotPlain | FieldDefn::kIsVariableTypeField | FieldDefn::kKeyBehind |
                                 FieldDefn::kEquationValue | FieldDefn::kHasFieldPresenceIndicator |
                                 FieldDefn::kRepeatsWithKey;
  // An alias of a type, or text with escape marks, is a custom type but a plain one to this check.
  const PrimitiveTypeDefn* custom = field.getCustomType();
  const bool asItStands = custom && custom->readsAsItStands();
  const uint32_t ownRules = asItStands ? kOwnRules & ~FieldDefn::kNotPlain : kOwnRules;
  if ((field.getFlags() & ownRules) || !field.getLinkedFieldName().empty() || !field.getFormat().empty() ||
      field.getIsBinary()) {
    return false;
  }
  // What a field node asks: the item's overrides where the field has some, else its definition.
  const FieldInstancesControl* control = field.getHasOverrides() ? overrides : nullptr;
  if (control ? control->getFormatter(path) != nullptr || control->getCountKind(path) != FieldDefn::kNoCount
              : field.getFormatter() != nullptr || field.getCountKind() != FieldDefn::kNoCount) {
    return false;
  }
  // Left and right alignment without a width neither trim nor fill; to a minimum width, a plain
  // value is filled on writing where the read took the filler off, and the check holds the text
  // to that. Other widths and zeros have rules of their own.
  const int32_t alignment = field.getAlignment();
  const bool fills = alignment == qxLeftMin || alignment == qxRightMin;
  if ((alignment != qxLeft && alignment != qxRight && !fills) || (fills && field.isComposite())) return false;
  item.required = control ? control->isRequired(path) : field.isRequired();
  const int32_t maxLength = control ? control->getMaxLength(path) : field.getMaxLength();
  item.maxLength = maxLength > 0 ? maxLength : 0;
  item.repeats = field.getMaxRepeats() != 1;
  if (fills) {
    const int32_t minLength = control ? control->getMinLength(path) : field.getMinLength();
    item.fillTo = minLength > 0 ? minLength : 0;
    item.fillAtEnd = alignment == qxLeftMin;
    // A required field left empty is written as its message type or its default: only the
    // default of a field that no message type is read from is known here.
    if (item.required && !typeFields) item.blank = (control ? control->getDefaultValue(path) : field.getDefaultValue()).view();
  }
  if (!field.isComposite()) {
    const int32_t type = field.getDataType();
    if (DataTypeCodes::isBinary(type) || type == DataTypeCodes::kQuotedText ||
        (type == DataTypeCodes::kCustom && !asItStands) || type == DataTypeCodes::kArray ||
        type == DataTypeCodes::kVariable) {
      return false;
    }
    // A custom value with nothing that asks for encoding goes out as it stands, escape marks or
    // not; the check refuses a text with any such character.
    if (custom && (custom->hasAllowedSeparators() || custom->getBaseType() == DataTypeCodes::kQuotedText ||
                   DataTypeCodes::isBinary(custom->getBaseType()))) {
      return false;
    }
    return true;
  }
  const CompositeDefn* composite = field.getComposite();
  if (!composite || composite->getFlags() != 0 || composite->isFixedWidth() ||
      composite->getCompositeType() != qxCompTypeNormal || !composite->getSpecialSeparatorString().empty()) {
    return false;
  }
  item.childSeparator = CompositeDefn::childSeparatorOf(composite, parentSeparator);
  if (item.childSeparator == qxSepNone || item.childSeparator == qxSepString) return false;
  item.children.resize(composite->getFields().size());
  for (size_t i = 0; i < item.children.size(); ++i) {
    path.push_back(static_cast<int32_t>(i));
    const bool shaped = shapeOf(*composite->getFields()[i], path, item.childSeparator, item.children[i]);
    path.pop_back();
    if (!shaped) return false;
  }
  return !item.children.empty();
}

}  // namespace vantrelia
