#include "definitions/MessageSetDefn.h"

#include <span>
#include <utility>

#include "definitions/FieldDefn.h"
#include "definitions/InputStream.h"
#include "definitions/PcfMessages.h"
#include "definitions/PcfVersion.h"
#include "foundation/BadParameter.h"
#include "foundation/FoundationMessages.h"
#include "foundation/InvalidFile.h"
#include "foundation/TextCompare.h"
#include "validation/ValidationErrorNumbers.h"

namespace vantrelia {

MessageSetDefn::~MessageSetDefn() = default;

void MessageSetDefn::load(MessageWarehouseDefn& owner, InputStream& stream, int version,
                          std::vector<MessageDefn*>& deferredMessages) {
  warehouse = &owner;
  stream.read(name);
  stream.read(FixedWidth);
  stream.read(reserved);
  stream.read(TrimSegments);
  if (version >= pcf::kInitSeparatorsFromParent) stream.read(InitializeSeparatorsFromParent);
  if (version >= pcf::kGenericParsing) stream.read(genericParsing);
  if (version >= pcf::kCountEncodedLength) stream.read(countEncodedLength);
  id = stream.readInt();

  // The array has a place for each separator kind and no more; a file can't say which kinds
  // further records would be.
  const int32_t separatorCount = stream.readInt();
  if (separatorCount > kSeparatorCount) throw InvalidFile(messages::kTooManySeparators);
  for (int32_t i = 0; i < separatorCount; ++i) separators[static_cast<size_t>(i)].load(stream, version);
  SeparatorDefn& filler = separators[qxSepFiller];
  if (filler.getValue().empty()) {
    filler.setValue(u" ");
    filler.setFlags(SeparatorDefn::kPreset | SeparatorDefn::kInitiator);
  }
  // Old files terminate segments and introduce the first field level by their separators.
  if (version < pcf::kSeparatorWritingStyle) {
    SeparatorDefn& segment = separators[qxSepSegment];
    segment.setFlags((segment.getFlags() & 0x0F) | SeparatorDefn::kTerminator);
    SeparatorDefn& field1 = separators[qxSepField1];
    field1.setFlags((field1.getFlags() & 0x0F) | SeparatorDefn::kInitiator);
  }

  const int32_t typeFieldCount = stream.readInt();
  for (int32_t i = 0; i < typeFieldCount; ++i) {
    std::string path;
    stream.read(path);
    messageTypeFields.push_back(FieldPathDefn::parseDotted(path));
  }
  if (version >= pcf::kMessageTypeText) headerItemCount = stream.readInt();

  bool tableDescriptions = false;
  if (version >= pcf::kTableDescriptions) stream.read(tableDescriptions);
  const int32_t tableCount = stream.readInt();
  for (int32_t i = 0; i < tableCount; ++i) {
    auto table = std::make_unique<ValidationTableDefn>();
    table->load(stream, version, tableDescriptions);
    addValidationTable(std::move(table));
  }

  // Overrides of composite fields wait here until every composite they may walk into is known.
  FieldUpdates updates;
  const int32_t compositeCount = stream.readInt();
  std::vector<std::unique_ptr<CompositeDefn>> loadedComposites;
  for (int32_t i = 0; i < compositeCount; ++i) {
    auto composite = std::make_unique<CompositeDefn>();
    composite->load(*this, stream, version, updates);
    loadedComposites.push_back(std::move(composite));
  }
  addComposites(std::move(loadedComposites), updates);

  const int32_t segmentCount = stream.readInt();
  for (int32_t i = 0; i < segmentCount; ++i) {
    auto segment = std::make_unique<SegmentDefn>();
    segment->load(*this, stream, version, updates);
    addSegment(std::move(segment), updates);
  }

  const int32_t messageCount = stream.readInt();
  for (int32_t i = 0; i < messageCount; ++i) {
    auto message = std::make_unique<MessageDefn>();
    message->load(*this, stream, version, deferredMessages);
    addMessage(std::move(message));
  }

  if (version >= pcf::kUserData) readUserData(stream, userData);
  if (version >= pcf::kValidationErrorSettings) {
    stream.read(InitializeValidationErrSettingsFromParent);
    const int32_t settingCount = stream.readInt();
    for (int32_t i = 0; i < settingCount; ++i) {
      ValidationErrorSettingDefn setting;
      setting.load(stream);
      validationErrorSettings.push_back(setting);
    }
  }

  if (messageCount <= 0) headerItemCount = 0;
  fillUpValidationErrorSettings();
  markMessageTypeFields();
}

void MessageSetDefn::fillUpValidationErrorSettings() {
  // The list relies on the file's own settings running in order from the first number.
  // Every set ends its load with a setting for each finding number.
  while (validationErrorSettings.size() < static_cast<size_t>(verr::kCount)) {
    const int32_t number = verr::kFirst + static_cast<int32_t>(validationErrorSettings.size());
    validationErrorSettings.emplace_back(number, getDefaultSeverity(number));
  }
}

void MessageSetDefn::markMessageTypeFields() {
  for (const FieldPathDefn& path : messageTypeFields) {
    std::string_view segmentName = path.getName().view();
    std::string_view rest;
    if (!path.isNumeric()) {
      const size_t slash = segmentName.find('/');
      if (slash == std::string_view::npos || slash + 1 == segmentName.size()) continue;
      rest = segmentName.substr(slash + 1);
      segmentName = segmentName.substr(0, slash);
    }
    if (segmentName.empty()) continue;
    SegmentDefn* segment = nullptr;
    for (const auto& candidate : segments)
      if (equalIgnoringCase(candidate->getName().view(), segmentName)) {
        segment = candidate.get();
        break;
      }
    if (!segment) continue;
    if (path.isNumeric()) markByIndex(*segment, path.getIndexes());
    else segment->markRequiredByName(rest);
  }
}

// A message type field must be present whatever its definition said. The marks work on the shared
// field definitions, so a composite used by many segments is marked for all of them.
void MessageSetDefn::markByIndex(SegmentDefn& segment, const std::vector<int32_t>& indexes) {
  if (indexes.empty()) return;
  const int32_t position = indexes.front() - 1;
  if (position < 0 || position >= segment.getFieldCount()) throw InvalidFile(messages::kInvalidFirstTypeFieldIndex);
  FieldDefn& field = *segment.fields[static_cast<size_t>(position)];
  const bool repeats = field.getMaxRepeats() != 1;
  if (indexes.size() == 1 || (indexes.size() == 2 && repeats)) {
    field.setRequired(true);
    return;
  }
  if (!field.isComposite() || !field.composite) throw InvalidFile(messages::kFirstTypeFieldNotComposite);
  // A repeating field's second index names a repetition, not a component.
  const size_t skip = repeats ? 2 : 1;
  field.composite->markRequiredPath(std::span<const int32_t>(indexes).subspan(skip));
}

const ValidationErrorSettingDefn& MessageSetDefn::getValidationErrorSetting(int number) const {
  for (const auto& setting : validationErrorSettings)
    if (setting.getErrorNumber() == number) return setting;
  throw BadParameter(messages::kErrorNumberNotFound + std::to_string(number));
}

ValidationErrorSettingDefn& MessageSetDefn::settingWithNumber(int number) {
  // The set itself isn't const here, so neither is the setting the one look-up finds.
  return const_cast<ValidationErrorSettingDefn&>(std::as_const(*this).getValidationErrorSetting(number));
}

ValidationTableDefn& MessageSetDefn::addValidationTable(std::unique_ptr<ValidationTableDefn> table) {
  ValidationTableDefn& added = *table;
  validationTables.push_back(std::move(table));
  validationTablesByName.emplace(added.getName(), &added);
  return added;
}

const ValidationTableDefn* MessageSetDefn::findValidationTable(const std::string& tableName) const {
  const auto found = validationTablesByName.find(tableName);
  return found == validationTablesByName.end() ? nullptr : found->second;
}

const CompositeDefn* MessageSetDefn::findCompositeById(int32_t compositeId) const { return compositeWithId(compositeId); }

const CompositeDefn* MessageSetDefn::findCompositeByName(std::string_view compositeName) const {
  for (const auto& composite : composites)
    if (composite->getName().view() == compositeName) return composite.get();
  return nullptr;
}

CompositeDefn* MessageSetDefn::compositeWithId(int32_t compositeId) const {
  const auto found = compositesById.find(compositeId);
  return found == compositesById.end() ? nullptr : found->second;
}

void MessageSetDefn::applyUpdates(FieldDefn& field, FieldUpdates& updates) {
  const auto [first, last] = updates.equal_range(&field);
  for (auto update = first; update != last; ++update) update->second->apply(field);
  updates.erase(first, last);
}

void MessageSetDefn::addComposites(std::vector<std::unique_ptr<CompositeDefn>> loaded, FieldUpdates& updates) {
  for (auto& composite : loaded) {
    compositesById.emplace(composite->getId(), composite.get());
    composites.push_back(std::move(composite));
  }
  // Every composite pointer first: the overrides of one composite field walk into others.
  for (const auto& composite : composites)
    for (const auto& field : composite->getFields()) {
      if (!field->isComposite()) continue;
      CompositeDefn* target = compositeWithId(field->getCompositeId());
      if (!target) throw InvalidFile(messages::kUnknownComposite);
      field->setComposite(target);
    }
  if (updates.empty()) return;
  for (const auto& composite : composites)
    for (const auto& field : composite->getFields()) applyUpdates(*field, updates);
}

const SegmentDefn* MessageSetDefn::findSegmentById(int32_t segmentId) const { return segmentWithId(segmentId); }

SegmentDefn* MessageSetDefn::segmentWithId(int32_t segmentId) const {
  const auto found = segmentsById.find(segmentId);
  return found == segmentsById.end() ? nullptr : found->second;
}

SegmentDefn& MessageSetDefn::addSegment(std::unique_ptr<SegmentDefn> segment, FieldUpdates& updates) {
  SegmentDefn& added = *segment;
  segments.push_back(std::move(segment));
  segmentsById.emplace(added.getId(), &added);
  tagMap.add(added.getTag().view(), added);
  for (const auto& field : added.getFields()) resolveCompositeField(*field, updates);
  return added;
}

const MessageDefn* MessageSetDefn::findMessageByType(std::u16string_view type) const {
  const auto found = messagesByType.find(type);
  return found == messagesByType.end() ? nullptr : found->second;
}

MessageDefn& MessageSetDefn::addMessage(std::unique_ptr<MessageDefn> message) {
  MessageDefn& added = *message;
  messageDefns.push_back(std::move(message));
  const auto& types = added.getTypes();
  messagesByType.emplace(types.empty() ? std::u16string() : types.front().str(), &added);
  return added;
}

void MessageSetDefn::resolveCompositeField(FieldDefn& field, FieldUpdates& updates) const {
  if (!field.isComposite()) return;
  CompositeDefn* target = compositeWithId(field.getCompositeId());
  if (!target) throw InvalidFile(messages::kUnknownComposite);
  field.setComposite(target);
  applyUpdates(field, updates);
}

}  // namespace vantrelia
