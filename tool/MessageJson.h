#pragma once
// Message definitions as JSON, keys named as the fields of the definition model: types, the item
// tree, matches, visible child tables and both state tables.

#include <nlohmann/json.hpp>

namespace vantrelia {
class MessageDefn;
}

namespace vantrelia::tool {

// Items nest through their groups; a segment item names its segment, an embedded set item its
// set (null while unresolved). A state names its item by Name and its transitions' targets by
// index.
nlohmann::ordered_json toJson(const MessageDefn& message);

}  // namespace vantrelia::tool
