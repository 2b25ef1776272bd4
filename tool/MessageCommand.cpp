#include "tool/MessageCommand.h"

#include <unistd.h>

#include <cstdio>
#include <iostream>

#include "definitions/MessageSetDefn.h"
#include "elements/MessageImpl.h"
#include "elements/SegmentElement.h"
#include "foundation/InvalidFile.h"
#include "tool/ExitCode.h"
#include "tool/TreeJson.h"
#include "validation/ValidationErrorList.h"

namespace vantrelia::tool {

namespace {
// Inputs smaller than this are read too fast for a progress line to help.
constexpr int64_t kProgressFrom = 4 << 20;
constexpr auto kProgressEvery = std::chrono::milliseconds(200);
}  // namespace

MessageCommand::MessageCommand(std::string pcf, bool preserveParsedText, std::ostream& output)
    : definitions(std::move(pcf), preserveParsedText), out(output) {}

int MessageCommand::run(const std::vector<std::string>& inputs) {
  int exitCode = ExitCode::kSuccess;
  const auto worst = [&](int code) { exitCode = ExitCode::worse(exitCode, code); };
  for (const std::string& name : inputs.empty() ? std::vector<std::string>{"-"} : inputs) {
    try {
      InputText input = InputText::read(name);
      worst(runInput(input));
    } catch (const InputError& e) {
      std::cerr << "error: " << e.what() << "\n";
      worst(ExitCode::kInputError);
    }
  }
  out.flush();
  return exitCode;
}

int MessageCommand::runInput(InputText& input) {
  const std::string pcfName = definitions.nameFor(input.getHead());
  MessageFactory* factory = nullptr;
  try {
    factory = &definitions.factory(pcfName);
  } catch (const InvalidFile& e) {
    std::cerr << "error: " << pcfName << ": " << e.message << "\n";
    return ExitCode::kInputError;
  }
  beginInput(input, pcfName);
  started = lastShown = std::chrono::steady_clock::now();
  int exitCode = ExitCode::kSuccess;
  MessageReader reader(factory->getWarehouse(), input.takeText());
  MessageReader::Item item;
  int64_t messages = 0;
  while (reader.next(item)) {
    if (item.message) {
      ++messages;
      const ValidationErrorList findings = findingsOf(*item.message);
      for (const ValidationError& finding : findings)
        if (finding.getErrorType() == qxVESError) exitCode = ExitCode::kPartial;
      onMessage(input, item);
    } else {
      if (isJunk(item.skipped)) exitCode = ExitCode::kPartial;
      onSkipped(input, item);
    }
    showProgress(input, item.offset + item.length, messages, false);
  }
  showProgress(input, 0, messages, true);
  return ExitCode::worse(exitCode, endInput(input));
}

void MessageCommand::showProgress(const InputText& input, int64_t position, int64_t messages, bool done) {
  if (static_cast<int64_t>(input.getBytes().size()) < kProgressFrom || !isatty(STDERR_FILENO)) return;
  const auto now = std::chrono::steady_clock::now();
  if (done) {
    // The line goes away once the input is read, leaving the terminal as it was.
    if (progressShown) std::fputs("\r\033[K", stderr);
    progressShown = false;
    return;
  }
  if (now - lastShown < kProgressEvery) return;
  lastShown = now;
  const double bytes = static_cast<double>(input.byteOffset(position));
  const double seconds = std::chrono::duration<double>(now - started).count();
  std::fprintf(stderr, "\r\033[K%s: %.1f MB, %lld messages, %.1f MB/s", input.getName().c_str(), bytes / 1e6,
               static_cast<long long>(messages), seconds > 0 ? bytes / 1e6 / seconds : 0.0);
  progressShown = true;
}

bool MessageCommand::isJunk(std::u16string_view skipped) {
  return skipped.find_first_not_of(u" \t\r\n") != std::u16string_view::npos;
}

ValidationErrorList MessageCommand::findingsOf(MessageElement& message) {
  ValidationErrorList findings;
  addFindings(message, message, findings);
  return findings;
}

void MessageCommand::addFindings(MessageElement& root, MessageElement& node, ValidationErrorList& findings) {
  // Messages embedded in this one (the transaction sets of an interchange) keep findings of their
  // own; they are the user's as much as the interchange's.
  if (auto* impl = dynamic_cast<MessageImpl*>(&node)) {
    ValidationErrorList own;
    impl->getParseFindings().replayInto(
        own, true, [&](int32_t number) { return node.getValidationErrorSettingType(number); },
        [](MessageElement& element) { return element.getPath(); });
    const std::string place = &node == &root ? std::string() : node.getPath();
    for (ValidationError finding : own) {
      if (finding.getPath().empty()) finding.setPath(place);
      findings.add(std::move(finding));
    }
  }
  if (dynamic_cast<SegmentElement*>(&node)) return;
  TreeJson::forEachPresentChild(node, [&](MessageElement& child) { addFindings(root, child, findings); });
}

std::string MessageCommand::setNameOf(MessageElement& message) {
  auto* impl = dynamic_cast<MessageImpl*>(&message);
  if (!impl || !impl->getMessageSetDefn()) return "";
  return impl->getMessageSetDefn()->getName().str();
}

}  // namespace vantrelia::tool
