#pragma once
// One position in a segment or a composite: a primitive field of some data type, or a field that
// holds a composite. Besides what the file says, the loader works out the field's effective type,
// what its default text means (a count, or the name of a length field), and its tag.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "definitions/DataTypeCodes.h"
#include "definitions/UpdateFieldDefn.h"
#include "foundation/TRVString.h"

namespace vantrelia {

class ArrayTypeDefn;
class CompositeDefn;
class CompositeFieldInstancesControl;
class Formatter;
class InputStream;
class MessageSetDefn;
class PrimitiveTypeDefn;
class ValidationTableDefn;
class VariableFieldDefn;

// User data of a record: key index into the warehouse's keys, and the value.
using UserDataMap = std::map<int32_t, kestrel::TRVString<char16_t>>;
// Reads the user data of a record as every record kind carries it: a count, then pairs of a count
// key index and a text16 value. The first value for a key stays.
void readUserData(InputStream& stream, UserDataMap& userData);

// The formatter a format pattern stands for, by the base type of the field.
enum class FormatterKind { None, NumberPicture, RegularExpression };
FormatterKind formatterKindFor(int32_t baseType, bool compositeField);
// The formatter of a pattern (without its "@"): a number picture, a regular expression, or null
// for a kind without one. Throws InvalidFile for a picture with an empty section, and the plain
// integer 0 for an expression that doesn't compile.
std::shared_ptr<Formatter> buildFieldFormatter(FormatterKind kind, std::u16string_view pattern);

class FieldDefn {
 public:
  using WideText = kestrel::TRVString<char16_t>;

  // Values of `kind`.
  static constexpr int32_t kPrimitive = 0;
  static constexpr int32_t kComposite = 1;

  // The data type codes under the names the readers have always used; DataTypeCodes is their home.
  static constexpr int32_t kShort = DataTypeCodes::kShort;
  static constexpr int32_t kLong = DataTypeCodes::kLong;
  static constexpr int32_t kString = DataTypeCodes::kString;
  static constexpr int32_t kRawBinary = DataTypeCodes::kRawBinary;
  static constexpr int32_t kLastBinary = DataTypeCodes::kLastBinary;
  static constexpr int32_t kCustom = DataTypeCodes::kCustom;
  static constexpr int32_t kArray = DataTypeCodes::kArray;
  static constexpr int32_t kVariable = DataTypeCodes::kVariable;
  static constexpr int32_t kStrictInteger = DataTypeCodes::kStrictInteger;
  static constexpr int32_t kStrictReal = DataTypeCodes::kStrictReal;
  static constexpr int32_t kQuotedText = DataTypeCodes::kQuotedText;
  // The DataType of a composite field.
  static constexpr int32_t kNoDataType = -1;

  // Bits of `flags`.
  static constexpr uint32_t kNotPlain = 0x01;             // custom type that isn't an alias, array, or variable
  static constexpr uint32_t kIsVariableTypeField = 0x02;  // the key that rules another field's type
  static constexpr uint32_t kKeyBehind = 0x04;            // this variable field's key comes after it
  static constexpr uint32_t kEquationValue = 0x08;        // a validation equation may give the value
  static constexpr uint32_t kHasFieldPresenceIndicator = 0x10;
  static constexpr uint32_t kRepeatsWithKey = 0x20;       // this variable field and its key both repeat

  // Values of `countKind`.
  static constexpr int32_t kNoCount = 0;
  static constexpr int32_t kCountRepeats = 1;
  static constexpr int32_t kCountSegments = 2;
  static constexpr int32_t kCountGroups = 3;
  static constexpr int32_t kCountMessages = 4;

  FieldDefn();
  virtual ~FieldDefn();
  FieldDefn(const FieldDefn&) = delete;
  FieldDefn& operator=(const FieldDefn&) = delete;

  // Reads one field record of a segment or composite. A composite field leaves an update in
  // `updates` that fills its overrides once the set knows its composite. Throws InvalidFile.
  void load(const MessageSetDefn& set, InputStream& stream, int version, FieldUpdates& updates);

  // The name of an EMetaAlignment value in the definition language and the tools ("left", "right",
  // "leftMin", "rightMin", "leftMax", "rightMax", "zeroMin", "zeroMax"); "" outside 0 to 7. And
  // the value of such a name, or -1.
  static std::string_view alignmentName(int alignment);
  static int alignmentOf(std::string_view name);

  // The count item of a default text behind its leading "#": "path" counts repeats; "path#S",
  // "#G", "#M" (either case) count segments, groups, messages. Sets `path` to what stands before
  // the second "#". Throws InvalidFile "Invalid count item specified" for an empty or unknown item.
  static int32_t splitCountItem(std::u16string_view rest, std::u16string_view& path);
  // The other way: the default text that makes a field count `countKind` items along `path`
  // ("#path", "#path#S", "#path#G", "#path#M"), as the compiler writes it.
  static std::u16string countText(int32_t countKind, std::u16string_view path);

  const kestrel::TRVString<char>& getName() const { return Name; }
  int32_t getMinRepeats() const { return MinRepeats; }
  int32_t getMaxRepeats() const { return MaxRepeats; }
  int32_t getKind() const { return kind; }
  bool isComposite() const { return kind == kComposite; }
  int32_t getDataType() const { return DataType; }
  int32_t getAlignment() const { return Alignment; }
  bool getIsBinary() const { return isBinary != 0; }
  bool getIsNumeric() const { return isNumeric != 0; }
  // DataType, through a custom type to its base and through an array to its items' type (and
  // their custom type's base). A variable field stays 11: its type is chosen at run time.
  int32_t getEffectiveType() const;
  // DataType, and for a custom type its base; arrays aren't followed.
  int32_t getBaseType() const;

  // What `typeDefn` points at, by kind and type; null where it doesn't apply.
  const PrimitiveTypeDefn* getCustomType() const { return customType; }
  const ArrayTypeDefn* getArrayType() const { return arrayType; }
  const VariableFieldDefn* getVariableDefn() const { return variableDefn.get(); }
  const CompositeDefn* getComposite() const { return composite; }
  int32_t getCompositeId() const { return compositeId; }

  const MessageSetDefn* getSet() const { return set; }
  bool getHasOverrides() const { return hasOverrides != 0; }
  // The overrides of a composite field on its composite's fields; null until the set applied them.
  const CompositeFieldInstancesControl* getInstancesControl() const { return instancesControl.get(); }
  bool isRequired() const { return Required != 0; }
  const ValidationTableDefn* getValidationTable() const { return ValidationTable; }
  const WideText& getFormat() const { return format; }
  const WideText& getDefaultValue() const { return DefaultValue; }
  Formatter* getFormatter() const { return formatter.get(); }
  const UserDataMap& getUserData() const { return userData; }
  bool isHidden() const { return Hidden != 0; }
  int32_t getCountKind() const { return countKind; }
  const std::string& getLinkedFieldName() const { return linkedFieldName; }
  const WideText& getTag() const { return Tag; }
  int32_t getMinLength() const { return MinLength; }
  int32_t getMaxLength() const { return MaxLength; }
  uint32_t getFlags() const { return flags; }
  bool isVariableTypeField() const { return (flags & kIsVariableTypeField) != 0; }
  bool hasFieldPresenceIndicator() const { return (flags & kHasFieldPresenceIndicator) != 0; }


 private:
  // Loaded fields are shared by every tree, so only the loaders complete them: the set points a
  // composite field at its composite once all are known and marks message type fields required,
  // the overrides are built from the field's update, and a segment marks its variable keys.
  friend class CompositeDefn;
  friend class FieldListDefn;
  friend class MessageSetDefn;
  friend class SegmentDefn;
  friend class UpdateCompositeFieldInstances;

  void setComposite(CompositeDefn* value) { composite = value; }
  void setInstancesControl(std::unique_ptr<CompositeFieldInstancesControl> control);
  void setRequired(bool value) { Required = value ? 1 : 0; }
  void addFlags(uint32_t bits) { flags |= bits; }

  void readPrimitive(const MessageSetDefn& set, InputStream& stream, int version);
  void readComposite(InputStream& stream, int version, FieldUpdates& updates);
  void workOutTypes();
  void workOutFormat(int version);
  void workOutSpecialDefault(int version);
  void workOutTag();

  kestrel::TRVString<char> Name;
  int32_t MinRepeats = 0;
  int32_t MaxRepeats = 0;
  int32_t kind = kPrimitive;
  int32_t DataType = kString;
  int32_t Alignment = 0;
  uint8_t isBinary = 0;
  uint8_t isNumeric = 0;
  const PrimitiveTypeDefn* customType = nullptr;
  const ArrayTypeDefn* arrayType = nullptr;
  std::unique_ptr<VariableFieldDefn> variableDefn;
  CompositeDefn* composite = nullptr;
  int32_t compositeId = 0;
  const MessageSetDefn* set = nullptr;
  uint8_t hasOverrides = 1;
  std::unique_ptr<CompositeFieldInstancesControl> instancesControl;
  uint8_t Required = 0;
  const ValidationTableDefn* ValidationTable = nullptr;
  WideText format;
  WideText DefaultValue;
  std::shared_ptr<Formatter> formatter;
  UserDataMap userData;
  uint8_t Hidden = 0;
  int32_t countKind = kNoCount;
  std::string linkedFieldName;
  WideText Tag;
  int32_t MinLength = 0;
  int32_t MaxLength = 0;
  uint32_t flags = 0;
};

}  // namespace vantrelia
