#include "definitions/InputStream.h"

#include <bit>
#include <cstring>
#include <vector>

#include "definitions/PcfVersion.h"
#include "foundation/TextConversion.h"

namespace vantrelia {

void InputStream::readBytes(uint8_t* target, size_t count) {
  for (size_t i = 0; i < count; ++i) target[i] = readByte();
}

uint16_t InputStream::readU16() {
  uint8_t bytes[2];
  readBytes(bytes, 2);
  return static_cast<uint16_t>((bytes[0] << 8) | bytes[1]);
}

int InputStream::readInt() {
  uint8_t bytes[4];
  readBytes(bytes, 4);
  const uint32_t value = (uint32_t{bytes[0]} << 24) | (uint32_t{bytes[1]} << 16) |
                         (uint32_t{bytes[2]} << 8) | uint32_t{bytes[3]};
  return static_cast<int32_t>(value);
}

int InputStream::readCount() {
  const uint8_t first = readByte();
  if (first < 255) return first;
  const uint16_t middle = readU16();
  if (middle < 65535) return middle;
  return readInt();
}

std::string InputStream::readText8() {
  const uint16_t length = readU16();
  std::string text(length, '\0');
  readBytes(reinterpret_cast<uint8_t*>(text.data()), length);
  text.resize(std::strlen(text.c_str()));
  return text;
}

std::u16string InputStream::readText16() {
  const uint16_t length = readU16();
  std::vector<uint8_t> bytes(size_t{length} * 2);
  readBytes(bytes.data(), bytes.size());
  std::u16string text;
  text.reserve(length);
  for (size_t i = 0; i < length; ++i) {
    const auto unit = static_cast<char16_t>((bytes[2 * i] << 8) | bytes[2 * i + 1]);
    if (unit == 0) break;
    text += unit;
  }
  return text;
}

InputStream& InputStream::read(kestrel::TRVString<char16_t>& value) {
  value = widenSigned(readText8());
  return *this;
}

InputStream& InputStream::read(std::u16string& value) {
  value = widenSigned(readText8());
  return *this;
}

InputStream& InputStream::read(kestrel::TRVString<char>& value) {
  value = readText8();
  return *this;
}

InputStream& InputStream::read(Guid& value) {
  value.data1 = static_cast<uint32_t>(readInt());
  value.data2 = readU16();
  value.data3 = readU16();
  readBytes(value.data4.data(), value.data4.size());
  return *this;
}

InputStream& InputStream::read(std::string& value) {
  value = readText8();
  return *this;
}

InputStream& InputStream::read(unsigned char& value) {
  value = readByte();
  return *this;
}

InputStream& InputStream::read(unsigned short& value) {
  value = readU16();
  return *this;
}

InputStream& InputStream::read(unsigned int& value) {
  value = static_cast<unsigned int>(readInt());
  return *this;
}

InputStream& InputStream::read(int& value) {
  value = readInt();
  return *this;
}

InputStream& InputStream::read(bool& value) {
  value = readByte() != 0;
  return *this;
}

InputStream& InputStream::readCount(int& value) {
  value = readCount();
  return *this;
}

InputStream& InputStream::readDouble(double& value) {
  uint8_t bytes[8];
  readBytes(bytes, 8);
  uint64_t bits = 0;
  for (uint8_t byte : bytes) bits = (bits << 8) | byte;
  value = std::bit_cast<double>(bits);
  return *this;
}

InputStream& InputStream::readWide(kestrel::TRVString<char16_t>& value) {
  value = readText16();
  return *this;
}

InputStream& InputStream::readWide(std::u16string& value) {
  value = readText16();
  return *this;
}

InputStream& InputStream::readTextV(kestrel::TRVString<char16_t>& value, int version) {
  return version < pcf::kWideValueTexts ? read(value) : readWide(value);
}

}  // namespace vantrelia
