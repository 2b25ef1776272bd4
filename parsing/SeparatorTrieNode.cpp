#include "parsing/SeparatorTrieNode.h"

#include <algorithm>

namespace vantrelia {

namespace {
// Room made for the children of a root before the first doubling. Other nodes are mostly the
// last character of a one-character separator, with no children at all.
constexpr size_t kRootChildRoom = 8;
}  // namespace

SeparatorTrieNode::SeparatorTrieNode() { children.reserve(kRootChildRoom); }

SeparatorTrieNode::SeparatorTrieNode(char16_t character, int32_t level)
    : character(character), level(level), minLevel(level) {}

SeparatorTrieNode::~SeparatorTrieNode() = default;

std::unique_ptr<SeparatorTrieNode> SeparatorTrieNode::makeChild(char16_t character, int32_t level) {
  return std::unique_ptr<SeparatorTrieNode>(new SeparatorTrieNode(character, level));
}

SeparatorTrieNode* SeparatorTrieNode::addSequence(int32_t separatorIndex, std::u16string_view text,
                                                  uint32_t kind, int32_t level,
                                                  std::optional<std::u16string_view> replacement) {
  if (text.empty() || text.front() == u'\0') return nullptr;

  SeparatorTrieNode* node = this;
  for (const char16_t c : text) {
    if (c == u'\0') break;
    node->hasChildren = true;
    // One child per character, whatever the levels of the sequences through it.
    auto* next = const_cast<SeparatorTrieNode*>(node->childWithCharacter(c));
    if (next) {
      if (level < next->minLevel) {
        next->minLevel = level;
        node->firstDirty = true;
      }
    } else {
      node->children.push_back(makeChild(c, level));
      node->firstDirty = true;
      next = node->children.back().get();
    }
    node = next;
  }

  node->level = level;
  // Escape marks add up with whatever else ends here, so that taking a separator out of force
  // doesn't drop an escape on the same node. Otherwise the last kind added wins: a node is never
  // a separator and a replacement at once.
  if (node->flags & kEscapes) {
    node->flags |= kind;
  } else {
    node->flags = kind;
  }
  node->separatorIndex = static_cast<int8_t>(separatorIndex);
  if ((kind & kReplacement) && replacement && node->replacement != *replacement) {
    node->replacement.emplace(*replacement);
  }
  return node;
}

SeparatorTrieNode::SavedSequence SeparatorTrieNode::saveSequence(std::u16string_view text) const {
  SavedSequence saved;
  saved.text = text.substr(0, std::min(text.find(u'\0'), text.size()));
  if (!saved.isRestorable()) return saved;
  const SeparatorTrieNode* node = this;
  for (const char16_t c : saved.text) {
    node = node->childWithCharacter(c);
    if (!node) return saved;
    saved.minLevels[saved.existing++] = node->minLevel;
  }
  if (saved.existing == saved.text.size() && saved.existing > 0) {
    saved.flags = node->flags;
    saved.level = node->level;
    saved.separatorIndex = node->separatorIndex;
    saved.replacement = node->replacement;
  }
  return saved;
}

void SeparatorTrieNode::restoreSequence(const SavedSequence& saved) {
  if (!saved.isRestorable() || saved.text.empty()) return;
  std::array<SeparatorTrieNode*, kSavedDepth + 1> path{};
  path[0] = this;
  size_t depth = 0;
  while (depth < saved.text.size()) {
    auto* next = const_cast<SeparatorTrieNode*>(path[depth]->childWithCharacter(saved.text[depth]));
    if (!next) break;
    path[++depth] = next;
  }
  // Nodes the sequence made: the deepest go first, each once nothing passes through it any more.
  while (depth > saved.existing) {
    SeparatorTrieNode* node = path[depth];
    if (node->hasChildren) break;
    SeparatorTrieNode& parent = *path[depth - 1];
    const auto it = std::find_if(parent.children.begin(), parent.children.end(),
                                 [node](const auto& child) { return child.get() == node; });
    if (it != parent.children.end()) parent.children.erase(it);
    parent.hasChildren = !parent.children.empty();
    parent.firstDirty = true;
    --depth;
  }
  for (size_t i = 1; i <= std::min(depth, saved.existing); ++i) {
    if (path[i]->minLevel != saved.minLevels[i - 1]) {
      path[i]->minLevel = saved.minLevels[i - 1];
      path[i - 1]->firstDirty = true;
    }
  }
  if (saved.existing == saved.text.size() && depth == saved.existing) {
    SeparatorTrieNode& node = *path[depth];
    node.flags = saved.flags;
    node.level = saved.level;
    node.separatorIndex = saved.separatorIndex;
    node.replacement = saved.replacement;
  }
}

std::vector<std::u16string> SeparatorTrieNode::sequencesInForce() const {
  std::vector<std::u16string> found;
  std::u16string path;
  const auto visit = [&](const auto& self, const SeparatorTrieNode& node) -> void {
    for (const auto& child : node.children) {
      path.push_back(child->character);
      constexpr uint32_t kEnds = kSeparator | kReplacement | kEscapes;
      if ((child->flags & kEnds) && child->level <= level) {
        std::u16string entry = path;
        entry.push_back(u'\0');
        entry.push_back(static_cast<char16_t>(child->flags & kEnds));
        entry.push_back(static_cast<char16_t>(child->flags >> 16));
        entry.push_back(static_cast<char16_t>(child->separatorIndex));
        entry.push_back(child->isCrlf ? u'1' : u'0');
        if ((child->flags & kReplacement) && child->replacement) entry += *child->replacement;
        found.push_back(std::move(entry));
      }
      self(self, *child);
      path.pop_back();
    }
  };
  visit(visit, *this);
  std::sort(found.begin(), found.end());
  return found;
}

std::u16string_view SeparatorTrieNode::getFirstCharacters() {
  if (firstDirty) rebuildFirstCharacters();
  size_t count = 0;
  for (const auto& child : children) {
    if (count == first->characters.size()) break;
    if (child->minLevel <= level) first->characters[count++] = child->character;
  }
  return std::u16string_view(first->characters.data(), count);
}

bool SeparatorTrieNode::isAmongFirstInForce(const SeparatorTrieNode* child) const {
  int32_t before = 0;
  for (const auto& other : children) {
    if (other.get() == child) return before < kFirstCharactersLimit;
    if (other->minLevel <= level) ++before;
  }
  return false;
}

void SeparatorTrieNode::rebuildFirstCharacters() {
  if (!first) first = std::make_unique<FirstCharacters>();
  FirstCharacters& set = *first;
  set.slotByLowByte.fill(kNoChild);
  set.entries.clear();
  for (size_t i = 0; i < children.size(); ++i) {
    set.entries.push_back({children[i].get(), children[i]->minLevel, children[i]->character});
    uint8_t& slot = set.slotByLowByte[static_cast<uint8_t>(children[i]->character)];
    slot = slot == kNoChild && i < kSearchChildren ? static_cast<uint8_t>(i) : kSearchChildren;
  }
#if defined(__SSE2__)
  set.vectored = !children.empty() && children.size() <= kVectorWidth;
  if (set.vectored) {
    for (size_t i = 0; i < kVectorWidth; ++i) {
      const char16_t c = children[std::min(i, children.size() - 1)]->character;
      set.lanes[i] = _mm_set1_epi16(static_cast<short>(c));
    }
  }
#endif
  firstDirty = false;
}

}  // namespace vantrelia
