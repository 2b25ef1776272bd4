#pragma once
// One slot of a separator list: the text a separator has in one message tree now, and whether it
// is settled and in use. It starts from its definition and may drift away from it when the wire or
// the host says otherwise.

#include <cstdint>
#include <string>
#include <string_view>

#include "definitions/SeparatorDefn.h"
#include "parsing/SeparatorText.h"

namespace vantrelia {

class SeparatorImpl {
 public:
  SeparatorImpl() = default;
  explicit SeparatorImpl(const SeparatorDefn& definition) : defn(&definition) {}

  // Takes the definition's value.
  void takeDefaultValue();
  void setValue(std::u16string_view text) { value = text; }
  // Whether the definition keeps an initiator and terminator apart from the value. Inline, as
  // flags, initiator and terminator: every settling of separators asks them for each slot.
  bool isVariable() const { return (flags() & SeparatorDefn::kVariable) != 0; }
  uint32_t flags() const { return defn ? defn->getFlags() : 0; }

  // A variable separator's initiator and terminator are its definition's, since nothing ever sets
  // them; any other separator's are its value. Kept apart from the value in no copy of the slot:
  // every message parsed makes a list of slots.
  std::u16string_view initiator() const {
    return isVariable() ? defn->getInitiator().view() : value.view();
  }
  std::u16string_view terminator() const {
    return isVariable() ? defn->getTerminator().view() : value.view();
  }
  // What stands for the terminator inside data: a variable separator's own, else the separator's.
  std::u16string_view terminatorReplacement() const {
    return isVariable() ? variableTerminatorReplacement.view() : replacementValue.view();
  }
  const SeparatorText& terminatorReplacementText() const {
    return isVariable() ? variableTerminatorReplacement : replacementValue;
  }
  void setTerminatorReplacement(std::u16string_view text) { variableTerminatorReplacement = text; }

  bool known = false;     // settled: by the definition, the wire or the host
  bool active = false;    // takes part in reading and writing now
  bool useDefault = true; // cleared once the host sets the value, so a reset keeps the host's text
  SeparatorText value;
  SeparatorText replacementValue;  // stands for the separator inside data
  const SeparatorDefn* defn = nullptr;

 private:
  SeparatorText variableTerminatorReplacement;
};

}  // namespace vantrelia
