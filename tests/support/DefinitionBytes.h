#pragma once
// Definition bytes laid out by hand and read through the engine's own file reader, one record or
// one field form at a time, without a whole file around them.

#include <cstdint>
#include <functional>
#include <sstream>
#include <string>
#include <vector>

#include "definitions/DefinitionFile.h"
#include "definitions/MessageSetDefn.h"

namespace vantrelia::testing {

// Put behind the bytes of a record, so that a reader that takes too little or too much is caught.
constexpr int32_t kSentinel = 0x5E5E5E5E;

// A reader over bytes in memory; keeps the stream alive beside it.
struct ByteReader {
  explicit ByteReader(const std::vector<uint8_t>& bytes) : source(std::string(bytes.begin(), bytes.end())), file(source) {}
  std::istringstream source;
  DefinitionFile file;
};

// Reads the bytes, with kSentinel behind them, through `read`, and checks that the sentinel is
// what comes next. What `read` throws passes on.
void readExactly(const std::vector<uint8_t>& bytes, const std::function<void(DefinitionFile&)>& read);

// The message of the InvalidFile the action throws, or "" when it throws none.
std::string invalidFileMessage(const std::function<void()>& action);

// Reads `count` composite records from exactly the bytes, then lets the set fix up their
// composite fields, which must leave no update behind.
void loadComposites(MessageSetDefn& set, const std::vector<uint8_t>& bytes, size_t count, int version);

}  // namespace vantrelia::testing
