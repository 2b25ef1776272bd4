#include "elements/TypedFieldReader.h"

#include "definitions/ArrayTypeDefn.h"
#include "definitions/DataTypeCodes.h"
#include "definitions/FieldDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "elements/ArrayFieldImpl.h"
#include "elements/FieldFactory.h"
#include "elements/FieldImplBase.h"
#include "elements/SegmentImplBase.h"
#include "parsing/ParserToken.h"
#include "parsing/SeparatorList.h"
#include "parsing/SeparatorTrieNode.h"
#include "parsing/StringParserStream.h"

namespace vantrelia {

namespace {

// A value of a plain data type, as a primitive field of that type is cut.
void readPlain(int32_t base, ParserStream& stream, ParserToken& token, SeparatorList& list, bool separatorActive,
               int32_t maxLength, bool useGeneric) {
  if (!separatorActive) {
    list.readTokenEscaped(stream, token, maxLength, true, useGeneric, nullptr);
  } else if (base == DataTypeCodes::kQuotedText) {
    list.readToken(stream, token, 0, true, useGeneric, nullptr);
  } else {
    if (list.isTrieDirty()) list.buildTrie();
    SeparatorTrieNode& trie = useGeneric && list.getGenericTrie() ? *list.getGenericTrie() : list.getTrie();
    stream.readToken(trie, token, 0, true);
  }
}

// A value of a custom type, or an array of such values: the separators the type allows stand in
// the value for this read, and the field's escapes keep what lies between them.
void readCustom(const PrimitiveTypeDefn* custom, const SeparatorField* field, int32_t base, ParserStream& stream,
                ParserToken& token, SeparatorList& list, bool separatorActive, int32_t maxLength, bool useGeneric) {
  const bool allowing = custom && custom->hasAllowedSeparators();
  if (allowing) list.saveLevelsAllowing(*custom);
  if (separatorActive && base == DataTypeCodes::kQuotedText) {
    list.readToken(stream, token, 0, true, useGeneric, field);
  } else {
    list.readTokenEscaped(stream, token, separatorActive ? 0 : maxLength, true, useGeneric, field);
  }
  if (allowing) list.restoreLevels();
}

}  // namespace

bool TypedFieldReader::read(FieldBase& field, ParserStream& stream, ParserToken& token, SeparatorList& list,
                            bool separatorActive, int32_t maxLength, bool useGeneric, RecordedErrors& errors,
                            ValidationLocation& location) {
  switch (FieldFactory::classOf(field.getFieldDefn(), field.getVariableType())) {
    case qxVarComposite:
      // The composite's own separators cut it later; here only the outer ones end it.
      if (list.isTrieDirty()) list.buildTrie();
      stream.readToken(list.getTrie(), token, separatorActive ? 0 : maxLength, false);
      return false;
    case qxVarArray: {
      auto& array = static_cast<ArrayFieldImpl&>(field);
      if (array.getItemType() == DataTypeCodes::kQuotedText) {
        // Quoted items may hold the separators that would end a token: the array reads itself.
        uint32_t moreFollows = 0;
        array.parseElement(stream, errors, moreFollows, location);
        return true;
      }
      const ArrayTypeDefn* type = array.getArrayType();
      readCustom(type ? type->getCustomType() : nullptr, nullptr, array.getItemType(), stream, token, list,
                 separatorActive, maxLength, useGeneric);
      return false;
    }
    case qxVarCustom: {
      auto& custom = static_cast<FieldImplBase&>(field);
      readCustom(custom.getCustomType(), &custom, custom.getBaseType(), stream, token, list, separatorActive, maxLength,
                 useGeneric);
      return false;
    }
    default:
      readPlain(static_cast<FieldImplBase&>(field).getBaseType(), stream, token, list, separatorActive, maxLength,
                useGeneric);
      return false;
  }
}

void TypedFieldReader::give(FieldBase& field, const ParserToken& token, RecordedErrors& errors,
                            ValidationLocation& location) {
  const std::u16string_view text = token.characters();
  if (text.empty()) return;
  if (field.getNodeType() == qxPrimitive) {
    // Every primitive node is a FieldImplBase.
    SegmentImplBase* owner = field.getOwner();
    static_cast<FieldImplBase&>(field).readValue(text, token.useView && owner && owner->isInSourceText(text));
    return;
  }
  StringParserStream fieldStream(text.data(), static_cast<int32_t>(text.size()));
  uint32_t moreFollows = 0;
  field.parseElement(fieldStream, errors, moreFollows, location);
}

}  // namespace vantrelia
