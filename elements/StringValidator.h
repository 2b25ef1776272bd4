#pragma once
// A regular expression that a text must match as a whole: the format of a text field, the value
// of a match entry, the expression of a custom type. POSIX extended syntax, case-sensitive, over
// the engine's 16-bit units. A leading "!" turns the answer round.

#include <memory>
#include <string>
#include <string_view>

#include "elements/Formatter.h"

namespace vantrelia {

class StringValidator : public Formatter {
 public:
  // Throws the plain integer 0 when the expression doesn't compile; the definition loader turns
  // that into its failure of an unexpected error.
  explicit StringValidator(std::u16string_view expression);
  ~StringValidator() override;

  // A validator holds no number.
  bool parse(std::u16string_view) override { return false; }
  void setDouble(double) override {}
  void setLong(int32_t) override {}
  std::u16string getText() override { return {}; }
  int32_t getLong() const override { return 0; }
  double getDouble() const override { return 0.0; }
  bool validate(std::u16string_view text) override { return matches(text); }

  // Whether `text` is good: the whole of it matches, or with a negated expression it doesn't. A
  // text too costly to search is never good. Keeps no state, so a shared validator can answer
  // for many trees at once.
  bool matches(std::u16string_view text) const;
  bool isNegated() const { return negated; }

 private:
  struct CompiledExpression;

  std::unique_ptr<CompiledExpression> expression;
  bool compiled = false;
  bool negated = false;
};

}  // namespace vantrelia
