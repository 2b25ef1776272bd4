#include "definitions/VisibleChildTable.h"

#include "definitions/InputStream.h"
#include "definitions/PcfMessages.h"
#include "foundation/CheckIndex.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

VisibleChildTable::VisibleChildTable(int32_t itemCount) : visibleCounts(static_cast<size_t>(itemCount < 0 ? 0 : itemCount), 1) {}

void VisibleChildTable::load(InputStream& stream) {
  entryCount = stream.readInt();
  if (entryCount < 0) throw InvalidFile(messages::kInvalidVisibleChildTable);
  for (int32_t i = 0; i < entryCount; ++i) {
    const int32_t item = stream.readInt();
    const int32_t count = stream.readInt();
    if (item < 0 || item >= getItemCount()) throw InvalidFile(messages::kInvalidVisibleChildTable);
    visibleCounts[static_cast<size_t>(item)] = count;
  }
  visibleTotal = stream.readInt();
}

int32_t VisibleChildTable::getVisibleCount(int32_t item) const {
  checkIndex(item, getItemCount());
  return visibleCounts[static_cast<size_t>(item)];
}

}  // namespace vantrelia
