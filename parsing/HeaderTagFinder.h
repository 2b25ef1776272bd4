#pragma once
// Where the next tag of a header that opens a message of some set stands in a text. Junk is
// skipped up to such a tag, and a reader of many messages looks for the next one after each
// failed attempt; both ask again and again, further and further on. A tag that appears nowhere
// ahead would cost a search to the end of the text at every question, so each tag's next place is
// kept and used for as long as the questions stay behind it.

#include <string>
#include <vector>

namespace vantrelia {

class MessageWarehouseDefn;

class HeaderTagFinder {
 public:
  explicit HeaderTagFinder(const MessageWarehouseDefn& warehouse);

  // The first place in [from, end) where a header tag begins, or end. A question about another
  // text (another end) forgets what was kept.
  const char16_t* next(const char16_t* from, const char16_t* end);
  // Whether a header tag begins at `from`, with the text running to `end`.
  bool startsAt(const char16_t* from, const char16_t* end) const;

 private:
  struct Kept {
    const char16_t* searchedFrom = nullptr;  // no tag begins in [searchedFrom, foundAt)
    const char16_t* foundAt = nullptr;       // the text's end where there is none
  };

  std::vector<std::u16string> tags;
  std::vector<Kept> kept;
  const char16_t* textEnd = nullptr;
};

}  // namespace vantrelia
