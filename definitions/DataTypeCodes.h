#pragma once
// The internal data type codes that fields, custom types and array types carry in a definition
// file, and the names the definition language and the tools give them. The codes are fixed by the
// file format; the readers, the parser, the compiler and the inspector all take them from here.

#include <cstdint>
#include <string_view>

namespace vantrelia {

class DataTypeCodes {
 public:
  DataTypeCodes() = delete;

  static constexpr int32_t kShort = 0;
  static constexpr int32_t kLong = 1;
  static constexpr int32_t kFloat = 2;
  static constexpr int32_t kDouble = 3;
  static constexpr int32_t kString = 4;
  static constexpr int32_t kRawBinary = 5;  // its default names the field that holds its length
  static constexpr int32_t kBase64 = 6;
  static constexpr int32_t kUuencoded = 7;
  static constexpr int32_t kHex = 8;
  static constexpr int32_t kLastBinary = kHex;
  static constexpr int32_t kCustom = 9;     // a custom type of the warehouse, by id
  static constexpr int32_t kArray = 10;     // an array type of the warehouse, by id
  static constexpr int32_t kVariable = 11;  // chosen at run time by the value of a key field
  static constexpr int32_t kStrictInteger = 12;
  static constexpr int32_t kStrictReal = 13;
  static constexpr int32_t kQuotedText = 14;  // values holding separators go out in double quotes
  static constexpr int32_t kCount = 15;

  // The name of a code in the definition language ("short", "long", ... "quoted"); "" outside 0
  // to 14. And the code of such a name, or -1.
  static std::string_view nameOf(int32_t code);
  static int32_t codeOf(std::string_view name);

  // A type that needs no further record: not custom, array or variable.
  static constexpr bool isBasic(int32_t code) {
    return code >= 0 && code < kCount && code != kCustom && code != kArray && code != kVariable;
  }
  // The base types on which a default beginning with "#" makes the field a count.
  static constexpr bool isCountBase(int32_t baseType) {
    return baseType == kShort || baseType == kLong || baseType == kStrictInteger;
  }
  static constexpr bool isBinary(int32_t type) { return type >= kRawBinary && type <= kLastBinary; }
  static constexpr bool isNumeric(int32_t type) {
    return (type >= kShort && type < kString) || type == kStrictInteger || type == kStrictReal;
  }
};

}  // namespace vantrelia
