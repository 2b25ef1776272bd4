#pragma once
// Reads the messages of a text one after another: HL7 messages without batch segments, several X12
// or EDIFACT interchanges in one file. Each comes with where it lies in the text; text between
// messages that no message set takes is handed over as skipped text with its place, never dropped.
// A text that comes from a source is read in chunks, so that no more than the message being read
// and the chunk it lies in are held at once.

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "elements/MessageElement.h"
#include "parsing/FailedSegmentEnds.h"
#include "parsing/HeaderTagFinder.h"
#include "parsing/TypeSearchMemory.h"

namespace vantrelia {

class MessageWarehouseDefn;

class MessageReader {
 public:
  // Appends the next piece of the text to `text`; false when there is no more.
  using Source = std::function<bool(std::u16string& text)>;

  struct Item {
    // Null for a stretch of skipped text.
    std::unique_ptr<MessageElement> message;
    // Where the message or the skipped text lies, in UTF-16 units from the start of the text.
    int64_t offset = 0;
    int64_t length = 0;
    // The skipped text, when there is no message.
    std::u16string skipped;
  };

  MessageReader(const MessageWarehouseDefn& warehouse, std::u16string text);
  // The same over a text the host keeps: the messages share it instead of a copy.
  MessageReader(const MessageWarehouseDefn& warehouse, std::shared_ptr<const std::u16string> text);
  MessageReader(const MessageWarehouseDefn& warehouse, Source source, size_t chunkSize = kDefaultChunk);

  // The next message or stretch of skipped text; false at the end of the text.
  bool next(Item& item);

  static constexpr size_t kDefaultChunk = size_t{1} << 20;

 private:
  // Reads more of the source behind what is left; false when the source has ended.
  bool readMore();
  void skip(Item& item, size_t end);
  // Where in the window, at `from` or later, the tag of a set's header segment stands next; the
  // window's size when nowhere. `from` only grows within a window.
  size_t nextHeaderAt(size_t from);

  const MessageWarehouseDefn& warehouse;
  Source source;
  size_t chunkSize;
  bool exhausted = false;
  // The text still to be read begins at `position` of `window`; `windowStart` is where the window
  // lies in the whole text.
  std::shared_ptr<const std::u16string> window;
  size_t position = 0;
  int64_t windowStart = 0;
  // A message found behind skipped text waits here while the skipped text goes out first.
  Item waiting;
  bool hasWaiting = false;
  // Kept across the attempts of every message: the parse skips junk up to the same tags.
  HeaderTagFinder headerTags;
  // Where in the window the first segments of failed messages ended.
  FailedSegmentEnds failures;
  TypeSearchMemory typeSearches;
};

}  // namespace vantrelia
