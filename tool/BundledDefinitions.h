#pragma once
// The definitions a message command parses with: one named with --pcf (a bundled name or a file),
// or else the bundled one that the input's first characters call for. Each is loaded once, when
// first needed.

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/MessageFactory.h"

namespace vantrelia::tool {

class BundledDefinitions {
 public:
  // `pcf` is what --pcf gave, empty to choose by the input. `preserveParsedText` is set on every
  // factory loaded.
  BundledDefinitions(std::string pcf, bool preserveParsedText);

  // The bundled name for text starting so: MSH/FHS/BHS hl7-v2.5, ISA x12, UNA/UNB edifact_d96a,
  // an NCPDP transaction header ncpdp-d0, anything else default.
  static std::string choose(std::u16string_view head);
  static bool isBundled(std::string_view name);
  // The names, for help texts.
  static std::string names();

  // The name of the definition the input of this head is parsed with: --pcf or the choice.
  std::string nameFor(std::u16string_view head) const;
  // Its factory. Throws InvalidFile when it can't be loaded.
  MessageFactory& factoryFor(std::u16string_view head);
  MessageFactory& factory(const std::string& name);

 private:
  std::string pcf;
  bool preserveParsedText;
  std::map<std::string, std::unique_ptr<MessageFactory>, std::less<>> loaded;
};

}  // namespace vantrelia::tool
