#include "compiler/ValidationErrorSettingWriter.h"

#include <array>
#include <charconv>
#include <optional>

#include "compiler/CompileContext.h"
#include "compiler/CompileError.h"
#include "compiler/PcfWriter.h"
#include "definitions/PcfVersion.h"
#include "validation/ValidationErrorNumbers.h"
#include "foundation/Enumerations.h"

namespace vantrelia::compiler {

namespace {

constexpr int kLowestNumber = verr::kFirst;
constexpr int kHighestNumber = verr::kLast;
constexpr std::array<std::string_view, 3> kSeverityNames = {"error", "ignore", "warning"};  // by EVErrType

std::optional<int> wholeNumber(const std::string& text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

}  // namespace

void ValidationErrorSettingWriter::writeList(const SourceNode& set, CompileContext& context, PcfWriter& out) {
  const int version = context.version();
  std::array<std::optional<EVErrType>, kHighestNumber - kLowestNumber + 1> given;
  int highest = kLowestNumber - 1;

  if (set.has("validationErrorSettings")) {
    const YAML::Node mapping = set.yaml()["validationErrorSettings"];
    const std::string where = "'validationErrorSettings' of " + set.what();
    if (!mapping.IsMap()) set.failAt("validationErrorSettings", where + " must be a mapping of error numbers to severities");
    set.requireVersion("validationErrorSettings", mapping.size() != 0, pcf::kValidationErrorSettings, version);
    for (const auto& entry : mapping) {
      const auto number = entry.first.IsScalar() ? wholeNumber(entry.first.Scalar()) : std::nullopt;
      if (!number || *number < kLowestNumber || *number > kHighestNumber)
        throw CompileError(lineOfNode(entry.first), "error number '" + (entry.first.IsScalar() ? entry.first.Scalar() : "") +
                                                        "' in " + where + " must lie between 1001 and 1052");
      std::optional<EVErrType> severity;
      for (size_t i = 0; i < kSeverityNames.size(); ++i)
        if (entry.second.IsScalar() && (entry.second.Scalar() == kSeverityNames[i] || entry.second.Scalar() == std::to_string(i)))
          severity = static_cast<EVErrType>(i);
      if (!severity)
        throw CompileError(lineOfNode(entry.second), "the severity of error " + std::to_string(*number) + " in " + where +
                                                         " must be error, ignore or warning");
      auto& slot = given[static_cast<size_t>(*number - kLowestNumber)];
      if (slot) throw CompileError(lineOfNode(entry.first), "error " + std::to_string(*number) + " is given twice in " + where);
      slot = severity;
      if (*number > highest) highest = *number;
    }
  }

  if (version < pcf::kValidationErrorSettings) return;
  out.i32(highest - kLowestNumber + 1);
  for (int number = kLowestNumber; number <= highest; ++number) {
    const auto& slot = given[static_cast<size_t>(number - kLowestNumber)];
    out.i32(number).byte(static_cast<uint8_t>(slot ? *slot : getDefaultSeverity(number)));
  }
}

}  // namespace vantrelia::compiler
