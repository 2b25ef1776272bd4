#pragma once
// How the readers of segments and composites record what doesn't fit in the text they read:
// a finding under its number, unless the tree's severity for it is ignore.

#include <cstdint>
#include <string>
#include <string_view>

namespace vantrelia {

class MessageElement;
class RecordedErrors;
class SeparatorList;
class ValidationLocation;

class ParseFindings {
 public:
  // Records `number` with its raised text, followed by `detail` cut to 80 characters (the last
  // three "..." when cut).
  static void record(RecordedErrors& errors, MessageElement* element, const SeparatorList& list,
                     const ValidationLocation& location, int32_t number, std::u16string_view detail = {});
  // Records `number` with a text made by the caller, for the numbers raised with a format.
  static void recordText(RecordedErrors& errors, MessageElement* element, const SeparatorList& list,
                         const ValidationLocation& location, int32_t number, std::u16string text);
};

}  // namespace vantrelia
