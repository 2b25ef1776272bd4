#include "parsing/SeparatorImpl.h"

#include "definitions/SeparatorDefn.h"

namespace vantrelia {

SeparatorImpl::SeparatorImpl(const SeparatorDefn& definition) : defn(&definition) {
  if (isVariable()) {
    initiator = definition.getInitiator().str();
    terminator = definition.getTerminator().str();
  }
}

uint32_t SeparatorImpl::flags() const { return defn ? defn->getFlags() : 0; }

bool SeparatorImpl::isVariable() const { return (flags() & SeparatorDefn::kVariable) != 0; }

void SeparatorImpl::takeDefaultValue() {
  if (defn) setValue(defn->getValue().str());
}

void SeparatorImpl::setValue(std::u16string text) {
  value = std::move(text);
  if (!isVariable()) {
    initiator = value;
    terminator = value;
  }
}

}  // namespace vantrelia
