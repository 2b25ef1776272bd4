#pragma once
// What the two kinds of number picture share: the number they carry between a caller and the
// picture, and that a text is good when the picture can read it.

#include <cstdint>
#include <string_view>

#include "elements/Formatter.h"

namespace vantrelia {

class NumberFormatter : public Formatter {
 public:
  void setDouble(double value) override { number = value; }
  void setLong(int32_t value) override { setDouble(value); }
  int32_t getLong() const override;
  double getDouble() const override { return number; }
  bool validate(std::u16string_view text) override { return parse(text); }

 protected:
  NumberFormatter() = default;

  double number = 0.0;
};

}  // namespace vantrelia
