#pragma once
// A segment with a definition: one slot for each of its fields, made when first asked for. The
// three special kinds and the ordinary one share everything here but the cutting and writing of
// their fields.

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <string>
#include <vector>

#include "elements/FieldContainer.h"
#include "elements/SegmentElement.h"

namespace vantrelia {

class FieldBase;
class MessageItemDefn;
class SegmentDefn;
class SeparatorCut;
struct ParserToken;

class SegmentImplBase : public SegmentElement, public FieldContainer {
 public:
  // `itemDefn` is the message item the segment stands at, null for a segment without one.
  SegmentImplBase(const SegmentDefn& segmentDefn, const MessageItemDefn* itemDefn, InternalElement* parent,
                  int32_t index, SeparatorList* separators);
  ~SegmentImplBase() override;

  SegmentImplBase* asDefined() override { return this; }

  // A copy is of the kind the factory makes for the definition, with copies of the fields.
  std::unique_ptr<MessageElement> clone() override;
  std::unique_ptr<InternalElement> cloneWithParent(InternalElement* newParent) override;
  MessageElement* getElementAt(const char* path) override;
  MessageElement* getElementAt(int index) override;
  int getElementCount() override;
  void setEmpty() override;
  bool isEmpty() override;
  void setNull() override;
  ENodeType getNodeType() const override { return qxComposite; }
  const char* getName() const override;
  std::u16string_view setEncodedValue(std::u16string_view text) override;
  std::u16string getEncodedValue() override;
  ElementCollection getElementCollection(const char* spec) override;
  MetaDataRecord* getMetaData() override;
  bool getUserData(const std::u16string& key, std::u16string& value) override;

  bool isChildPresent(int index) override;
  bool attachSegment(SegmentElement*, int) override { return false; }
  bool canStartOnPath(std::vector<int32_t>::const_iterator position,
                      std::vector<int32_t>::const_iterator end) override;
  bool isChildRepeating(int index) override;
  bool parseElement(ParserStream& stream, RecordedErrors& errors, uint32_t& endKind,
                    ValidationLocation& location) override;
  int getCountForPath(std::string_view path, int kind, bool existingOnly) override;
  int countSegments(bool existingOnly) override;
  int countGroups(bool existingOnly) override;
  int countMessages(bool existingOnly) override;
  void validateInto(SeparatorList& separators, ValidationErrorList& errors, bool includeWarnings,
                    ValidationLocation& location, bool asParsed) override;
  void validateTop(ValidationErrorList& out, bool includeWarnings) override;
  void appendPath(std::string& text) override;
  std::u16string getEncodedValueNoTouch() override;
  void forgetParserPositions(RecordedErrors& errors) override;
  std::u16string_view parseEncodedValue(std::u16string_view text, RecordedErrors& errors) override;
  void setMessageDefn(const MessageDefn* messageDefn) override;
  void onFieldValueChanged(int fieldIndex, int repeatIndex, bool onlyFollowing) override;
  InternalElement* getChildCreating(int index) override;
  const MessageSetDefn* getMessageSetDefn() override;

  int getChildCount() override;
  std::span<const std::unique_ptr<InternalElement>> getChildArray() override;
  int getFieldCount() override;
  const std::vector<std::unique_ptr<FieldDefn>>& getFieldDefns() override;

  // The field at that index, made (or, for a variable field whose key changed, made anew) when needed.
  FieldBase* getField(int index);
  // The field if it exists, else null; makes nothing but the fields a parse left uncut.
  FieldBase* fieldAt(int index) const;
  // A parse may leave a segment's fields in its text, to be cut when first needed: most segments
  // of a large text are never looked into field by field. What the cut finds is recorded as the
  // parse would have recorded it.
  bool hasUncutFields() const { return uncut != nullptr; }
  // Lets the next parseElement leave the fields uncut: for the reader of whole texts, whose
  // findings reach the message however late they are made. A caller that collects the findings of
  // one parse itself doesn't ask for it.
  void allowUncutFields() { mayLeaveUncut = true; }
  void cutFields();
  // The value at a path of field and component names, read from the text while the fields wait
  // in it, where that surely gives what the cut would: a plain text value, not empty, of a field
  // that doesn't repeat. Nothing otherwise; nothing is cut either way. What the parser asks of a
  // header to choose the message, which would otherwise cut the whole segment.
  std::optional<std::u16string> peekUncutValue(std::string_view path) const;
  // The same for a path of 0-based indexes.
  std::optional<std::u16string> peekUncutValue(std::span<const int32_t> path) const;
  // The deepest path peekUncutValue reads.
  static constexpr size_t kPeekDepth = 4;
#if !defined(NDEBUG) || defined(VANTRELIA_CHECK_FAST_PATHS)
  // Debug and fuzz builds hold a peeked value to the value a cut of the fields gives.
  void checkPeek(std::span<const int32_t> path, std::u16string_view peeked) const;
#endif
  bool isFieldRequired(int index);
  // Cuts the fields of one segment text; status gets kNotThisSegment when the text isn't one.
  virtual bool parseSegmentFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                                  ValidationLocation& location) = 0;
  // Cuts the fields from `firstField` on, the stream standing at that field's text: the rest of a
  // segment whose first fields were cut as it was read. `lastFieldFilled` is what the read knew
  // of the field before. Kinds that never leave part of a segment uncut don't override it.
  virtual bool resumeSegmentFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                                   ValidationLocation& location, int firstField, bool lastFieldFilled);

  const SegmentDefn& getSegmentDefn() const { return *segmentDefn; }
  const MessageItemDefn* getItemDefn() const { return itemDefn; }
  void setItemDefn(const MessageItemDefn* item);
  ESeparatorType getFieldSeparator() const { return fieldSeparator; }
  // The text the fields' values may point into; kept alive by every segment parsed from it.
  const std::shared_ptr<const std::u16string>& getSourceText() const { return sourceText; }
  void setSourceText(std::shared_ptr<const std::u16string> text) { sourceText = std::move(text); }
  // Whether the text lies in the source text, so that a field may keep a view of it.
  bool isInSourceText(std::u16string_view text) const {
    return sourceText && text.data() >= sourceText->data() &&
           text.data() + text.size() <= sourceText->data() + sourceText->size();
  }

  static constexpr uint32_t kNotThisSegment = 0x80000000u;

  // A change anywhere below means the segment no longer stands as it was read.
  void setChanged(bool flag) override;
  // The characters the segment was read from, while nothing in it has changed since; else empty.
  std::u16string_view getIntactSource() const;
  // Those of them between the tag and the segment separator, while they are what the writer would
  // give the fields with `list`, standing at the segment's level: unchanged, read with the same
  // separators, and nothing in them that the writer leaves out, adds or encodes. Nothing otherwise.
  std::optional<std::u16string_view> fieldTextAsRead(const SeparatorList& list);
  // The same for a header that carries separators still to be read in `list`: when its fields
  // are what the writer would give them with the separators its read settled, and the list holds
  // the values read, those are settled in the list as the read settled them. `everyField`: the
  // writer shows every field of the definition.
  std::optional<std::u16string_view> headerTextAsRead(SeparatorList& list, bool everyField);

 protected:
  // A new field of the class its definition asks for, not stored.
  std::unique_ptr<FieldBase> makeField(int index);
  void storeField(int index, std::unique_ptr<FieldBase> field);
  void destroyField(int index);
  // For clones: the same segment on the same definitions, with copies of the fields.
  void copyFieldsInto(SegmentImplBase& copy) const;

  // ----- the opening and closing that every kind of segment text shares

  // Takes the segment's initiator and tag, the separators its text declares and the initiator of
  // its fields, and pushes the field level. False, with status kNotThisSegment, when the tag isn't
  // there. `lastFieldFilled` is cleared by a field initiator; `endMask` tells which of message (1),
  // group (2) and segment (4) separators may end the segment.
  bool beginSegmentParse(ParserStream& stream, uint32_t& status, bool& lastFieldFilled, uint32_t& endMask);
  bool usesGenericParsing();
  void readPlainToken(ParserStream& stream, ParserToken& token, int32_t maxLength, bool applyReplacements,
                      bool useGeneric);
  // Before a field is read: whether a field separator ends it. The last field runs to the end of
  // the segment unless its separator also ends it; where no segment separator is active the field
  // level is popped (`popped`) so that the last field takes the rest of the text.
  bool openField(bool last, bool& popped);
  // Steps over the field separator after field `index`; false when the segment ended instead.
  bool consumeFieldSeparator(int index, ParserStream& stream, RecordedErrors& errors, ValidationLocation& location,
                             bool useGeneric, bool& lastFieldFilled);
  // The match list: a segment whose match fields are empty isn't this segment.
  bool matchFields();
  // Behind the fields: the separators the text declared at its end, then the separator that ends
  // the segment, with what stands before it reported as extra data. atSegmentEnd: the stream stands
  // at the segment separator or the end of the text already, so nothing stands before it.
  void finishSegmentParse(ParserStream& stream, uint32_t endMask, bool useGeneric, uint32_t& status,
                          RecordedErrors& errors, ValidationLocation& location, bool atSegmentEnd = false);

  enum class WriteStart {
    kSkipped,  // nothing written: an empty optional segment
    kWritten,  // written whole, as it was read
    kFields,   // tag written and field level pushed: the kind writes its fields, then endSegmentWrite
  };
  struct SegmentWrite {
    // Set by the caller: the segment may go out as the text it was read from (fieldTextAsRead).
    bool mayWriteAsRead = false;
    bool fixedSegment = false;
    // The last field that must be written, -1 for none; not worked out for a segment written as
    // read, outside debug and fuzz builds.
    int lastField = -1;
    // The text behind the tag that stands for the fields, when the segment goes out as read.
    std::optional<std::u16string_view> asRead;
  };
  WriteStart beginSegmentWrite(SeparatorList& list, int32_t& counter, SegmentWrite& write);
  void endSegmentWrite(SeparatorList& list);
  void settleSlots(SeparatorList& list);
  static uint32_t separatorFlags(const SeparatorList& list, int32_t separator);
  bool fieldHasDefault(int index);
  // The check behind fieldTextAsRead and headerTextAsRead, with `list` the separators the fields
  // are held to; `header` for a header that carries separators, which only that one takes.
  std::optional<std::u16string_view> checkedFieldText(const SeparatorList& list, bool header);

  // Leaves the fields uncut when the text of the segment, from the cursor behind its tag, surely
  // ends at the first segment separator; the stream is then left behind that separator. A
  // `firstField` above 0 leaves only the fields from that one on, the fields before it cut
  // already (those of a header that carry the separators the rest is read with).
  bool leaveFieldsUncut(ParserStream& stream, uint32_t endMask, uint32_t& status, RecordedErrors& errors,
                        ValidationLocation& location, int firstField = 0, bool lastFieldFilled = true);
  // What a read of the segment's opening that leaves every field uncut would come to, worked out
  // from the text at the cursor without moving the stream: the most common read, where the list
  // stands at its base levels with nothing to settle and only the segment separator ends the
  // segment. None where that read might go otherwise (those segments take the full read).
  struct QuickUncut {
    int32_t taken = 0;          // characters of the segment, its separator included
    uint32_t status = 0;        // as finishSegmentParse leaves it
    bool lastFieldFilled = true;
    int32_t fieldsAt = 0;       // where the fields begin in sourceText
    std::shared_ptr<SeparatorCut> cut;
  };
  std::optional<QuickUncut> planQuickUncut(ParserStream& stream);
  // Takes the read that planQuickUncut worked out.
  void takeQuickUncut(QuickUncut&& quick, ParserStream& stream, uint32_t& status);
  // Pushes the level of the fields, telling in `endMask` which of message (1), group (2) and
  // segment (4) separators may end the segment.
  void pushFieldLevel(uint32_t& endMask);
  // Whether the fields of the definition may be left uncut at all.
  bool endsAtSeparator() const;

  // Slots up to the highest field made so far; getChildArray fills them up to the field count.
  NodeVector<InternalElement> fields;
  // While the fields wait in the text: the separators they are to be cut with.
  std::shared_ptr<SeparatorCut> uncut;
  // Set by allowUncutFields until the next parseElement ends.
  bool mayLeaveUncut = false;
  // With fields uncut: whether the field before the first uncut one held anything, the first
  // uncut field, and where its text begins in sourceText.
  bool uncutLastFilled = true;
  int16_t uncutFrom = 0;
  int32_t uncutOffset = 0;
  ESeparatorType fieldSeparator;
  // What the check of fieldTextAsRead found, kept while the text stands as read with readWith: a
  // segment written again and again is checked once. The check asks the list only what its slots
  // decide, and fieldTextAsRead answers only for lists whose slots are readWith's. Where the text
  // qualifies, the qualifying part begins `offset` characters into it and runs `length`.
  struct AsReadVerdict {
    uint32_t known : 1 = 0;
    uint32_t truncating : 1 = 0;
    uint32_t qualifies : 1 = 0;
    uint32_t offset : 5 = 0;
    uint32_t length : 24 = 0;
  };
  AsReadVerdict asReadVerdict;
  std::unique_ptr<std::string> pathCache;
  const SegmentDefn* segmentDefn;
  const MessageItemDefn* itemDefn;
  std::shared_ptr<const std::u16string> sourceText;
  // Where the characters of the segment lie in sourceText; a length of 0 once it has changed.
  int32_t sourceStart = 0;
  int32_t sourceLength = 0;
  // The separators those characters were read with, while they stand as read.
  std::shared_ptr<SeparatorCut> readWith;
};

}  // namespace vantrelia
