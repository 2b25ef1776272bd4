#pragma once
// The state of one whole parse: which message set and separators are in force, the sets and
// lists set aside while a nested set is read, the number of the next segment, what the field
// parsers found, and which sets have already failed on this text.

#include <cstdint>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "parsing/HeaderTagFinder.h"
#include "parsing/TypeSearchMemory.h"
#include "validation/RecordedErrors.h"

namespace vantrelia {

class InternalElement;
class MessageWarehouseDefn;
class SeparatorList;

// What a failed attempt must put back.
struct ParseContextSnapshot {
  std::shared_ptr<SeparatorList> separators;
  std::shared_ptr<SeparatorList> fixedSeparators;
  std::vector<std::shared_ptr<SeparatorList>> separatorStack;
};

class ParseContext {
 public:
  // `text` is the whole text being parsed; segments keep it alive so that their fields may view it.
  ParseContext(const MessageWarehouseDefn& warehouse, std::shared_ptr<const std::u16string> text,
               std::shared_ptr<SeparatorList> fixedSeparators = nullptr);
  // A context for a parse inside a tree: the tree's separators stay in force, and those of each
  // enclosing message are on the stack, outermost first.
  static ParseContext buildContextFrom(InternalElement& element, std::shared_ptr<const std::u16string> text);

  ParseContextSnapshot snapshot() const { return {separators, fixedSeparators, separatorStack}; }
  void restore(const ParseContextSnapshot& saved) {
    separators = saved.separators;
    fixedSeparators = saved.fixedSeparators;
    separatorStack = saved.separatorStack;
    // The sets set aside run parallel to their lists: a list given back takes its set along.
    if (setStack.size() > separatorStack.size()) setStack.resize(separatorStack.size());
  }

  const MessageWarehouseDefn& warehouse;
  std::shared_ptr<const std::u16string> text;
  int32_t setIndex = -1;
  int32_t headerIndex = 0;
  std::shared_ptr<SeparatorList> separators;
  std::shared_ptr<SeparatorList> fixedSeparators;
  std::vector<std::shared_ptr<SeparatorList>> separatorStack;
  std::vector<int32_t> setStack;
  int32_t segmentCount = 0;
  // Findings of the field parsers; they belong to a segment until that segment is given up.
  RecordedErrors errors;
  std::set<int32_t> excludedSets;
  std::set<int32_t> genericSets;
  // Where the tags that open a message of some set stand: the finder of whoever reads the whole
  // text, kept across its attempts, else one of the context's own, made when text is first skipped.
  HeaderTagFinder& headerTags() {
    if (tagFinder) return *tagFinder;
    if (!ownTagFinder) ownTagFinder.emplace(warehouse);
    return *ownTagFinder;
  }
  HeaderTagFinder* tagFinder = nullptr;
  // Kept by whoever reads the whole text, across its attempts; none for a parse inside a tree.
  TypeSearchMemory* typeSearches = nullptr;

 private:
  std::optional<HeaderTagFinder> ownTagFinder;
};

}  // namespace vantrelia
