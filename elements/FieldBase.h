#pragma once
// What every field-like node shares (primitive, composite, repeat, array): its definition, the
// segment that owns it, its path, and the attributes that the message item may override for this
// one place, looked up once and cached.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "elements/FieldLocation.h"
#include "elements/InternalElement.h"
#include "elements/VariableFieldType.h"
#include "foundation/TRVString.h"

namespace vantrelia {

class FieldDefn;
class FieldInstancesControl;
class Formatter;
class SegmentImplBase;
class ValidationTableDefn;

class FieldBase : public InternalElement, public FieldLocation {
 public:
  using WideText = kestrel::TRVString<char16_t>;

  // Bits of `flags`.
  static constexpr uint16_t kCachedDefault = 0x0001;
  static constexpr uint16_t kCachedFormatter = 0x0002;
  static constexpr uint16_t kCachedTable = 0x0004;
  static constexpr uint16_t kCachedRequired = 0x0008;
  static constexpr uint16_t kCachedHidden = 0x0010;
  static constexpr uint16_t kCachedMinLength = 0x0080;
  static constexpr uint16_t kCachedMaxLength = 0x0100;
  static constexpr uint16_t kCachedCountKind = 0x0200;
  static constexpr uint16_t kPathFinal = 0x0400;
  static constexpr uint16_t kNull = 0x0800;
  static constexpr uint16_t kAwaitsFormatter = 0x1000;
  // Set at construction: the field stands inside the node of a variable field's type, below which
  // the message item has no overrides.
  static constexpr uint16_t kBelowVariable = 0x2000;

  FieldBase(const FieldDefn& fieldDefn, InternalElement* parent, int32_t index);
  ~FieldBase() override;

  ENodeType getNodeType() const override { return qxPrimitive; }
  const char* getName() const override;
  int getSegmentNumber() override;
  int getSegmentNumberInMessage() override;
  bool getUserData(const std::u16string& key, std::u16string& value) override;
  MetaDataRecord* getMetaData() override;

  bool isChildPresent(int) override { return false; }
  bool attachSegment(SegmentElement*, int) override { return false; }
  bool canStartOnPath(std::vector<int32_t>::const_iterator, std::vector<int32_t>::const_iterator) override {
    return false;
  }
  bool isRequired() override;
  int getCountForPath(std::string_view path, int kind, bool existingOnly) override;
  int countSegments(bool existingOnly) override;
  int countGroups(bool existingOnly) override;
  int countMessages(bool existingOnly) override;
  void appendPath(std::string& text) override;
  void appendNumericPath(std::string& text) override;
  void forgetParserPositions(RecordedErrors& errors) override;
  void validateTop(ValidationErrorList& out, bool includeWarnings) override;
  SeparatorList* getSeparatorList() override;
  const MessageSetDefn* getMessageSetDefn() override;
  bool isFieldNode() const override { return true; }

  // FieldLocation
  std::string getFieldPath() override;
  const std::vector<int32_t>& getLocationValues() override;
  SegmentElement* getOwnerSegment() override;

  // Fields ask their owner for the list, so that there is nothing to pass on in a primitive.
  virtual void setSeparatorList(SeparatorList*) {}
  virtual void propagateSeparatorList(SeparatorList*) {}
  // The field's variable type was set or changed.
  virtual void typeChanged() {}
  // The type a variable field took from its key: its own, or for an item of an array, the array's.
  // Null for a field that isn't variable.
  const VariableFieldType* getVariableType() const;
  // Takes over the type (a variable field's node is made for its type) and tells typeChanged.
  void setVariableType(std::unique_ptr<VariableFieldType> type);
  virtual void appendFieldPath(std::string& text);

  // The attributes at this place: the message item's overrides where the definition allows them,
  // else the definition's own.
  int32_t getMinLength();
  int32_t getMaxLength();
  bool isHiddenField();
  bool hasDefaultValue();
  const WideText& getDefaultValue();
  Formatter* getFormatter();
  const ValidationTableDefn* getValidationTable();
  int32_t getCountKind();

  const FieldDefn& getFieldDefn() const { return *fieldDefn; }
  SegmentImplBase* getOwner();
  // The index of the ancestor that is a direct child of the owner segment.
  int32_t getOwnerFieldIndex();
  bool getFlag(uint16_t bit) const { return (flags & bit) != 0; }

 protected:
  // What a place's overrides say about this one field, looked up once.
  struct InstValues {
    virtual ~InstValues() = default;
    int32_t minLength = 0;
    int32_t maxLength = 0;
    uint8_t required = 0;
    uint8_t hidden = 0;
    std::vector<int32_t> location;
    const WideText* defaultValue = nullptr;
    Formatter* formatter = nullptr;
    const ValidationTableDefn* validationTable = nullptr;
    int32_t countKind = 0;
    std::unique_ptr<VariableFieldType> variableType;
  };

  InstValues& instances();
  // A host's wire text for this field, read as it would be at its place: under the owner's
  // separator level. Returns what the field didn't take; findings of the read are dropped.
  std::u16string_view readOwnText(std::u16string_view text, ESeparatorType ownerLevel);
  virtual std::unique_ptr<InstValues> createInstValues();
  // The item's override control when this field's definition may be overridden at its place.
  const FieldInstancesControl* overrideControl();
  // overrideControl, or null where it would answer as the field's definition does.
  const FieldInstancesControl* ownOverrideControl();
  void findOwner();
  // For clones: the copy takes a copy of this field's own variable type.
  void copyVariableTypeInto(FieldBase& copy) const;

  const FieldDefn* fieldDefn;
  SegmentImplBase* ownerSegment = nullptr;
  int16_t ownerFieldIndex = -1;
  uint16_t flags = 0;
  std::unique_ptr<std::string> pathCache;
  std::unique_ptr<InstValues> instValues;
};

}  // namespace vantrelia
