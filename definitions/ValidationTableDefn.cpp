#include "definitions/ValidationTableDefn.h"

#include <algorithm>

#include "definitions/InputStream.h"
#include "foundation/CheckIndex.h"

namespace vantrelia {

void ValidationTableDefn::load(InputStream& stream, int version, bool hasDescriptions) {
  stream.read(Name);
  // Entries are read one at a time rather than allocated up front: a corrupt count then runs into
  // the end of the file instead of into an allocation of gigabytes.
  const int32_t count = stream.readInt();
  for (int32_t i = 0; i < count; ++i) entries.emplace_back().load(stream, version, hasDescriptions);
}

const ValidationEntryDefn& ValidationTableDefn::getEntry(int index) const {
  checkIndex(index, getEntryCount());
  return entries[static_cast<size_t>(index)];
}

bool ValidationTableDefn::contains(std::u16string_view value) const {
  return std::any_of(entries.begin(), entries.end(),
                     [value](const ValidationEntryDefn& entry) { return entry.getValue().view() == value; });
}

}  // namespace vantrelia
