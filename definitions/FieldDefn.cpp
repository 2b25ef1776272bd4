#include "definitions/FieldDefn.h"

#include <array>

#include "definitions/ArrayTypeDefn.h"
#include "definitions/CompositeFieldInstancesControl.h"
#include "definitions/EscapeExpansion.h"
#include "definitions/InputStream.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/NameTable.h"
#include "definitions/PcfMessages.h"
#include "definitions/PcfVersion.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "definitions/UpdateCompositeFieldInstances.h"
#include "definitions/ValidationTableDefn.h"
#include "definitions/VariableFieldDefn.h"
#include "elements/SectionedNumberFormatter.h"
#include "elements/StringValidator.h"
#include "foundation/InvalidFile.h"
#include "foundation/TextConversion.h"

namespace vantrelia {

namespace {

// The user-data key whose value replaces a field's name as its tag.
constexpr char16_t kTagKey[] = u"Tag";

// A default that begins with it is a count, or on a raw binary field the name of its length
// field; a second one inside a count comes before the letter of the item counted.
constexpr char16_t kCountMark = u'#';
constexpr std::array<std::pair<int32_t, char16_t>, 3> kCountItemLetters = {
    {{FieldDefn::kCountSegments, u'S'}, {FieldDefn::kCountGroups, u'G'}, {FieldDefn::kCountMessages, u'M'}}};

constexpr NameTable<8> kAlignmentNames({"left", "right", "leftMin", "rightMin", "leftMax", "rightMax", "zeroMin", "zeroMax"});

}  // namespace

void readUserData(InputStream& stream, UserDataMap& userData) {
  const int count = stream.readCount();
  for (int i = 0; i < count; ++i) {
    const int keyIndex = stream.readCount();
    kestrel::TRVString<char16_t> value;
    stream.readWide(value);
    userData.emplace(keyIndex, std::move(value));
  }
}

FormatterKind formatterKindFor(int32_t baseType, bool compositeField) {
  if (compositeField || baseType == FieldDefn::kString || baseType == FieldDefn::kQuotedText)
    return FormatterKind::RegularExpression;
  if (baseType >= 0 && baseType < FieldDefn::kString) return FormatterKind::NumberPicture;
  return FormatterKind::None;
}

std::shared_ptr<Formatter> buildFieldFormatter(FormatterKind kind, std::u16string_view pattern) {
  switch (kind) {
    case FormatterKind::NumberPicture:
      return std::make_shared<SectionedNumberFormatter>(pattern);
    case FormatterKind::RegularExpression:
      return std::make_shared<StringValidator>(pattern);
    case FormatterKind::None:
      break;
  }
  return nullptr;
}

std::string_view FieldDefn::alignmentName(int alignment) { return kAlignmentNames.nameOf(alignment); }

int FieldDefn::alignmentOf(std::string_view name) { return kAlignmentNames.valueOf(name); }

FieldDefn::FieldDefn() = default;
FieldDefn::~FieldDefn() = default;

void FieldDefn::setInstancesControl(std::unique_ptr<CompositeFieldInstancesControl> control) {
  instancesControl = std::move(control);
}

int32_t FieldDefn::splitCountItem(std::u16string_view rest, std::u16string_view& path) {
  const size_t mark = rest.find(kCountMark);
  if (mark == std::u16string_view::npos) {
    path = rest;
    return kCountRepeats;
  }
  path = rest.substr(0, mark);
  const std::u16string_view item = rest.substr(mark + 1);
  if (!item.empty())
    for (const auto& [kind, letter] : kCountItemLetters)
      if (item.front() == letter || item.front() == letter - u'A' + u'a') return kind;
  throw InvalidFile(messages::kInvalidCountItem);
}

std::u16string FieldDefn::countText(int32_t countKind, std::u16string_view path) {
  std::u16string text = kCountMark + std::u16string(path);
  for (const auto& [kind, letter] : kCountItemLetters)
    if (kind == countKind) text += {kCountMark, letter};
  return text;
}

int32_t FieldDefn::getBaseType() const {
  if (DataType == kCustom && customType) return customType->getBaseType();
  return DataType;
}

int32_t FieldDefn::getEffectiveType() const {
  if (DataType == kArray && arrayType) {
    if (arrayType->getDataType() == kCustom && arrayType->getCustomType()) return arrayType->getCustomType()->getBaseType();
    return arrayType->getDataType();
  }
  return getBaseType();
}

void FieldDefn::load(const MessageSetDefn& owner, InputStream& stream, int version, FieldUpdates& updates) {
  set = &owner;
  stream.read(Name);
  bool required = false;
  stream.read(required);
  Required = required ? 1 : 0;
  stream.read(MinLength).read(MaxLength).read(MinRepeats).read(MaxRepeats);
  stream.readTextV(DefaultValue, version);
  if (Required && MinRepeats == 0) MinRepeats = 1;

  if (version >= pcf::kHiddenFlags) {
    bool hidden = false;
    stream.read(hidden);
    Hidden = hidden ? 1 : 0;
  }
  if (version >= pcf::kHasOverrides) {
    bool overrides = false;
    stream.read(overrides);
    hasOverrides = overrides ? 1 : 0;
  } else {
    hasOverrides = version >= pcf::kFieldOverrides ? 1 : 0;
  }

  stream.read(kind);
  if (kind == kPrimitive) readPrimitive(owner, stream, version);
  else if (kind == kComposite) readComposite(stream, version, updates);

  if (version >= pcf::kUserData) readUserData(stream, userData);
  if (version >= pcf::kSpecialRecords) {
    bool presenceIndicator = false;
    stream.read(presenceIndicator);
    if (presenceIndicator) flags |= kHasFieldPresenceIndicator;
  }

  workOutTypes();
  workOutFormat(version);
  workOutSpecialDefault(version);
  if (kind == kPrimitive && !DefaultValue.empty()) DefaultValue = expandEscapesToText(DefaultValue.view());
  workOutTag();
}

void FieldDefn::readPrimitive(const MessageSetDefn& owner, InputStream& stream, int version) {
  stream.read(DataType);
  if (version >= pcf::kTypeTables) {
    const MessageWarehouseDefn* warehouse = owner.getWarehouse();
    if (DataType == kCustom) {
      const int32_t id = stream.readInt();
      customType = warehouse ? warehouse->findPrimitiveType(id) : nullptr;
    } else if (DataType == kArray) {
      const int32_t id = stream.readInt();
      arrayType = warehouse ? warehouse->findArrayType(id) : nullptr;
    } else if (DataType == kVariable) {
      variableDefn = std::make_unique<VariableFieldDefn>();
      variableDefn->load(stream, version);
    }
  }
  stream.read(Alignment);
  stream.readTextV(format, version);
  if (version >= pcf::kValidationTableName) {
    std::string tableName;
    stream.read(tableName);
    if (!tableName.empty()) {
      ValidationTable = owner.findValidationTable(tableName);
      if (!ValidationTable) throw InvalidFile(messages::kUnknownValidationTable + tableName);
    }
  }
}

void FieldDefn::readComposite(InputStream& stream, int version, FieldUpdates& updates) {
  stream.read(compositeId);
  DataType = kNoDataType;
  // The block names fields of a composite that may not be read yet: it waits in `updates`.
  auto update = std::make_unique<UpdateCompositeFieldInstances>();
  auto& block = *update;
  updates.emplace(this, std::move(update));
  if (version >= pcf::kFieldOverrides) block.load(stream, version);
}

void FieldDefn::workOutTypes() {
  if (DataType == kCustom && !(customType && customType->isPlainAlias())) flags |= kNotPlain;
  if (DataType == kArray || DataType == kVariable) flags |= kNotPlain;
  const int32_t type = getEffectiveType();
  isBinary = DataTypeCodes::isBinary(type) ? 1 : 0;
  isNumeric = DataTypeCodes::isNumeric(type) ? 1 : 0;
}

void FieldDefn::workOutFormat(int version) {
  if (version < pcf::kFormatPatterns || format.empty() || format.c_str()[0] != u'@') return;
  DefaultValue = WideText();
  format = format.substr(1);
  if (kind == kPrimitive) formatter = buildFieldFormatter(formatterKindFor(getBaseType(), false), format.view());
}

void FieldDefn::workOutSpecialDefault(int version) {
  if (version < pcf::kCountDefaults || kind != kPrimitive) return;
  const int32_t base = getBaseType();
  const std::u16string_view text = DefaultValue.view();
  if (!text.empty() && text.front() == kCountMark && (base == kRawBinary || DataTypeCodes::isCountBase(base))) {
    const std::u16string rest(text.substr(1));
    format = WideText();
    if (base == kRawBinary) {
      linkedFieldName = narrow(rest);
      DefaultValue = rest;
    } else if (!rest.empty() && rest.front() == u'+') {
      linkedFieldName = narrow(rest);
      DefaultValue = WideText();
    } else {
      std::u16string_view path;
      countKind = splitCountItem(rest, path);
      DefaultValue = path;
    }
  }
  if (base == kRawBinary && linkedFieldName.empty()) throw InvalidFile(messages::kNoLengthField);
}

void FieldDefn::workOutTag() {
  const MessageWarehouseDefn* warehouse = set ? set->getWarehouse() : nullptr;
  const int key = warehouse ? warehouse->getUserDataKeyIndex(kTagKey) : -1;
  if (key >= 0) {
    const auto found = userData.find(key);
    if (found != userData.end()) {
      Tag = found->second;
      return;
    }
  }
  // Each byte sign-extended, as the file's byte texts widen.
  Tag = widenSigned(Name.view());
}

}  // namespace vantrelia
