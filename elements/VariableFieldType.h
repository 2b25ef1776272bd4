#pragma once
// The type that a variable field (data type 11) takes from the text of its key field: a basic
// data type, a composite, a custom type or an array type. Each variable field (and, where the
// key repeats too, each repeat) holds its own, resolved again whenever the key's text changes.

#include <cstdint>
#include <string>
#include <string_view>

#include "foundation/Enumerations.h"

namespace vantrelia {

class ArrayTypeDefn;
class CompositeDefn;
class FieldDefn;
class PrimitiveTypeDefn;
class VariableFieldDefn;

class VariableFieldType {
 public:
  // A new type is a basic string until it is resolved.
  explicit VariableFieldType(const FieldDefn& field);

  // Chooses the type for this key text. The key's entry in the type map names a composite, a custom
  // type or an array type (looked up in that order; none of them gives a string); else its entry in
  // the basic type map gives a data type; else the key text itself is taken as the name of a custom
  // type, an array type or a composite, in that order.
  void resolve(std::u16string_view keyText);

  const VariableFieldDefn* getDefinition() const { return definition; }
  EMetaVariableType getKind() const { return kind; }
  const std::u16string& getKeyText() const { return keyText; }
  const CompositeDefn* getComposite() const { return kind == qxVarComposite ? composite : nullptr; }
  const ArrayTypeDefn* getArrayType() const { return kind == qxVarArray ? arrayType : nullptr; }
  // The custom type of a custom kind, or the item type of an array of custom items.
  const PrimitiveTypeDefn* getCustomType() const;
  // The data type a value of this type is held as: the basic type, a custom type's base, an
  // array's item type (through its custom type); -1 for a composite.
  int32_t getBaseType() const;

 private:
  void takeTypeId(int32_t id);
  bool takeCustom(const PrimitiveTypeDefn* type);

  const FieldDefn* field;
  const VariableFieldDefn* definition;
  EMetaVariableType kind = qxVarBasic;
  std::u16string keyText;
  int32_t basicType;
  const CompositeDefn* composite = nullptr;
  const PrimitiveTypeDefn* customType = nullptr;
  const ArrayTypeDefn* arrayType = nullptr;
};

}  // namespace vantrelia
