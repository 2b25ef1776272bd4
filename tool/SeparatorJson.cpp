#include "tool/SeparatorJson.h"

#include "definitions/SeparatorDefn.h"
#include "foundation/Utf8.h"

namespace vantrelia::tool {

nlohmann::ordered_json toJson(const SeparatorDefn& separator) {
  nlohmann::ordered_json json;
  json["flags"] = separator.getFlags();
  json["Value"] = wideToUtf8(separator.getValue().view());
  json["Initiator"] = wideToUtf8(separator.getInitiator().view());
  json["Terminator"] = wideToUtf8(separator.getTerminator().view());
  json["ReplacementValue"] = wideToUtf8(separator.getReplacementValue().view());
  json["TerminatorReplacement"] = wideToUtf8(separator.getTerminatorReplacement().view());
  json["FieldPath"] = separator.fieldPathText();
  json["Position"] = separator.getPosition();
  return json;
}

}  // namespace vantrelia::tool
