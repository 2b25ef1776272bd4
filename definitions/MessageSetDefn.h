#pragma once
// One self-contained dialect of a definition file. So far it carries what the factory's settings
// reach: its name, its id and its error severities; the record reader comes with the rest of it.

#include <cstdint>
#include <memory>
#include <vector>

#include "definitions/ValidationErrorSettingDefn.h"
#include "foundation/TRVString.h"

namespace vantrelia {

class InputStream;
class MessageWarehouseDefn;

class MessageSetDefn {
 public:
  MessageSetDefn() = default;
  explicit MessageSetDefn(std::string setName) : name(std::move(setName)) {}
  virtual ~MessageSetDefn() = default;

  void load(MessageWarehouseDefn& warehouse, InputStream& stream, int version);

  int32_t getId() const { return id; }
  void setId(int32_t value) { id = value; }
  const kestrel::TRVString<char>& getName() const { return name; }

  std::vector<ValidationErrorSettingDefn>& getValidationErrorSettings() { return validationErrorSettings; }
  // The first setting with that number. Throws BadParameter "Couldn't find the error number N".
  ValidationErrorSettingDefn& getValidationErrorSetting(int number);

 private:
  int32_t id = 0;
  kestrel::TRVString<char> name;
  std::vector<ValidationErrorSettingDefn> validationErrorSettings;
};

}  // namespace vantrelia
