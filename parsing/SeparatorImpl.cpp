#include "parsing/SeparatorImpl.h"

#include "definitions/SeparatorDefn.h"

namespace vantrelia {

uint32_t SeparatorImpl::flags() const { return defn ? defn->getFlags() : 0; }

bool SeparatorImpl::isVariable() const { return (flags() & SeparatorDefn::kVariable) != 0; }

void SeparatorImpl::takeDefaultValue() {
  if (defn) setValue(defn->getValue().str());
}

std::u16string_view SeparatorImpl::initiator() const {
  return isVariable() ? defn->getInitiator().view() : std::u16string_view(value);
}

std::u16string_view SeparatorImpl::terminator() const {
  return isVariable() ? defn->getTerminator().view() : std::u16string_view(value);
}

}  // namespace vantrelia
