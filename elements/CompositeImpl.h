#pragma once
// A field made of fields: one child for each field of its composite, made when first asked for,
// read and written like a small segment without a tag, one separator level deeper.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "elements/ElementContainer.h"
#include "elements/FieldBase.h"
#include "elements/FieldContainer.h"

namespace vantrelia {

class CompositeDefn;
class FieldInstancesControl;
struct ParserToken;

class CompositeImpl : public FieldBase, public FieldContainer, public ElementContainer {
 public:
  // `parentSeparator` is the separator the owner uses at this composite's level.
  CompositeImpl(const FieldDefn& fieldDefn, InternalElement* parent, int32_t index, ESeparatorType parentSeparator);
  ~CompositeImpl() override;

  MessageElement* getElementAt(const char* path) override;
  MessageElement* getElementAt(int index) override;
  int getElementCount() override { return getFieldCount(); }
  std::unique_ptr<MessageElement> clone() override;
  void setEmpty() override;
  bool isEmpty() override;
  void setNull() override;
  bool isNull() override;
  ENodeType getNodeType() const override { return qxComposite; }
  std::u16string_view setEncodedValue(std::u16string_view text) override;
  std::u16string getEncodedValue() override;
  void setValue(const unsigned char* bytes, int length) override;
  void setValue(std::u16string_view text) override;
  std::u16string getValue() override;
  ElementCollection getElementCollection(const char* spec) override;

  bool isChildPresent(int index) override;
  bool isChildRepeating(int) override { return false; }
  bool writeField(bool mayOmitFill, SeparatorList& list, bool minimize, int32_t& counter) override;
  bool parseElement(ParserStream& stream, RecordedErrors& errors, uint32_t& endKind,
                    ValidationLocation& location) override;
  int getCountForPath(std::string_view path, int kind, bool existingOnly) override;
  int countSegments(bool existingOnly) override;
  int countGroups(bool existingOnly) override;
  int countMessages(bool existingOnly) override;
  std::unique_ptr<InternalElement> cloneWithParent(InternalElement* newParent) override;
  void validateInto(SeparatorList& separators, ValidationErrorList& errors, bool includeWarnings,
                    ValidationLocation& location, bool asParsed) override;
  void appendNumericPath(std::string& text) override;
  std::u16string getEncodedValueNoTouch() override;
  void forgetParserPositions(RecordedErrors& errors) override;
  void onFieldValueChanged(int fieldIndex, int repeatIndex, bool onlyFollowing) override;
  InternalElement* getChildCreating(int index) override;
  void typeChanged() override;

  int getChildCount() override { return getFieldCount(); }
  std::span<const std::unique_ptr<InternalElement>> getChildArray() override;
  int getFieldCount() override;
  const std::vector<std::unique_ptr<FieldDefn>>& getFieldDefns() override;

  const CompositeDefn* getCompositeDefn() const { return compositeDefn; }
  ESeparatorType getChildSeparator() const { return childSeparator; }
  FieldBase* childAt(int index) const;

 private:
  std::unique_ptr<FieldBase> makeChild(int index);
  void readChildToken(int index, ParserStream& stream, ParserToken& token, bool separatorInUse, bool useGeneric,
                      RecordedErrors& errors, ValidationLocation& location, bool& readDirectly);
  // The item's overrides of this composite's children, null where there are none.
  const FieldInstancesControl* childOverrides();
  bool childRequired(int index);
  bool childHasDefault(int index);

  NodeVector<InternalElement> children;
  const CompositeDefn* compositeDefn;
  ESeparatorType parentSeparator;
  ESeparatorType childSeparator;
  std::unique_ptr<std::string> numericPathCache;
};

}  // namespace vantrelia
