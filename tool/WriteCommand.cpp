#include "tool/WriteCommand.h"

#include <iostream>

#include "foundation/VantreliaException.h"
#include "tool/ExitCode.h"

namespace vantrelia::tool {

WriteCommand::WriteCommand(Options writeOptions, std::ostream& output)
    : MessageCommand(writeOptions.pcf, !writeOptions.normalize, output), options(std::move(writeOptions)) {}

void WriteCommand::emit(const std::string& bytes) {
  if (options.check) written += bytes;
  else out << bytes;
}

void WriteCommand::beginInput(InputText& input, const std::string& /*pcfName*/) {
  written.clear();
  emit(input.prefix());
}

void WriteCommand::onMessage(InputText& input, MessageReader::Item& item) {
  MessageElement& message = *item.message;
  for (const PathAssignment& assignment : options.assignments) {
    try {
      assignment.applyTo(message);
    } catch (const VantreliaException& e) {
      // The message still goes out, unchanged there, so that nothing of the input is lost.
      std::cerr << "error: " << assignment.getPath() << ": " << e.message << "\n";
      badPath = true;
    }
  }
  emit(input.encodeMessage(message.getEncodedValue()));
}

void WriteCommand::onSkipped(InputText& input, MessageReader::Item& item) { emit(input.encodeSkipped(item.skipped)); }

int WriteCommand::endInput(InputText& input) {
  emit(input.suffix());
  int code = badPath ? ExitCode::kUsageError : ExitCode::kSuccess;
  if (!options.check) return code;
  const std::string& original = input.getBytes();
  size_t at = 0;
  while (at < original.size() && at < written.size() && original[at] == written[at]) ++at;
  if (at == original.size() && at == written.size()) {
    out << input.getName() << ": identical\n";
    return code;
  }
  out << input.getName() << ": differs at byte " << at << "\n";
  return ExitCode::worse(code, ExitCode::kDiffers);
}

}  // namespace vantrelia::tool
