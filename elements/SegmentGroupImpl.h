#pragma once
// A group of items inside a message: ordered, a choice of one, or unordered, in which case it
// remembers the order its children came in so that they are written back in that order.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "elements/ItemListNode.h"

namespace vantrelia {

class MessageItemDefn;
class SeparatorList;

class SegmentGroupImpl : public ItemListNode {
 public:
  SegmentGroupImpl(const MessageDefn& messageDefn, const MessageItemDefn& itemDefn, InternalElement* parent,
                   int32_t index, SeparatorList* separators);
  ~SegmentGroupImpl() override;

  std::unique_ptr<MessageElement> clone() override;
  void setEmpty() override;
  ENodeType getNodeType() const override { return qxComposite; }
  const char* getName() const override;
  std::u16string_view setEncodedValue(std::u16string_view text) override;
  std::u16string_view parseEncodedValue(std::u16string_view text, RecordedErrors& errors) override;
  std::u16string getEncodedValue() override;
  int getElementIndex() override;
  MetaDataRecord* getMetaData() override;
  bool getUserData(const std::u16string& key, std::u16string& value) override;

  bool parseElement(ParserStream& stream, RecordedErrors& errors, uint32_t& endKind,
                    ValidationLocation& location) override;
  int getCountForPath(std::string_view path, int kind, bool existingOnly) override;
  int countSegments(bool existingOnly) override;
  int countGroups(bool existingOnly) override;
  int countMessages(bool existingOnly) override;
  std::unique_ptr<InternalElement> cloneWithParent(InternalElement* newParent) override;
  void validateInto(SeparatorList& separators, ValidationErrorList& errors, bool includeWarnings,
                    ValidationLocation& location, bool asParsed) override;
  void validateTop(ValidationErrorList& out, bool includeWarnings) override;
  void appendPath(std::string& text) override;
  std::u16string getEncodedValueNoTouch() override;
  void forgetParserPositions(RecordedErrors& errors) override;
  SeparatorList* getSeparatorList() override { return separators; }
  const MessageSetDefn* getMessageSetDefn() override;
  bool writeElement(SeparatorList& list, bool minimize, int32_t& counter) override;
  SegmentGroupImpl* asGroup() override { return this; }

  const MessageItemDefn& getItemDefn() const { return *itemDefn; }
  bool isHidden() const;
  bool isUnordered() const;
  // The children in the order they were created or parsed; empty for an ordered group.
  const std::vector<InternalElement*>& getAppearanceOrder() const { return appearanceOrder; }

 protected:
  void childCreated(InternalElement* child) override;
  void childRemoved(InternalElement* child) override;
  std::string_view restAfterMatch(int index, std::string_view rest) override;
  const char* childNotFoundText() const override;
  const char* definitionName() const override;
  InternalElement* parentStepTarget() override { return parentSeenFromBelow(*this); }

 private:
  std::unique_ptr<SegmentGroupImpl> copyWithParent(InternalElement* newParent, SeparatorList* list) const;

  const MessageItemDefn* itemDefn;
  std::unique_ptr<std::string> pathCache;
  SeparatorList* separators;
  std::vector<InternalElement*> appearanceOrder;
};

}  // namespace vantrelia
