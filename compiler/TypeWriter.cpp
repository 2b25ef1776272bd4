#include "compiler/TypeWriter.h"

#include <array>
#include <cctype>
#include <charconv>
#include <map>

#include "compiler/CompileContext.h"
#include "compiler/CompileError.h"
#include "compiler/PcfWriter.h"
#include "compiler/SeparatorWriter.h"
#include "definitions/ArrayTypeDefn.h"
#include "definitions/DataTypeCodes.h"
#include "definitions/PcfVersion.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "foundation/Utf8.h"

namespace vantrelia::compiler {

namespace {

// The widest character code a range may name in hexadecimal: six digits reach beyond U+10FFFF.
constexpr size_t kMostHexDigits = 6;
constexpr size_t kFewestHexDigits = 4;

// A separator named by a scalar of the source, or a line-numbered error.
int32_t separatorOf(const YAML::Node& node, const std::string& where) {
  const int type = node.IsScalar() ? SeparatorDefn::typeOf(node.Scalar()) : -1;
  if (type < 0)
    throw CompileError(lineOfNode(node), where + " must name a separator (" + SeparatorWriter::knownNames() + ")");
  return type;
}

std::array<bool, kSeparatorCount> allowedSeparatorsOf(const SourceNode& type) {
  std::array<bool, kSeparatorCount> allowed{};
  if (!type.has("allowedSeparators")) return allowed;
  const YAML::Node list = type.yaml()["allowedSeparators"];
  if (!list.IsSequence()) type.failAt("allowedSeparators", "'allowedSeparators' of " + type.what() + " must be a list");
  for (const auto& item : list) {
    bool& entry = allowed[static_cast<size_t>(separatorOf(item, "an entry of 'allowedSeparators' of " + type.what()))];
    if (entry) throw CompileError(lineOfNode(item), "separator '" + item.Scalar() + "' is allowed twice in " + type.what());
    entry = true;
  }
  return allowed;
}

struct Range {
  bool excluded;
  int32_t start;
  int32_t end;
};

std::optional<int32_t> hexCode(std::u16string_view digits) {
  if (digits.size() < kFewestHexDigits || digits.size() > kMostHexDigits) return std::nullopt;
  std::string narrow;
  for (char16_t unit : digits) {
    if (unit > 0x7F || !std::isxdigit(static_cast<unsigned char>(unit))) return std::nullopt;
    narrow += static_cast<char>(unit);
  }
  int32_t code = 0;
  const auto [end, error] = std::from_chars(narrow.data(), narrow.data() + narrow.size(), code, 16);
  if (error != std::errc() || end != narrow.data() + narrow.size()) return std::nullopt;
  return code;
}

// "0020-007E" or "0041" in hexadecimal (4 to 6 digits), or characters as they are: "A" or "A-Z".
std::optional<std::pair<int32_t, int32_t>> parseRange(std::u16string_view text) {
  const size_t dash = text.find(u'-', 1);
  if (auto single = hexCode(text)) return std::pair(*single, *single);
  if (dash != std::u16string_view::npos) {
    const auto start = hexCode(text.substr(0, dash));
    const auto end = hexCode(text.substr(dash + 1));
    if (start && end) return std::pair(*start, *end);
  }
  if (text.size() == 1) return std::pair<int32_t, int32_t>(text[0], text[0]);
  if (text.size() == 3 && text[1] == u'-') return std::pair<int32_t, int32_t>(text[0], text[2]);
  return std::nullopt;
}

std::vector<Range> characterRangesOf(const SourceNode& type) {
  std::vector<Range> ranges;
  if (!type.has("characterRanges")) return ranges;
  const SourceNode lists(type.yaml()["characterRanges"], "'characterRanges' of " + type.what());
  lists.allowOnly({"allowed", "excluded"});
  for (const bool excluded : {false, true}) {
    const char* key = excluded ? "excluded" : "allowed";
    if (!lists.has(key)) continue;
    const YAML::Node list = lists.yaml()[key];
    if (!list.IsSequence()) lists.failAt(key, "'" + std::string(key) + "' of " + lists.what() + " must be a list");
    for (const auto& item : list) {
      const std::string where = "character range '" + (item.IsScalar() ? item.Scalar() : std::string()) + "' of " + type.what();
      const auto text = item.IsScalar() ? utf8ToWide(item.Scalar()) : std::nullopt;
      const auto range = text ? parseRange(*text) : std::nullopt;
      if (!range)
        throw CompileError(lineOfNode(item), where + " must be one character, two characters joined by '-' (\"A-Z\"), "
                                             "or hexadecimal codes of 4 to 6 digits (\"0020-007E\", \"00A0\")");
      if (range->first > range->second) throw CompileError(lineOfNode(item), where + " starts above its end");
      ranges.push_back({excluded, range->first, range->second});
    }
  }
  return ranges;
}

}  // namespace

TypeWriter::TypeWriter(const SourceNode& root, CompileContext& ctx) : definition(root), context(ctx) {}

std::string TypeWriter::basicTypeNames() {
  std::string names;
  for (int32_t code = 0; code < DataTypeCodes::kCount; ++code)
    if (DataTypeCodes::isBasic(code)) names += (names.empty() ? "" : ", ") + std::string(DataTypeCodes::nameOf(code));
  return names;
}

int TypeWriter::dataTypeCode(std::string_view nameOrNumber) {
  if (const int32_t code = DataTypeCodes::codeOf(nameOrNumber); code >= 0) return code;
  int code = -1;
  const auto [end, error] = std::from_chars(nameOrNumber.data(), nameOrNumber.data() + nameOrNumber.size(), code);
  if (error != std::errc() || end != nameOrNumber.data() + nameOrNumber.size()) return -1;
  return code >= 0 && code < DataTypeCodes::kCount ? code : -1;
}

const TypeWriter::Declared* TypeWriter::find(const std::vector<Declared>& types, std::string_view name) const {
  for (const auto& type : types)
    if (type.name == name) return &type;
  return nullptr;
}

std::optional<TypeWriter::DataType> TypeWriter::resolve(std::string_view name) const {
  if (const auto* custom = find(primitiveTypes, name)) return DataType{DataTypeCodes::kCustom, custom->id};
  if (const auto* array = find(arrayTypes, name)) return DataType{DataTypeCodes::kArray, array->id};
  const int code = dataTypeCode(name);
  if (code < 0) return std::nullopt;
  return DataType{code, std::nullopt};
}

void TypeWriter::declare() {
  const int version = context.version();
  const auto primitives = definition.records("primitiveTypes", "primitive type");
  const auto arrays = definition.records("arrayTypes", "array type");
  definition.requireVersion("primitiveTypes", !primitives.empty(), pcf::kTypeTables, version);
  definition.requireVersion("arrayTypes", !arrays.empty(), pcf::kTypeTables, version);

  // Ids the source gives are taken first; the others get the lowest ids left free.
  const auto take = [&](const std::vector<SourceNode>& records, std::vector<Declared>& into,
                        std::initializer_list<std::string_view> keys) {
    for (const auto& record : records) {
      record.allowOnly(keys);
      const std::string name = record.recordName("other records refer to it by name");
      if (find(primitiveTypes, name) || find(arrayTypes, name))
        record.failAt("name", "type name '" + name + "' is used twice; types are referred to by name");
      into.push_back({record, name, static_cast<int32_t>(record.integer("id", 0, INT32_MIN, INT32_MAX))});
    }
  };
  take(primitives, primitiveTypes,
       {"name", "id", "baseType", "plainAlias", "noValidation", "allowedSeparators", "regularExpression",
        "escapeCharacters", "characterRanges"});
  take(arrays, arrayTypes, {"name", "id", "dataType", "separator", "ownSeparator"});

  std::map<int32_t, const Declared*> taken;
  for (auto* types : {&primitiveTypes, &arrayTypes})
    for (const auto& type : *types) {
      if (!type.source.has("id")) continue;
      const auto [place, fresh] = taken.emplace(type.id, &type);
      if (!fresh)
        type.source.failAt("id", "id " + std::to_string(type.id) + " of " + type.source.what() + " is already used by " +
                                     place->second->source.what());
    }
  int32_t next = 1;
  for (auto* types : {&primitiveTypes, &arrayTypes})
    for (auto& type : *types) {
      if (type.source.has("id")) continue;
      while (taken.count(next)) ++next;
      type.id = next;
      taken.emplace(next, &type);
    }
}

void TypeWriter::write(PcfWriter& out) const {
  out.i32(static_cast<int32_t>(primitiveTypes.size()));
  for (const auto& type : primitiveTypes) writePrimitiveType(type, out);
  out.i32(static_cast<int32_t>(arrayTypes.size()));
  for (const auto& type : arrayTypes) writeArrayType(type, out);
}

void TypeWriter::writePrimitiveType(const Declared& type, PcfWriter& out) const {
  const SourceNode& source = type.source;
  const int version = context.version();

  const int baseType = dataTypeCode(source.text("baseType", "string"));
  if (!DataTypeCodes::isBasic(baseType))
    source.failAt("baseType", "'baseType' of " + source.what() + " must be a basic data type: " + basicTypeNames() +
                                  ", or its code");
  out.text8(type.name).i32(type.id).i32(baseType);

  const bool plainAlias = source.flag("plainAlias", false);
  out.boolean(plainAlias);
  if (plainAlias) {
    // The record ends behind the alias flag: an alias has nothing else to say.
    for (const char* key : {"noValidation", "allowedSeparators", "regularExpression", "escapeCharacters", "characterRanges"})
      if (source.has(key))
        source.failAt(key, "'" + std::string(key) + "' of " + source.what() + " has no place in a plain alias, which adds "
                                                                         "nothing to its base type");
    return;
  }

  const auto allowed = allowedSeparatorsOf(source);
  out.i32(kSeparatorCount);
  for (const bool entry : allowed) out.boolean(entry);
  // The engine adds the bits for allowed separators and escapes by itself.
  out.i32(source.flag("noValidation", false) ? static_cast<int32_t>(PrimitiveTypeDefn::kNoValidation) : 0);
  const std::u16string expression = source.wideText("regularExpression", u"");
  if (expression.size() > PcfWriter::kLongestText)
    source.failAt("regularExpression", "'regularExpression' of " + source.what() + " is longer than 65535 units");
  out.text16(expression);

  source.requireVersion("escapeCharacters", source.has("escapeCharacters"), pcf::kTypeEscapeCharacters, version);
  if (version >= pcf::kTypeEscapeCharacters) {
    out.boolean(source.has("escapeCharacters"));
    if (source.has("escapeCharacters")) {
      const SourceNode escapes(source.yaml()["escapeCharacters"], "'escapeCharacters' of " + source.what());
      escapes.allowOnly({"start", "end"});
      for (const char* key : {"start", "end"}) {
        if (!escapes.has(key)) escapes.fail(escapes.what() + " needs both 'start' and 'end'");
        out.i32(separatorOf(escapes.yaml()[key], "'" + std::string(key) + "' of " + escapes.what()));
      }
    }
  }

  const auto ranges = characterRangesOf(source);
  source.requireVersion("characterRanges", !ranges.empty(), pcf::kCharacterRanges, version);
  if (version >= pcf::kCharacterRanges) {
    out.i32(static_cast<int32_t>(ranges.size()));
    for (const Range& range : ranges) out.boolean(range.excluded).i32(range.start).i32(range.end);
  }
}

void TypeWriter::writeArrayType(const Declared& type, PcfWriter& out) const {
  const SourceNode& source = type.source;
  out.text8(type.name).i32(type.id);

  const std::string itemName = source.text("dataType", "string");
  const auto item = resolve(itemName);
  if (!item)
    source.failAt("dataType", "'dataType' of " + source.what() + " names neither a custom type nor a data type: '" +
                              itemName + "'");
  if (item->code == DataTypeCodes::kArray && item->typeId)
    source.failAt("dataType", "the items of " + source.what() + " can't be of an array type");
  if (item->code == DataTypeCodes::kCustom && !item->typeId)
    source.failAt("dataType", "'dataType' of " + source.what() + " names its custom type by that type's name");
  out.i32(item->code);
  if (item->code == DataTypeCodes::kCustom) out.i32(*item->typeId);

  if (source.has("ownSeparator")) {
    if (source.has("separator"))
      source.failAt("separator", source.what() + " has either a 'separator' of the set or an 'ownSeparator', not both");
    const std::u16string own = source.wideText("ownSeparator", u"");
    if (!PcfWriter::fitsText8w(own))
      source.failAt("ownSeparator", "'ownSeparator' of " + source.what() +
                                        " has a character that the file's byte texts can't carry");
    if (own.size() > PcfWriter::kLongestText) source.failAt("ownSeparator", "'ownSeparator' of " + source.what() + " is too long");
    out.i32(ArrayTypeDefn::kOwnSeparator).text8w(own);
  } else if (source.has("separator")) {
    out.i32(separatorOf(source.yaml()["separator"], "'separator' of " + source.what()));
  } else {
    out.i32(qxSepField2);
  }
}

}  // namespace vantrelia::compiler
