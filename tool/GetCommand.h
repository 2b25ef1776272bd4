#pragma once
// `vantrelia get`: the values at the given paths in every message, one line (or JSON object) per
// message.

#include <set>

#include "tool/MessageCommand.h"

namespace vantrelia::tool {

class GetCommand : public MessageCommand {
 public:
  GetCommand(std::string pcf, bool json, std::vector<std::string> paths, std::ostream& out);

 private:
  void onMessage(InputText& input, MessageReader::Item& item) override;
  int endInput(InputText& input) override;

  bool json;
  std::vector<std::string> paths;
  // A path a message's definition doesn't have is told once per message name.
  std::set<std::pair<std::string, std::string>> reported;
  bool badPath = false;
};

}  // namespace vantrelia::tool
