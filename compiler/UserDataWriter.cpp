#include "compiler/UserDataWriter.h"

#include <cstdint>
#include <stdexcept>

#include "definitions/PcfVersion.h"
#include "foundation/Utf8.h"

namespace vantrelia::compiler {

void UserDataWriter::declare(const SourceNode& record, CompileContext& context) {
  const auto values = record.wideTextMap("userData");
  record.requireVersion("userData", !values.empty(), pcf::kUserData, context.version());
  for (const auto& [key, value] : values) {
    const auto wideKey = utf8ToWide(key);
    if (!wideKey) record.failAt("userData", "a user-data key of " + record.what() + " is not valid UTF-8");
    if (value.size() > PcfWriter::kLongestText) record.failAt("userData", "a user-data value of " + record.what() + " is too long");
    context.declareUserDataKey(*wideKey);
  }
}

void UserDataWriter::write(const SourceNode& record, const CompileContext& context, PcfWriter& out) {
  const auto values = record.wideTextMap("userData");
  out.count(static_cast<int32_t>(values.size()));
  for (const auto& [key, value] : values) {
    const int index = context.userDataKeyIndex(*utf8ToWide(key));
    if (index < 0) throw std::logic_error("user data of " + record.what() + " written before it was declared");
    out.count(index).text16(value);
  }
}

}  // namespace vantrelia::compiler
