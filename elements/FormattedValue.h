#pragma once
// How a field's value passes through its number picture: wire text read into a plain decimal
// value when somebody first reads the value, and a plain value written in the picture's form on
// its way out. Only fields of a numeric base type have a number to carry; integer types (short,
// long, strict integer) carry it as a 32-bit whole number, real types (float, double, strict real)
// as a double.

#include <cstdint>
#include <string>
#include <string_view>

namespace vantrelia {

class Formatter;

class FormattedValue {
 public:
  // The value that `wire` stands for: the number that the picture reads, in decimal; for a real
  // type with up to 40 significant digits and no trailing zeros. False, with `value` untouched,
  // when the picture can't read the text, when the type carries no number, and when the number
  // lies beyond what the type can carry: the text then stays as it came, for validation to report.
  static bool fromWire(Formatter& formatter, int32_t baseType, std::u16string_view wire, std::u16string& value);

  // `text` in the picture's form, when the whole of it is a number of the type's kind. False, with
  // `text` untouched, otherwise: a value that isn't a number goes out as it stands.
  static bool toWire(Formatter& formatter, int32_t baseType, std::u16string& text);
};

}  // namespace vantrelia
