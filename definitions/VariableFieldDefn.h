#pragma once
// The type rule of a variable field (data type 11): the value of a key field, another field of the
// same segment or composite, chooses the field's type at run time.

#include <cstdint>
#include <map>
#include <string>

namespace vantrelia {

class InputStream;

class VariableFieldDefn {
 public:
  // Reads the key field index and the two maps. The first entry for a key text stays.
  void load(InputStream& stream, int version);

  // Key text to the id of a composite, custom type or array type, looked up in that order.
  const std::map<std::u16string, int32_t>& getTypeIds() const { return typeIds; }
  // Key text to a basic data type code.
  const std::map<std::u16string, int32_t>& getBasicTypes() const { return basicTypes; }
  // Index of the key field among the fields of the same holder; -1 until read.
  int32_t getKeyFieldIndex() const { return keyFieldIndex; }

 private:
  std::map<std::u16string, int32_t> typeIds;
  std::map<std::u16string, int32_t> basicTypes;
  int32_t keyFieldIndex = -1;
};

}  // namespace vantrelia
