#pragma once
// The plain primitive field and its writer: padding, alignment, truncation, defaults.

#include <cstdint>
#include <memory>

#include "elements/FieldImplBase.h"

namespace vantrelia {

class FieldImpl : public FieldImplBase {
 public:
  using FieldImplBase::FieldImplBase;

  std::unique_ptr<MessageElement> clone() override;
  std::unique_ptr<InternalElement> cloneWithParent(InternalElement* newParent) override;
  void validateInto(SeparatorList& separators, ValidationErrorList& errors, bool includeWarnings,
                    ValidationLocation& location, bool asParsed) override;
  bool writeField(bool mayOmitFill, SeparatorList& list, bool minimize, int32_t& counter) override;
};

}  // namespace vantrelia
