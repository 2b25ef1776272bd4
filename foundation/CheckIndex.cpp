#include "foundation/CheckIndex.h"

#include "foundation/BadParameter.h"
#include "foundation/FoundationMessages.h"
#include "foundation/Format.h"

namespace vantrelia {

void refuseIndex(int index, int) {
  if (index < 0) throw BadParameter(formatMessage(messages::kIndexBelowZero, index));
  throw BadParameter(formatMessage(messages::kIndexTooHigh, index));
}

}  // namespace vantrelia
