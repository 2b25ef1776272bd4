#pragma once
// An array type: items of one data type, cut by one separator of the set or by a text of its own.
// The warehouse owns every array type and all message sets share them.

#include <cstdint>

#include "definitions/DataTypeCodes.h"
#include "foundation/Enumerations.h"
#include "foundation/TRVString.h"

namespace vantrelia {

class InputStream;
class MessageWarehouseDefn;
class PrimitiveTypeDefn;

class ArrayTypeDefn {
 public:
  // The value of ArraySeparator when the array carries its own separator text.
  static constexpr int32_t kOwnSeparator = -1;

  // Reads one array type record. A custom item type is looked up among the warehouse's custom types,
  // which the file holds before the array types; an unknown id leaves CustomType null.
  void load(InputStream& stream, const MessageWarehouseDefn& warehouse);

  const kestrel::TRVString<char>& getName() const { return Name; }
  int32_t getId() const { return id; }
  int32_t getDataType() const { return DataType; }
  // Set only for items of a custom type, and then only if the warehouse knows its id.
  const PrimitiveTypeDefn* getCustomType() const { return CustomType; }
  // An ESeparatorType value, or kOwnSeparator.
  int32_t getArraySeparator() const { return ArraySeparator; }
  bool hasOwnSeparator() const { return ArraySeparator == kOwnSeparator; }
  // Meaningful only with hasOwnSeparator().
  const kestrel::TRVString<char16_t>& getOwnSeparator() const { return ownSeparator; }

 private:
  kestrel::TRVString<char> Name;
  int32_t id = 0;
  int32_t DataType = DataTypeCodes::kString;
  const PrimitiveTypeDefn* CustomType = nullptr;
  int32_t ArraySeparator = qxSepField2;
  kestrel::TRVString<char16_t> ownSeparator;
};

}  // namespace vantrelia
