#pragma once
// How many visible children each item of a message or group stands for, so that a tree can show
// the children of hidden groups in the group's place.

#include <cstdint>
#include <vector>

namespace vantrelia {

class InputStream;

class VisibleChildTable {
 public:
  // Every item stands for one child until the table says otherwise.
  explicit VisibleChildTable(int32_t itemCount);

  // Reads the table record: a count, pairs of item index and count, then the total. Throws
  // InvalidFile for a negative count or an index outside the items.
  void load(InputStream& stream);

  int32_t getEntryCount() const { return entryCount; }
  int32_t getVisibleTotal() const { return visibleTotal; }
  int32_t getItemCount() const { return static_cast<int32_t>(visibleCounts.size()); }
  // Throws BadParameter for an index outside the items.
  int32_t getVisibleCount(int32_t item) const;
  const std::vector<int32_t>& getVisibleCounts() const { return visibleCounts; }

 private:
  int32_t entryCount = 0;
  int32_t visibleTotal = 0;
  std::vector<int32_t> visibleCounts;
};

}  // namespace vantrelia
