#include "foundation/Utf8.h"

#include <boost/locale/encoding_utf.hpp>

namespace vantrelia {

std::optional<std::u16string> utf8ToWide(std::string_view text) {
  try {
    return boost::locale::conv::utf_to_utf<char16_t>(text.data(), text.data() + text.size(), boost::locale::conv::stop);
  } catch (const boost::locale::conv::conversion_error&) {
    return std::nullopt;
  }
}

std::string wideToUtf8(std::u16string_view text) {
  std::u16string repaired(text);
  for (size_t i = 0; i < repaired.size(); ++i) {
    const char16_t unit = repaired[i];
    if (unit >= 0xD800 && unit <= 0xDBFF && i + 1 < repaired.size() && repaired[i + 1] >= 0xDC00 && repaired[i + 1] <= 0xDFFF) {
      ++i;
    } else if (unit >= 0xD800 && unit <= 0xDFFF) {
      repaired[i] = 0xFFFD;
    }
  }
  return boost::locale::conv::utf_to_utf<char>(repaired.data(), repaired.data() + repaired.size());
}

}  // namespace vantrelia
