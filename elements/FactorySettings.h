#pragma once
// The factory's settings as a node reaches them: through the definition of its message set to the
// warehouse that holds them. A set made without a warehouse has the settings of a new factory.

#include "definitions/MessageWarehouseDefn.h"

namespace vantrelia {

class MessageSetDefn;

class FactorySettings {
 public:
  static const WarehouseSettings& of(const MessageSetDefn* set);
  static bool hasFlag(const MessageSetDefn* set, uint32_t flag) { return (of(set).flags & flag) != 0; }
};

}  // namespace vantrelia
