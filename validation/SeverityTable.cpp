#include "validation/SeverityTable.h"

#include <algorithm>

#include "definitions/MessageSetDefn.h"
#include "definitions/ValidationErrorSettingDefn.h"

namespace vantrelia {

SeverityTable::SeverityTable() {
  for (int32_t number = verr::kFirst; number <= verr::kLast; ++number) set(number, getInitialSeverity(number));
}

void SeverityTable::reload(const MessageSetDefn& set, const SeverityTable* parent) {
  if (set.getInitializeValidationErrSettingsFromParent() && parent)
    severities = parent->severities;
  else
    loadFrom(set.getValidationErrorSettings());
}

void SeverityTable::loadFrom(const std::vector<ValidationErrorSettingDefn>& settings) {
  const size_t n = std::min(settings.size(), severities.size());
  for (size_t i = 0; i < n; ++i) severities[i] = settings[i].getErrorType();
}

}  // namespace vantrelia
