#pragma once
// A named list of the values that a field may hold. Each message set owns its tables.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/ValidationEntryDefn.h"

namespace vantrelia {

class InputStream;

class ValidationTableDefn {
 public:
  ValidationTableDefn() = default;
  virtual ~ValidationTableDefn() = default;

  void load(InputStream& stream, int version, bool hasDescriptions);

  const std::string& getName() const { return Name; }
  int getEntryCount() const { return static_cast<int>(entries.size()); }
  const std::vector<ValidationEntryDefn>& getEntries() const { return entries; }
  // Throws BadParameter for an index outside the entries.
  const ValidationEntryDefn& getEntry(int index) const;

  // True if some entry's value is exactly this text: unit by unit, case and length counting.
  bool contains(std::u16string_view value) const;

 private:
  std::string Name;
  std::vector<ValidationEntryDefn> entries;
};

}  // namespace vantrelia
