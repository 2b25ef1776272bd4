#pragma once
// A parsed message as the tool shows it: its tree of present nodes, and its parse findings, as JSON
// or as indented text.

#include <functional>
#include <nlohmann/json.hpp>
#include <string>

namespace vantrelia {
class MessageElement;
class ValidationError;
class ValidationErrorList;
}  // namespace vantrelia

namespace vantrelia::tool {

class TreeJson {
 public:
  // {"name", "index", "nodeType", "value" (primitive fields only), "children" (present ones)}.
  static nlohmann::ordered_json node(MessageElement& element);
  // {"number", "severity", "text", "segment", "path"}.
  static nlohmann::ordered_json finding(const ValidationError& error);
  static nlohmann::ordered_json findings(const ValidationErrorList& errors);
  // The tree as lines of "name [index]" and " = value", two spaces deeper per level.
  static std::string text(MessageElement& element, int depth = 0);
  static std::string findingText(const ValidationError& error);
  static const char* severityName(int severity);
  // The present children in index order.
  static void forEachPresentChild(MessageElement& element, const std::function<void(MessageElement&)>& visit);
};

}  // namespace vantrelia::tool
