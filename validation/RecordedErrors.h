#pragma once
// The findings a parse made in a message, kept with the message and handed on by every validation
// of it. Each is keyed by the element it concerns, or by null when the parse built no element for it.

#include <functional>
#include <map>
#include <string>

#include "validation/ValidationError.h"

namespace vantrelia {

class MessageElement;
class ValidationErrorList;

class RecordedErrors {
 public:
  // Keeps the finding unless its severity at parse time was ignore; warnings are kept, since a later
  // validation may ask for them.
  void record(MessageElement* element, ValidationError error);

  // Drops the findings of one element, for an element the parser gives up.
  void forget(MessageElement* element);
  // Drops every finding that has an element, keeping those of the message as a whole.
  void forgetElementFindings();
  // Moves all of other's findings here, leaving other empty.
  void takeAll(RecordedErrors& other);
  // Moves here the findings of other whose element `belongs` accepts.
  void takeWhere(RecordedErrors& other, const std::function<bool(MessageElement* element)>& belongs);
  void clear() { findings.clear(); }

  int count() const { return static_cast<int>(findings.size()); }
  // Each finding with the element it is kept under, element by element.
  void forEach(const std::function<void(MessageElement* element, const ValidationError& error)>& visit) const {
    for (const auto& [element, error] : findings) visit(element, error);
  }
  bool empty() const { return findings.empty(); }

  // The severity of a number in the tree now, and the path of an element (its getPath()).
  using SeverityOf = std::function<EVErrType(int32_t errorNumber)>;
  using PathOf = std::function<std::string(MessageElement& element)>;

  // Appends the findings whose number is reported under the severities of now, element by element.
  // A finding of an element gets the element's path in front of its own; its errorType stays the
  // severity it was parsed with.
  void replayInto(ValidationErrorList& errors, bool includeWarnings, const SeverityOf& severityOf,
                  const PathOf& pathOf) const;

 private:
  // Among findings of one element, the order they were recorded in is kept.
  std::multimap<MessageElement*, ValidationError> findings;
};

}  // namespace vantrelia
