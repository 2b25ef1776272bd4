#include "elements/ElementPath.h"

#include <cstdlib>
#include <string>

#include "elements/ElementMessages.h"
#include "elements/InternalElement.h"
#include "foundation/BadParameter.h"
#include "foundation/Format.h"
#include "foundation/TextCompare.h"

namespace vantrelia {

namespace {
constexpr std::string_view kParent = "(parent)";
}

ElementPath::Step ElementPath::split(std::string_view path, bool bracketsSplit) {
  const size_t cut = path.find_first_of(bracketsSplit ? "./[" : "./");
  if (cut == std::string_view::npos) return {path, {}};
  if (path[cut] == '[') return {path.substr(0, cut), path.substr(cut)};
  return {path.substr(0, cut), path.substr(cut + 1)};
}

bool ElementPath::isParent(std::string_view head) { return equalIgnoringCase(head, kParent); }

bool ElementPath::startsWithParent(std::string_view path) {
  return path.size() >= kParent.size() && equalIgnoringCase(path.substr(0, kParent.size()), kParent);
}

ElementPath::Index ElementPath::splitIndex(std::string_view path) {
  if (path.empty() || path.front() != '[') {
    throw BadParameter(std::string(messages::kIndexNotFoundBefore) + std::string(path) + messages::kIndexNotFoundAfter);
  }
  const size_t close = path.find(']');
  if (close == std::string_view::npos) {
    throw BadParameter(std::string(messages::kMissingBracketBefore) + std::string(path.substr(1)) +
                       messages::kMissingBracketAfter);
  }
  Index index{path.substr(1, close - 1), {}};
  // Whatever stands between the "]" and the next delimiter is passed over.
  const size_t delimiter = path.find_first_of("./", close + 1);
  if (delimiter != std::string_view::npos) index.rest = path.substr(delimiter + 1);
  return index;
}

int ElementPath::parseIndex(std::string_view text) {
  if (text.find_first_not_of("0123456789") != std::string_view::npos) {
    throw BadParameter(formatMessage(messages::kNotValidArrayIndex, std::string(text).c_str()));
  }
  return parseIndexLoosely(text);
}

int ElementPath::parseIndexLoosely(std::string_view text) {
  // Digits beyond what an int holds saturate rather than wrap, so that a huge index is "too high".
  const std::string digits(text);
  const long long value = std::strtoll(digits.c_str(), nullptr, 10);
  if (value > 0x7fffffff) return 0x7fffffff;
  if (value < -0x7fffffffLL - 1) return -0x7fffffff - 1;
  return static_cast<int>(value);
}

MessageElement* ElementPath::walkIndexed(InternalElement& node, const char* pathText, InternalElement* parentTarget) {
  const std::string_view path = of(pathText);
  if (path.empty()) throw BadParameter(messages::kPathNullOrEmpty);
  if (node.parent && startsWithParent(path)) {
    return path.size() > kParentStepLength ? parentTarget->getElementAt(path.data() + kParentStepLength)
                                           : parentTarget;
  }
  const Index step = splitIndex(path);
  MessageElement* element = node.getElementAt(parseIndex(step.text));
  return step.rest.empty() ? element : element->getElementAt(step.rest.data());
}

ElementCollection ElementPath::collectIndexed(InternalElement& node, const char* specText) {
  const std::string_view spec = of(specText);
  if (spec.empty()) throw BadParameter(messages::kPathNullOrEmpty);
  const Index step = splitIndex(spec);
  ElementCollection result;
  const auto take = [&](MessageElement* element) {
    if (step.rest.empty()) {
      result.add(element);
    } else {
      result.addAll(element->getElementCollection(step.rest.data()));
    }
  };
  if (isWildcard(step.text)) {
    for (int i = 0; i < node.getElementCount(); ++i) take(node.getElementAt(i));
  } else {
    take(node.getElementAt(parseIndexLoosely(step.text)));
  }
  return result;
}

}  // namespace vantrelia
