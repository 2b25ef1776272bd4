#pragma once
// The repeats of a segment or group item whose MaxRepeats isn't 1: a list that grows only by
// appendElement and by parsing, never by being read.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "elements/InternalElement.h"

namespace vantrelia {

class MessageDefn;
class MessageItemDefn;

class RepeatItemImpl : public InternalElement {
 public:
  RepeatItemImpl(const MessageDefn& messageDefn, const MessageItemDefn& itemDefn, InternalElement* parent,
                 int32_t index, SeparatorList* separators);
  ~RepeatItemImpl() override;

  MessageElement* appendElement(const char* messageType) override;
  void removeAllElements() override;
  void removeElementAt(int index) override;
  MessageElement* getElementAt(const char* path) override;
  MessageElement* getElementAt(int index) override;
  int getElementCount() override { return static_cast<int>(items.size()); }
  std::unique_ptr<MessageElement> clone() override;
  void setEmpty() override;
  bool isEmpty() override;
  ENodeType getNodeType() const override { return qxRepeating; }
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
  std::unique_ptr<SegmentElement> releaseSegment(SegmentElement* segment) override;
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
  const MessageSetDefn* getMessageSetDefn() override;
  bool writeElement(SeparatorList& list, bool minimize, int32_t& counter) override;

  const MessageItemDefn& getItemDefn() const { return *itemDefn; }

 private:
  std::unique_ptr<RepeatItemImpl> copyWithParent(InternalElement* newParent, SeparatorList* list) const;
  std::unique_ptr<InternalElement> makeItem(int32_t itemIndex);

  const MessageDefn* messageDefn;
  const MessageItemDefn* itemDefn;
  NodeVector<InternalElement> items;
  SeparatorList* separators;
};

}  // namespace vantrelia
