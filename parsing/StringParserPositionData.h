#pragma once

#include <cstdint>

#include "parsing/ParserPositionData.h"

namespace vantrelia {

// A saved cursor of a StringParserStream.
class StringParserPositionData : public ParserPositionData {
 public:
  StringParserPositionData(const char16_t* position, int32_t remaining)
      : position(position), remaining(remaining) {}

  const char16_t* position;
  int32_t remaining;
};

}  // namespace vantrelia
