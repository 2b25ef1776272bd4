#include "definitions/MatchDefn.h"

#include <string>

#include "definitions/InputStream.h"
#include "definitions/PcfMessages.h"
#include "elements/StringValidator.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

std::shared_ptr<StringValidator> buildMatchPattern(std::u16string_view value) {
  try {
    return std::make_shared<StringValidator>(value);
  } catch (int) {
    // A match list that can't be applied would let any segment through: the file is refused.
    throw InvalidFile(messages::kInvalidMatchPattern);
  }
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

std::vector<std::unique_ptr<MatchDefn>> MatchDefn::loadList(InputStream& stream, int version) {
  const int32_t count = stream.readInt();
  if (count < 0) throw InvalidFile(messages::kInvalidMatchCount);
  // No reserve: a corrupt count must not allocate before the records run out.
  std::vector<std::unique_ptr<MatchDefn>> matches;
  for (int32_t i = 0; i < count; ++i) {
    auto match = std::make_unique<MatchDefn>();
    match->load(stream, version);
    matches.push_back(std::move(match));
  }
  return matches;
}

bool MatchDefn::accepts(std::u16string_view found) const {
  // Without a value to match, the field need only hold something.
  if (!pattern) return !found.empty();
  return pattern->matches(found);
}

}  // namespace vantrelia
