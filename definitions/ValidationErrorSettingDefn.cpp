#include "definitions/ValidationErrorSettingDefn.h"

#include "definitions/InputStream.h"
#include "definitions/PcfMessages.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

void ValidationErrorSettingDefn::load(InputStream& stream) {
  stream.read(errorNumber);
  const uint8_t severity = stream.readByte();
  if (severity > qxVESWarning) throw InvalidFile(messages::kValidationErrorTypeUnknown);
  errorType = static_cast<EVErrType>(severity);
}

}  // namespace vantrelia
