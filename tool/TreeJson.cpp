#include "tool/TreeJson.h"

#include "elements/ElementCollection.h"
#include "elements/MessageElement.h"
#include "foundation/Utf8.h"
#include "validation/ValidationErrorList.h"

namespace vantrelia::tool {

void TreeJson::forEachPresentChild(MessageElement& element, const std::function<void(MessageElement&)>& visit) {
  if (element.getNodeType() == qxPrimitive) return;
  // Asking by wildcard creates nothing that is absent, where asking by index would.
  const bool byIndex = element.getNodeType() == qxRepeating || element.getNodeType() == qxMessageSet;
  const ElementCollection children = element.getElementCollection(byIndex ? "[*]" : "*");
  for (int i = 0; i < children.getCount(); ++i) {
    MessageElement* child = children.getItem(i);
    if (child && child->isPresent()) visit(*child);
  }
}

nlohmann::ordered_json TreeJson::node(MessageElement& element) {
  nlohmann::ordered_json json = {{"name", element.getName()},
                         {"index", element.getElementIndex()},
                         {"nodeType", static_cast<int>(element.getNodeType())}};
  if (element.getNodeType() == qxPrimitive) json["value"] = wideToUtf8(element.getValue());
  nlohmann::ordered_json children = nlohmann::ordered_json::array();
  forEachPresentChild(element, [&](MessageElement& child) { children.push_back(node(child)); });
  json["children"] = std::move(children);
  return json;
}

const char* TreeJson::severityName(int severity) {
  switch (severity) {
    case qxVESError: return "error";
    case qxVESWarning: return "warning";
    case qxVESIgnore: return "ignore";
  }
  return "unknown";
}

nlohmann::ordered_json TreeJson::finding(const ValidationError& error) {
  return {{"number", error.getErrorNumber()},
          {"severity", severityName(error.getErrorType())},
          {"text", wideToUtf8(error.getError())},
          {"segment", error.getSegmentNumber()},
          {"path", error.getPath()}};
}

nlohmann::ordered_json TreeJson::findings(const ValidationErrorList& errors) {
  nlohmann::ordered_json list = nlohmann::ordered_json::array();
  for (const ValidationError& error : errors) list.push_back(finding(error));
  return list;
}

std::string TreeJson::text(MessageElement& element, int depth) {
  std::string line(static_cast<size_t>(depth) * 2, ' ');
  line += element.getName();
  line += " [" + std::to_string(element.getElementIndex()) + "]";
  if (element.getNodeType() == qxPrimitive) line += " = " + wideToUtf8(element.getValue());
  line += "\n";
  forEachPresentChild(element, [&](MessageElement& child) { line += text(child, depth + 1); });
  return line;
}

std::string TreeJson::findingText(const ValidationError& error) {
  std::string line = std::string(severityName(error.getErrorType())) + " " + std::to_string(error.getErrorNumber());
  if (error.getSegmentNumber() >= 0) line += " segment " + std::to_string(error.getSegmentNumber());
  if (!error.getPath().empty()) line += " " + error.getPath();
  return line + ": " + wideToUtf8(error.getError());
}

}  // namespace vantrelia::tool
