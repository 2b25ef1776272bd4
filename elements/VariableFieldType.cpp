#include "elements/VariableFieldType.h"

#include "definitions/ArrayTypeDefn.h"
#include "definitions/CompositeDefn.h"
#include "definitions/DataTypeCodes.h"
#include "definitions/FieldDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "definitions/VariableFieldDefn.h"

namespace vantrelia {

namespace {

const MessageWarehouseDefn* warehouseOf(const FieldDefn& field) {
  return field.getSet() ? field.getSet()->getWarehouse() : nullptr;
}

template <typename Map>
auto findById(const Map& map, int32_t id) -> decltype(map.begin()->second.get()) {
  const auto found = map.find(id);
  return found == map.end() ? nullptr : found->second.get();
}

// Types are named in narrow text and keys are wide: a key names a type when its units are the
// name's characters.
bool keyNames(std::u16string_view key, std::string_view name) {
  if (key.size() != name.size()) return false;
  for (size_t i = 0; i < key.size(); ++i) {
    if (key[i] != static_cast<char16_t>(static_cast<unsigned char>(name[i]))) return false;
  }
  return true;
}

template <typename Map>
auto findByName(const Map& map, std::u16string_view key) -> decltype(map.begin()->second.get()) {
  for (const auto& [id, type] : map) {
    if (keyNames(key, type->getName().view())) return type.get();
  }
  return nullptr;
}

}  // namespace

VariableFieldType::VariableFieldType(const FieldDefn& field)
    : field(&field), definition(field.getVariableDefn()), basicType(DataTypeCodes::kString) {}

bool VariableFieldType::takeCustom(const PrimitiveTypeDefn* type) {
  if (!type) return false;
  // A plain alias is its base type and nothing more: the field is a plain one.
  if (type->isPlainAlias()) {
    kind = qxVarBasic;
    basicType = type->getBaseType();
  } else {
    kind = qxVarCustom;
    customType = type;
  }
  return true;
}

void VariableFieldType::takeTypeId(int32_t id) {
  if (const CompositeDefn* found = field->getSet() ? field->getSet()->findCompositeById(id) : nullptr) {
    kind = qxVarComposite;
    composite = found;
    return;
  }
  const MessageWarehouseDefn* warehouse = warehouseOf(*field);
  if (!warehouse) return;
  if (takeCustom(findById(warehouse->getPrimitiveTypes(), id))) return;
  if (const ArrayTypeDefn* found = findById(warehouse->getArrayTypes(), id)) {
    kind = qxVarArray;
    arrayType = found;
  }
}

void VariableFieldType::resolve(std::u16string_view key) {
  keyText.assign(key);
  kind = qxVarBasic;
  basicType = DataTypeCodes::kString;
  composite = nullptr;
  customType = nullptr;
  arrayType = nullptr;
  if (definition) {
    const auto& typeIds = definition->getTypeIds();
    if (const auto found = typeIds.find(keyText); found != typeIds.end()) {
      takeTypeId(found->second);
      return;
    }
    const auto& basicTypes = definition->getBasicTypes();
    if (const auto found = basicTypes.find(keyText); found != basicTypes.end()) {
      basicType = found->second;
      return;
    }
  }
  if (key.empty()) return;
  const MessageWarehouseDefn* warehouse = warehouseOf(*field);
  if (warehouse && takeCustom(findByName(warehouse->getPrimitiveTypes(), key))) return;
  if (warehouse) {
    if (const ArrayTypeDefn* found = findByName(warehouse->getArrayTypes(), key)) {
      kind = qxVarArray;
      arrayType = found;
      return;
    }
  }
  if (field->getSet()) {
    for (const auto& candidate : field->getSet()->getComposites()) {
      if (!keyNames(key, candidate->getName().view())) continue;
      kind = qxVarComposite;
      composite = candidate.get();
      return;
    }
  }
}

const PrimitiveTypeDefn* VariableFieldType::getCustomType() const {
  if (kind == qxVarCustom) return customType;
  if (kind == qxVarArray && arrayType) return arrayType->getCustomType();
  return nullptr;
}

int32_t VariableFieldType::getBaseType() const {
  switch (kind) {
    case qxVarComposite:
      return FieldDefn::kNoDataType;
    case qxVarCustom:
      return customType->getBaseType();
    case qxVarArray:
      if (arrayType->getDataType() == DataTypeCodes::kCustom && arrayType->getCustomType()) {
        return arrayType->getCustomType()->getBaseType();
      }
      return arrayType->getDataType();
    default:
      return basicType;
  }
}

}  // namespace vantrelia
