#include "definitions/DefinitionFile.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <new>

#include "definitions/PcfMessages.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

DefinitionFile::DefinitionFile(const std::string& path) {
  std::unique_ptr<std::ifstream> file;
  try {
    file = std::make_unique<std::ifstream>();
    buffer = std::make_unique<std::array<uint8_t, kBufferSize>>();
  } catch (const std::bad_alloc&) {
    throw InvalidFile(messages::kCouldNotOpenInputFile);
  }
  // A directory opens as a stream on this platform but has no bytes to give.
  std::error_code ignored;
  if (!std::filesystem::is_directory(path, ignored)) file->open(path, std::ios::binary);
  if (!file->is_open()) throw InvalidFile(messages::kInputFileNotOpened);
  ownedStream = std::move(file);
  stream = ownedStream.get();
  streamOwned = true;
}

DefinitionFile::DefinitionFile(std::istream& source)
    : stream(&source), buffer(std::make_unique<std::array<uint8_t, kBufferSize>>()) {}

DefinitionFile::~DefinitionFile() = default;

void DefinitionFile::fill() {
  if (!*stream) throw InvalidFile(messages::kUnexpectedEndOfInput);
  stream->read(reinterpret_cast<char*>(buffer->data()), kBufferSize);
  filled = static_cast<size_t>(stream->gcount());
  position = 0;
  if (filled == 0) throw InvalidFile(messages::kUnexpectedEndOfInput);
}

uint8_t DefinitionFile::readByte() {
  if (position >= filled) fill();
  return (*buffer)[position++];
}

void DefinitionFile::readBytes(uint8_t* target, size_t count) {
  while (count > 0) {
    if (position >= filled) fill();
    const size_t chunk = std::min(count, filled - position);
    std::memcpy(target, buffer->data() + position, chunk);
    position += chunk;
    target += chunk;
    count -= chunk;
  }
}

}  // namespace vantrelia
