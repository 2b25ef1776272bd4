#pragma once
// What a field's format turns into at load: a number picture that carries a value between its wire
// text and a number, or a regular expression that only judges text. Fields use it when a value is
// read or written and validation asks it whether a text fits.
//
// A formatter is shared by every tree made from its definition, and yet a number picture holds
// the number it last read or was given: a caller fills it and reads it back in one go.

#include <cstdint>
#include <string>
#include <string_view>

namespace vantrelia {

class Formatter {
 public:
  virtual ~Formatter();

  // Reads `text` into the number; false when the text doesn't fit the picture, and the number
  // then keeps what it held.
  virtual bool parse(std::u16string_view text) = 0;
  virtual void setDouble(double number) = 0;
  virtual void setLong(int32_t number) = 0;
  // The number as the picture writes it.
  virtual std::u16string getText() = 0;
  // The number cut towards zero; a number beyond the 32-bit range gives the nearest end of it.
  virtual int32_t getLong() const = 0;
  virtual double getDouble() const = 0;
  // Whether `text` is good: a number picture can read it, or the expression accepts it.
  virtual bool validate(std::u16string_view text) = 0;

 protected:
  Formatter() = default;
  Formatter(const Formatter&) = delete;
  Formatter& operator=(const Formatter&) = delete;
};

}  // namespace vantrelia
