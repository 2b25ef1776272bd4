#include "elements/FactorySettings.h"

#include "definitions/MessageSetDefn.h"

namespace vantrelia {

const WarehouseSettings& FactorySettings::of(const MessageSetDefn* set) {
  static const WarehouseSettings defaults;
  return set && set->getWarehouse() ? set->getWarehouse()->getSettings() : defaults;
}

}  // namespace vantrelia
