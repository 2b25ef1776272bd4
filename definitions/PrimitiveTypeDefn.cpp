#include "definitions/PrimitiveTypeDefn.h"

#include "definitions/DataTypeCodes.h"

#include <algorithm>

#include "definitions/InputStream.h"
#include "definitions/PcfMessages.h"
#include "definitions/PcfVersion.h"
#include "elements/StringValidator.h"
#include "foundation/IllegalOperation.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

PrimitiveTypeDefn::PrimitiveTypeDefn() = default;
PrimitiveTypeDefn::~PrimitiveTypeDefn() = default;

void PrimitiveTypeDefn::load(InputStream& stream, int version) {
  stream.read(Name).read(id).read(BaseType);
  bool plainAlias = false;
  stream.read(plainAlias);
  if (plainAlias) {
    // An alias adds nothing to its base type, so nothing about it follows in any version.
    flags |= kPlainAlias;
    return;
  }

  const int32_t entries = stream.readInt();
  if (entries > kMaxSeparatorEntries) throw InvalidFile(messages::kInvalidSeparatorEntryCount);
  for (int32_t i = 0; i < entries; ++i) {
    bool allowed = false;
    stream.read(allowed);
    separatorAllowed[static_cast<size_t>(i)] = allowed ? 1 : 0;
  }
  flags = static_cast<uint32_t>(stream.readInt());
  stream.readWide(RegularExpression);
  compileExpression();
  if (std::any_of(separatorAllowed.begin(), separatorAllowed.end(), [](uint8_t entry) { return entry != 0; }))
    flags |= kSomeSeparatorAllowed;

  if (version >= pcf::kTypeEscapeCharacters) {
    bool escapes = false;
    stream.read(escapes);
    if (escapes) {
      flags |= kSpecialEscapeCharacters;
      // The file has room for a whole number, the model for a signed byte: the low byte is kept.
      StartEscapeCharacter = static_cast<int8_t>(static_cast<uint8_t>(stream.readInt() & 0xFF));
      EndEscapeCharacter = static_cast<int8_t>(static_cast<uint8_t>(stream.readInt() & 0xFF));
    }
  }

  if (version >= pcf::kCharacterRanges) {
    auto ranges = std::make_unique<CharacterRanges>();
    const int32_t count = stream.readInt();
    for (int32_t i = 0; i < count; ++i) {
      bool excluded = false;
      stream.read(excluded);
      const int32_t start = stream.readInt();
      const int32_t end = stream.readInt();
      ranges->add(excluded, start, end);
    }
    if (!ranges->empty()) characterRanges = std::move(ranges);
  }
}

void PrimitiveTypeDefn::checkEscapeCharacters() const {
  if (!getUsingSpecialEscapeCharacters()) throw IllegalOperation(messages::kNoCustomEscapeCharacters);
}

bool PrimitiveTypeDefn::readsAsItStands() const {
  if (BaseType == DataTypeCodes::kQuotedText || DataTypeCodes::isBinary(BaseType)) return false;
  return isPlainAlias() || (getUsingSpecialEscapeCharacters() && !hasAllowedSeparators());
}

ESeparatorType PrimitiveTypeDefn::getStartEscapeCharacter() const {
  checkEscapeCharacters();
  return static_cast<ESeparatorType>(StartEscapeCharacter);
}

ESeparatorType PrimitiveTypeDefn::getEndEscapeCharacter() const {
  checkEscapeCharacters();
  return static_cast<ESeparatorType>(EndEscapeCharacter);
}

void PrimitiveTypeDefn::compileExpression() {
  if (!hasRegularExpression()) return;
  try {
    compiledExpression = std::make_shared<const StringValidator>(RegularExpression.view());
  } catch (int) {
    // Only values of the type are checked against it: the definition is good without it.
  }
}

}  // namespace vantrelia
