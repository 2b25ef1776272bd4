#pragma once
// The repeats of one field: a list of field or composite items under one index of the segment,
// between repeat separators. The items of a variable field take one type for all repeats, or,
// where the key repeats too, each the type of the key's repeat at the same place.

#include <cstdint>
#include <memory>

#include "elements/RepeatingFieldBase.h"

namespace vantrelia {

class RepeatFieldImpl : public RepeatingFieldBase {
 public:
  using RepeatingFieldBase::RepeatingFieldBase;

  void removeElementAt(int index) override;
  bool writeField(bool mayOmitFill, SeparatorList& list, bool minimize, int32_t& counter) override;
  bool parseElement(ParserStream& stream, RecordedErrors& errors, uint32_t& endKind,
                    ValidationLocation& location) override;
  bool hasCalculatedValue(int fieldIndex) override;
  double getCalculatedNumber(int fieldIndex) override;
  std::u16string getCalculatedText(int fieldIndex) override;

  // The repeat at `repeat` takes the type its key holds now; its text goes over to the new item.
  void retypeRepeat(int repeat);

 protected:
  std::unique_ptr<FieldBase> makeItem(int32_t itemIndex) override;
  std::unique_ptr<RepeatingFieldBase> makeEmptyCopy(InternalElement* newParent) const override;

 private:
  // The type of the repeat at `repeat` of a variable field that repeats with its key.
  std::unique_ptr<VariableFieldType> repeatType(int32_t repeat);
  // Reads one item from the stream: by a token cut here, or by the item itself.
  void readItem(ParserStream& stream, RecordedErrors& errors, ValidationLocation& location, bool separatorActive,
                bool useGeneric);
};

}  // namespace vantrelia
