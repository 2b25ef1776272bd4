#pragma once
// Segment definitions as JSON, keys named as the fields of the definition model.

#include <nlohmann/json.hpp>

namespace vantrelia {
class SegmentDefn;
}

namespace vantrelia::tool {

// Texts as UTF-8 strings; the fields in order with their override trees (see FieldJson.h), the
// matches (see MatchJson.h); presenceSeparator and nameValueSeparator as {SpecialSeparatorType,
// SpecialSeparatorString} or null; variableKeys by key field index, null without flag 0x01;
// SegmentType as its number.
nlohmann::ordered_json toJson(const SegmentDefn& segment);

}  // namespace vantrelia::tool
