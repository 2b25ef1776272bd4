#include "tool/NewCommand.h"

#include <iostream>

#include "elements/MessageElement.h"
#include "foundation/InvalidFile.h"
#include "foundation/Utf8.h"
#include "foundation/VantreliaException.h"
#include "tool/BundledDefinitions.h"
#include "tool/ExitCode.h"

namespace vantrelia::tool {

int NewCommand::run(const std::string& pcf, const std::string& messageName, const std::vector<PathAssignment>& assignments,
                    std::ostream& out) {
  BundledDefinitions definitions(pcf, false);
  const std::string pcfName = pcf.empty() ? "default" : pcf;
  MessageFactory* factory = nullptr;
  try {
    factory = &definitions.factory(pcfName);
  } catch (const InvalidFile& e) {
    std::cerr << "error: " << pcfName << ": " << e.message << "\n";
    return ExitCode::kInputError;
  }
  std::unique_ptr<MessageElement> message = factory->CreateMessage(messageName);
  if (!message) {
    std::cerr << "error: " << messageName << ": no such message in " << pcfName << "\n";
    return ExitCode::kUsageError;
  }
  for (const PathAssignment& assignment : assignments) {
    try {
      assignment.applyTo(*message);
    } catch (const VantreliaException& e) {
      std::cerr << "error: " << assignment.getPath() << ": " << e.message << "\n";
      return ExitCode::kUsageError;
    }
  }
  out << wideToUtf8(message->getEncodedValue());
  out.flush();
  return ExitCode::kSuccess;
}

}  // namespace vantrelia::tool
