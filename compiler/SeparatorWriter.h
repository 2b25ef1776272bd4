#pragma once
// The separator records of a message set, written field for field and gate for gate as
// SeparatorDefn::load reads them.
//
// A separator in the source says what it means and the writer picks the record's kind:
//   "|"                                         a preset value (kind 0)
//   {value: "^", fromField: MSH.2, position: 0} read from a header field (kind 1)
//   {value: "~", replacement: "\\R\\", style: terminator}
//   {value: "/", variable: {initiator: "(", terminator: ")", terminatorReplacement: "\\)"}}
// `style` is initiator, separator (the default), terminator or all; `kind: N` writes any kind word,
// for records the language has no words for. Texts are written as given; "\xHH" and "\uHHHH" in
// them are expanded by the engine at load, which is also how a character beyond a byte gets in.

#include <cstdint>
#include <string>
#include <string_view>

#include "compiler/SourceNode.h"
#include "definitions/SeparatorDefn.h"

namespace vantrelia::compiler {

class CompileContext;
class PcfWriter;

class SeparatorWriter {
 public:
  // One record. `styleBeforeWritingStyle` is the style that a set in a file too old for the style
  // word gives this separator by itself; stating that style there is no error, any other is.
  static void write(const SourceNode& separator, const CompileContext& context, PcfWriter& out,
                    int32_t styleBeforeWritingStyle = SeparatorDefn::kStyleSeparator);

  // The separators of a message set from a mapping keyed by separator name ("segment", "field1",
  // ..., "crlf"; see SeparatorDefn::nameOf). Writes one record for each kind from 0 up to the highest one named,
  // those not named as no record at all would leave them, and returns the number of records; the
  // caller writes that count before them. An absent or null mapping writes nothing and returns 0.
  static int32_t writeList(const SourceNode& separators, CompileContext& context, PcfWriter& out);

  // A record after which the separator is as if no record had touched it: flags 0x21, texts
  // empty, at every version.
  static void writeUntouched(PcfWriter& out, int version);

  // Every separator name (SeparatorDefn::nameOf), joined by ", ", for messages that list them.
  static std::string knownNames();
  // The separator that `key` of a record names, `fallback` when the key is absent; a name that is
  // no separator is an error on its line.
  static int32_t kindOf(const SourceNode& record, std::string_view key, int32_t fallback);
};

}  // namespace vantrelia::compiler
