#include "definitions/DataTypeCodes.h"

#include "definitions/NameTable.h"

namespace vantrelia {

namespace {

constexpr NameTable<DataTypeCodes::kCount> kNames({"short", "long", "float", "double", "string", "binary", "base64",
                                                   "uuencoded", "hex", "custom", "array", "variable", "strictInteger",
                                                   "strictReal", "quoted"});

}  // namespace

std::string_view DataTypeCodes::nameOf(int32_t code) { return kNames.nameOf(code); }

int32_t DataTypeCodes::codeOf(std::string_view name) { return kNames.valueOf(name); }

}  // namespace vantrelia
