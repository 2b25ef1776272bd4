#pragma once
// One kind of message of a set: the type values that name it, its tree of items, its match list,
// and the two state tables that parsing runs over the tree.

#include <cstdint>
#include <memory>
#include <vector>

#include "definitions/FieldDefn.h"
#include "definitions/ParseState.h"
#include "definitions/SegmentGroupDefn.h"
#include "foundation/TRVString.h"

namespace vantrelia {

class InputStream;
class MatchDefn;
class MessageItemDefn;
class MessageSetDefn;
class MessageWarehouseDefn;
class VisibleChildTable;

class MessageDefn {
 public:
  using WideText = kestrel::TRVString<char16_t>;

  // A type value that stands for any value.
  static constexpr char16_t kWildType[] = u"<WILD>";

  MessageDefn();
  virtual ~MessageDefn();
  MessageDefn(const MessageDefn&) = delete;
  MessageDefn& operator=(const MessageDefn&) = delete;

  // Reads one message record. A message whose record carries no state tables is appended to
  // `deferredMessages`: its tables are built once every set is in. Throws InvalidFile.
  void load(MessageSetDefn& set, InputStream& stream, int version, std::vector<MessageDefn*>& deferredMessages);
  // Both tables in the file form; items are named by their ids.
  void readStateTables(InputStream& stream, const ItemIdMap& itemIds);
  // Both tables from the item tree. Throws InvalidFile "Invalid message item type in unordered
  // group" for an embedded set item in an unordered group.
  void buildStateTables();
  // Embedded set items whose set came later in the file, through all groups.
  void completeEmbeddedReferences(const MessageWarehouseDefn& warehouse);

  const kestrel::TRVString<char>& getName() const { return Name; }
  const std::vector<WideText>& getTypes() const { return types; }
  // One flag for each type: the type was "<WILD>" and is held as the empty text.
  const std::vector<bool>& getWildTypes() const { return wildTypes; }
  bool getHasWildType() const { return hasWildType != 0; }
  int32_t getItemCount() const { return static_cast<int32_t>(items.size()); }
  const std::vector<std::unique_ptr<MessageItemDefn>>& getItems() const { return items; }
  // Throws BadParameter for an index outside the items.
  const MessageItemDefn& getItem(int32_t index) const;
  const std::vector<std::unique_ptr<MatchDefn>>& getMatches() const { return matches; }
  const MessageSetDefn& getSet() const { return *set; }
  const StateTable& getStrictStates() const { return strictStates; }
  const StateTable& getRelaxedStates() const { return relaxedStates; }
  int32_t getStateCount() const { return stateCount; }
  const VisibleChildTable* getVisibleChildren() const { return visibleChildren.get(); }
  const UserDataMap& getUserData() const { return userData; }

 private:
  void splitTypes(const WideText& typeText, int version);
  void takeTypeFromMatch();
  void markWildTypes();

  std::vector<WideText> types;
  std::vector<bool> wildTypes;
  uint8_t hasWildType = 0;
  kestrel::TRVString<char> Name;
  std::vector<std::unique_ptr<MessageItemDefn>> items;
  std::vector<std::unique_ptr<MatchDefn>> matches;
  MessageSetDefn* set = nullptr;
  StateTable strictStates;
  StateTable relaxedStates;
  int32_t stateCount = 0;
  std::unique_ptr<VisibleChildTable> visibleChildren;
  UserDataMap userData;
};

}  // namespace vantrelia
