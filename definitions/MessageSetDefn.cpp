#include "definitions/MessageSetDefn.h"

#include "definitions/PcfMessages.h"
#include "foundation/BadParameter.h"
#include "foundation/FoundationMessages.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

void MessageSetDefn::load(MessageWarehouseDefn&, InputStream&, int) {
  throw InvalidFile(messages::kMessageSetsNotSupported);
}

ValidationErrorSettingDefn& MessageSetDefn::getValidationErrorSetting(int number) {
  for (auto& setting : validationErrorSettings)
    if (setting.getErrorNumber() == number) return setting;
  throw BadParameter(messages::kErrorNumberNotFound + std::to_string(number));
}

}  // namespace vantrelia
