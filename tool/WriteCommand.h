#pragma once
// `vantrelia write` and `vantrelia set`: every message parsed and written back, with the values of
// `set` put in first; skipped text goes out as it came. `--check` writes nothing and tells, per
// input, whether the output would equal the input.

#include "tool/MessageCommand.h"
#include "tool/PathAssignment.h"

namespace vantrelia::tool {

class WriteCommand : public MessageCommand {
 public:
  struct Options {
    std::string pcf;
    bool normalize = false;
    bool check = false;
    std::vector<PathAssignment> assignments;
  };
  WriteCommand(Options options, std::ostream& out);

 private:
  void beginInput(InputText& input, const std::string& pcfName) override;
  void onMessage(InputText& input, MessageReader::Item& item) override;
  void onSkipped(InputText& input, MessageReader::Item& item) override;
  int endInput(InputText& input) override;
  void emit(const std::string& bytes);

  Options options;
  // Under --check, what would have been written for the input being read.
  std::string written;
  bool badPath = false;
};

}  // namespace vantrelia::tool
