#pragma once
// User data of the definitions behind a node: a record keeps its values under the index of a key
// that the whole file declares, so a host's key text is looked up in the warehouse first.

#include <string>

#include "definitions/FieldDefn.h"

namespace vantrelia {

class MessageSetDefn;

class ElementUserData {
 public:
  // False, and `value` untouched, when the key is empty, unknown, or has no value in `userData`.
  static bool find(const UserDataMap& userData, const MessageSetDefn* set, const std::u16string& key,
                   std::u16string& value);
};

}  // namespace vantrelia
