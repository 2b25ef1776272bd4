#include "definitions/SegmentGroupDefn.h"

#include "definitions/InputStream.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/PcfVersion.h"
#include "definitions/VisibleChildTable.h"
#include "foundation/CheckIndex.h"

namespace vantrelia {

SegmentGroupDefn::SegmentGroupDefn() = default;
SegmentGroupDefn::~SegmentGroupDefn() = default;

const MessageItemDefn& SegmentGroupDefn::getItem(int32_t index) const {
  checkIndex(index, getItemCount());
  return *items[static_cast<size_t>(index)];
}

void SegmentGroupDefn::load(MessageItemDefn& item, InputStream& stream, int version, ItemIdMap& itemIds) {
  stream.read(Name);
  bool flag = false;
  stream.read(flag);
  ChoiceGroup = flag ? 1 : 0;
  if (version >= pcf::kUnorderedGroups) {
    stream.read(flag);
    UnorderedGroup = flag ? 1 : 0;
    if (UnorderedGroup) {
      stream.read(flag);
      reserved = flag ? 1 : 0;
    }
  }
  items = MessageItemDefn::loadList(*item.set, item.getMessage(), &item, stream, version, itemIds);
  if (version >= pcf::kVisibleChildTables) {
    bool hasTable = false;
    stream.read(hasTable);
    if (hasTable) {
      visibleChildren = std::make_unique<VisibleChildTable>(getItemCount());
      visibleChildren->load(stream);
    }
  }
}

}  // namespace vantrelia
