#pragma once
// One value that a validation table admits, with its description where the file carries one.

#include "foundation/TRVString.h"

namespace vantrelia {

class InputStream;

class ValidationEntryDefn {
 public:
  ValidationEntryDefn() = default;
  ValidationEntryDefn(std::u16string_view entryValue, std::u16string_view entryDescription)
      : value(entryValue), description(entryDescription) {}
  virtual ~ValidationEntryDefn() = default;
  ValidationEntryDefn(const ValidationEntryDefn&) = default;
  ValidationEntryDefn& operator=(const ValidationEntryDefn&) = default;
  ValidationEntryDefn(ValidationEntryDefn&&) noexcept = default;
  ValidationEntryDefn& operator=(ValidationEntryDefn&&) noexcept = default;

  // `hasDescriptions` is the flag of the set header; descriptions exist only from their version on.
  void load(InputStream& stream, int version, bool hasDescriptions);

  const kestrel::TRVString<char16_t>& getValue() const { return value; }
  // Empty in files without descriptions.
  const kestrel::TRVString<char16_t>& getDescription() const { return description; }

 private:
  kestrel::TRVString<char16_t> value;
  kestrel::TRVString<char16_t> description;
};

}  // namespace vantrelia
