#include "support/StandardDefinition.h"

#include <filesystem>
#include <map>
#include <memory>
#include <stdexcept>

#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"

namespace vantrelia::testing {

MessageFactory& standardDefinition(const std::string& relativePath) {
  static std::map<std::string, std::unique_ptr<MessageFactory>> loaded;
  std::unique_ptr<MessageFactory>& factory = loaded[relativePath];
  if (!factory) {
    // The build compiles every standards/<folder>/<name>.yaml to bundled/<name>.pcf; compiling
    // half a megabyte of YAML again in every test process would cost more than the tests.
    const std::string pcf = std::filesystem::path(relativePath).stem().string() + ".pcf";
    auto fresh = std::make_unique<MessageFactory>();
    fresh->LoadDefinition((std::filesystem::path(VANTRELIA_BUNDLED_DIR) / pcf).string());
    factory = std::move(fresh);
  }
  return *factory;
}

const MessageSetDefn& messageSet(const MessageFactory& factory, const std::string& name) {
  for (const auto& set : factory.getWarehouse().getMessageSets())
    if (set->getName().str() == name) return *set;
  throw std::runtime_error("no message set " + name);
}

}  // namespace vantrelia::testing
