#include "support/PcfLoad.h"

#include "foundation/InvalidFile.h"
#include "support/TempDir.h"

namespace vantrelia::testing {

void loadBytes(MessageFactory& factory, const std::vector<uint8_t>& bytes) {
  TempDir dir;
  factory.LoadDefinition(dir.write("definition.pcf", bytes));
}

std::string loadFailure(const std::vector<uint8_t>& bytes) {
  MessageFactory factory;
  try {
    loadBytes(factory, bytes);
  } catch (const InvalidFile& e) {
    return e.message;
  }
  return "";
}

}  // namespace vantrelia::testing
