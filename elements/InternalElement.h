#pragma once
// What the engine itself needs of a node beyond the host's contract: parsing, writing, counting,
// validation and change tracking.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "elements/MessageElement.h"
#include "foundation/NodePool.h"

namespace vantrelia {

class MessageDefn;
class MessageSetDefn;
class ParserStream;
class RecordedErrors;
class SegmentElement;
class SegmentGroupImpl;
class SeparatorList;
class ValidationErrorList;
class ValidationLocation;

class InternalElement : public MessageElement {
 public:
  InternalElement(InternalElement* parentNode, int32_t indexInParent) : parent(parentNode), index(indexInParent) {}

  // Nodes come from the node pool: a parse makes one for every field it meets.
  static void* operator new(size_t size);
  static void operator delete(void* node, size_t size);

  // Both run validateTop on a fresh list, with and without warnings.
  ValidationErrorList validate() override;
  ValidationErrorList validateWithErrorsOnly() override;
  MessageElement* getParent() override;
  int getElementIndex() override;
  std::string getPath() override;
  // Every node reads and changes the separators and severities of the list in force for it; a
  // separator carried by a header field is also written into that field.
  std::u16string getSeparatorValue(ESeparatorType separator) override;
  void setSeparatorValue(ESeparatorType separator, std::u16string_view text) override;
  EMetaVErrSettingType getValidationErrorSettingType(int errorNumber) override;
  void setValidationErrorSettingType(int errorNumber, EMetaVErrSettingType type) override;

  // Whether the slot at this definition index holds a node; never creates one.
  virtual bool isChildPresent(int index) = 0;
  // Places a parsed segment at a definition index; false when the slot is taken.
  virtual bool attachSegment(SegmentElement* segment, int index) = 0;
  // Only fields can be required; a structural node never is.
  virtual bool isRequired();
  // Whether a segment may still go at the place that the item path from `position` to `end` names.
  virtual bool canStartOnPath(std::vector<int32_t>::const_iterator position,
                              std::vector<int32_t>::const_iterator end) = 0;
  virtual bool isChildRepeating(int index) = 0;
  // The two writers answer whether anything went to the output. A node kind writes through one
  // of them; the other stays false. A non-negative `counter` renumbers segments as they are written.
  virtual bool writeField(bool mayOmitFill, SeparatorList& list, bool minimize, int32_t& counter);
  virtual bool writeElement(SeparatorList& list, bool minimize, int32_t& counter);
  // `endKind` reports how the text of the node ended (which separator, or the end of a message).
  virtual bool parseElement(ParserStream& stream, RecordedErrors& errors, uint32_t& endKind,
                            ValidationLocation& location) = 0;
  virtual int getCountForPath(std::string_view path, int kind, bool existingOnly) = 0;
  virtual int countSegments(bool existingOnly) = 0;
  virtual int countGroups(bool existingOnly) = 0;
  virtual int countMessages(bool existingOnly) = 0;
  virtual bool hasParent() const;
  virtual std::unique_ptr<InternalElement> cloneWithParent(InternalElement* newParent) = 0;
  virtual void validateInto(SeparatorList& separators, ValidationErrorList& errors, bool includeWarnings,
                            ValidationLocation& location, bool asParsed) = 0;
  virtual void validateTop(ValidationErrorList& out, bool includeWarnings) = 0;
  virtual void appendPath(std::string& text) = 0;
  // Numeric paths exist below the segment only, so that nothing above a field contributes.
  virtual void appendNumericPath(std::string& text);
  // The wire text as a minimising write gives it, without marking anything changed.
  virtual std::u16string getEncodedValueNoTouch() = 0;
  virtual void forgetParserPositions(RecordedErrors& errors) = 0;
  // The change flags live in the nearest message; without one above, nothing has changed.
  virtual bool isTreeChanged();
  virtual void setTreeChanged(bool flag);
  virtual bool isChanged();
  virtual void setChanged(bool flag);
  // Returns what it didn't take; a node that parses nothing takes nothing.
  virtual std::u16string_view parseEncodedValue(std::u16string_view text, RecordedErrors& errors);
  // Primitive fields hold nothing that depends on the message definition.
  virtual void setMessageDefn(const MessageDefn* messageDefn);
  virtual void onFieldValueChanged(int fieldIndex, int repeatIndex, bool onlyFollowing);
  // Fields whose value a validation equation computes; none by default.
  virtual bool hasCalculatedValue(int fieldIndex);
  virtual double getCalculatedNumber(int fieldIndex);
  virtual std::u16string getCalculatedText(int fieldIndex);
  // Where children are always there or made on read, this is getElementAt(index).
  virtual InternalElement* getChildCreating(int index);
  virtual SeparatorList* getSeparatorList() = 0;
  virtual const MessageSetDefn* getMessageSetDefn() = 0;
  // Only messages and groups keep unplaced segments; elsewhere the call leaves `segment` with
  // the caller.
  virtual void addUnknownSegment(SegmentElement* segment);
  // Takes a parsed segment back out of its place (a child slot, a repeat or the unknown
  // segments) without deleting it, for a parse that gives this node up; null if it isn't here.
  virtual std::unique_ptr<SegmentElement> releaseSegment(SegmentElement* segment);
  virtual bool isPlaceholderSegment();
  // Only a message knows the option; everything below asks upward.
  virtual bool isMinimizeChanges();
  // Whether the message this node lies in writes back the text it was parsed from where it can:
  // then what the text didn't hold isn't made up on output either.
  virtual bool isPreservingParsedText();
  // Whether this node is a field, composite or repeat below a segment: a field's owner is the
  // first ancestor that isn't one.
  virtual bool isFieldNode() const { return false; }
  // The node as a group of a message, or null: the parse asks it for every repeat it places a
  // segment in, where a type lookup costs more than the rest of the question.
  virtual SegmentGroupImpl* asGroup() { return nullptr; }

  // Null for the root of a tree. Not owned: the parent owns this node.
  InternalElement* parent;
  // Position in the parent's child slots, or the repeat number inside a repeating parent.
  int32_t index;
};

}  // namespace vantrelia
