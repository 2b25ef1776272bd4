#pragma once
// The run-time state of the 22 separators of one message tree. A message set defines them, but a
// message can carry its own in a header field, a nested message can take over its parent's, and a
// host can change them on a live tree; so every reader and writer asks this list, never the
// definition. It answers three questions: what is separator N now; which sequences end the token
// being read at the current depth (it keeps the separator trie in step with a stack of levels);
// and which separator text goes out next when writing, holding separators back until data follows
// so that empty trailing items vanish by themselves. It also holds the tree's error severities,
// since every element of a tree can reach it.
//
// Its definitions are split by those questions: SeparatorList.cpp keeps the slots, their reset and
// the severities; SeparatorListLevels.cpp the stack of levels and the trie kept in step with it;
// SeparatorListRead.cpp the reads that build the trie or handle escapes and quotes;
// SeparatorListHeaders.cpp the separators carried by header fields; SeparatorListWrite.cpp the
// pending separators of writing; SeparatorListEncoding.cpp the replacements in field values.

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <boost/container/small_vector.hpp>
#include <boost/container/static_vector.hpp>

#include "foundation/Enumerations.h"
#include "parsing/SeparatorLevels.h"
#include "parsing/ParserStream.h"
#include "parsing/SeparatorImpl.h"
#include "parsing/SeparatorSlots.h"
#include "parsing/SeparatorTrieNode.h"
#include "validation/SeverityTable.h"

namespace vantrelia {

class FieldPathDefn;
class MessageDefn;
class MessageSetDefn;
class PrimitiveTypeDefn;
class SegmentDefn;
class SeparatorCut;
struct CutStops;
class SeparatorSlotIndex;
struct ParserToken;

// What the list needs to know of a field element while reading its value or checking it. The
// field elements implement it.
class SeparatorField {
 public:
  virtual ~SeparatorField() = default;
  // The field's custom type, or null. A type with escape characters makes the reader leave the
  // text between its start and end escape separators alone.
  virtual const PrimitiveTypeDefn* getCustomType() const = 0;
  // The internal data type code; DataTypeCodes::kQuotedText is the double-quoted text type.
  virtual int32_t getFieldType() const = 0;
  // The field instance's own allow-list: the separator may stand in the value as it is.
  virtual bool isSeparatorAllowed(int32_t separator) const = 0;
  // The field's path, as a separator's header field path is matched against it.
  virtual const FieldPathDefn& getFieldPath() const = 0;
};

class SeparatorList {
 public:
  static constexpr int32_t kSeparatorSlots = kSeparatorCount;
  using Levels = SeparatorLevels;
  // Index -1 of queries and writes stands for the separator on top of the stack.
  static constexpr int32_t kCurrent = -1;
  // The line end that a separator configured as carriage return also accepts.
  static const std::u16string kCarriageReturnLineFeed;
  // `position` of writeSeparator: the bits of the definition's writing style.
  static constexpr int32_t kWriteInitiator = 0x10;
  static constexpr int32_t kWriteSeparator = 0x20;
  static constexpr int32_t kWriteTerminator = 0x40;

  SeparatorList(const MessageSetDefn& messageSet, bool fixedWidth, const SeparatorList* parent);
  // Copies the slots, the stack and the settings; the tries are rebuilt on the next read.
  SeparatorList(const SeparatorList& other);
  // A copy of a fresh list (see startOfWire) under another parent, derived tables and all.
  SeparatorList(const SeparatorList& prototype, const SeparatorList* parent);
  SeparatorList& operator=(const SeparatorList&) = delete;
  virtual ~SeparatorList();

  // A list at the start of a message of the set read from the wire: what a new list is after
  // reset(true, true, true). Where the set takes nothing from the parent's list, it is a copy of
  // one the warehouse keeps for the set.
  static std::shared_ptr<SeparatorList> startOfWire(const MessageSetDefn& set, const SeparatorList* parent);

  // Brings the list to the start of a message. fromWire: values not known yet are not active until
  // the wire settles them. initSeparators: take the slots from the definition (or the parent).
  // initErrorSettings: the same for the severities.
  void reset(bool fromWire, bool initSeparators, bool initErrorSettings);
  // Back to the three levels a message starts with, nothing pushed.
  void resetLevels();
  bool atBaseLevels() const;
  // At the three levels a message starts with, nothing pending, no line end standing for a
  // separator, and of those levels the segment separator alone in force, without an initiator:
  // where a segment's opening and end take no more than their own texts. Asked for every segment
  // read, so the part the slots decide is kept until they change.
  bool readsSegmentsPlainly() const {
    if (plainSegmentsVersion != slotsVersion) [[unlikely]] workOutPlainSegments();
    return plainSegments && levels.size() == 3 && levels[0] == qxSepMessage && levels[1] == qxSepGroup &&
           levels[2] == qxSepSegment && specialStrings.empty() && stackSaver.empty();
  }
  // What segments whose fields are left uncut hold on to: the separators they were read with,
  // kept as they stand now even when this list changes or goes.
  std::shared_ptr<SeparatorCut> shareCut();

  // Tells one state of the slots from every other: it changes with every change of the slots, and
  // lists share it only while their slots are the same (a list fresh from startOfWire shares its
  // prototype's; a list that took a settled state shares that state's).
  uint64_t getSlotsVersion() const { return slotsVersion; }
  // Whether the slots stand as startOfWire copied them.
  bool isPristineCopy() const { return slotsVersion == copiedVersion; }
  // Takes the slots, the levels and what is worked out from the slots from a list that was this
  // list's copy once and read a header since: the state that read would bring this list to.
  void takeSettled(const SeparatorList& settled);
  // Works out the trie key and the cut stops of the slots as they stand, for takeSettled to hand
  // on.
  void keepTrieKey();
  // Whether a read that meets c may look at the characters behind it: some sequence of more than
  // one character begins with c, now or, for the replacements, as the definition writes them.
  bool beginsLongerSequence(char16_t c) const;
  // Every character that may end a value or stand for other text at some point of a read with
  // this list, whatever its slots still have to settle: the first characters of every slot's texts
  // as they stand and as their definitions give them, the quote, the line ends and zero.
  std::u16string charactersThatMayStop() const;

  // Whether every slot has the same text, replacement and use as in `other`: a text read with one
  // list then reads and writes the same with the other. The answer is kept until either changes:
  // a writer asks it for every segment.
  bool sameSlotsAs(const SeparatorList& other) const;
  // What a character is to a writer that gives text back as it stands: data, the one character of
  // a separator in use (its slot plus one), or kOtherCharacter for anything else that reading or
  // writing treats apart (a character of a longer separator, of two separators, or one that asks
  // for encoding or quotes). The decimal mark and the filler stand in data as they are.
  static constexpr uint8_t kDataCharacter = 0;
  static constexpr uint8_t kOtherCharacter = 0xFF;
  uint8_t classOf(char16_t c) const {
    if (classesVersion != slotsVersion) [[unlikely]] rebuildClasses();
    if (c < classes.size()) return classes[c];
    return otherClassed.find(c) == std::u16string::npos ? kDataCharacter : kOtherCharacter;
  }

  // Works out which slots are active, whether some separator is still to be read, and the
  // characters that make a value need encoding or quotes.
  void updateActive();

  // --- queries; indexes run from 0 to 21, and anything else is refused with BadParameter.
  // kCurrent is the top of the stack; qxSepNone has no text and qxSepString the pushed string.
  // Inline, as the two below: every segment read asks them several times.
  std::u16string_view getSeparatorValue(int32_t index) const {
    if (index == kCurrent) index = currentSeparator;
    checkSeparatorIndex(index);
    if (index == qxSepNone) return {};
    if (index == qxSepString) return pushedString();
    return slots[static_cast<size_t>(index)].value;
  }
  // In force for reading: on the stack, and in use.
  bool isSeparatorActive(int32_t index) const {
    if (index == kCurrent) index = currentSeparator;
    checkSeparatorIndex(index);
    if (!(levelMask >> index & 1u)) return false;
    return !levelText(static_cast<ESeparatorType>(index)).empty();
  }
  // In use, whether on the stack or not: what writers and the null marker ask.
  bool isInUse(int32_t index) const;
  const FieldPathDefn& getFieldLocation(int32_t index) const;
  int32_t getPosition(int32_t index) const;
  const SeparatorImpl& getSlot(int32_t index) const {
    checkSeparatorIndex(index);
    return slots[static_cast<size_t>(index)];
  }
  EVErrType getValidationErrorSetting(int32_t errorNumber) const;
  void setValidationErrorSetting(int32_t errorNumber, EVErrType setting);
  const SeverityTable& getErrorSettings() const { return errorSettings; }
  bool getVariablePending() const { return variablePending; }
  bool getFromWire() const { return fromWire; }
  bool getTrimSegments() const { return trimSegments; }
  int32_t getCrlfEquivalent() const { return crlfEquivalent; }
  int32_t getCurrentSeparator() const { return currentSeparator; }
  const Levels& getLevels() const { return levels; }
  bool isLevelFixedWidth() const { return !levelFixedWidth.empty() && levelFixedWidth.back() != 0; }
  const MessageSetDefn& getMessageSet() const { return *messageSet; }
  const SeparatorList* getParent() const { return parent; }
  // Keeps the parent alive for as long as this list lives: a list made during a parse may outlive
  // the parse that made its parent.
  void holdParent(std::shared_ptr<const SeparatorList> owner) { parentHold = std::move(owner); }
  std::u16string_view getMustQuoteCharacters() const { return mustQuoteCharacters; }
  std::u16string_view getMustEncodeCharacters() const { return mustEncodeCharacters; }

  // --- changes
  // The host's value: it survives a reset of a preset separator.
  void setSeparatorValue(int32_t index, std::u16string_view text);
  void setKnown(int32_t index, bool known);

  // --- the stack of levels
  void pushSeparator(ESeparatorType index, std::u16string_view specialString = {}, bool fixedWidth = false);
  ESeparatorType popSeparator();
  void saveLevels() { savedLevels = levels; }
  void restoreLevels();
  // Saves the levels, then lets the separators that a value of the custom type may hold stand in
  // data: their levels stop ending tokens until restoreLevels.
  void saveLevelsAllowing(const PrimitiveTypeDefn& type);
  // Pops down to the nearest level of that separator (or the bottom), keeping what it popped so
  // that restorePopped can push it back.
  void saveAndPopTo(ESeparatorType index);
  void restorePopped();

  // --- reading
  // The read of a field value: escapes of the field's type are kept as they stand, and a value
  // that opens with a double quote runs to the closing one, with doubled quotes read as one.
  // Inline: it runs once per value read, and most values need none of what the slow path does.
  void readToken(ParserStream& stream, ParserToken& token, int32_t maxLength, bool applyReplacements,
                 bool useGenericTrie, const SeparatorField* field) {
    if (trieDirty || (field && isEscapedField(*field)) || stream.nextIs(kQuote[0])) [[unlikely]] {
      readTokenSlowly(stream, token, maxLength, applyReplacements, useGenericTrie, field, true);
    } else {
      stream.readToken(useGenericTrie && genericTrie ? *genericTrie : *trie, token, maxLength, applyReplacements);
    }
  }
  // The same without quotes.
  void readTokenEscaped(ParserStream& stream, ParserToken& token, int32_t maxLength,
                        bool applyReplacements, bool useGenericTrie, const SeparatorField* field);
  // Makes the trie for the slots and levels as they stand, or takes one that served a list with
  // the same separators from this thread's pool.
  void buildTrie();
  // Hands the trie to this thread's pool when it is in step with the list, for the next list with
  // these separators; this list builds or takes one again on its next read. A parse does this
  // with the finished message.
  void releaseTrie();
  SeparatorTrieNode& getTrie() { return *trie; }
  SeparatorTrieNode* getGenericTrie() { return genericTrie.get(); }
  bool isTrieDirty() const { return trieDirty; }

  // --- separators carried by header fields
  // Reads, at the cursor, the separators of that very header field with positions from 0 up.
  void readFromStream(const FieldPathDefn& fieldPath, ParserStream& stream);
  // The same for negative positions, which follow the field.
  void readFromStreamEnd(const FieldPathDefn& fieldPath, ParserStream& stream);
  // Takes the separators that a header field's value holds; returns the value completed with the
  // defaults of those it doesn't hold, padded with the filler.
  std::u16string takeFromField(const FieldPathDefn& fieldPath, std::u16string_view text);
  // Whether a separator is taken from the field at that path.
  bool holdsSeparatorsOf(const FieldPathDefn& fieldPath) const;
  // A field path as text, as separator definitions name header fields: its name, then "/" and
  // each index.
  static std::string pathText(const FieldPathDefn& path);
  // Whether pathText of a separator's header field begins with path, compared without case; false
  // for a field path with no name.
  static bool fieldLiesUnder(const FieldPathDefn& fieldPath, std::string_view path);
  // A quick test before a field's path is worked out: whether a separator still to be read may
  // come from field `fieldNumber` (1-based; 0 for one below the segment's own fields) of the
  // segment named so. False only when none can.
  bool mayTakeFromField(std::string_view segmentName, int32_t fieldNumber) const;
  // Whether takeFromField would take a separator still to be read from that field's value.
  bool takesFromField(const FieldPathDefn& fieldPath) const;
  // The text of a header field for writing, from its separators.
  std::u16string collectForField(const FieldPathDefn& fieldPath) const;
  // The writer's counterpart of readFromStream: writes the separators that a segment carries right
  // behind its tag (or, with endPositions, at its end) and settles them, each with the value read
  // earlier if there is one, else the definition's. What follows may not repeat the last of them.
  void writeSeparatorsOf(const FieldPathDefn& segmentPath, bool endPositions);
  // Whether a segment of that name carries separators of its own, behind its tag or at its end.
  bool carriesSeparators(std::string_view segmentName) const;
  // For a header written as the text it was read from, `read` being the list as that read left
  // it: settles the separators still to be read under segmentName to the values they hold, which
  // a write of its fields would take from them. True when the list then stands as `read` does;
  // false, with the list as it was, when it wouldn't.
  bool settleAsRead(std::string_view segmentName, const SeparatorList& read);
  std::u16string collectForFieldEnd(const FieldPathDefn& fieldPath) const;
  // With a separator still to be read: those whose header field lies under path are settled now.
  void markKnownForPath(std::string_view path);
  // The same, giving them the definition's texts.
  void applyDefaultForPath(std::string_view path);
  // The same as markKnownForPath for paths that go on below path into one of the item's first
  // count children. childIndex tells the child index of a named child, -1 for none.
  void markKnownForChildren(std::string_view path, int32_t count,
                            const std::function<int32_t(std::string_view)>& childIndex);
  // Before text is parsed into a node or a node is written on its own: the separators that the
  // headers of the set before that node carry count as known. A header named like `segmentDefn`
  // ends the walk; with a positive `childCount` the separators of its first children count too.
  void settleHeadersBefore(const MessageSetDefn* setDefn, const SegmentDefn* segmentDefn, int32_t childCount);
  // Whether the text at the cursor begins with the separator of a level outside the innermost
  // `innerLevels` ones: the end of what those levels read. A carriage return and line feed that
  // stand for a separator count only for that separator.
  bool atOuterSeparator(ParserStream& stream, int32_t innerLevels) const;
  // Back to the slots as restoreForItem saved them: what writing an item of a created message
  // changed is undone.
  void restoreSavedSlots();
  // The end of a walk over a tree: a separator the walk never read takes the definition's texts,
  // and the list no longer waits for the wire.
  void finishWalk();
  // Before the item called name is read again: separators of the items before it get back what
  // was read for them; those taken from fields are otherwise forgotten.
  void restoreForItem(const MessageDefn& messageDefn, std::string_view name);

  // --- writing
  // Queues the separator for position (kWriteInitiator, kWriteSeparator, kWriteTerminator); it
  // reaches the output only when data follows, and a separator of a higher level makes the pending
  // ones of lower levels vanish.
  void writeSeparator(int32_t position, int32_t index);
  void flushPending();
  // What writers call for data: the pending separators go out, then the text.
  void writeData(std::u16string_view text);
  std::u16string& getOutput() { return output; }
  const std::u16string& getOutput() const { return output; }
  void clearOutput();
  // The next separator is dropped if the output already ends with its text.
  void setCheckOutputTail(bool value) { checkOutputTail = value; }
  int32_t getPendingCount() const { return static_cast<int32_t>(pending.size()); }
  int32_t getPendingLast() const { return pendingLast; }

  std::u16string encodeValue(std::u16string_view text, int32_t fieldType) const;
  std::u16string decodeValue(std::u16string_view text, int32_t fieldType) const;
  // encodeValue for a value of a custom type: separators that the type allows stand as they are,
  // and with escape characters in force nothing between a start and an end escape is replaced. An
  // escape left open goes out with its start in replaced form. `fieldType` is the type's base.
  std::u16string encodeCustomValue(std::u16string_view text, const PrimitiveTypeDefn& type, int32_t fieldType) const;
  // A text written with the definition's separators, in this message's separators.
  std::u16string translateValue(std::u16string_view text) const;
  // The inverse: each separator's current text in `text` becomes its definition's text, so that a
  // value read with other separators compares with the definition.
  std::u16string untranslateValue(std::u16string_view text) const;

  // The invalid-characters check of a field value in its wire form: the separator found where it
  // may not stand, -1 for an escape left open, nothing when the value is clean or the severity of
  // the finding says not to look. The caller records the finding.
  std::optional<int32_t> findInvalidCharacters(const SeparatorField& field, std::u16string_view wireValue,
                                               bool warningsWanted) const;

 private:
  using Slots = SeparatorSlots::Array;
  struct ReplaceEntry {
    uint8_t index;
    bool isTerminator;
  };
  struct PoppedSequence {
    ESeparatorType index;
    int32_t level;
    std::u16string_view text;  // the slot's value, which stays put until the trie is marked dirty
  };
  struct PoppedLevel {
    ESeparatorType index;
    std::u16string specialString;
    bool fixedWidth;
  };

  static constexpr std::u16string_view kQuote = u"\"";
  static constexpr std::u16string_view kDoubledQuote = u"\"\"";

  static void checkSeparatorIndex(int32_t index) {
    if (index < 0 || index >= kSeparatorSlots) [[unlikely]] refuseSeparatorIndex();
  }
  [[noreturn, gnu::cold]] static void refuseSeparatorIndex();
  // Whether a separator's header field path names the element at elementPath; `element` is
  // pathText of elementPath, made once by the caller for every slot it asks about.
  static bool pathMatches(const FieldPathDefn& separatorPath, const FieldPathDefn& elementPath,
                          std::string_view element);


  const SeparatorDefn& defnOf(int32_t index) const { return *slots[static_cast<size_t>(index)].defn; }
  // The string of the innermost qxSepString level, empty when none is pushed.
  std::u16string_view pushedString() const {
    return specialStrings.empty() ? std::u16string_view() : std::u16string_view(specialStrings.back());
  }
  // The text a level stands for, or empty when it is not in use. Inline: every push and pop asks.
  [[gnu::always_inline]] std::u16string_view levelText(ESeparatorType index) const {
    if (index == qxSepNone) return {};
    if (index == qxSepString) return pushedString();
    const SeparatorImpl& slot = slots[static_cast<size_t>(index)];
    return slot.active ? std::u16string_view(slot.value) : std::u16string_view();
  }

  // Called before anything a segment's fields are cut with changes: segments read without cutting
  // them keep the state they were read with.
  void beforeSlotsChange() {
    if (!trieDirty) releaseTrie();
    slotsVersion = nextVersion();
    if (cut) [[unlikely]] keepCut();
  }
  // A number no list has had yet: what tells one state of the slots from every other.
  static uint64_t nextVersion();
  void rebuildClasses() const;
  void keepCut();

  // --- levels
  // Works levelMask out again after the stack changed other than by a push.
  void noteLevels() {
    levelMask = 0;
    for (const ESeparatorType level : levels) levelMask |= 1u << level;
  }
  void addLevelSequences(ESeparatorType index, std::u16string_view text, int32_t level);
  // Takes the sequences of popped levels out of force for every level.
  void flushOutOfForce();
  // Turns the active flag of the slots of the mask over, bit N for slot N: most changes of the
  // slots leave every flag as it was, and slots shared with another list stay shared.
  void flipActive(uint32_t flipped);
  // After a pop: where a level still on the stack has the popped text too (a header may give two
  // separators one character), the trie's node stands for that level again, as a trie built for
  // the stack as it now is has it. Else what a read cuts would hang on the order of earlier pushes.
  bool restoreSharedText(std::u16string_view text);
  // Bit N set while separator N's text is some other slot's text too, for the slots of
  // sharedTextsVersion.
  uint32_t slotsSharingText() const {
    if (sharedTextsVersion != slotsVersion) [[unlikely]] workOutSharedTexts();
    return sharedTexts;
  }
  void workOutSharedTexts() const;

  // --- reading
  // What a trie built now depends on besides the levels, as one text: two lists with the same key
  // build the same trie for the same stack.
  std::u16string trieKey() const;
  // buildTrie with a trie from the pool; false when the pool has none for these slots.
  bool adoptTrie();
  // buildTrie from nothing.
  void makeTrie();
  // The trie's half of a push: one level up, with the level's text in force there.
  void stepTrieUp(ESeparatorType index, std::u16string_view text);
  static bool isEscapedField(const SeparatorField& field);
  // What the nodes of a field type's start and end escape marks held before the marks went in.
  using EscapeMarks = std::array<SeparatorTrieNode::SavedSequence, 2>;
  EscapeMarks addEscapes(const SeparatorField* field, SeparatorTrieNode& root);
  void removeEscapes(const EscapeMarks& marks, SeparatorTrieNode& root);
  // readToken with a trie to build or escapes of the field's type; with allowQuotes, a value that
  // opens with a double quote is read as a quoted one.
  [[gnu::noinline]] void readTokenSlowly(ParserStream& stream, ParserToken& token, int32_t maxLength,
                                         bool applyReplacements, bool useGenericTrie, const SeparatorField* field,
                                         bool allowQuotes);
  // The read of a value in double quotes, from the opening quote on.
  [[gnu::cold]] void readQuoted(ParserStream& stream, ParserToken& token, int32_t maxLength, bool applyReplacements,
                                SeparatorTrieNode& root);

  // --- header fields
  // Slots of header field separators, in rising position (negative: rising absolute position).
  // Asked of the set's shared index; findSlotsOfField works them out.
  const std::vector<int32_t>& slotsOfField(const FieldPathDefn& fieldPath, bool endPositions, bool exactPath) const;
  std::vector<int32_t> findSlotsOfField(const FieldPathDefn& fieldPath, bool endPositions, bool exactPath) const;
  // The texts of a header field's separators, known ones as read and the others as defined.
  std::u16string collectSlots(const FieldPathDefn& fieldPath, bool endPositions) const;
  void readSlotsFromStream(const std::vector<int32_t>& slotIndexes, ParserStream& stream);
  // Settles the pending separators whose header field lies under path, with the definition's
  // texts when takeDefaults is set. Returns the slots it settled, bit N for slot N.
  uint32_t settleForPath(std::string_view path, bool takeDefaults);
  // The separator whose text a carriage return and line feed stand for, if any.
  void takeCrlfEquivalent();
  // The slots restoreSavedSlots goes back to.
  Slots savedOrDefinedSlots() const;
  // Settles the slot with the definition's texts.
  void settleToDefault(SeparatorImpl& slot);
  std::u16string_view fillerText() const;

  // --- encoding
  // The slot's replacements from its definition, in this message's separators.
  void takeReplacements(SeparatorImpl& slot);
  void takeReplacements();
  // asIs: what translatesAsIs says, once some slot has asked.
  void takeReplacements(SeparatorImpl& slot, std::optional<bool>& asIs);
  // The definition's text of a slot whose value is settled, else empty: what translateValue maps.
  std::u16string_view settledDefinition(const SeparatorImpl& slot) const;
  // Whether every settled slot holds its definition's text, so that translateValue gives any text
  // back as it is: most messages use the separators their set defines.
  bool translatesAsIs() const;
  // translateValue past that check.
  std::u16string translateChanged(std::u16string_view text) const;
  void rebuildReplaceOrder();
  void rebuildCharacterSets();
  std::u16string_view entryText(const ReplaceEntry& entry) const;
  std::u16string_view entryReplacement(const ReplaceEntry& entry) const;
  // encodeValue and encodeCustomValue past the check for watched characters; `type` null for a
  // value of no custom type.
  std::u16string encodeWith(std::u16string_view text, int32_t fieldType, const PrimitiveTypeDefn* type) const;
  // The text of the slot a type names for an escape mark, empty when it names none.
  std::u16string_view escapeText(int32_t index) const;

  const MessageSetDefn* messageSet;
  bool variablePending = false;
  bool trimSegments = false;
  bool fromWire = false;
  bool fixedWidth = false;
  bool checkOutputTail = false;
  const SeparatorList* parent;
  std::shared_ptr<const SeparatorList> parentHold;
  SeparatorSlots slots;
  // What restoreForItem saved; until then the slots as the definition gives them. Made only when
  // needed: most lists never save, and every message parsed makes a list.
  std::unique_ptr<Slots> savedSlots;
  int32_t currentSeparator = qxSepSegment;
  // Held in the list, which every message read copies: at most two entries a slot.
  boost::container::static_vector<ReplaceEntry, 2 * kSeparatorCount> replaceOrder;
  // The lengths replaceOrder was sorted by, slot by slot (a value's, and a variable separator's
  // terminator's plus one): every message written settles the list several times, mostly to the
  // same lengths, and the order stands while they do. Copied wherever replaceOrder is.
  using ReplaceOrderKey = std::array<uint32_t, 2 * kSeparatorSlots>;
  ReplaceOrderKey replaceOrderKey{};
  bool replaceOrderKeyed = false;
  Levels levels;
  // Bit N set while separator N stands on the stack: what isSeparatorActive asks several times for
  // every segment, without a search.
  uint32_t levelMask = 0;
  // Pushed strings stay put as more are pushed, as with the deque this once was; unlike a deque,
  // an empty list costs no allocation, and every message's list is copied with one.
  std::list<std::u16string> specialStrings;
  boost::container::small_vector<uint8_t, 8> levelFixedWidth;  // one per level, 1 for fixed width
  // Null until the first read, and while the pool has it.
  std::unique_ptr<SeparatorTrieNode> trie;
  std::unique_ptr<SeparatorTrieNode> genericTrie;
  bool trieDirty = true;
  // The key of the slots of slotsVersion keptTrieKeyVersion, made when the trie was: what the trie
  // is handed on with, unless the slots changed since.
  std::shared_ptr<const std::u16string> keptTrieKey;
  uint64_t keptTrieKeyVersion = 0;
  // Sequences of popped levels not yet taken out of force, innermost last.
  std::vector<PoppedSequence> poppedOutOfForce;
  Levels savedLevels;
  std::u16string output;
  // The separators held back, each by its slot and the place of its text in pendingText: a write holds
  // back and drops several per field, and a string each cost more than the rest of the field.
  struct PendingSeparator {
    int32_t index;
    uint32_t offset;  // where its text begins; it runs to the next one's, or to the end
  };
  std::vector<PendingSeparator> pending;
  std::u16string pendingText;
  int32_t pendingLast = -1;
  std::u16string mustQuoteCharacters;
  std::u16string mustEncodeCharacters;
  int32_t crlfEquivalent = -1;
  // What saveAndPopTo took off the stack, one batch per call, innermost last.
  std::vector<std::vector<PoppedLevel>> stackSaver;
  SeverityTable errorSettings;
  // Shared with the segments read under the slots as they stand; not copied with the list.
  std::shared_ptr<SeparatorCut> cut;
  // The part of readsSegmentsPlainly the slots decide, for the slots of plainSegmentsVersion.
  mutable uint64_t plainSegmentsVersion = 0;
  mutable uint64_t sharedTextsVersion = 0;
  mutable uint32_t sharedTexts = 0;
  mutable bool plainSegments = false;
  void workOutPlainSegments() const;
  // Whether every separator that untranslateValue looks at stands as its definition has it, for
  // the slots of untranslatedVersion: then a value comes back as it is. Every message's type
  // fields are untranslated, and the slots rarely differ from the definition's.
  mutable uint64_t untranslatedVersion = 0;
  mutable bool untranslatesAsIs = false;
  // What a cut scans for, worked out for the slots of cutStopsVersion: copied with the list, since
  // every message's list would work out the same.
  std::shared_ptr<const CutStops> cutStops;
  uint64_t cutStopsVersion = 0;
  int32_t cutStopsCrlf = -1;
  // Takes other's cut stops when they are those of its slots as they stand, the same as this
  // list's.
  void takeCutStops(const SeparatorList& other);
  void workOutCutStops();
  // Shared by every list copied from this one: the slot definitions are the set's.
  std::shared_ptr<SeparatorSlotIndex> slotIndex;
  // Bit N set when slot N is read from a position in a header field: the slots mayTakeFromField
  // looks at, for every field of a header.
  uint32_t fieldSlots = 0;
  // Changes with every change of the slots; see getSlotsVersion.
  uint64_t slotsVersion = nextVersion();
  // The prototype's version, for a list made by startOfWire; else none.
  uint64_t copiedVersion = 0;
  // The last answer of sameSlotsAs, with the versions it was given for.
  struct SameSlots {
    const SeparatorList* other = nullptr;
    uint64_t mine = 0;
    uint64_t theirs = 0;
    bool same = false;
  };
  mutable SameSlots lastSame;
  // classOf, for the slots of classesVersion.
  mutable uint64_t classesVersion = 0;
  mutable std::array<uint8_t, 128> classes{};
  mutable std::u16string otherClassed;
};

}  // namespace vantrelia
