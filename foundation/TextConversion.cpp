#include "foundation/TextConversion.h"

namespace vantrelia {

std::string narrow(std::u16string_view text) {
  std::string result(text.size(), '\0');
  for (size_t i = 0; i < text.size(); ++i) result[i] = static_cast<char>(text[i] & 0xFF);
  return result;
}

std::u16string widenSigned(std::string_view text) {
  std::u16string result(text.size(), u'\0');
  for (size_t i = 0; i < text.size(); ++i)
    result[i] = static_cast<char16_t>(static_cast<int16_t>(static_cast<signed char>(text[i])));
  return result;
}

std::u16string widen(std::string_view text) {
  std::u16string result(text.size(), u'\0');
  for (size_t i = 0; i < text.size(); ++i)
    result[i] = static_cast<char16_t>(static_cast<unsigned char>(text[i]));
  return result;
}

}  // namespace vantrelia
