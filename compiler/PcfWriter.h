#pragma once
// Writes the definition file's field forms, one call per field. The compiler builds whole files
// with it; tests use it directly to lay out exact or deliberately broken bytes.

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantrelia::compiler {

class PcfWriter {
 public:
  // The most bytes or units a text of the file holds: its length is a u16.
  static constexpr size_t kLongestText = 65535;

  // The three encodings of a count: the shortest that holds the value, or a wider one on request.
  enum class CountForm { Shortest, OneByte, ThreeBytes, SevenBytes };

  PcfWriter& byte(uint8_t value);
  PcfWriter& u16(uint16_t value);
  PcfWriter& i32(int32_t value);
  PcfWriter& real(double value);  // the `double` form
  PcfWriter& boolean(bool value);
  PcfWriter& count(int32_t value, CountForm form = CountForm::Shortest);
  // Byte texts: a u16 length, then the bytes as given (no terminator).
  PcfWriter& text8(std::string_view value);
  // The byte form of wide text: every unit must be a byte once sign-extended (below 0x80, or
  // 0xFF80 and up); others throw std::invalid_argument.
  PcfWriter& text8w(std::u16string_view value);
  PcfWriter& text16(std::u16string_view value);
  // text8w before the version that widened value texts, text16 from it on.
  PcfWriter& textv(std::u16string_view value, int version);
  PcfWriter& raw(const std::vector<uint8_t>& bytes);

  // True if text8w can carry every unit of the value unchanged.
  static bool fitsText8w(std::u16string_view value);

  const std::vector<uint8_t>& bytes() const { return out; }
  std::vector<uint8_t> take() { return std::move(out); }
  size_t size() const { return out.size(); }
  // Writes the bytes to a file; throws std::runtime_error naming the path when it can't.
  void saveTo(const std::string& path) const;

 private:
  std::vector<uint8_t> out;
};

}  // namespace vantrelia::compiler
