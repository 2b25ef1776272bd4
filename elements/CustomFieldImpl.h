#pragma once
// A field whose value obeys a custom type: the separators that may stand in it as they are, its
// escape characters and its quoting. It reads and writes as a plain field does, except that its
// value goes to the wire through the custom type's encoding.

#include <memory>

#include "elements/FieldImpl.h"

namespace vantrelia {

class CustomFieldImpl : public FieldImpl {
 public:
  using FieldImpl::FieldImpl;

  std::unique_ptr<MessageElement> clone() override;
  std::unique_ptr<InternalElement> cloneWithParent(InternalElement* newParent) override;
  // Only values that hold a character the list watches are encoded; the others go out as they are.
  std::u16string encodeForWire(std::u16string_view text, const SeparatorList& list, int32_t base) const override;
};

}  // namespace vantrelia
