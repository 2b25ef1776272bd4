#pragma once
// What all record writers of one compilation share: the target version and the tables that turn
// names in the source into the numbers of the file.

#include <cstdint>
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
  void declareValidationTable(const std::string& name);
  bool hasValidationTable(std::string_view name) const;

 private:
  int fileVersion;
  std::vector<std::u16string> keys;
  const TypeWriter* typeTables = nullptr;
  std::optional<SourceNode> typeSource;
  std::vector<Composite> setComposites;
  std::vector<std::string> setTables;
};

}  // namespace vantrelia::compiler
