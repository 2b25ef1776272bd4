#pragma once
// What reading a header that carries the separators did, kept to be done again. A header such as
// HL7's MSH says with its first characters what the separators of its message are, and settles
// them field by field: the list works out its replacements, character sets and tries anew at each
// step, a quarter of reading a short message. Messages of one sender start with the same
// characters, so the read of those characters is kept per thread, once it has settled the list:
// the settled list, and where the fields cut on the way stood in the text. A header that begins
// with the same characters, read with a list in the same state, takes the settled list and those
// fields, and goes on from there as the read would have.
//
// What a read does up to that point depends on nothing else: the separators are read from those
// characters, the fields on the way are plain values cut at separators among them, and none of
// their sequences looks past them (a header is kept only then).
//
// A header that settles only with its last character (X12's ISA, whose segment terminator follows
// its last field) is kept whole, to the end of its segment. Its fields change from one interchange
// to the next (control numbers, dates), so a later header takes the kept read if it has the same
// characters everywhere but in those fields, and fields of the same lengths that hold none of the
// characters that could end a field or stand for other text: its read would cut at the very same
// places, and only the values differ, which the replay hands to the fields as the read would.

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace vantrelia {

class MessageItemDefn;
class SegmentDefn;
class SeparatorList;

class HeaderReplay {
 public:
  // How many headers a thread keeps: a reader of several sets, or of senders that write their
  // separators differently, finds its own among them.
  static constexpr size_t kCapacity = 8;

  // A field cut on the way: its index and where its text stood, from the header's first character.
  // In a header kept whole, a field that carried no separator may hold other characters.
  struct FieldText {
    int32_t field = 0;
    int32_t offset = 0;
    int32_t length = 0;
    bool varies = false;
    // A value the settled list would read otherwise than the read did (trimmed of other filler)
    // is handed over as the read left it: whether the field stood, and its value.
    bool asRead = false;
    bool present = false;
    std::u16string value;
  };

  struct Entry {
    const SegmentDefn* segment = nullptr;
    const MessageItemDefn* item = nullptr;
    // The state of the list the read started from.
    uint64_t startVersion = 0;
    // The characters read up to the settling, from the segment's first one.
    std::u16string text;
    // The list as the settling left it, its trie key worked out.
    std::unique_ptr<SeparatorList> settled;
    std::vector<FieldText> fields;
    uint32_t endMask = 0;
    bool lastFieldFilled = true;
    // The first field behind the settling.
    int32_t resumeAt = 0;
    // Kept whole: text runs to the end of the segment, what the read ended with is status, and
    // fields that vary hold none of `stops`.
    bool wholeSegment = false;
    uint32_t status = 0;
    std::u16string stops;
    std::array<uint64_t, 2> asciiStops{};  // the stops below 128, as bits

    // Sets stops, and the bits that look them up.
    void setStops(std::u16string characters);

    // Whether a header whose text begins with `header` reads as this one did.
    bool readsAlike(std::u16string_view header) const;
  };

  HeaderReplay() = default;
  HeaderReplay(const HeaderReplay&) = delete;
  HeaderReplay& operator=(const HeaderReplay&) = delete;

  // This thread's; null while the thread ends.
  static HeaderReplay* local();

  // The read kept for a header of that segment and item, read with a list of that version, whose
  // text begins with what the read read; null when none is.
  const Entry* find(const SegmentDefn& segment, const MessageItemDefn* item, uint64_t startVersion,
                    std::u16string_view text);
  // Keeps a read, the one kept longest going when the list is full.
  void keep(Entry entry);
  // Whether a read that read exactly `text` is kept, whatever its header.
  bool keeps(std::u16string_view text) const;

  // Whether reads of such headers are still worth keeping: not after several in a row were never
  // read again or could not be kept (X12's ISA settles its separators only with its last
  // character, and goes on with control numbers that change with every interchange).
  bool worthKeeping(const SegmentDefn& segment, const MessageItemDefn* item, uint64_t startVersion) const;
  void noteNotKept(const SegmentDefn& segment, const MessageItemDefn* item, uint64_t startVersion);
  static constexpr int kTriesBeforeGivingUp = 4;

 private:
  struct Failures {
    const SegmentDefn* segment;
    const MessageItemDefn* item;
    uint64_t startVersion;
    int count;
  };
  Failures* failuresOf(const SegmentDefn& segment, const MessageItemDefn* item, uint64_t startVersion);

  std::vector<Entry> entries;  // oldest first
  std::vector<Failures> failures;  // oldest first, at most kCapacity
};

}  // namespace vantrelia
