#pragma once
// What the message commands share: each input read with the batch reader under the definition
// chosen for it, every message and stretch of skipped text handed to the command in order, a
// progress line for large inputs on a terminal, and the exit code that sums up the run.

#include <chrono>
#include <ostream>
#include <string>
#include <vector>

#include "parsing/MessageReader.h"
#include "tool/BundledDefinitions.h"
#include "tool/InputText.h"

namespace vantrelia::tool {

class MessageCommand {
 public:
  MessageCommand(std::string pcf, bool preserveParsedText, std::ostream& out);
  virtual ~MessageCommand() = default;

  // Reads every input in turn ("-" for standard input); an input that can't be read is reported on
  // stderr and the rest are still read.
  int run(const std::vector<std::string>& inputs);

 protected:
  // A stretch of skipped text that holds more than line breaks and blanks between messages.
  static bool isJunk(std::u16string_view skipped);
  // The message's parse findings, each with the path of its element in front.
  static ValidationErrorList findingsOf(MessageElement& message);
  // The findings of `node` and of the messages embedded below it, in tree order.
  static void addFindings(MessageElement& root, MessageElement& node, ValidationErrorList& findings);
  static std::string setNameOf(MessageElement& message);

  virtual void beginInput(InputText& /*input*/, const std::string& /*pcfName*/) {}
  virtual void onMessage(InputText& input, MessageReader::Item& item) = 0;
  virtual void onSkipped(InputText& /*input*/, MessageReader::Item& /*item*/) {}
  // The exit code this input calls for beyond the run's own; 0 for none.
  virtual int endInput(InputText& /*input*/) { return 0; }

  BundledDefinitions definitions;
  std::ostream& out;

 private:
  int runInput(InputText& input);
  void showProgress(const InputText& input, int64_t position, int64_t messages, bool done);

  std::chrono::steady_clock::time_point started, lastShown;
  bool progressShown = false;
};

}  // namespace vantrelia::tool
