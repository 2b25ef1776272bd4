#include "support/DefinitionSetup.h"

#include "definitions/MessageWarehouseDefn.h"

namespace vantrelia::testing {

std::unique_ptr<MessageSetDefn> DefinitionSetup::messageSet(std::string name, const MessageWarehouseDefn* warehouse, int32_t id) {
  // The set's own constructor is private: this is the factory that tests make sets with.
  std::unique_ptr<MessageSetDefn> set(new MessageSetDefn());
  set->name = std::move(name);
  set->warehouse = warehouse;
  set->id = id;
  return set;
}

MessageSetDefn& DefinitionSetup::addMessageSet(MessageWarehouseDefn& warehouse, std::unique_ptr<MessageSetDefn> set) {
  return warehouse.addMessageSet(std::move(set));
}

void DefinitionSetup::addMessageTypeField(MessageSetDefn& set, std::string_view dottedPath) {
  set.messageTypeFields.push_back(FieldPathDefn::parseDotted(dottedPath));
}

void DefinitionSetup::addValidationErrorSetting(MessageSetDefn& set, int32_t number, EVErrType severity) {
  set.validationErrorSettings.emplace_back(number, severity);
}

ValidationTableDefn& DefinitionSetup::addValidationTable(MessageSetDefn& set, std::unique_ptr<ValidationTableDefn> table) {
  return set.addValidationTable(std::move(table));
}

void DefinitionSetup::addComposites(MessageSetDefn& set, std::vector<std::unique_ptr<CompositeDefn>> loaded,
                                    FieldUpdates& updates) {
  set.addComposites(std::move(loaded), updates);
}

SegmentDefn& DefinitionSetup::addSegment(MessageSetDefn& set, std::unique_ptr<SegmentDefn> segment, FieldUpdates& updates) {
  return set.addSegment(std::move(segment), updates);
}

MessageDefn& DefinitionSetup::addMessage(MessageSetDefn& set, std::unique_ptr<MessageDefn> message) {
  return set.addMessage(std::move(message));
}

void DefinitionSetup::markRequiredPath(CompositeDefn& composite, std::span<const int32_t> indexes) {
  composite.markRequiredPath(indexes);
}

void DefinitionSetup::markRequiredByName(CompositeDefn& composite, std::string_view path) {
  composite.markRequiredByName(path);
}

void DefinitionSetup::workOutQuotedText(CompositeDefn& composite) { composite.workOutQuotedText(); }

}  // namespace vantrelia::testing
