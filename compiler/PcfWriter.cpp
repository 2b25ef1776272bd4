#include "compiler/PcfWriter.h"

#include <bit>
#include <fstream>
#include <stdexcept>

#include "definitions/PcfVersion.h"

namespace vantrelia::compiler {

PcfWriter& PcfWriter::byte(uint8_t value) {
  out.push_back(value);
  return *this;
}

PcfWriter& PcfWriter::u16(uint16_t value) {
  out.push_back(static_cast<uint8_t>(value >> 8));
  out.push_back(static_cast<uint8_t>(value));
  return *this;
}

PcfWriter& PcfWriter::i32(int32_t value) {
  const auto bits = static_cast<uint32_t>(value);
  for (int shift = 24; shift >= 0; shift -= 8) out.push_back(static_cast<uint8_t>(bits >> shift));
  return *this;
}

PcfWriter& PcfWriter::real(double value) {
  const auto bits = std::bit_cast<uint64_t>(value);
  for (int shift = 56; shift >= 0; shift -= 8) out.push_back(static_cast<uint8_t>(bits >> shift));
  return *this;
}

PcfWriter& PcfWriter::boolean(bool value) { return byte(value ? 1 : 0); }

PcfWriter& PcfWriter::count(int32_t value, CountForm form) {
  if (form == CountForm::Shortest) {
    if (value >= 0 && value < 255) form = CountForm::OneByte;
    else if (value >= 0 && value < 65535) form = CountForm::ThreeBytes;
    else form = CountForm::SevenBytes;
  }
  switch (form) {
    case CountForm::OneByte:
      if (value < 0 || value >= 255) throw std::invalid_argument("count doesn't fit one byte");
      return byte(static_cast<uint8_t>(value));
    case CountForm::ThreeBytes:
      if (value < 0 || value >= 65535) throw std::invalid_argument("count doesn't fit three bytes");
      return byte(255).u16(static_cast<uint16_t>(value));
    default:
      return byte(255).u16(65535).i32(value);
  }
}

PcfWriter& PcfWriter::text8(std::string_view value) {
  if (value.size() > kLongestText) throw std::invalid_argument("text longer than 65535 bytes");
  u16(static_cast<uint16_t>(value.size()));
  out.insert(out.end(), value.begin(), value.end());
  return *this;
}

bool PcfWriter::fitsText8w(std::u16string_view value) {
  for (char16_t unit : value)
    if (unit >= 0x80 && unit < 0xFF80) return false;
  return true;
}

PcfWriter& PcfWriter::text8w(std::u16string_view value) {
  if (!fitsText8w(value)) throw std::invalid_argument("text has characters that a byte text can't carry");
  std::string bytes(value.size(), '\0');
  for (size_t i = 0; i < value.size(); ++i) bytes[i] = static_cast<char>(value[i] & 0xFF);
  return text8(bytes);
}

PcfWriter& PcfWriter::text16(std::u16string_view value) {
  if (value.size() > kLongestText) throw std::invalid_argument("text longer than 65535 units");
  u16(static_cast<uint16_t>(value.size()));
  for (char16_t unit : value) u16(unit);
  return *this;
}

PcfWriter& PcfWriter::textv(std::u16string_view value, int version) {
  return version < pcf::kWideValueTexts ? text8w(value) : text16(value);
}

PcfWriter& PcfWriter::raw(const std::vector<uint8_t>& bytes) {
  out.insert(out.end(), bytes.begin(), bytes.end());
  return *this;
}

void PcfWriter::saveTo(const std::string& path) const {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) throw std::runtime_error("cannot write " + path);
  file.write(reinterpret_cast<const char*>(out.data()), static_cast<std::streamsize>(out.size()));
  if (!file) throw std::runtime_error("cannot write " + path);
}

}  // namespace vantrelia::compiler
