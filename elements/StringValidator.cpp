#include "elements/StringValidator.h"

#include <boost/cregex.hpp>

namespace vantrelia {

struct StringValidator::CompiledExpression {
  boost::regex_tW regex{};
};

namespace {

std::wstring wideUnits(std::u16string_view text) { return std::wstring(text.begin(), text.end()); }

}  // namespace

StringValidator::StringValidator(std::u16string_view text) : expression(std::make_unique<CompiledExpression>()) {
  if (!text.empty() && text.front() == u'!') {
    negated = true;
    text.remove_prefix(1);
  }
  const std::wstring anchored = L"^" + wideUnits(text) + L"$";
  // The end is given, so that a zero unit in the expression is a character like any other.
  expression->regex.re_endp = anchored.data() + anchored.size();
  if (boost::regcompW(&expression->regex, anchored.c_str(), boost::REG_EXTENDED | boost::REG_NOSUB | boost::REG_PEND) != 0) {
    throw 0;
  }
  compiled = true;
}

StringValidator::~StringValidator() {
  if (compiled) boost::regfreeW(&expression->regex);
}

bool StringValidator::matches(std::u16string_view text) const {
  const std::wstring units = wideUnits(text);
  // Start and end are given, so that a zero unit in a value doesn't end it early.
  boost::regmatch_t bounds[1];
  bounds[0].rm_so = 0;
  bounds[0].rm_eo = static_cast<boost::regoff_t>(units.size());
  const int result = boost::regexecW(&expression->regex, units.c_str(), 0, bounds, boost::REG_STARTEND);
  // Anything but a match or a plain miss is a search that gave up, on an expression too costly
  // for this text: no answer, so not good either way round.
  if (result != 0 && result != static_cast<int>(boost::REG_NOMATCH)) return false;
  return (result == 0) != negated;
}

}  // namespace vantrelia
