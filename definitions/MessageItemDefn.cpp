#include "definitions/MessageItemDefn.h"

#include "definitions/CompositeDefn.h"
#include "definitions/FieldInstanceUpdate.h"
#include "definitions/InputStream.h"
#include "definitions/MatchDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PcfMessages.h"
#include "definitions/PcfVersion.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SegmentFieldInstancesControl.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

namespace {

using namespace overrideflags;

// The fields of one level of situational data: the segment's at the top, a composite's below.
struct FieldLevel {
  const SegmentDefn* segment;
  const CompositeDefn* composite;

  int32_t count() const { return segment ? segment->getFieldCount() : composite->getFieldCount(); }
  const FieldDefn& at(int32_t index) const { return segment ? segment->getField(index) : composite->getField(index); }
};

// The overrides a segment item lays over its segment's fields, read into the item's control.
class SituationalDataReader {
 public:
  SituationalDataReader(InputStream& in, int fileVersion, SegmentFieldInstancesControl& target)
      : stream(in), version(fileVersion), control(target) {}

  void readLevel(FieldLevel fields) {
    if (version >= pcf::kOverrideFlagsAndHeader) readLevelRecord();
    for (int32_t index = stream.readInt(); index >= 0; index = stream.readInt()) {
      if (index >= fields.count()) throw InvalidFile(messages::kItemOverrideIndexOutside);
      path.push_back(index);
      bool ignored = false;
      stream.read(ignored);
      const FieldDefn& field = fields.at(index);
      if (field.isComposite()) {
        if (!field.getComposite()) throw InvalidFile(messages::kUnknownComposite);
        // Each level costs a few bytes of file but a frame of stack: a corrupt file could nest
        // composites far deeper than any definition does.
        if (path.size() > static_cast<size_t>(MessageItemDefn::kMaxNesting)) throw InvalidFile(messages::kItemsNestedTooDeeply);
        readLevel({nullptr, field.getComposite()});
      } else {
        readFieldRecord();
      }
      path.pop_back();
    }
  }

 private:
  uint16_t readFlags() { return version >= pcf::kWideOverrideFlags ? stream.readU16() : stream.readByte(); }

  // A rule must be announced by a true bool; rules themselves aren't read yet.
  [[noreturn]] void refuseRule(const char* invalidText) {
    bool present = false;
    stream.read(present);
    if (!present) throw InvalidFile(invalidText);
    throw InvalidFile(messages::kSituationalRulesNotSupported);
  }

  bool readBool() {
    bool value = false;
    stream.read(value);
    return value;
  }

  void readLengths(FieldOverrideValues& values) {
    if (version < pcf::kWideOverrideFlags) return;
    if (values.flags & kMinLength) values.MinLength = stream.readInt();
    if (values.flags & kMaxLength) values.MaxLength = stream.readInt();
  }

  // The record of a composite field as a whole (or of the segment itself, where it says nothing).
  void readLevelRecord() {
    FieldOverrideValues values;
    values.flags = readFlags();
    if (values.flags & kRequired) values.Required = readBool() ? 1 : 0;
    if (values.flags & kHidden) values.Hidden = readBool() ? 1 : 0;
    if (version >= pcf::kOverrideValidationFlags && (values.flags & kSituationalRule))
      refuseRule(messages::kInvalidSituationalInstancesData);
    readLengths(values);
    if (values.flags != 0 && !path.empty()) control.add(path, values);
  }

  void readFieldRecord() {
    FieldOverrideValues values;
    values.flags = readFlags();
    if (values.flags & kDefaultValue) stream.readTextV(values.DefaultValue, version);
    if (values.flags & kFormatter) stream.readTextV(values.format, version);
    if (values.flags & kValidationTable) stream.read(values.tableName);
    if (version >= pcf::kOverrideFlagsAndHeader && (values.flags & kRequired)) values.Required = readBool() ? 1 : 0;
    if (version >= pcf::kHiddenOverride && (values.flags & kHidden)) values.Hidden = readBool() ? 1 : 0;
    if (version >= pcf::kOverrideValidationFlags) {
      if (values.flags & kSituationalRule) refuseRule(messages::kInvalidSituationalInstanceData);
      if (values.flags & kAdvancedValidation) throw InvalidFile(messages::kAdvancedValidationNotSupported);
    }
    readLengths(values);
    control.add(path, values);
  }

  InputStream& stream;
  int version;
  SegmentFieldInstancesControl& control;
  std::vector<int32_t> path;
};

int nestingOf(const MessageItemDefn* item) {
  int depth = 0;
  for (; item; item = item->getParentItem()) ++depth;
  return depth;
}

// The first set with the id among `sets`; with `last`, only up to and including it.
const MessageSetDefn* findSet(const std::vector<std::unique_ptr<MessageSetDefn>>& sets, int32_t id,
                              const MessageSetDefn* last) {
  for (const auto& candidate : sets) {
    if (candidate->getId() == id) return candidate.get();
    if (candidate.get() == last) break;
  }
  return nullptr;
}

}  // namespace

MessageItemDefn::MessageItemDefn() = default;
MessageItemDefn::~MessageItemDefn() = default;

const SegmentTextShape& MessageItemDefn::getTextShape() const {
  if (!fieldInstances) return segment->getTextShape();
  std::call_once(textShapeMade, [this] { textShape = std::make_unique<SegmentTextShape>(*segment, fieldInstances.get()); });
  return *textShape;
}

const ValidationEquation* MessageItemDefn::getEquation(int32_t index) const {
  if (index < 0 || static_cast<size_t>(index) >= equations.size()) return nullptr;
  return equations[static_cast<size_t>(index)].get();
}

std::vector<std::unique_ptr<MessageItemDefn>> MessageItemDefn::loadList(MessageSetDefn& set, const MessageDefn& message,
                                                                        MessageItemDefn* parentItem, InputStream& stream,
                                                                        int version, ItemIdMap& itemIds) {
  const int32_t count = stream.readInt();
  if (count < 0) throw InvalidFile(messages::kInvalidMessageItemCount);
  std::vector<std::unique_ptr<MessageItemDefn>> items;
  // No reserve: a corrupt count must not allocate before the records run out.
  for (int32_t i = 0; i < count; ++i) {
    auto item = std::make_unique<MessageItemDefn>();
    item->load(set, message, parentItem, stream, version, itemIds);
    items.push_back(std::move(item));
  }
  return items;
}

void MessageItemDefn::load(MessageSetDefn& owner, const MessageDefn& holder, MessageItemDefn* parent, InputStream& stream,
                           int version, ItemIdMap& itemIds) {
  set = &owner;
  message = &holder;
  parentItem = parent;
  if (nestingOf(parent) > kMaxNesting) throw InvalidFile(messages::kItemsNestedTooDeeply);

  bool flag = false;
  stream.read(flag);
  Required = flag ? 1 : 0;
  stream.read(MinRepeats).read(MaxRepeats);
  if (Required && MinRepeats == 0) MinRepeats = 1;
  if (version >= pcf::kItemIdsAndStateTables) {
    stream.read(itemId);
    if (itemId != 0) itemIds.emplace(itemId, this);
  }
  stream.read(Name);
  if (version >= pcf::kHiddenFlags) {
    stream.read(flag);
    Hidden = flag ? 1 : 0;
  }
  stream.read(MessageItemType);
  switch (MessageItemType) {
    case kSegmentItem:
      readSegment(stream, version);
      break;
    case kGroupItem:
      group = std::make_unique<SegmentGroupDefn>();
      group->load(*this, stream, version, itemIds);
      break;
    case kMessageSetItem:
      stream.read(setId);
      // Only sets read so far can answer; a later one is found when all are in.
      if (const MessageWarehouseDefn* warehouse = set->getWarehouse())
        messageSet = findSet(warehouse->getMessageSets(), setId, set);
      if (!messageSet && set->getId() == setId) messageSet = set;
      break;
    default:
      throw InvalidFile(messages::kInvalidMessageItemType);
  }
  if (version >= pcf::kUserData) readUserData(stream, userData);
  if (version >= pcf::kSituationalRules) {
    stream.read(flag);
    if (flag) throw InvalidFile(messages::kSituationalRulesNotSupported);
  }
}

void MessageItemDefn::readSegment(InputStream& stream, int version) {
  const int32_t segmentId = stream.readInt();
  SegmentDefn* found = set->segmentWithId(segmentId);
  if (!found) throw InvalidFile(messages::kUnknownSegment);
  segment = found;
  fieldInstances = std::make_unique<SegmentFieldInstancesControl>(*found);
  if (version >= pcf::kFieldOverrides) {
    SituationalDataReader(stream, version, *fieldInstances).readLevel({found, nullptr});
    // Whether or not the data held anything: the segment is now seen through an item's overrides.
    found->addFlags(SegmentDefn::kSituationalData);
  }
  if (version >= pcf::kMatchLists) {
    matches = MatchDefn::loadList(stream, version);
  }
  if (version >= pcf::kSyntaxRules) {
    bool hasSyntaxRules = false;
    stream.read(hasSyntaxRules);
    if (hasSyntaxRules) throw InvalidFile(messages::kSyntaxRulesNotSupported);
  }
  if (version >= pcf::kValidationEquations && stream.readCount() != 0)
    throw InvalidFile(messages::kValidationEquationsNotSupported);
}

void MessageItemDefn::completeEmbeddedReferences(const MessageWarehouseDefn& warehouse) {
  if (MessageItemType == kMessageSetItem && !messageSet) messageSet = findSet(warehouse.getMessageSets(), setId, nullptr);
  if (group)
    for (const auto& item : group->getItems()) item->completeEmbeddedReferences(warehouse);
}

}  // namespace vantrelia
