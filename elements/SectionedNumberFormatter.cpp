#include "elements/SectionedNumberFormatter.h"

#include "definitions/PcfMessages.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

namespace {

// The first section of `rest` and what follows its ";". A ";" behind an odd number of
// backslashes is escaped and stays in the section.
std::u16string_view takeSection(std::u16string_view& rest) {
  size_t backslashes = 0;
  for (size_t k = 0; k < rest.size(); ++k) {
    if (rest[k] == u';' && backslashes % 2 == 0) {
      const std::u16string_view section = rest.substr(0, k);
      rest.remove_prefix(k + 1);
      return section;
    }
    backslashes = rest[k] == u'\\' ? backslashes + 1 : 0;
  }
  const std::u16string_view section = rest;
  rest = {};
  return section;
}

std::unique_ptr<SimpleNumberFormatter> sectionFormatter(std::u16string_view section) {
  if (section.empty()) throw InvalidFile(messages::kEmptyNumberFormatSection);
  return std::make_unique<SimpleNumberFormatter>(section);
}

}  // namespace

SectionedNumberFormatter::SectionedNumberFormatter(std::u16string_view picture) : format(picture) {
  std::u16string_view rest = picture;
  positive = sectionFormatter(takeSection(rest));
  // What may stand behind a third section is no section of this picture.
  if (!rest.empty()) negative = sectionFormatter(takeSection(rest));
}

SectionedNumberFormatter::~SectionedNumberFormatter() = default;

bool SectionedNumberFormatter::parse(std::u16string_view text) {
  if (positive->parse(text)) {
    number = positive->getDouble();
    return true;
  }
  if (negative && negative->parse(text)) {
    number = -negative->getDouble();
    return true;
  }
  return false;
}

std::u16string SectionedNumberFormatter::getText() {
  if (negative && number < 0) {
    negative->setDouble(-number);
    return negative->getText();
  }
  positive->setDouble(number);
  return positive->getText();
}

}  // namespace vantrelia
