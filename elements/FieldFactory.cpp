#include "elements/FieldFactory.h"

#include "definitions/ArrayTypeDefn.h"
#include "definitions/DataTypeCodes.h"
#include "definitions/FieldDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "definitions/VariableFieldDefn.h"
#include "elements/ArrayFieldImpl.h"
#include "elements/CompositeImpl.h"
#include "elements/CustomFieldImpl.h"
#include "elements/FieldImpl.h"

namespace vantrelia {

EMetaVariableType FieldFactory::classOf(const FieldDefn& defn, const VariableFieldType* type) {
  if (defn.isComposite()) return qxVarComposite;
  switch (defn.getDataType()) {
    case DataTypeCodes::kArray:
      return qxVarArray;
    case DataTypeCodes::kCustom:
      return defn.getCustomType() && !defn.getCustomType()->isPlainAlias() ? qxVarCustom : qxVarBasic;
    case DataTypeCodes::kVariable:
      return type ? type->getKind() : qxVarBasic;
    default:
      return qxVarBasic;
  }
}

std::unique_ptr<FieldBase> FieldFactory::makeValue(const FieldDefn& defn, InternalElement* parent, int32_t index,
                                                   ESeparatorType separator, std::unique_ptr<VariableFieldType> type) {
  std::unique_ptr<FieldBase> field;
  switch (classOf(defn, type.get())) {
    case qxVarComposite:
      field = std::make_unique<CompositeImpl>(defn, parent, index, separator);
      break;
    case qxVarCustom:
      field = std::make_unique<CustomFieldImpl>(defn, parent, index, separator);
      break;
    case qxVarArray:
      field = std::make_unique<ArrayFieldImpl>(defn, parent, index, separator);
      break;
    default:
      field = std::make_unique<FieldImpl>(defn, parent, index, separator);
      break;
  }
  if (type) field->setVariableType(std::move(type));
  return field;
}

std::unique_ptr<VariableFieldType> FieldFactory::typeFor(const FieldDefn& defn, std::u16string_view keyText) {
  auto type = std::make_unique<VariableFieldType>(defn);
  type->resolve(keyText);
  return type;
}

std::unique_ptr<VariableFieldType> FieldFactory::typeFromKey(InternalElement& owner, const FieldDefn& defn) {
  const VariableFieldDefn* variable = defn.getVariableDefn();
  const int32_t key = variable ? variable->getKeyFieldIndex() : -1;
  if (key < 0 || key >= owner.getElementCount()) return typeFor(defn, {});
  return typeFor(defn, owner.getChildCreating(key)->getValue());
}

bool FieldFactory::isStale(InternalElement& owner, FieldBase& field) {
  const VariableFieldType* type = field.getVariableType();
  const VariableFieldDefn* variable = field.getFieldDefn().getVariableDefn();
  if (!type || !variable) return false;
  const int32_t key = variable->getKeyFieldIndex();
  if (key < 0 || key >= owner.getElementCount() || owner.isChildRepeating(key) ||
      field.getFieldDefn().getMaxRepeats() != 1) {
    return false;
  }
  return owner.getChildCreating(key)->getValue() != type->getKeyText();
}

void FieldFactory::retype(InternalElement& owner, std::unique_ptr<InternalElement>& slot, int32_t index) {
  if (!slot) return;
  const std::u16string text = slot->getValue();
  slot.reset();
  if (!text.empty()) owner.getChildCreating(index)->setValue(std::u16string_view(text));
}

}  // namespace vantrelia
