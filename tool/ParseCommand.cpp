#include "tool/ParseCommand.h"

#include <cstdio>
#include <iostream>

#include "elements/SegmentImplBase.h"
#include "foundation/IllegalOperation.h"
#include "tool/TreeJson.h"
#include "validation/ValidationErrorList.h"

namespace vantrelia::tool {

ParseCommand::ParseCommand(const Options& parseOptions, std::ostream& output)
    : MessageCommand(parseOptions.pcf, false, output), options(parseOptions) {}

void ParseCommand::beginInput(InputText& input, const std::string& name) {
  pcfName = name;
  if (options.generic) definitions.factory(name).SetCreateGenericMessages(true);
  summary = Summary{};
  summary.started = std::chrono::steady_clock::now();
  if (!options.json && !options.summary) out << "# " << input.getName() << ": parsed with " << pcfName << "\n";
}

int64_t ParseCommand::segmentsIn(MessageElement& node) {
  if (dynamic_cast<SegmentImplBase*>(&node)) return 1;
  int64_t count = 0;
  try {
    count = node.getUnknownSegmentCount();
  } catch (const IllegalOperation&) {
    // Only messages and groups keep segments they couldn't place.
  }
  TreeJson::forEachPresentChild(node, [&](MessageElement& child) { count += segmentsIn(child); });
  return count;
}

nlohmann::ordered_json ParseCommand::placed(const InputText& input, const MessageReader::Item& item) const {
  const int64_t start = input.byteOffset(item.offset);
  return {{"input", input.getName()},
          {"pcf", pcfName},
          {"offset", start},
          {"length", input.byteOffset(item.offset + item.length) - start}};
}

void ParseCommand::onMessage(InputText& input, MessageReader::Item& item) {
  MessageElement& message = *item.message;
  const ValidationErrorList findings = findingsOf(message);
  if (options.summary) {
    summary.messages[setNameOf(message) + "/" + message.getName()] += 1;
    summary.segments += segmentsIn(message);
    for (const ValidationError& finding : findings) summary.findings[finding.getErrorNumber()] += 1;
    return;
  }
  if (options.json) {
    nlohmann::ordered_json line = placed(input, item);
    line["set"] = setNameOf(message);
    line["message"] = message.getName();
    line["tree"] = TreeJson::node(message);
    line["findings"] = TreeJson::findings(findings);
    out << line.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
    return;
  }
  const nlohmann::ordered_json where = placed(input, item);
  out << "message " << setNameOf(message) << "/" << message.getName() << " at byte " << where["offset"].get<int64_t>()
      << ", " << where["length"].get<int64_t>() << " bytes\n";
  out << TreeJson::text(message, 1);
  if (findings.empty()) return;
  out << "  findings:\n";
  for (const ValidationError& finding : findings) out << "    " << TreeJson::findingText(finding) << "\n";
}

void ParseCommand::onSkipped(InputText& input, MessageReader::Item& item) {
  if (!isJunk(item.skipped)) return;
  nlohmann::ordered_json where = placed(input, item);
  if (options.summary) {
    summary.skippedBytes += where["length"].get<int64_t>();
    return;
  }
  if (options.json) {
    where["skipped"] = true;
    out << where.dump() << "\n";
    return;
  }
  out << "skipped text at byte " << where["offset"].get<int64_t>() << ", " << where["length"].get<int64_t>() << " bytes\n";
}

int ParseCommand::endInput(InputText& input) {
  if (!options.summary) return 0;
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - summary.started).count();
  const double megabytes = static_cast<double>(input.getBytes().size()) / 1e6;
  int64_t total = 0;
  std::string byName;
  for (const auto& [name, count] : summary.messages) {
    total += count;
    byName += (byName.empty() ? "" : ", ") + name + " " + std::to_string(count);
  }
  std::string findings;
  for (const auto& [number, count] : summary.findings)
    findings += (findings.empty() ? "" : ", ") + std::to_string(number) + " x" + std::to_string(count);
  char rate[32];
  std::snprintf(rate, sizeof rate, "%.1f", seconds > 0 ? megabytes / seconds : 0.0);
  out << input.getName() << ": " << pcfName << ", " << total << " messages" << (byName.empty() ? "" : " (" + byName + ")")
      << ", " << summary.segments << " segments, " << summary.skippedBytes << " bytes skipped, findings: "
      << (findings.empty() ? "none" : findings) << ", " << rate << " MB/s\n";
  return 0;
}

}  // namespace vantrelia::tool
