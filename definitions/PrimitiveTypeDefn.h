#pragma once
// A custom type: a base data type with its own checks (an expression, character ranges), the
// separators its values may hold as they stand, and escape separators. The warehouse owns every
// custom type and all message sets share them.

#include <array>
#include <cstdint>
#include <memory>

#include "definitions/CharacterRanges.h"
#include "definitions/DataTypeCodes.h"
#include "foundation/Enumerations.h"
#include "foundation/TRVString.h"

namespace vantrelia {

class InputStream;
class StringValidator;

class PrimitiveTypeDefn {
 public:
  // Bits of `flags`.
  static constexpr uint32_t kNoValidation = 0x01;
  static constexpr uint32_t kPlainAlias = 0x02;  // a field of this type is a plain field of the base type
  static constexpr uint32_t kSomeSeparatorAllowed = 0x04;
  static constexpr uint32_t kSpecialEscapeCharacters = 0x08;
  // The escape separators of a type that has none.
  static constexpr int8_t kNoEscape = -1;
  // A record never carries more entries of `separatorAllowed` than there are separators.
  static constexpr int kMaxSeparatorEntries = kSeparatorCount;

  PrimitiveTypeDefn();
  ~PrimitiveTypeDefn();
  PrimitiveTypeDefn(const PrimitiveTypeDefn&) = delete;
  PrimitiveTypeDefn& operator=(const PrimitiveTypeDefn&) = delete;

  // Reads one custom type record. Throws InvalidFile for a separator entry count above 22.
  void load(InputStream& stream, int version);

  const kestrel::TRVString<char>& getName() const { return Name; }
  int32_t getId() const { return id; }
  int32_t getBaseType() const { return BaseType; }
  uint32_t getFlags() const { return flags; }

  bool isPlainAlias() const { return (flags & kPlainAlias) != 0; }
  bool getDoValidation() const { return (flags & kNoValidation) == 0; }
  bool hasAllowedSeparators() const { return (flags & kSomeSeparatorAllowed) != 0; }
  bool getUsingSpecialEscapeCharacters() const { return (flags & kSpecialEscapeCharacters) != 0; }
  // Its base type by another name, or plain text but for its escape marks: a value with nothing in
  // it that asks for encoding is read and written as it stands.
  bool readsAsItStands() const;

  const kestrel::TRVString<char16_t>& getRegularExpression() const { return RegularExpression; }
  bool hasRegularExpression() const { return RegularExpression.length() != 0; }

  // One byte per ESeparatorType; non-zero means the separator stands in a value as it is.
  const std::array<uint8_t, kSeparatorCount>& getSeparatorAllowed() const { return separatorAllowed; }
  bool isSeparatorAllowed(ESeparatorType separator) const { return separatorAllowed.at(separator) != 0; }

  // The escape separators as stored, -1 without escapes; for the parser and writers, which look at
  // them only under kSpecialEscapeCharacters.
  int8_t rawStartEscapeCharacter() const { return StartEscapeCharacter; }
  int8_t rawEndEscapeCharacter() const { return EndEscapeCharacter; }
  // The metadata accessors: a type without escape characters refuses them with IllegalOperation.
  ESeparatorType getStartEscapeCharacter() const;
  ESeparatorType getEndEscapeCharacter() const;

  // Null when the type has no ranges.
  const CharacterRanges* getCharacterRanges() const { return characterRanges.get(); }
  int getCharacterRangeCount() const { return characterRanges ? characterRanges->getCharacterRangeCount() : 0; }

  // The compiled form of RegularExpression, made once at load for field validation to check
  // values with. Null without an expression, and for one that doesn't compile: such a type still
  // loads, and what its check does is validation's to say.
  const StringValidator* getCompiledExpression() const { return compiledExpression.get(); }

 private:
  void checkEscapeCharacters() const;
  void compileExpression();

  kestrel::TRVString<char> Name;
  int32_t id = 0;
  kestrel::TRVString<char16_t> RegularExpression;
  std::array<uint8_t, kSeparatorCount> separatorAllowed{};
  int32_t BaseType = DataTypeCodes::kString;
  int8_t StartEscapeCharacter = kNoEscape;
  int8_t EndEscapeCharacter = kNoEscape;
  std::unique_ptr<CharacterRanges> characterRanges;
  uint32_t flags = 0;
  std::shared_ptr<const StringValidator> compiledExpression;
};

}  // namespace vantrelia
