#include "parsing/SeparatorTriePool.h"

#include <algorithm>
#include <cstring>

#include "foundation/ThreadLocal.h"
#include "parsing/SeparatorTrieNode.h"

namespace vantrelia {

SeparatorTriePool* SeparatorTriePool::local() { return ThreadLocal<SeparatorTriePool>::get(); }

void SeparatorTriePool::give(Spare spare) {
  if (spares.size() == kCapacity) spares.erase(spares.begin());
  spares.push_back(std::move(spare));
}

std::optional<SeparatorTriePool::Spare> SeparatorTriePool::take(const MessageSetDefn& set, const std::u16string& key) {
  // The newest first: a reader of one set finds it at the end.
  for (auto it = spares.rbegin(); it != spares.rend(); ++it) {
    if (it->set != &set || !it->key || it->key->size() != key.size() ||
        std::memcmp(it->key->data(), key.data(), key.size() * sizeof(char16_t)) != 0) {
      continue;
    }
    std::optional<Spare> found(std::move(*it));
    spares.erase(std::next(it).base());
    return found;
  }
  return std::nullopt;
}

}  // namespace vantrelia
