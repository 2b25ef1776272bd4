#pragma once
// What a repeating field and an array field share: an owned list of items under one index of the
// owner, every item existing (no empty slots), and the list operations, state and paths of such a
// list. The two differ in how their items are made, cut and joined.

#include <cstdint>
#include <memory>
#include <vector>

#include "elements/FieldBase.h"

namespace vantrelia {

class RepeatingFieldBase : public FieldBase {
 public:
  RepeatingFieldBase(const FieldDefn& fieldDefn, InternalElement* parent, int32_t index,
                     ESeparatorType fieldSeparator);
  ~RepeatingFieldBase() override;

  MessageElement* appendElement(const char* messageType) override;
  void removeAllElements() override;
  MessageElement* getElementAt(const char* path) override;
  MessageElement* getElementAt(int index) override;
  int getElementCount() override { return static_cast<int>(items.size()); }
  std::unique_ptr<MessageElement> clone() override { return cloneWithParent(parent); }
  void setEmpty() override;
  bool isEmpty() override;
  void setNull() override;
  bool isNull() override;
  ENodeType getNodeType() const override { return qxRepeating; }
  std::u16string_view setEncodedValue(std::u16string_view text) override;
  std::u16string getEncodedValue() override;
  void setValue(const unsigned char* bytes, int length) override;
  void setValue(std::u16string_view text) override { setEncodedValue(text); }
  std::u16string getValue() override { return getEncodedValue(); }
  ElementCollection getElementCollection(const char* spec) override;

  bool isChildRepeating(int) override { return true; }
  void validateInto(SeparatorList& separators, ValidationErrorList& errors, bool includeWarnings,
                    ValidationLocation& location, bool asParsed) override;
  void appendNumericPath(std::string& text) override;
  std::u16string getEncodedValueNoTouch() override;
  void forgetParserPositions(RecordedErrors& errors) override;
  // The copy takes this list's variable type, then a copy of each item.
  std::unique_ptr<InternalElement> cloneWithParent(InternalElement* newParent) override;
  void onFieldValueChanged(int fieldIndex, int repeatIndex, bool onlyFollowing) override;

  ESeparatorType getFieldSeparator() const { return fieldSeparator; }

 protected:
  // A new item at `itemIndex`, of the class this list holds there; not stored.
  virtual std::unique_ptr<FieldBase> makeItem(int32_t itemIndex) = 0;
  // A new, empty list of the same class on the same definition, for clones.
  virtual std::unique_ptr<RepeatingFieldBase> makeEmptyCopy(InternalElement* newParent) const = 0;
  // Closes the gap of a removed item: the items behind it move up and are numbered again.
  void eraseItem(int at);
  // The default of the instance as a writer gives it for an empty list.
  const WideText& defaultText() { return getDefaultValue(); }

  NodeVector<InternalElement> items;
  ESeparatorType fieldSeparator;
};

}  // namespace vantrelia
