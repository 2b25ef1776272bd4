#include "fuzz/DefinitionInput.h"

#include <exception>
#include <sstream>

#include "definitions/DefinitionFile.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PcfMessages.h"
#include "foundation/InvalidFile.h"
#include "tool/ModelInspector.h"

namespace vantrelia::fuzz {

std::string loadAndInspect(const uint8_t* data, size_t size) {
  // The bytes go through the same reader LoadDefinition opens over a file.
  std::istringstream input(std::string(reinterpret_cast<const char*>(data), size));
  DefinitionFile file(input);
  MessageWarehouseDefn warehouse;
  try {
    warehouse.read(file);
  } catch (const InvalidFile& e) {
    // The loader wraps any foreign exception in this text: a check that should have named the
    // fault is missing.
    return e.message == messages::kUnexpectedLoadError ? "load: " + e.message : "";
  }
  try {
    const tool::ModelInspector inspector(warehouse);
    inspector.toJsonText();
    inspector.toText();
  } catch (const std::exception& e) {
    return std::string("inspect: ") + e.what();
  }
  return "";
}

}  // namespace vantrelia::fuzz
