#include "support/StandardDefinition.h"

#include <map>
#include <memory>
#include <stdexcept>

#include "compiler/DefinitionCompiler.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "support/PcfLoad.h"

namespace vantrelia::testing {

MessageFactory& standardDefinition(const std::string& relativePath) {
  static std::map<std::string, std::unique_ptr<MessageFactory>> loaded;
  std::unique_ptr<MessageFactory>& factory = loaded[relativePath];
  if (!factory) {
    auto fresh = std::make_unique<MessageFactory>();
    const std::string path = std::string(VANTRELIA_SOURCE_DIR) + "/standards/" + relativePath;
    loadBytes(*fresh, compiler::DefinitionCompiler::compileFile(path));
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
