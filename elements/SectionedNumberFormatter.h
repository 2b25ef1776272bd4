#pragma once
// A number picture as a field's format gives it: a section for positive numbers and, behind a
// ";", one for negative numbers, which then carries its sign in its own literals.

#include <memory>
#include <string>
#include <string_view>

#include "elements/NumberFormatter.h"
#include "elements/SimpleNumberFormatter.h"

namespace vantrelia {

class SectionedNumberFormatter : public NumberFormatter {
 public:
  // Throws InvalidFile "Number format has an empty section" for an empty picture or one with an
  // empty section before its first or second ";": every number must have a section to go by.
  explicit SectionedNumberFormatter(std::u16string_view picture);
  ~SectionedNumberFormatter() override;

  // The positive section first; failing that, the negative one, whose number is then negated.
  bool parse(std::u16string_view text) override;
  // A negative number through the negative section when there is one.
  std::u16string getText() override;

  const std::u16string& getFormat() const { return format; }
  const SimpleNumberFormatter& getPositive() const { return *positive; }
  // Null for a picture of one section.
  const SimpleNumberFormatter* getNegative() const { return negative.get(); }

 private:
  std::u16string format;
  std::unique_ptr<SimpleNumberFormatter> positive;
  std::unique_ptr<SimpleNumberFormatter> negative;
};

}  // namespace vantrelia
