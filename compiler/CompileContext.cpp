#include "compiler/CompileContext.h"

#include <algorithm>

#include "compiler/TypeWriter.h"

namespace vantrelia::compiler {

int CompileContext::declareUserDataKey(const std::u16string& key) {
  const int existing = userDataKeyIndex(key);
  if (existing >= 0) return existing;
  keys.push_back(key);
  return static_cast<int>(keys.size()) - 1;
}

int CompileContext::userDataKeyIndex(const std::u16string& key) const {
  const auto found = std::find(keys.begin(), keys.end(), key);
  return found == keys.end() ? -1 : static_cast<int>(found - keys.begin());
}

void CompileContext::setTypes(const TypeWriter& types, const SourceNode& definition) {
  typeTables = &types;
  typeSource = definition;
}

std::optional<int32_t> CompileContext::customBaseType(std::string_view name) const {
  if (!typeSource) return std::nullopt;
  for (const auto& type : typeSource->records("primitiveTypes", "primitive type"))
    if (type.text("name", "") == name) return TypeWriter::dataTypeCode(type.text("baseType", "string"));
  return std::nullopt;
}

std::vector<int32_t> CompileContext::typeIds() const {
  std::vector<int32_t> ids;
  if (!typeSource || !typeTables) return ids;
  for (const char* list : {"primitiveTypes", "arrayTypes"})
    for (const auto& type : typeSource->records(list, list)) {
      const auto resolved = typeTables->resolve(type.text("name", ""));
      if (resolved && resolved->typeId) ids.push_back(*resolved->typeId);
    }
  return ids;
}

void CompileContext::beginMessageSet() {
  setComposites.clear();
  setSegments.clear();
  setTables.clear();
}

void CompileContext::declareComposite(const std::string& name, int32_t id, const SourceNode& source) {
  setComposites.push_back({name, id, source});
}

const CompileContext::Composite* CompileContext::findComposite(std::string_view name) const {
  for (const auto& composite : setComposites)
    if (composite.name == name) return &composite;
  return nullptr;
}

const CompileContext::Composite* CompileContext::findCompositeById(int32_t id) const {
  for (const auto& composite : setComposites)
    if (composite.id == id) return &composite;
  return nullptr;
}

void CompileContext::declareSegment(const std::string& name, int32_t id, const SourceNode& source) {
  setSegments.push_back({name, id, source});
}

const CompileContext::Segment* CompileContext::findSegment(std::string_view name) const {
  for (const auto& segment : setSegments)
    if (segment.name == name) return &segment;
  return nullptr;
}

const CompileContext::Segment* CompileContext::findSegmentById(int32_t id) const {
  for (const auto& segment : setSegments)
    if (segment.id == id) return &segment;
  return nullptr;
}

std::optional<int32_t> CompileContext::segmentId(std::string_view name) const {
  const Segment* segment = findSegment(name);
  return segment ? std::optional<int32_t>(segment->id) : std::nullopt;
}

void CompileContext::declareValidationTable(const std::string& name) { setTables.push_back(name); }

void CompileContext::declareMessageSet(const std::string& name, int32_t id) { messageSets.emplace_back(name, id); }

std::optional<int32_t> CompileContext::messageSetId(std::string_view name) const {
  for (const auto& [setName, id] : messageSets)
    if (setName == name) return id;
  return std::nullopt;
}

bool CompileContext::hasValidationTable(std::string_view name) const {
  return std::find(setTables.begin(), setTables.end(), name) != setTables.end();
}

}  // namespace vantrelia::compiler
