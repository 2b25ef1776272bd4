#pragma once
// A field of an array type: a list of primitive items inside one field, joined by the array's
// separator (a separator of the set, or a text of the array's own).

#include <cstdint>
#include <memory>
#include <string>

#include "elements/RepeatingFieldBase.h"

namespace vantrelia {

class ArrayTypeDefn;

class ArrayFieldImpl : public RepeatingFieldBase {
 public:
  using RepeatingFieldBase::RepeatingFieldBase;

  void removeElementAt(int index) override;
  bool writeField(bool mayOmitFill, SeparatorList& list, bool minimize, int32_t& counter) override;
  bool parseElement(ParserStream& stream, RecordedErrors& errors, uint32_t& endKind,
                    ValidationLocation& location) override;

  // The field's array type, or for a variable field the one its key chose; null when there is none.
  const ArrayTypeDefn* getArrayType() const;
  // The data type of the items, through a custom item type to its base.
  int32_t getItemType() const;

 protected:
  std::unique_ptr<FieldBase> makeItem(int32_t itemIndex) override;
  std::unique_ptr<RepeatingFieldBase> makeEmptyCopy(InternalElement* newParent) const override;

 private:
  // The text between items: the array's own, or the value of its separator in the list.
  std::u16string separatorText(const SeparatorList& list) const;
  // A new item at the end that reads `text`.
  void appendItemReading(std::u16string_view text, RecordedErrors& errors, ValidationLocation& location,
                         int32_t number);
};

}  // namespace vantrelia
