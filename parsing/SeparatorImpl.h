#pragma once
// One slot of a separator list: the text a separator has in one message tree now, and whether it
// is settled and in use. It starts from its definition and may drift away from it when the wire or
// the host says otherwise.

#include <cstdint>
#include <string>

namespace vantrelia {

class SeparatorDefn;

class SeparatorImpl {
 public:
  SeparatorImpl() = default;
  // Points at its definition; a variable separator takes its own initiator and terminator at once,
  // since nothing else will ever set them.
  explicit SeparatorImpl(const SeparatorDefn& definition);

  // Takes the definition's value, and the initiator and terminator with it unless they are the
  // separator's own.
  void takeDefaultValue();
  // Sets the value; without texts of its own, the initiator and terminator follow it.
  void setValue(std::u16string text);
  // Whether the definition keeps an initiator and terminator apart from the value.
  bool isVariable() const;
  uint32_t flags() const;

  bool known = false;     // settled: by the definition, the wire or the host
  bool active = false;    // takes part in reading and writing now
  bool useDefault = true; // cleared once the host sets the value, so a reset keeps the host's text
  std::u16string value;
  std::u16string initiator;
  std::u16string terminator;
  std::u16string replacementValue;       // stands for the separator inside data
  std::u16string terminatorReplacement;  // stands for the terminator inside data
  const SeparatorDefn* defn = nullptr;
};

}  // namespace vantrelia
