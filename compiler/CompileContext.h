#pragma once
// What all record writers of one compilation share: the target version and the tables that turn
// names in the source into the numbers of the file.

#include <cstdint>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "compiler/SourceNode.h"

namespace vantrelia::compiler {

class TypeWriter;

class CompileContext {
 public:
  explicit CompileContext(int version) : fileVersion(version) {}

  int version() const { return fileVersion; }

  // User-data keys are one list for the whole file; every record refers to a key by its place in
  // it. Declaring a key twice gives the same place.
  int declareUserDataKey(const std::u16string& key);
  int userDataKeyIndex(const std::u16string& key) const;
  const std::vector<std::u16string>& userDataKeys() const { return keys; }

  // The custom and array types of the file, once declared, with the source that holds them
  // (`definition`, the root); records name types through them. Without them only the data type
  // names and codes are known.
  void setTypes(const TypeWriter& types, const SourceNode& definition);
  const TypeWriter* types() const { return typeTables; }
  // The base type of a custom type of the source by name, if there is one.
  std::optional<int32_t> customBaseType(std::string_view name) const;
  // The ids of every custom and array type, which composite ids keep clear of.
  std::vector<int32_t> typeIds() const;

  // Names within the message set being compiled: composites and validation tables of one set
  // aren't seen from another. A new set starts with none.
  struct Composite {
    std::string name;
    int32_t id;
    SourceNode source;
  };
  void beginMessageSet();
  void declareComposite(const std::string& name, int32_t id, const SourceNode& source);
  const Composite* findComposite(std::string_view name) const;
  const Composite* findCompositeById(int32_t id) const;
  const std::vector<Composite>& composites() const { return setComposites; }
  // Segments of the set: message items refer to them by name, the file by id.
  struct Segment {
    std::string name;
    int32_t id;
    SourceNode source;
  };
  void declareSegment(const std::string& name, int32_t id, const SourceNode& source);
  const Segment* findSegment(std::string_view name) const;
  const Segment* findSegmentById(int32_t id) const;
  // The id of the segment of that name, if the set has one.
  std::optional<int32_t> segmentId(std::string_view name) const;
  const std::vector<Segment>& segments() const { return setSegments; }
  void declareValidationTable(const std::string& name);
  bool hasValidationTable(std::string_view name) const;

  // State tables to embed, by set and message position, as the engine built them from a first
  // compilation of the same source without tables.
  void setStateTables(size_t set, size_t message, std::vector<uint8_t> bytes) { stateTables[{set, message}] = std::move(bytes); }
  const std::vector<uint8_t>* stateTablesFor(size_t set, size_t message) const {
    const auto found = stateTables.find({set, message});
    return found == stateTables.end() ? nullptr : &found->second;
  }

  // Message sets are known to the whole file by name, so that an item can embed a set that comes
  // later. Ids are assigned in file order from 1 unless the source gives one.
  void declareMessageSet(const std::string& name, int32_t id);
  std::optional<int32_t> messageSetId(std::string_view name) const;

 private:
  int fileVersion;
  std::vector<std::u16string> keys;
  const TypeWriter* typeTables = nullptr;
  std::optional<SourceNode> typeSource;
  std::vector<Composite> setComposites;
  std::vector<Segment> setSegments;
  std::vector<std::string> setTables;
  std::vector<std::pair<std::string, int32_t>> messageSets;
  std::map<std::pair<size_t, size_t>, std::vector<uint8_t>> stateTables;
};

}  // namespace vantrelia::compiler
