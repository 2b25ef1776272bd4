#pragma once
// The text forms that encoded binary fields take on the wire: Base64, uuencode and hexadecimal,
// chosen by the field's internal data type. Raw binary (type 5) carries its bytes as they are and
// is no business of this class.

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/DataTypeCodes.h"

namespace vantrelia {

class BinaryEncoding {
 public:
  // Internal data types of the encoded binary fields.
  static constexpr int32_t kBase64 = DataTypeCodes::kBase64;
  static constexpr int32_t kUuencode = DataTypeCodes::kUuencoded;
  static constexpr int32_t kHexadecimal = DataTypeCodes::kHex;

  // Replaces `text` with the encoding of `bytes`. An empty block, or a type that isn't one of the
  // three above, has no encoding: the result is false and `text` is left empty.
  static bool encode(int32_t dataType, std::span<const unsigned char> bytes, std::u16string& text);

  // Replaces `bytes` with what `text` stands for. Any text is safe to pass: text that isn't a
  // well-formed encoding of at least one byte gives false and leaves `bytes` empty. What counts
  // as well-formed is told for each encoding in the source.
  static bool decode(int32_t dataType, std::u16string_view text, std::vector<unsigned char>& bytes);
};

}  // namespace vantrelia
