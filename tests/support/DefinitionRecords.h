#pragma once
// Field records laid out by hand as each version of the definition file holds them, for the tests
// of the records that are made of fields.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "compiler/PcfWriter.h"

namespace vantrelia::testing {

// Members left alone give an optional string field "F": no lengths, default, format or table, no
// user data, and an empty override block when it is made a composite field.
struct FieldRecord {
  std::string name = "F";
  bool required = false;
  int32_t minLength = 0, maxLength = 0, minRepeats = 0;
  std::u16string defaultValue{};
  bool hidden = false, hasOverrides = true;
  int32_t compositeId = -1;        // from 0 on, a field of that composite
  std::vector<uint8_t> overrides{};  // a composite field's block as is; empty: the empty block of the version
  int32_t dataType = 4, typeId = 0;  // the type id of a custom (9) or array (10) type
  // A variable field's (11) record: its key index, basic types and type ids.
  std::vector<uint8_t> variable = compiler::PcfWriter().i32(0).i32(0).i32(0).take();
  int32_t alignment = 0;
  std::u16string format{};
  std::string table{};
  std::vector<std::pair<int32_t, std::u16string>> userData{};
  bool presenceIndicator = false;

  compiler::PcfWriter write(int version) const;
};

}  // namespace vantrelia::testing
