#include "tool/PathAssignment.h"

#include "elements/MessageElement.h"
#include "foundation/TextConversion.h"
#include "foundation/Utf8.h"

namespace vantrelia::tool {

std::optional<PathAssignment> PathAssignment::parse(const std::string& text) {
  const size_t equals = text.find('=');
  if (equals == std::string::npos || equals == 0) return std::nullopt;
  return PathAssignment(text.substr(0, equals), text.substr(equals + 1));
}

std::optional<std::vector<PathAssignment>> PathAssignment::parseAll(const std::vector<std::string>& texts, std::string& bad) {
  std::vector<PathAssignment> all;
  for (const std::string& text : texts) {
    auto assignment = parse(text);
    if (!assignment) {
      bad = text;
      return std::nullopt;
    }
    all.push_back(std::move(*assignment));
  }
  return all;
}

void PathAssignment::applyTo(MessageElement& message) const {
  // Text that isn't UTF-8 goes in byte for byte rather than being refused.
  const auto wide = utf8ToWide(value);
  message.getElementAt(path.c_str())->setValue(wide ? *wide : widen(value));
}

}  // namespace vantrelia::tool
