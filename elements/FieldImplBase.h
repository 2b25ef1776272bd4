#pragma once
// A field that holds one value: text, null, or (in a binary field) bytes. How the value is set,
// read, taken from wire text and handed out; FieldImpl and CustomFieldImpl add the writers.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/FieldPathDefn.h"
#include "elements/FieldBase.h"
#include "elements/FieldText.h"
#include "parsing/SeparatorList.h"

namespace vantrelia {

class NCPDPSegmentImpl;
class ValidationErrorList;

class FieldImplBase : public FieldBase, public SeparatorField {
 public:
  FieldImplBase(const FieldDefn& fieldDefn, InternalElement* parent, int32_t index, ESeparatorType fieldSeparator);
  ~FieldImplBase() override;

  MessageElement* getElementAt(const char* path) override;
  MessageElement* getElementAt(int index) override;
  int getElementCount() override { return 0; }
  ElementCollection getElementCollection(const char* spec) override;
  void setEmpty() override;
  bool isEmpty() override;
  void setNull() override;
  bool isNull() override { return getFlag(kNull); }
  std::u16string_view setEncodedValue(std::u16string_view text) override;
  std::u16string getEncodedValue() override;
  void setValue(const unsigned char* bytes, int length) override;
  void setValue(std::u16string_view text) override;
  std::u16string getValue() override;
  std::vector<unsigned char> getBinaryValue() override;

  bool isChildRepeating(int) override { return false; }
  bool parseElement(ParserStream& stream, RecordedErrors& errors, uint32_t& endKind,
                    ValidationLocation& location) override;
  std::u16string getEncodedValueNoTouch() override;

  // What a parse hands the field: the text of its token. With `stable`, the text outlives the
  // field (it lies in the segment's source text) and is kept as a view.
  void readValue(std::u16string_view token, bool stable);
  // The value as it is stored, with no default, count or formatting applied.
  std::u16string_view storedValue() const { return value.view(); }
  bool isBinaryField() const;
  // A binary field whose wire form is an encoding (Base64, uuencode, hex), not raw units.
  bool isEncodedBinary() const;
  // The data type that decides the value's form: for a variable field, the type chosen at run time;
  // for an item of an array, the array's item type.
  virtual int32_t getBaseType() const;
  // The value's wire form, as the writer hands it out: separators in it replaced or quoted.
  virtual std::u16string encodeForWire(std::u16string_view text, const SeparatorList& list, int32_t base) const;

  // The length that a raw binary field at `index` of `owner` reads: the value of the last sibling
  // before it that its definition names, 0 without one.
  static int32_t lengthFromSibling(InternalElement& owner, const std::vector<std::unique_ptr<FieldDefn>>& fields,
                                   int index);

  // The separators in the value that may not stand there: finding 1015 "Invalid characters in
  // field", once per field, when its severity asks for it. True when it was found.
  bool checkSeparatorsInValue(ValidationErrorList& errors, bool includeWarnings, const ValidationLocation& location);

  // What the separator list asks of a field whose characters it checks or reads.
  const PrimitiveTypeDefn* getCustomType() const override;
  int32_t getFieldType() const override { return getBaseType(); }
  bool isSeparatorAllowed(int32_t separator) const override;
  const FieldPathDefn& getFieldPath() const override;
  // The element's path as text stays in view beside it; the field's own code asks for the header
  // path by headerFieldPath, since on a non-const field the text one would be chosen.
  using FieldBase::getFieldPath;
  const FieldPathDefn& headerFieldPath() const { return getFieldPath(); }
  // Whether a separator still to be read may come from this field; false only when none can.
  bool mayCarrySeparators(const SeparatorList& list);

 protected:
  // The text getValue gives: null text, count, calculation, stored value or default.
  std::u16string currentValue();
  void normalizeFormatted();
  // The segment of a count field of a tagged segment, whose value is the count of its run; null
  // for any other field.
  NCPDPSegmentImpl* taggedRunOwner();
  void updateLengthField();
  // Takes off the zeros or filler that the alignment put around a value read from the wire.
  void trimForAlignment(SeparatorList* list);
  // Done after every change by the host: the change marks and the notice to a variable type's key.
  void valueChanged();
  void copyValueInto(FieldImplBase& copy) const;
  // The list's null marker, empty when it has none; valid while the list stands unchanged.
  std::u16string_view nullText();

  uint8_t measuring = 0;
  ESeparatorType fieldSeparator;
  FieldText value;
  std::unique_ptr<std::vector<unsigned char>> binaryValue;

 private:
  // The field's place as a separator's header path names it: the segment, then 1-based positions.
  mutable std::unique_ptr<FieldPathDefn> headerPath;
};

}  // namespace vantrelia
