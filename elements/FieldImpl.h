#pragma once
// The plain primitive field and its writer: padding, alignment, truncation, defaults.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

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

 private:
  // The text the field writes, the general way; false when it writes nothing. carriesSeparators:
  // the field is a header field whose separators may end the text.
  bool wireText(bool mayOmitFill, SeparatorList& list, bool minimize, std::u16string& text, bool& carriesSeparators);
  // The wire text of a value that goes out exactly as it stands, or none when the general write
  // has more to do: a null marker, a default, a format, a count, an encoding, a cut or a fill.
  std::optional<std::u16string_view> plainWireText(const SeparatorList& list);
};

}  // namespace vantrelia
