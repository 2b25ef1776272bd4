#include "elements/CustomFieldImpl.h"

#include "definitions/DataTypeCodes.h"
#include "parsing/SeparatorList.h"

namespace vantrelia {

std::unique_ptr<MessageElement> CustomFieldImpl::clone() { return cloneWithParent(parent); }

std::unique_ptr<InternalElement> CustomFieldImpl::cloneWithParent(InternalElement* newParent) {
  auto copy = std::make_unique<CustomFieldImpl>(*fieldDefn, newParent, index, fieldSeparator);
  copyValueInto(*copy);
  return copy;
}

std::u16string CustomFieldImpl::encodeForWire(std::u16string_view text, const SeparatorList& list,
                                              int32_t base) const {
  const PrimitiveTypeDefn* type = getCustomType();
  if (!type) return list.encodeValue(text, base);
  const std::u16string_view watched =
      base == DataTypeCodes::kQuotedText ? list.getMustQuoteCharacters() : list.getMustEncodeCharacters();
  if (text.find_first_of(watched) == std::u16string_view::npos) return std::u16string(text);
  return list.encodeCustomValue(text, *type, base);
}

}  // namespace vantrelia
