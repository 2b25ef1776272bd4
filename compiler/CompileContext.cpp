#include "compiler/CompileContext.h"

#include <algorithm>

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

}  // namespace vantrelia::compiler
