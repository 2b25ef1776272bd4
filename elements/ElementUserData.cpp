#include "elements/ElementUserData.h"

#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"

namespace vantrelia {

bool ElementUserData::find(const UserDataMap& userData, const MessageSetDefn* set, const std::u16string& key,
                           std::u16string& value) {
  if (key.empty() || userData.empty() || !set || !set->getWarehouse()) return false;
  const int keyIndex = set->getWarehouse()->getUserDataKeyIndex(key);
  if (keyIndex < 0) return false;
  const auto found = userData.find(keyIndex);
  if (found == userData.end()) return false;
  value = found->second.str();
  return true;
}

}  // namespace vantrelia
