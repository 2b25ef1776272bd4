#pragma once
// One record of a composite field's override block, kept as read until the composites it names
// are known.

#include <cstdint>
#include <string>

#include "definitions/FieldInstancesBase.h"
#include "foundation/TRVString.h"

namespace vantrelia {

// What an override says about one field, under `flags` (the bits of overrideflags). The texts are
// as the file gives them; the entry built from them interprets them.
struct FieldOverrideValues {
  uint16_t flags = 0;
  kestrel::TRVString<char16_t> DefaultValue;
  kestrel::TRVString<char16_t> format;
  std::string tableName;
  uint8_t Required = 0;
  uint8_t Hidden = 0;
  int32_t MinLength = 0;
  int32_t MaxLength = 0;
};

struct FieldInstanceUpdate {
  // The index that ends an override block in the file; also the index of a record not yet read.
  static constexpr int32_t kEndOfBlock = -1;
  // Closes the nested composite that the records before it opened.
  static constexpr int32_t kCloseLevel = -2;
  // The record of the composite field as a whole.
  static constexpr int32_t kWholeField = -3;

  int32_t index = kEndOfBlock;
  FieldOverrideValues values;
};

}  // namespace vantrelia
