#include "foundation/CheckIndex.h"

#include "foundation/BadParameter.h"
#include "foundation/FoundationMessages.h"
#include "foundation/Format.h"

namespace vantrelia {

void checkIndex(int index, int count) {
  if (index < 0) throw BadParameter(formatMessage(messages::kIndexBelowZero, index));
  if (index >= count) throw BadParameter(formatMessage(messages::kIndexTooHigh, index));
}

}  // namespace vantrelia
