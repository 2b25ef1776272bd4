#pragma once
// The separators that segments were read with while their fields were left uncut: the list they
// were read from, for as long as it stands as it was, and a copy of it from the moment it is about
// to change or go. The fields are cut with the list itself while it stands at the level of a
// segment's start (between the segments of a parse, or after it), else with a copy at that level.

#include <cstdint>
#include <memory>
#include <string>

namespace vantrelia {

class SeparatorList;

// What a scan of a segment's fields stops at, worked out from a list's slots: the slots alone
// decide it, so that lists with the same slots share it.
struct CutStops {
  bool scannable = false;
  char16_t end = 0;
  // The first stop decides, so the scan looks for any of them, eight characters at a time.
  std::u16string stops;
};

class SeparatorCut {
 public:
  SeparatorCut(SeparatorList& live, std::shared_ptr<const CutStops> stops);
  // The stops of a list's slots as they stand.
  static std::shared_ptr<const CutStops> stopsOf(const SeparatorList& list);
  ~SeparatorCut();
  SeparatorCut(const SeparatorCut&) = delete;
  SeparatorCut& operator=(const SeparatorCut&) = delete;

  // The list to cut a segment's fields with, at the level of a segment's start. A cut that starts
  // while another is under way (a field whose key lies in another segment) gets one of its own.
  class Lease {
   public:
    explicit Lease(SeparatorCut& cut);
    ~Lease();
    Lease(const Lease&) = delete;
    Lease& operator=(const Lease&) = delete;
    SeparatorList& list() { return *in; }

   private:
    SeparatorCut& cut;
    std::unique_ptr<SeparatorList> own;
    SeparatorList* in;
  };

  // The live list is about to change or be destroyed: what it holds now is kept.
  void freeze();
  // The separators the segments were read with; their levels are not those of a segment's start.
  const SeparatorList& separators() const { return live ? *live : *copy; }

  // How many characters from `from` on belong to a segment's fields: up to its separator, or all
  // `length` of them when none follows. -1 when a character comes first that might make a
  // separator part of a value (an escape, a release, a quote), or when the list's segment
  // separator isn't one plain character.
  int32_t scanFields(const char16_t* from, int32_t length) const;

 private:
  std::unique_ptr<SeparatorList> copyOfLive() const;

  SeparatorList* live;
  std::unique_ptr<SeparatorList> copy;
  bool busy = false;
  // What the scan stops at, as the live list's slots stood when the cut was made.
  std::shared_ptr<const CutStops> scan;
};

}  // namespace vantrelia
