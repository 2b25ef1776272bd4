#include "definitions/MessageDefn.h"

#include <string>

#include "definitions/InputStream.h"
#include "definitions/MatchDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/PcfMessages.h"
#include "definitions/PcfVersion.h"
#include "definitions/SegmentDefn.h"
#include "definitions/StateTableBuilder.h"
#include "definitions/VisibleChildTable.h"
#include "foundation/CheckIndex.h"
#include "foundation/InvalidFile.h"
#include "foundation/TextConversion.h"

namespace vantrelia {

namespace {

// The path of a message type field with "/" between its steps, as match lists write paths.
std::string slashedPath(const FieldPathDefn& path) {
  std::string text = path.getName().str();
  if (path.isNumeric())
    for (const int32_t index : path.getIndexes()) text += "/" + std::to_string(index);
  return text;
}

int32_t readDistance(InputStream& stream) {
  const uint8_t first = stream.readByte();
  if (first == 0x7F) return ParseTransition::kNoDistance;
  if (first != 0xFF) return first;
  const uint16_t wider = stream.readU16();
  return wider == 0xFFFF ? stream.readInt() : wider;
}

// One table of the file form: the states with their transitions, an unused i32, then the keys
// of the transitions into embedded set items, the only keys the file stores.
StateTable readTable(InputStream& stream, const ItemIdMap& itemIds) {
  const int32_t stateCount = stream.readInt();
  if (stateCount < 1) throw InvalidFile(messages::kInvalidStateCount);
  struct Pending {
    std::vector<int32_t> path;
    const MessageItemDefn* item = nullptr;
    std::vector<std::pair<int32_t, int32_t>> transitions;  // distance, target index
  };
  // Read before anything is made: transitions point forward, and a corrupt count must run out of
  // bytes before it runs out of memory.
  std::vector<Pending> pending;
  for (int32_t i = 0; i < stateCount; ++i) {
    Pending state;
    const int pathLength = stream.readCount();
    if (pathLength < 0) throw InvalidFile(messages::kInvalidStateCount);
    for (int j = 0; j < pathLength; ++j) state.path.push_back(stream.readCount());
    if (const int32_t itemId = stream.readInt(); itemId != 0) {
      const auto found = itemIds.find(itemId);
      if (found == itemIds.end()) throw InvalidFile(messages::kUnknownStateItem);
      state.item = found->second;
    }
    const int transitionCount = stream.readCount();
    if (transitionCount < 0) throw InvalidFile(messages::kInvalidStateCount);
    for (int j = 0; j < transitionCount; ++j) {
      const int32_t distance = readDistance(stream);
      const int target = stream.readCount();
      if (target < 0 || target >= stateCount) throw InvalidFile(messages::kInvalidStateTarget);
      state.transitions.emplace_back(distance, target);
    }
    pending.push_back(std::move(state));
  }
  stream.readInt();  // carries nothing the engine uses

  StateTable table;
  for (int32_t i = 0; i < stateCount; ++i)
    table.push_back(std::make_unique<ParseState>(i, std::move(pending[static_cast<size_t>(i)].path), pending[static_cast<size_t>(i)].item));
  for (int32_t i = 0; i < stateCount; ++i) {
    for (const auto& [distance, target] : pending[static_cast<size_t>(i)].transitions) {
      const ParseState& to = *table[static_cast<size_t>(target)];
      std::string key;
      if (const MessageItemDefn* item = to.getItem()) {
        switch (item->getMessageItemType()) {
          case MessageItemDefn::kSegmentItem:
            key = item->getSegment()->getName().str();
            break;
          case MessageItemDefn::kGroupItem:
            key = item->getName().str();
            break;
          default:
            stream.read(key);
        }
      } else {
        key = StateTableBuilder::kEndKey;
      }
      table[static_cast<size_t>(i)]->addTransition(std::move(key), distance, &to);
    }
  }
  return table;
}

}  // namespace

MessageDefn::MessageDefn() = default;
MessageDefn::~MessageDefn() = default;

const MessageItemDefn& MessageDefn::getItem(int32_t index) const {
  checkIndex(index, getItemCount());
  return *items[static_cast<size_t>(index)];
}

void MessageDefn::load(MessageSetDefn& owner, InputStream& stream, int version, std::vector<MessageDefn*>& deferredMessages) {
  set = &owner;
  stream.read(Name);
  WideText typeText;
  if (version >= pcf::kMessageTypeText) stream.read(typeText);
  splitTypes(typeText, version);

  ItemIdMap itemIds;
  items = MessageItemDefn::loadList(owner, *this, nullptr, stream, version, itemIds);
  matches = MatchDefn::loadList(stream, version);
  takeTypeFromMatch();

  bool present = false;
  if (version >= pcf::kVisibleChildTables) {
    stream.read(present);
    if (present) {
      visibleChildren = std::make_unique<VisibleChildTable>(getItemCount());
      visibleChildren->load(stream);
    }
  }
  present = false;
  if (version >= pcf::kItemIdsAndStateTables) stream.read(present);
  if (present) readStateTables(stream, itemIds);
  else deferredMessages.push_back(this);
  if (version >= pcf::kUserData) readUserData(stream, userData);
  markWildTypes();
}

void MessageDefn::splitTypes(const WideText& typeText, int version) {
  types.clear();
  if (version < pcf::kMessageTypeText || (typeText.empty() && version < pcf::kCountEncodedLength)) {
    types.push_back(WideText(widenSigned(Name.view())));
    return;
  }
  const int32_t fieldCount = set->getMessageTypeFieldCount();
  if (typeText.empty() || fieldCount == 1) {
    types.push_back(typeText);
    return;
  }
  std::u16string delimiters = u" ";
  for (int i = 0; i < kSeparatorCount; ++i) {
    const WideText& value = set->getSeparator(i).getValue();
    if (value.length() == 1) delimiters.push_back(value.view()[0]);
  }
  const std::u16string_view text = typeText.view();
  int32_t cutsLeft = fieldCount > 1 ? fieldCount - 1 : 0;
  size_t start = 0;
  for (size_t i = 0; i < text.size() && cutsLeft > 0; ++i) {
    if (delimiters.find(text[i]) == std::u16string::npos) continue;
    types.emplace_back(text.substr(start, i - start));
    start = i + 1;
    --cutsLeft;
  }
  // What stands behind the last cut is the last piece; a delimiter at the very end adds none.
  if (start < text.size()) types.emplace_back(text.substr(start));
}

void MessageDefn::takeTypeFromMatch() {
  if (set->getMessageTypeFieldCount() != 1 || types.size() != 1 || !types[0].empty()) return;
  const std::string path = slashedPath(set->getMessageTypeFields().front());
  for (const auto& match : matches) {
    if (match->getFieldPath().view() != path) continue;
    types[0] = match->getValue();
    return;
  }
}

void MessageDefn::markWildTypes() {
  wildTypes.assign(types.size(), false);
  for (size_t i = 0; i < types.size(); ++i) {
    if (!(types[i] == kWildType)) continue;
    types[i] = WideText();
    wildTypes[i] = true;
    hasWildType = 1;
  }
}

void MessageDefn::readStateTables(InputStream& stream, const ItemIdMap& itemIds) {
  strictStates = readTable(stream, itemIds);
  relaxedStates = readTable(stream, itemIds);
  // The parser moves between twin states of one index: tables of different sizes can't be run.
  if (relaxedStates.size() != strictStates.size()) throw InvalidFile(messages::kInvalidStateCount);
  stateCount = static_cast<int32_t>(strictStates.size());
  settleCandidates(strictStates);
}

void MessageDefn::buildStateTables() {
  strictStates = StateTableBuilder::buildStrict(items);
  relaxedStates = StateTableBuilder::buildRelaxed(items);
  StateTableBuilder::workOutDistances(relaxedStates, strictStates);
  stateCount = static_cast<int32_t>(strictStates.size());
  settleCandidates(strictStates);
}

void MessageDefn::completeEmbeddedReferences(const MessageWarehouseDefn& warehouse) {
  for (const auto& item : items) item->completeEmbeddedReferences(warehouse);
}

}  // namespace vantrelia
