#include "definitions/SeparatorDefn.h"

#include "definitions/EscapeExpansion.h"
#include "definitions/InputStream.h"
#include "definitions/NameTable.h"
#include "definitions/PcfMessages.h"
#include "definitions/PcfVersion.h"
#include "foundation/Enumerations.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

namespace {

constexpr NameTable<kSeparatorCount> kNames({"segment", "repeat", "null",   "decimal", "filler", "field1", "field2", "field3",
                                            "field4",  "field5", "user1",  "user2",   "user3",  "user4",  "user5",  "none",
                                            "auto",    "string", "message", "group",  "length", "crlf"});

}  // namespace

std::string_view SeparatorDefn::nameOf(int type) { return kNames.nameOf(type); }

int SeparatorDefn::typeOf(std::string_view name) { return kNames.valueOf(name); }

uint32_t SeparatorDefn::styleFlags(int32_t style) {
  switch (style) {
    case kStyleInitiator: return kInitiator;
    case kStyleSeparator: return kSeparator;
    case kStyleTerminator: return kTerminator;
    case kStyleAll: return kInitiator | kSeparator | kTerminator;
    default: return 0;
  }
}

void SeparatorDefn::load(InputStream& stream, int version) {
  // Start from the untouched state, so that a record says everything about the separator.
  flags = kDefaultFlags;
  Initiator = kestrel::TRVString<char16_t>();
  Terminator = kestrel::TRVString<char16_t>();
  FieldPath = FieldPathDefn();
  Position = 0;

  const int32_t kind = stream.readInt();
  if (kind == kKindPreset) flags = kPreset;
  else if (kind == kKindFromField) flags = kFromField;

  // The emptiness tests below look at the value as the file holds it, before its escapes count.
  std::u16string value;
  stream.read(value);
  std::u16string replacement;
  stream.read(replacement);
  ReplacementValue = expandEscapesToText(replacement);

  if (kind == kKindFromField) {
    std::string path;
    stream.read(path);
    Position = stream.readInt();
    if (path.empty()) {
      // No field to come from: a separator with a value is preset, one without is fixed.
      if (value.empty()) {
        flags = kFixed;
        ReplacementValue = kestrel::TRVString<char16_t>();
      } else {
        flags = kPreset;
      }
    } else {
      FieldPath = FieldPathDefn::parseDotted(path);
    }
  }
  if (kind == kKindPreset && value.empty()) flags = kFixed;

  flags |= version >= pcf::kSeparatorWritingStyle ? styleFlags(stream.readInt()) : kSeparator;

  bool variable = false;
  if (version >= pcf::kVariableSeparators) stream.read(variable);
  if (variable) {
    if (flags & kFromField) throw InvalidFile(messages::kVariableSeparatorFromField);
    flags |= kVariable;
    std::u16string text;
    stream.read(text);
    Initiator = expandEscapesToText(text);
    stream.read(text);
    Terminator = expandEscapesToText(text);
    if (version >= pcf::kTerminatorReplacement) {
      stream.read(text);
      TerminatorReplacement = expandEscapesToText(text);
    } else {
      TerminatorReplacement = kestrel::TRVString<char16_t>();
    }
  } else {
    TerminatorReplacement = ReplacementValue;
  }

  Value = expandEscapesToText(value);
}

}  // namespace vantrelia
