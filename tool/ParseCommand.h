#pragma once
// `vantrelia parse`: the tree and parse findings of every message, as text or JSON Lines, or one
// summary line per input.

#include <chrono>
#include <map>
#include <nlohmann/json.hpp>

#include "tool/MessageCommand.h"

namespace vantrelia::tool {

class ParseCommand : public MessageCommand {
 public:
  struct Options {
    std::string pcf;
    bool json = false;
    bool summary = false;
    bool generic = false;
  };
  ParseCommand(const Options& options, std::ostream& out);

 private:
  void beginInput(InputText& input, const std::string& pcfName) override;
  void onMessage(InputText& input, MessageReader::Item& item) override;
  void onSkipped(InputText& input, MessageReader::Item& item) override;
  int endInput(InputText& input) override;
  // The segments of the message, those it couldn't place included.
  static int64_t segmentsIn(MessageElement& node);
  // The parts every JSON line of an input starts with.
  nlohmann::ordered_json placed(const InputText& input, const MessageReader::Item& item) const;

  Options options;
  std::string pcfName;
  // What --summary counts for the input being read.
  struct Summary {
    std::map<std::string, int64_t> messages;
    std::map<int32_t, int64_t> findings;
    int64_t segments = 0;
    int64_t skippedBytes = 0;
    std::chrono::steady_clock::time_point started;
  } summary;
};

}  // namespace vantrelia::tool
