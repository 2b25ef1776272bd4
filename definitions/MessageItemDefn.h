#pragma once
// One place in a message's item tree: a segment, a group of further items, or a message of another
// message set embedded here. A segment item keeps the overrides this place lays over the
// segment's fields.

#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "definitions/FieldDefn.h"
#include "definitions/SegmentGroupDefn.h"
#include "definitions/SegmentTextShape.h"
#include "foundation/TRVString.h"

namespace vantrelia {

class InputStream;
class MatchDefn;
class MessageDefn;
class MessageSetDefn;
class MessageWarehouseDefn;
class RuleOrList;
class SegmentDefn;
class SegmentFieldInstancesControl;
class SyntaxRuleSet;
class ValidationEquation;

class MessageItemDefn {
 public:
  // Values of MessageItemType.
  static constexpr int32_t kSegmentItem = 0;
  static constexpr int32_t kGroupItem = 1;
  static constexpr int32_t kMessageSetItem = 2;
  // Groups inside groups deeper than this aren't a definition but a corrupt file.
  static constexpr int kMaxNesting = 64;

  MessageItemDefn();
  virtual ~MessageItemDefn();
  MessageItemDefn(const MessageItemDefn&) = delete;
  MessageItemDefn& operator=(const MessageItemDefn&) = delete;

  // Reads one item record. `parentItem` is the group item around it, null at the top of the
  // message. Throws InvalidFile, also for rule kinds this engine doesn't read yet.
  void load(MessageSetDefn& set, const MessageDefn& message, MessageItemDefn* parentItem, InputStream& stream,
            int version, ItemIdMap& itemIds);
  // An i32 count, then that many item records.
  static std::vector<std::unique_ptr<MessageItemDefn>> loadList(MessageSetDefn& set, const MessageDefn& message,
                                                                MessageItemDefn* parentItem, InputStream& stream,
                                                                int version, ItemIdMap& itemIds);

  // An embedded set that came later in the file than this item: found now by its id among all
  // sets, depth first through groups. A reference no set answers stays empty.
  void completeEmbeddedReferences(const MessageWarehouseDefn& warehouse);

  int32_t getId() const { return itemId; }
  const kestrel::TRVString<char>& getName() const { return Name; }
  bool isRequired() const { return Required != 0; }
  bool isHidden() const { return Hidden != 0; }
  int32_t getMinRepeats() const { return MinRepeats; }
  // 0 means no upper limit.
  int32_t getMaxRepeats() const { return MaxRepeats; }
  int32_t getMessageItemType() const { return MessageItemType; }
  const SegmentDefn* getSegment() const { return segment; }
  const SegmentGroupDefn* getGroup() const { return group.get(); }
  int32_t getSetId() const { return setId; }
  // The embedded set; null while (or if) no set has the id.
  const MessageSetDefn* getMessageSet() const { return messageSet; }
  const MessageDefn& getMessage() const { return *message; }
  const MessageItemDefn* getParentItem() const { return parentItem; }
  const MessageSetDefn& getSet() const { return *set; }
  // The overrides of a segment item; null for other kinds.
  const SegmentFieldInstancesControl* getFieldInstances() const { return fieldInstances.get(); }
  // What decides whether a segment at this item is written as it was read: the segment's, or,
  // for an item that overrides its fields, one of its own made on first use. Safe from several
  // threads. A segment item only.
  const SegmentTextShape& getTextShape() const;
  const std::vector<std::unique_ptr<MatchDefn>>& getMatches() const { return matches; }
  // Null: files with these rules aren't read yet.
  const SyntaxRuleSet* getSyntaxRules() const { return SyntaxRules.get(); }
  const ValidationEquation* getEquation(int32_t index) const;
  const RuleOrList* getSituationalRule() const { return situationalRule.get(); }
  const UserDataMap& getUserData() const { return userData; }

 private:
  friend class SegmentGroupDefn;  // a group's items are read with the item's own set

  void readSegment(InputStream& stream, int version);
  void readSituationalData(InputStream& stream, int version);

  int32_t setId = 0;
  int32_t itemId = 0;
  uint8_t Required = 0;
  uint8_t Hidden = 0;
  int32_t MinRepeats = 0;
  int32_t MaxRepeats = 1;
  kestrel::TRVString<char> Name;
  int32_t MessageItemType = kSegmentItem;
  const SegmentDefn* segment = nullptr;
  std::unique_ptr<SegmentGroupDefn> group;
  const MessageSetDefn* messageSet = nullptr;
  const MessageDefn* message = nullptr;
  const MessageItemDefn* parentItem = nullptr;
  std::unique_ptr<SegmentFieldInstancesControl> fieldInstances;
  std::vector<std::unique_ptr<MatchDefn>> matches;
  std::shared_ptr<SyntaxRuleSet> SyntaxRules;
  std::vector<std::shared_ptr<ValidationEquation>> equations;
  UserDataMap userData;
  std::shared_ptr<RuleOrList> situationalRule;
  MessageSetDefn* set = nullptr;
  mutable std::once_flag textShapeMade;
  mutable std::unique_ptr<SegmentTextShape> textShape;
};

}  // namespace vantrelia
