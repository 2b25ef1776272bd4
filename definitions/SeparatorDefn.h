#pragma once
// What the definition says about one of the 22 separators of a message set: its default text,
// how it is written, and whether its real value is read from a header field on the wire. The
// run-time state of a separator in a message is built from this record and may differ from it.

#include <boost/core/noncopyable.hpp>
#include <cstdint>
#include <string>
#include <string_view>

#include "definitions/FieldPathDefn.h"
#include "foundation/TRVString.h"

namespace vantrelia {

class InputStream;

class SeparatorDefn : private boost::noncopyable {
 public:
  // Bits of getFlags().
  static constexpr uint32_t kFixed = 0x01;        // need not be read from the wire
  static constexpr uint32_t kPreset = 0x02;       // the definition's value is known from the start
  static constexpr uint32_t kFromField = 0x04;    // taken from a header field of the message
  static constexpr uint32_t kInitiator = 0x10;    // written before the item
  static constexpr uint32_t kSeparator = 0x20;    // written between items
  static constexpr uint32_t kTerminator = 0x40;   // written after the item
  static constexpr uint32_t kVariable = 0x80;     // has an initiator and a terminator of its own
  static constexpr uint32_t kStyleMask = kInitiator | kSeparator | kTerminator;
  // A separator that no file record touches.
  static constexpr uint32_t kDefaultFlags = kFixed | kSeparator;

  // The kind word of a file record; any other kind leaves the flags at kDefaultFlags.
  static constexpr int32_t kKindPreset = 0;
  static constexpr int32_t kKindFromField = 1;

  // The writing style word of a file record.
  static constexpr int32_t kStyleInitiator = 0;
  static constexpr int32_t kStyleSeparator = 1;
  static constexpr int32_t kStyleTerminator = 2;
  static constexpr int32_t kStyleAll = 3;
  // The flag bits a style word adds; an unknown word adds none.
  static uint32_t styleFlags(int32_t style);

  // The name of a separator in the definition language and the tools: its ESeparatorType without
  // the prefix, in lower case ("segment", "field1", "crlf"); "" outside 0 to 21. And the type of
  // such a name, or -1.
  static std::string_view nameOf(int type);
  static int typeOf(std::string_view name);

  SeparatorDefn() = default;
  virtual ~SeparatorDefn() = default;

  // Reads one separator record of a message set. Throws InvalidFile for a separator taken from a
  // field that claims to be variable, and whatever the stream throws.
  void load(InputStream& stream, int version);

  uint32_t getFlags() const { return flags; }
  const kestrel::TRVString<char16_t>& getValue() const { return Value; }
  const kestrel::TRVString<char16_t>& getInitiator() const { return Initiator; }
  const kestrel::TRVString<char16_t>& getTerminator() const { return Terminator; }
  const kestrel::TRVString<char16_t>& getReplacementValue() const { return ReplacementValue; }
  const kestrel::TRVString<char16_t>& getTerminatorReplacement() const { return TerminatorReplacement; }
  const FieldPathDefn& getFieldPath() const { return FieldPath; }
  int32_t getPosition() const { return Position; }
  // The header field as the metadata shows it, e.g. "MSH.1"; empty when there is none.
  std::string fieldPathText() const { return FieldPath.text(); }

  // The one change the model allows after loading: a host replaces the default text through the
  // metadata. Separator states made earlier keep their copies until they are reset.
  void setValue(const kestrel::TRVString<char16_t>& value) { Value = value; }

 private:
  // The message set settles the flags of a few separators after reading them: the filler's
  // default, and the writing style that files before styles existed imply.
  friend class MessageSetDefn;
  void setFlags(uint32_t value) { flags = value; }

  uint32_t flags = kDefaultFlags;
  kestrel::TRVString<char16_t> Value;
  kestrel::TRVString<char16_t> Initiator;
  kestrel::TRVString<char16_t> Terminator;
  kestrel::TRVString<char16_t> ReplacementValue;
  kestrel::TRVString<char16_t> TerminatorReplacement;
  FieldPathDefn FieldPath;
  int32_t Position = 0;
};

}  // namespace vantrelia
