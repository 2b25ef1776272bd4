#include "validation/RecordedErrors.h"

#include "validation/ValidationErrorNumbers.h"
#include "validation/ValidationErrorList.h"

namespace vantrelia {

void RecordedErrors::record(MessageElement* element, ValidationError error) {
  if (error.getErrorType() == qxVESIgnore) return;
  findings.emplace(element, std::move(error));
}

void RecordedErrors::forget(MessageElement* element) { findings.erase(element); }

void RecordedErrors::forgetElementFindings() { findings.erase(findings.upper_bound(nullptr), findings.end()); }

void RecordedErrors::takeAll(RecordedErrors& other) {
  findings.merge(other.findings);
  other.findings.clear();
}

void RecordedErrors::takeWhere(RecordedErrors& other, const std::function<bool(MessageElement* element)>& belongs) {
  for (auto at = other.findings.begin(); at != other.findings.end();) {
    if (at->first && belongs(at->first)) {
      findings.insert(other.findings.extract(at++));
    } else {
      ++at;
    }
  }
}

void RecordedErrors::replayInto(ValidationErrorList& errors, bool includeWarnings, const SeverityOf& severityOf,
                                const PathOf& pathOf) const {
  for (const auto& [element, finding] : findings) {
    if (!isReported(severityOf(finding.getErrorNumber()), includeWarnings)) continue;
    if (!element) {
      errors.add(finding);
      continue;
    }
    ValidationError copy = finding;
    const std::string elementPath = pathOf(*element);
    if (!elementPath.empty())
      copy.setPath(copy.getPath().empty() ? elementPath : elementPath + "/" + copy.getPath());
    errors.add(std::move(copy));
  }
}

}  // namespace vantrelia
