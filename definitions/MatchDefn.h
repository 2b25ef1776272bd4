#pragma once
// One condition of a match list: the field at a path must hold a value. Segments, message items
// and messages carry match lists to tell apart definitions that the wire text alone doesn't.

#include <memory>
#include <string_view>
#include <vector>

#include "foundation/TRVString.h"

namespace vantrelia {

class InputStream;
class StringValidator;

// The regular expression that a match's value stands for: the whole value must match it, and a
// value beginning with "!" turns the answer round. Throws the plain integer 0 for a value that
// doesn't compile.
std::shared_ptr<StringValidator> buildMatchPattern(std::u16string_view value);

class MatchDefn {
 public:
  using WideText = kestrel::TRVString<char16_t>;

  MatchDefn();
  virtual ~MatchDefn();
  MatchDefn(const MatchDefn&) = delete;
  MatchDefn& operator=(const MatchDefn&) = delete;

  // Reads the path and the value text. Throws InvalidFile.
  void load(InputStream& stream, int version);
  // A match list as segments, items and messages carry it: a count, then that many records. A
  // negative count is refused with InvalidFile "PCF is corrupt: Invalid number of matches".
  static std::vector<std::unique_ptr<MatchDefn>> loadList(InputStream& stream, int version);

  // Steps joined by "/", whichever of "." or "/" the file used.
  const kestrel::TRVString<char>& getFieldPath() const { return FieldPath; }
  const WideText& getValue() const { return value; }
  // Null when the path or the value is empty: the field must then only be there.
  const StringValidator* getPattern() const { return pattern.get(); }
  // Whether a value found at the field path holds for this entry.
  bool accepts(std::u16string_view found) const;

 private:
  kestrel::TRVString<char> FieldPath;
  WideText value;
  std::shared_ptr<StringValidator> pattern;
};

}  // namespace vantrelia
