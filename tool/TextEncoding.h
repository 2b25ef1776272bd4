#pragma once
// The encodings a message file comes in, and the crossing between its bytes and the engine's 16-bit
// units in both directions, so that what is written goes out as it came in.

#include <string>
#include <string_view>

#include "tool/OffsetMap.h"

namespace vantrelia::tool {

class TextEncoding {
 public:
  enum Kind { Utf8, Latin1, Utf16LE, Utf16BE };

  // From the byte order mark, else UTF-8 when the bytes are valid UTF-8, else Latin-1.
  static TextEncoding detect(std::string_view bytes);
  explicit TextEncoding(Kind kind, size_t bomLength = 0) : kind(kind), bomLength(bomLength) {}

  // The units of the bytes after the byte order mark; `offsets` takes each unit to its byte.
  std::u16string decode(std::string_view bytes, OffsetMap& offsets) const;
  std::string encode(std::u16string_view text) const;
  std::string_view bom(std::string_view bytes) const { return bytes.substr(0, bomLength); }
  Kind getKind() const { return kind; }
  const char* name() const;

 private:
  Kind kind;
  size_t bomLength;
};

}  // namespace vantrelia::tool
