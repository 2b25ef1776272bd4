#pragma once
// One section of a number picture: how a number of one sign looks on the wire. Digit places,
// a decimal point that stands in the text or is only implied, thousands grouping and scaling,
// a percentage, digits that carry the sign (overpunch), and literals around them.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "elements/NumberFormatter.h"

namespace vantrelia {

class SimpleNumberFormatter : public NumberFormatter {
 public:
  // `section` is one section of a picture, without ";". It must not be empty.
  explicit SimpleNumberFormatter(std::u16string_view section);
  ~SimpleNumberFormatter() override;

  bool parse(std::u16string_view text) override;
  std::u16string getText() override;

  // The picture after the constructor's changes, with each escaped character shown as itself.
  std::u16string getFormat() const;
  bool getHasThousands() const { return hasThousands; }
  double getMultiplier() const { return multiplier; }
  size_t getDigitPlaces() const { return digitPlaces; }
  size_t getFractionPlaces() const { return fractionPlaces; }

 private:
  // A character of the picture. A character behind a backslash is `escaped`: a literal that no
  // search for picture characters may take for one. The backslash itself stays in front of it.
  struct Place {
    char16_t character;
    bool escaped;
  };

  // Whether the place at `k` is the unescaped picture character `c`.
  bool is(size_t k, char16_t c) const { return k < format.size() && !format[k].escaped && format[k].character == c; }
  bool isDigitPlace(size_t k) const { return is(k, u'0') || is(k, u'#') || is(k, u'!'); }
  // A backslash with the character it escapes.
  bool isEscapePair(size_t k) const { return is(k, u'\\') && k + 1 < format.size() && format[k + 1].escaped; }
  // The first place at or behind `from` with the picture character `c`, or the end.
  size_t find(char16_t c, size_t from = 0) const;
  void erase(size_t k) { format.erase(format.begin() + static_cast<std::ptrdiff_t>(k)); }

  // Writes the literal at `k` to `out`, an escape pair as the character it escapes, and gives the
  // place behind it.
  size_t copyLiteral(size_t k, std::u16string& out) const;
  // Walks the literals and digit places of a picture against `t`, taking the literals and the
  // signs of sign-carrying digits out of it. False when a literal isn't there.
  bool takeLiterals(std::u16string& t, bool& negative) const;

  double multiplier = 1.0;
  std::vector<Place> format;
  bool hasThousands = false;
  size_t decimalPos = 0;
  size_t digitPlaces = 0;
  size_t fractionPlaces = 0;
};

}  // namespace vantrelia
