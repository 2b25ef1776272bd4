#include "tool/GetCommand.h"

#include <iostream>
#include <nlohmann/json.hpp>

#include "elements/ElementCollection.h"
#include "foundation/VantreliaException.h"
#include "foundation/Utf8.h"
#include "tool/ExitCode.h"
#include "tool/PathAssignment.h"

namespace vantrelia::tool {

GetCommand::GetCommand(std::string pcf, bool asJson, std::vector<std::string> wanted, std::ostream& output)
    : MessageCommand(std::move(pcf), false, output), json(asJson), paths(std::move(wanted)) {}

void GetCommand::onMessage(InputText& input, MessageReader::Item& item) {
  MessageElement& message = *item.message;
  nlohmann::ordered_json values = nlohmann::ordered_json::object();
  std::string line;
  for (size_t i = 0; i < paths.size(); ++i) {
    nlohmann::ordered_json value = nullptr;
    try {
      // A collection creates nothing: a path the message could have but doesn't is null.
      const ElementCollection found = message.getElementCollection(paths[i].c_str());
      if (found.getCount() > 0 && found.getItem(0)->isPresent()) value = wideToUtf8(found.getItem(0)->getValue());
    } catch (const VantreliaException&) {
      // Either a repeat that isn't there, which a copy can be given, or a path the definition
      // doesn't have, which the engine names.
      try {
        PathAssignment::reach(*message.clone(), paths[i]);
      } catch (const VantreliaException& e) {
        badPath = true;
        if (reported.emplace(paths[i], message.getName()).second)
          std::cerr << "error: " << paths[i] << ": " << e.message << "\n";
      }
    }
    if (i > 0) line += "\t";
    if (value.is_string()) line += value.get<std::string>();
    values[paths[i]] = std::move(value);
  }
  if (json) {
    const nlohmann::ordered_json object = {{"offset", input.byteOffset(item.offset)}, {"message", message.getName()}, {"values", values}};
    out << object.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
  } else {
    out << line << "\n";
  }
}

int GetCommand::endInput(InputText& /*input*/) { return badPath ? ExitCode::kUsageError : ExitCode::kSuccess; }

}  // namespace vantrelia::tool
