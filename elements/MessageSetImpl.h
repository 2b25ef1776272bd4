#pragma once
// The messages of one message set in a row: the root of a parse before its message is known, or
// the place in an outer message where messages of another set are embedded.

#include <cstdint>
#include <memory>
#include <vector>

#include "elements/InternalElement.h"

namespace vantrelia {

class MessageItemDefn;
class MessageSetDefn;

class MessageSetImpl : public InternalElement {
 public:
  // `itemDefn` is the item of the outer message that holds the set, null at the root of a parse.
  MessageSetImpl(const MessageItemDefn* itemDefn, const MessageSetDefn* setDefn, InternalElement* parent,
                 int32_t index, SeparatorList* separators);
  ~MessageSetImpl() override;

  // A new message of the set, by the exact name of its definition.
  MessageElement* appendElement(const char* messageType) override;
  void removeAllElements() override;
  void removeElementAt(int index) override;
  MessageElement* getElementAt(const char* path) override;
  MessageElement* getElementAt(int index) override;
  int getElementCount() override { return static_cast<int>(messages.size()); }
  std::unique_ptr<MessageElement> clone() override;
  void setEmpty() override;
  bool isEmpty() override { return messages.empty(); }
  ENodeType getNodeType() const override { return qxMessageSet; }
  const char* getName() const override;
  std::u16string_view setEncodedValue(std::u16string_view text) override;
  std::u16string_view parseEncodedValue(std::u16string_view text, RecordedErrors& errors) override;
  std::u16string getEncodedValue() override;
  ElementCollection getElementCollection(const char* spec) override;
  int getElementIndex() override;
  MetaDataRecord* getMetaData() override;
  bool getUserData(const std::u16string& key, std::u16string& value) override;

  bool isChildPresent(int index) override;
  bool attachSegment(SegmentElement* segment, int index) override;
  bool canStartOnPath(std::vector<int32_t>::const_iterator position,
                      std::vector<int32_t>::const_iterator end) override;
  bool isChildRepeating(int) override { return true; }
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
  const MessageSetDefn* getMessageSetDefn() override { return setDefn; }
  bool writeElement(SeparatorList& list, bool minimize, int32_t& counter) override;

  const MessageItemDefn* getItemDefn() const { return itemDefn; }
  // A message a parse made for this set; its parent and index are this set's already.
  void addParsedMessage(std::unique_ptr<InternalElement> message) { messages.push_back(std::move(message)); }

 private:
  std::unique_ptr<MessageSetImpl> copyWithParent(InternalElement* newParent, SeparatorList* list) const;

  const MessageItemDefn* itemDefn;
  NodeVector<InternalElement> messages;
  SeparatorList* separators;
  const MessageSetDefn* setDefn;
};

}  // namespace vantrelia
