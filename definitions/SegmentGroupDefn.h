#pragma once
// The items of a group item and how they combine: in sequence, as a choice of one, or in any
// order. Owned by its item.

#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "foundation/TRVString.h"

namespace vantrelia {

class InputStream;
class MessageItemDefn;
class VisibleChildTable;

// Item ids of one message, filled while its items are read; state tables in the file name items by them.
using ItemIdMap = std::map<int32_t, MessageItemDefn*>;

class SegmentGroupDefn {
 public:
  SegmentGroupDefn();
  virtual ~SegmentGroupDefn();
  SegmentGroupDefn(const SegmentGroupDefn&) = delete;
  SegmentGroupDefn& operator=(const SegmentGroupDefn&) = delete;

  // Reads the group record of `item`; its items get `item` as their parent and share its message.
  void load(MessageItemDefn& item, InputStream& stream, int version, ItemIdMap& itemIds);

  const kestrel::TRVString<char>& getName() const { return Name; }
  bool isChoiceGroup() const { return ChoiceGroup != 0; }
  bool isUnorderedGroup() const { return UnorderedGroup != 0; }
  int32_t getItemCount() const { return static_cast<int32_t>(items.size()); }
  const std::vector<std::unique_ptr<MessageItemDefn>>& getItems() const { return items; }
  // Throws BadParameter for an index outside the items.
  const MessageItemDefn& getItem(int32_t index) const;
  // Null when the file gives no table.
  const VisibleChildTable* getVisibleChildren() const { return visibleChildren.get(); }

 private:
  kestrel::TRVString<char> Name;
  uint8_t ChoiceGroup = 0;
  uint8_t UnorderedGroup = 0;
  uint8_t reserved = 0;  // read with UnorderedGroup, used by nothing
  std::unique_ptr<VisibleChildTable> visibleChildren;
  std::vector<std::unique_ptr<MessageItemDefn>> items;
};

}  // namespace vantrelia
