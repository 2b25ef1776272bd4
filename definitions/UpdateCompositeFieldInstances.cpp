#include "definitions/UpdateCompositeFieldInstances.h"

#include "definitions/CompositeDefn.h"
#include "definitions/CompositeFieldInstancesControl.h"
#include "definitions/FieldDefn.h"
#include "definitions/InputStream.h"
#include "definitions/PcfMessages.h"
#include "definitions/PcfVersion.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

using namespace overrideflags;

namespace {

// A byte before the version that widened them, a u16 from it on.
uint16_t readFlags(InputStream& stream, int version) {
  if (version >= pcf::kWideOverrideFlags) return stream.readU16();
  uint8_t narrow = 0;
  stream.read(narrow);
  return narrow;
}

uint8_t readBool(InputStream& stream) {
  bool value = false;
  stream.read(value);
  return value ? 1 : 0;
}

// The attributes that every record, the whole field's included, may carry behind its texts.
void readCommonAttributes(InputStream& stream, int version, FieldOverrideValues& values) {
  if (version >= pcf::kOverrideFlagsAndHeader && (values.flags & kRequired)) values.Required = readBool(stream);
  if (version >= pcf::kHiddenOverride && (values.flags & kHidden)) values.Hidden = readBool(stream);
  if (version >= pcf::kWideOverrideFlags) {
    if (values.flags & kMinLength) stream.read(values.MinLength);
    if (values.flags & kMaxLength) stream.read(values.MaxLength);
  }
}

}  // namespace

void UpdateCompositeFieldInstances::load(InputStream& stream, int version) {
  if (version >= pcf::kOverrideFlagsAndHeader) readWholeField(stream, version);
  for (int32_t index = stream.readInt(); index != FieldInstanceUpdate::kEndOfBlock; index = stream.readInt()) {
    if (index == FieldInstanceUpdate::kCloseLevel) add({index, {}});
    else readRecord(stream, version, index);
  }
}

void UpdateCompositeFieldInstances::readWholeField(InputStream& stream, int version) {
  FieldInstanceUpdate record;
  record.index = FieldInstanceUpdate::kWholeField;
  FieldOverrideValues& values = record.values;
  values.flags = readFlags(stream, version);
  if (version >= pcf::kOverrideValidationFlags && (values.flags & kSituationalRule))
    throw InvalidFile(messages::kCompositeOverrideSituational);
  readCommonAttributes(stream, version, values);
  // A record of the field as a whole has no effect; one without flags isn't even kept.
  if (values.flags != 0) add(std::move(record));
}

void UpdateCompositeFieldInstances::readRecord(InputStream& stream, int version, int32_t index) {
  FieldInstanceUpdate record;
  record.index = index;
  FieldOverrideValues& values = record.values;
  const bool nested = readBool(stream) != 0;
  if (version >= pcf::kOverrideFlagsAndHeader || !nested) values.flags = readFlags(stream, version);
  if (version >= pcf::kOverrideValidationFlags) {
    if (values.flags & kSituationalRule) throw InvalidFile(messages::kCompositeOverrideSituational);
    if (!nested && (values.flags & kAdvancedValidation)) throw InvalidFile(messages::kCompositeOverrideAdvanced);
  }
  if (!nested) {
    if (values.flags & kDefaultValue) stream.readTextV(values.DefaultValue, version);
    if (values.flags & kFormatter) stream.readTextV(values.format, version);
    if (values.flags & kValidationTable) stream.read(values.tableName);
  }
  readCommonAttributes(stream, version, values);
  add(std::move(record));
}

void UpdateCompositeFieldInstances::apply(FieldDefn& field) {
  const CompositeDefn* composite = field.getComposite();
  if (!composite) throw InvalidFile(messages::kUnknownComposite);
  auto control = std::make_unique<CompositeFieldInstancesControl>(*composite);
  const CompositeDefn* current = composite;
  std::vector<int32_t> path;
  std::vector<const CompositeDefn*> stack;
  for (const FieldInstanceUpdate& record : records) {
    if (record.index == FieldInstanceUpdate::kWholeField) continue;
    if (record.index == FieldInstanceUpdate::kCloseLevel) {
      if (stack.empty()) throw InvalidFile(messages::kOverrideLevelNotOpen);
      current = stack.back();
      stack.pop_back();
      path.pop_back();
      continue;
    }
    if (record.index < 0 || record.index >= current->getFieldCount()) throw InvalidFile(messages::kOverrideIndexOutside);
    path.push_back(record.index);
    const FieldDefn& target = current->getField(record.index);
    if (!target.isComposite()) {
      control->add(path, record.values);
      path.pop_back();
      continue;
    }
    if (!target.getComposite()) throw InvalidFile(messages::kUnknownComposite);
    stack.push_back(current);
    current = target.getComposite();
    // The entry of the nested composite comes before those of its fields, which it would replace.
    if (record.values.flags != 0) control->add(path, record.values);
  }
  field.setInstancesControl(std::move(control));
}

}  // namespace vantrelia
