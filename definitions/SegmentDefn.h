#pragma once
// One kind of line of a message: its name, the tag that opens it on the wire, its fields, its
// separator, and the match list that tells it from another segment with the same tag. The message
// set owns its segments; message items and the tag map point at them.

#include <atomic>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "definitions/FieldDefn.h"
#include "definitions/FieldListDefn.h"
#include "definitions/MatchDefn.h"
#include "definitions/SegmentTextShape.h"
#include "foundation/Enumerations.h"
#include "foundation/Mutex.h"
#include "foundation/TRVString.h"

namespace vantrelia {

class SegmentDefn : public FieldListDefn {
 public:
  using WideText = kestrel::TRVString<char16_t>;

  // Bits of `flags` besides kHasVariableField.
  static constexpr uint32_t kFieldPresenceIndicator = 0x02;
  static constexpr uint32_t kNameValuePair = 0x04;
  static constexpr uint32_t kSituationalData = 0x08;         // a message item overrides its fields
  static constexpr uint32_t kNcpdp = 0x10;                   // tagged pharmacy segment

  // The separator of a presence indicator or of name-value pairs.
  struct SpecialSeparator {
    int32_t SpecialSeparatorType = qxSepString;
    WideText SpecialSeparatorString;
  };

  SegmentDefn();
  ~SegmentDefn() override;

  // Reads one segment record with its fields and matches. Composite fields leave their override
  // blocks in `updates`; the set resolves them when it takes the segment. Throws InvalidFile, also
  // for syntax rules and validation equations, which this engine doesn't read yet.
  void load(MessageSetDefn& set, InputStream& stream, int version, FieldUpdates& updates);

  const kestrel::TRVString<char>& getName() const { return Name; }
  // Empty for a segment without a tag, which the tag map finds only through lookupEmptyTag.
  const WideText& getTag() const { return Tag; }
  const WideText& getSpecialSeparatorString() const { return SpecialSeparatorString; }
  int32_t getSeparatorType() const { return SeparatorType; }
  bool isFixedWidth() const { return FixedWidth != 0; }
  int32_t getId() const { return id; }
  const std::vector<std::unique_ptr<MatchDefn>>& getMatches() const { return matches; }
  // A fact about the fields that the parser works out once per definition and keeps here: whether
  // the segment's text ends at the first segment separator whatever its fields hold. -1 until then.
  int8_t getEndsAtSeparator() const { return endsAtSeparator.load(std::memory_order_relaxed); }
  void setEndsAtSeparator(bool value) const { endsAtSeparator.store(value ? 1 : 0, std::memory_order_relaxed); }
  const MessageSetDefn* getSet() const { return set; }
  // Presence indicator (0x02) first, then name-value pair (0x04), else normal.
  ESegmentType getSegmentType() const;
  // Each null unless the file gave the record.
  const SpecialSeparator* getPresenceSeparator() const { return presenceSeparator ? &*presenceSeparator : nullptr; }
  const SpecialSeparator* getNameValueSeparator() const { return nameValueSeparator ? &*nameValueSeparator : nullptr; }
  // The one that the segment type uses: name-value pairs' for such a segment, else the indicator's.
  const SpecialSeparator* getSpecialSeparator() const;
  // From the index of a key field to the first variable field whose type it rules; null without
  // flag 0x01.

  // Whether the field at `index` counts the run of repeating fields behind it in a tagged segment:
  // its link names the counted field with a "+" in front.
  bool isRepeatCountField(int32_t index) const {
    const std::string& link = fields[static_cast<size_t>(index)]->getLinkedFieldName();
    return !link.empty() && link.front() == '+';
  }

  // The field names, widened, longest first and by code unit among names of one length, so that a
  // name that begins another comes after it. Made once, on first use, under the segment's lock;
  // safe from several threads.
  const std::vector<WideText>& getSortedFieldNames() const;

  // A path of field names below the segment as the 0-based indexes it leads to, or none where a
  // step leads nowhere: `resolve` works it out the first time a path is asked for, and the answer
  // is kept, since the message type fields of every message read ask for the same few paths. Safe
  // from several threads.
  using PathIndexes = std::optional<std::vector<int32_t>>;
  // What comes back stays put for the life of the definition.
  const PathIndexes& indexesOfPath(std::string_view path,
                                   PathIndexes (*resolve)(const SegmentDefn&, std::string_view)) const;

  // What decides whether a segment's text is written as it was read. Made once, on first use;
  // safe from several threads.
  const SegmentTextShape& getTextShape() const;

 private:
  // Flag 0x08 comes from the message items read after the segment.
  friend class MessageItemDefn;
  void addFlags(uint32_t bits) { flags |= bits; }

  void readSpecialRecords(InputStream& stream, int version);

  kestrel::TRVString<char> Name;
  WideText Tag;
  WideText SpecialSeparatorString;
  int32_t SeparatorType = qxSepAuto;
  uint8_t FixedWidth = 0;
  int32_t id = 0;
  std::vector<std::unique_ptr<MatchDefn>> matches;
  const MessageSetDefn* set = nullptr;
  std::optional<SpecialSeparator> presenceSeparator;
  std::optional<SpecialSeparator> nameValueSeparator;

  // Written after the load, by the first reader: the list, and the pointer that other readers test
  // without taking the lock.
  mutable std::unique_ptr<std::vector<WideText>> sortedFieldNames;
  mutable std::atomic<const std::vector<WideText>*> sortedFieldNamesReady{nullptr};
  mutable Mutex sortedFieldNamesLock;
  mutable std::atomic<int8_t> endsAtSeparator{-1};
  mutable std::deque<std::pair<std::string, PathIndexes>> resolvedPaths;
  mutable Mutex resolvedPathsLock;
  mutable std::unique_ptr<SegmentTextShape> textShape;
  mutable std::atomic<const SegmentTextShape*> textShapeReady{nullptr};
};

}  // namespace vantrelia
