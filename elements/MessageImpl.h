#pragma once
// The root of a message tree (or a message inside a message set): one slot for each item of its
// definition, its own separators, the findings its parse recorded, and the change flags of
// everything below it.

#include <cstdint>
#include <memory>

#include "elements/ItemListNode.h"
#include "elements/Message.h"
#include "parsing/SegmentMatch.h"
#include "validation/RecordedErrors.h"

namespace vantrelia {

class MessageDefn;
class ParseContext;
class ParserStream;
struct ParseCallback;
class SeparatorList;

class MessageImpl : public ItemListNode, public Message {
 public:
  // Builds its own separators from the set's definition, started as for a message written from
  // scratch. `parentSeparators` is the list of an enclosing message, for sets that take theirs
  // from it.
  MessageImpl(const MessageDefn& messageDefn, InternalElement* parent, int32_t index,
              const SeparatorList* parentSeparators = nullptr);
  // A message of a parse shares the separators its segments were read with.
  MessageImpl(const MessageDefn& messageDefn, InternalElement* parent, int32_t index,
              std::shared_ptr<SeparatorList> sharedSeparators);
  ~MessageImpl() override;

  // Places the segments of the look-ahead and the stream into this message by its state tables;
  // false when the text isn't this message.
  bool parseSegments(ParseContext& context, LookAheadList& lookAhead, LookAheadList::iterator& iterator,
                     ParserStream& stream, const ParseCallback* callback, ValidationLocation& location);
  const std::shared_ptr<SeparatorList>& getSeparatorHandle() const { return separators; }

  std::unique_ptr<MessageElement> clone() override;
  ENodeType getNodeType() const override { return qxComposite; }
  const char* getName() const override;
  std::u16string_view setEncodedValue(std::u16string_view text) override;
  std::u16string getEncodedValue() override;
  void setValue(const unsigned char* bytes, int length) override;
  MessageElement* getParent() override;
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
  bool isTreeChanged() override;
  void setTreeChanged(bool flag) override;
  bool isChanged() override;
  void setChanged(bool flag) override;
  SeparatorList* getSeparatorList() override { return separators.get(); }
  const MessageSetDefn* getMessageSetDefn() override;
  bool isMinimizeChanges() override;
  bool isPreservingParsedText() override;
  // The characters of the text the message was parsed from; they are its output while nothing in
  // it changes and the factory preserves parsed text.
  void setSourceText(std::shared_ptr<const std::u16string> text, int32_t start, int32_t end);
  bool writeElement(SeparatorList& list, bool minimize, int32_t& counter) override;

  bool getIsCreated() const { return isCreated; }
  void setCreated(bool value) { isCreated = value; }
  // The findings as they stand, for the parse that adds to them.
  RecordedErrors& getRecordedErrors() { return recordedErrors; }
  // All the findings of the parse: fields it left uncut in their text are cut first, since what
  // their cut finds belongs there too.
  RecordedErrors& getParseFindings();
  // Cuts every field that a parse left in the text, in this message and the messages inside it.
  void cutAllFields();

 protected:
  std::string_view restAfterMatch(int index, std::string_view rest) override;
  const char* childNotFoundText() const override;
  const char* definitionName() const override;
  InternalElement* parentStepTarget() override { return parent; }

 private:
  RecordedErrors recordedErrors;
  bool treeChanged = true;
  bool changed = false;
  // Shared: embedded messages and a parse in progress hold it for a time.
  std::shared_ptr<SeparatorList> separators;
  bool isCreated = false;
  std::shared_ptr<const std::u16string> sourceText;
  int32_t sourceStart = 0;
  int32_t sourceLength = 0;
};

}  // namespace vantrelia
