#pragma once
// The definition file reader over a binary stream, through a 32768-byte buffer.

#include <array>
#include <istream>
#include <memory>
#include <string>

#include "definitions/InputStream.h"

namespace vantrelia {

class DefinitionFile : public InputStream {
 public:
  static constexpr size_t kBufferSize = 32768;

  // Opens the file for binary reading. Throws InvalidFile "Input file was not opened" when it
  // can't be opened, "Could not open input file" when the stream can't even be created.
  explicit DefinitionFile(const std::string& path);
  // Reads from a stream the caller owns and keeps alive, e.g. bytes in memory.
  explicit DefinitionFile(std::istream& source);
  ~DefinitionFile() override;

  uint8_t readByte() override;
  void readBytes(uint8_t* target, size_t count) override;

 private:
  void fill();

  std::istream* stream = nullptr;
  std::unique_ptr<std::istream> ownedStream;
  std::unique_ptr<std::array<uint8_t, kBufferSize>> buffer;
  size_t position = kBufferSize;  // so that the first read fills the buffer
  size_t filled = kBufferSize;
  bool streamOwned = false;
};

}  // namespace vantrelia
