#include "elements/ParseFindings.h"

#include "parsing/SeparatorList.h"
#include "validation/RecordedErrors.h"
#include "validation/ValidationError.h"
#include "validation/ValidationErrorNumbers.h"

namespace vantrelia {

void ParseFindings::record(RecordedErrors& errors, MessageElement* element, const SeparatorList& list,
                           const ValidationLocation& location, int32_t number, std::u16string_view detail) {
  if (list.getValidationErrorSetting(number) == qxVESIgnore) return;
  std::u16string text = getRaisedText(number);
  if (detail.size() <= 80) {
    text += detail;
  } else {
    text += detail.substr(0, 77);
    text += u"...";
  }
  recordText(errors, element, list, location, number, std::move(text));
}

void ParseFindings::recordText(RecordedErrors& errors, MessageElement* element, const SeparatorList& list,
                               const ValidationLocation& location, int32_t number, std::u16string text) {
  const EVErrType severity = list.getValidationErrorSetting(number);
  if (severity == qxVESIgnore) return;
  errors.record(element, ValidationError(location, std::move(text), number, severity));
}

}  // namespace vantrelia
