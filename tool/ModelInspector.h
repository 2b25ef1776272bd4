#pragma once
// Shows a loaded definition: as readable text, or as one JSON document whose keys are the field
// names of the definition model.

#include <nlohmann/json.hpp>
#include <string>

namespace vantrelia {
class MessageWarehouseDefn;
}

namespace vantrelia::tool {

class ModelInspector {
 public:
  explicit ModelInspector(const MessageWarehouseDefn& warehouse) : warehouse(warehouse) {}

  nlohmann::ordered_json toJson() const;
  // toJson() as indented text. Names and other 8-bit texts of a definition are bytes that need
  // not be UTF-8; a byte that isn't shows as U+FFFD instead of failing the whole document.
  std::string toJsonText() const;
  std::string toText() const;

 private:
  const MessageWarehouseDefn& warehouse;
};

}  // namespace vantrelia::tool
