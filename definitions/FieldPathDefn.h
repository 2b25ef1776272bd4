#pragma once
// A reference to a field by path, as message type fields and separators taken from the wire hold
// it: either a plain path ("MSH/MessageType/Code") or a numeric one, a segment name followed by
// 1-based indexes ("MSH/9/1").

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "foundation/TRVString.h"

namespace vantrelia {

class FieldPathDefn {
 public:
  FieldPathDefn() = default;

  // Parses a path with "/" between its steps. It is numeric when it holds a "/" that isn't its
  // last character and everything behind the first "/" is digits and "/": then `name` is what
  // stands before the first "/", and each run of digits is one index. Otherwise `name` is the
  // whole path. An index too large for 32 bits is held as the largest one, which no field has.
  static FieldPathDefn parse(std::string_view path);
  // The form definition files use: "." between the steps, read as "/".
  static FieldPathDefn parseDotted(std::string_view path);

  bool isNumeric() const { return numeric; }
  const kestrel::TRVString<char>& getName() const { return name; }
  const std::vector<int32_t>& getIndexes() const { return indexes; }

  // As the metadata shows the path: `name`, and for a numeric path "." and each index.
  std::string text() const;

 private:
  bool numeric = false;
  kestrel::TRVString<char> name;
  std::vector<int32_t> indexes;
};

}  // namespace vantrelia
