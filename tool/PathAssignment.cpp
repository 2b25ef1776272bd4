#include "tool/PathAssignment.h"

#include "elements/MessageElement.h"
#include "foundation/BadParameter.h"
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

namespace {

// The node at the path, adding repeats up to the index a step names: a path reaches one repeat past
// the last, so that values can be put into a repeat that isn't there yet.
MessageElement* reachAppending(MessageElement& message, const std::string& path) {
  MessageElement* node = &message;
  size_t start = 0;
  while (start <= path.size()) {
    size_t end = path.find('/', start);
    if (end == std::string::npos) end = path.size();
    const std::string step = path.substr(start, end - start);
    const size_t open = step.find('[');
    if (open == std::string::npos || step.back() != ']') {
      node = node->getElementAt(step.c_str());
    } else {
      if (open > 0) node = node->getElementAt(step.substr(0, open).c_str());
      const int index = std::stoi(step.substr(open + 1, step.size() - open - 2));
      while (node->getNodeType() == qxRepeating && node->getElementCount() <= index) node->appendElement(nullptr);
      node = node->getElementAt(index);
    }
    start = end + 1;
  }
  return node;
}

}  // namespace

void PathAssignment::applyTo(MessageElement& message) const {
  // Text that isn't UTF-8 goes in byte for byte rather than being refused.
  const auto wide = utf8ToWide(value);
  reach(message, path)->setValue(wide ? *wide : widen(value));
}

MessageElement* PathAssignment::reach(MessageElement& message, const std::string& path) {
  MessageElement* target = nullptr;
  try {
    target = message.getElementAt(path.c_str());
  } catch (const BadParameter&) {
    // Only a repeat not there yet is made here; any other fault of the path is the engine's, with
    // its own text.
    try {
      target = reachAppending(message, path);
    } catch (const std::exception&) {
      target = nullptr;
    }
    if (!target) throw;
  }
  return target;
}

}  // namespace vantrelia::tool
