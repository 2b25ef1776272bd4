#pragma once
// What all record writers of one compilation share: the target version and the tables that turn
// names in the source into the numbers of the file.

#include <string>
#include <vector>

namespace vantrelia::compiler {

class CompileContext {
 public:
  explicit CompileContext(int version) : fileVersion(version) {}

  int version() const { return fileVersion; }

  // User-data keys are one list for the whole file; every record refers to a key by its place in
  // it. Declaring a key twice gives the same place.
  int declareUserDataKey(const std::u16string& key);
  int userDataKeyIndex(const std::u16string& key) const;
  const std::vector<std::u16string>& userDataKeys() const { return keys; }

 private:
  int fileVersion;
  std::vector<std::u16string> keys;
};

}  // namespace vantrelia::compiler
