#include "elements/FormattedValue.h"

#include <charconv>
#include <limits>

#include "definitions/DataTypeCodes.h"
#include "elements/Formatter.h"
#include "elements/NumberText.h"

namespace vantrelia {

namespace {

bool isIntegerType(int32_t baseType) { return DataTypeCodes::isCountBase(baseType); }

bool isRealType(int32_t baseType) {
  return baseType == DataTypeCodes::kFloat || baseType == DataTypeCodes::kDouble || baseType == DataTypeCodes::kStrictReal;
}

bool fitsLong(double number) {
  return number >= static_cast<double>(std::numeric_limits<int32_t>::min()) &&
         number < static_cast<double>(std::numeric_limits<int32_t>::max()) + 1.0;
}

// The general form with 40 significant digits, as "%.40g" prints in the C locale.
std::u16string realText(double number) {
  constexpr size_t kLongest = 50;
  char bytes[64];
  const auto result = std::to_chars(bytes, bytes + sizeof bytes, number, std::chars_format::general, 40);
  std::string text(bytes, result.ptr);
  if (text.find('.') != std::string::npos && text.find('e') == std::string::npos) {
    text.erase(text.find_last_not_of('0') + 1);
    if (text.back() == '.') text.pop_back();
  }
  if (text.size() > kLongest) text.resize(kLongest);
  return std::u16string(text.begin(), text.end());
}

}  // namespace

bool FormattedValue::fromWire(Formatter& formatter, int32_t baseType, std::u16string_view wire, std::u16string& value) {
  if (!isIntegerType(baseType) && !isRealType(baseType)) return false;
  if (!formatter.parse(wire)) return false;
  const double number = formatter.getDouble();
  if (isRealType(baseType)) {
    value = realText(number);
    return true;
  }
  if (!fitsLong(number)) return false;
  const std::string digits = std::to_string(formatter.getLong());
  value.assign(digits.begin(), digits.end());
  return true;
}

bool FormattedValue::toWire(Formatter& formatter, int32_t baseType, std::u16string& text) {
  if (isIntegerType(baseType)) {
    int64_t whole = 0;
    if (!NumberText::readLong(text, whole)) return false;
    if (whole < std::numeric_limits<int32_t>::min() || whole > std::numeric_limits<int32_t>::max()) return false;
    formatter.setLong(static_cast<int32_t>(whole));
  } else if (isRealType(baseType)) {
    double number = 0.0;
    if (!NumberText::readDouble(text, number)) return false;
    formatter.setDouble(number);
  } else {
    return false;
  }
  text = formatter.getText();
  return true;
}

}  // namespace vantrelia
