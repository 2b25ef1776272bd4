#include "definitions/MatchDefn.h"

#include <string>

#include "definitions/InputStream.h"

namespace vantrelia {

std::shared_ptr<StringValidator> buildMatchPattern(std::u16string_view) {
  // A regular expression over the value plugs in here. Until then no match has a pattern.
  return nullptr;
}

MatchDefn::MatchDefn() = default;
MatchDefn::~MatchDefn() = default;

void MatchDefn::load(InputStream& stream, int version) {
  std::string path;
  stream.read(path);
  for (char& c : path)
    if (c == '.') c = '/';
  FieldPath = path;
  stream.readTextV(value, version);
  if (!FieldPath.view().empty() && !value.view().empty()) pattern = buildMatchPattern(value.view());
}

}  // namespace vantrelia
