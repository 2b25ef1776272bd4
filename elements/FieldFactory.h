#pragma once
// Which node class a field takes, and the making of it: a plain field, a composite, a custom field
// or an array by the field's data type, and for a variable field by the type that its key's text
// chooses now. Segments, composites and repeats make their fields here, and here a field whose
// key changed is made anew.

#include <cstdint>
#include <memory>

#include "elements/VariableFieldType.h"
#include "foundation/Enumerations.h"

namespace vantrelia {

class FieldBase;
class FieldDefn;
class InternalElement;

class FieldFactory {
 public:
  // The class of node for one value of `defn`: qxVarBasic (FieldImpl), qxVarComposite, qxVarCustom
  // or qxVarArray. A variable field goes by `type`; without one it is basic.
  static EMetaVariableType classOf(const FieldDefn& defn, const VariableFieldType* type);

  // One value of `defn` as child `index` of `parent`, not a repeating one: of the class above, with
  // `type` handed over. `separator` is the separator that `parent` uses at this place.
  static std::unique_ptr<FieldBase> makeValue(const FieldDefn& defn, InternalElement* parent, int32_t index,
                                              ESeparatorType separator, std::unique_ptr<VariableFieldType> type);

  // The type of the variable field `defn` among the children of `owner` (a segment or composite),
  // chosen by the current text of its key field, which is made when absent.
  static std::unique_ptr<VariableFieldType> typeFromKey(InternalElement& owner, const FieldDefn& defn);
  // The same with the key's text given.
  static std::unique_ptr<VariableFieldType> typeFor(const FieldDefn& defn, std::u16string_view keyText);

  // Whether a variable field, not repeating and with a key that doesn't repeat, was typed for
  // another text than its key holds now.
  static bool isStale(InternalElement& owner, FieldBase& field);

  // After its key changed: the ruled field in `slot`, child `index` of `owner`, is made anew of the
  // key's type, and its text, when it had any, goes over to the new node.
  static void retype(InternalElement& owner, std::unique_ptr<InternalElement>& slot, int32_t index);
};

}  // namespace vantrelia
