#pragma once
// Separator tries set aside by the lists of this thread, for the next list with the same
// separators to take instead of building its own. Every message read makes a list, and a list
// builds a trie each time its separators change: twice while a header says what they are, once
// more for every change after. With the header's separators the same from one message to the next,
// so are those tries; handed on, they cost neither the build nor freeing them with the tree.
//
// A trie is in step with the stack of levels of the list it served, and comes with that stack; the
// list that takes it brings it to its own by popping and pushing (SeparatorList::buildTrie). A
// trie serves any list whose slots give the same sequences, which `keyOf` reduces to one text.

#include <cstddef>
#include <list>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "foundation/Enumerations.h"
#include "parsing/SeparatorLevels.h"

namespace vantrelia {

class MessageSetDefn;
class SeparatorTrieNode;

class SeparatorTriePool {
 public:
  // How many tries a thread keeps: a reader of several sets, each with a pre-header and a settled
  // state, finds its own among them.
  static constexpr size_t kCapacity = 8;

  struct Spare {
    const MessageSetDefn* set = nullptr;
    // Shared with the lists whose slots it was made for: every message's list carries it.
    std::shared_ptr<const std::u16string> key;
    SeparatorLevels levels;
    std::list<std::u16string> specialStrings;
    std::unique_ptr<SeparatorTrieNode> trie;
  };

  SeparatorTriePool() = default;
  SeparatorTriePool(const SeparatorTriePool&) = delete;
  SeparatorTriePool& operator=(const SeparatorTriePool&) = delete;

  // This thread's pool; null while the thread ends, when lists freed by then build and free their
  // tries as they always did.
  static SeparatorTriePool* local();

  // Keeps the trie, the one kept longest going when the pool is full.
  void give(Spare spare);
  // A trie for the set and key, taken out of the pool; nothing when none is kept.
  std::optional<Spare> take(const MessageSetDefn& set, const std::u16string& key);

 private:
  std::vector<Spare> spares;  // oldest first
};

}  // namespace vantrelia
