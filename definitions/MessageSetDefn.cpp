#include "definitions/MessageSetDefn.h"

#include "definitions/FieldDefn.h"
#include "definitions/PcfMessages.h"
#include "foundation/BadParameter.h"
#include "foundation/FoundationMessages.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

MessageSetDefn::~MessageSetDefn() = default;

void MessageSetDefn::load(MessageWarehouseDefn&, InputStream&, int) {
  throw InvalidFile(messages::kMessageSetsNotSupported);
}

ValidationErrorSettingDefn& MessageSetDefn::getValidationErrorSetting(int number) {
  for (auto& setting : validationErrorSettings)
    if (setting.getErrorNumber() == number) return setting;
  throw BadParameter(messages::kErrorNumberNotFound + std::to_string(number));
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

const CompositeDefn* MessageSetDefn::findCompositeById(int32_t compositeId) const {
  for (const auto& composite : composites)
    if (composite->getId() == compositeId) return composite.get();
  return nullptr;
}

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

void MessageSetDefn::resolveCompositeField(FieldDefn& field, FieldUpdates& updates) const {
  if (!field.isComposite()) return;
  CompositeDefn* target = compositeWithId(field.getCompositeId());
  if (!target) throw InvalidFile(messages::kUnknownComposite);
  field.setComposite(target);
  applyUpdates(field, updates);
}

}  // namespace vantrelia
