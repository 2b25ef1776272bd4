#include "parsing/MessageReader.h"

#include <algorithm>

#include "parsing/MessageParser.h"
#include "parsing/SegmentReader.h"
#include "parsing/StringParserStream.h"

namespace vantrelia {

namespace {

// Text that no set takes is handed over in pieces of at most this size while more text follows, so
// that a long stretch of it never fills the memory; a message may start in the part held back.
constexpr size_t kHeldBack = size_t{1} << 16;

}  // namespace

MessageReader::MessageReader(const MessageWarehouseDefn& owner, std::u16string text)
    : warehouse(owner), chunkSize(kDefaultChunk), exhausted(true),
      window(std::make_shared<const std::u16string>(std::move(text))), headerTags(owner) {}

MessageReader::MessageReader(const MessageWarehouseDefn& owner, std::shared_ptr<const std::u16string> text)
    : warehouse(owner), chunkSize(kDefaultChunk), exhausted(true),
      window(text ? std::move(text) : std::make_shared<const std::u16string>()),
      headerTags(owner) {}

MessageReader::MessageReader(const MessageWarehouseDefn& owner, Source textSource, size_t chunk)
    : warehouse(owner), source(std::move(textSource)), chunkSize(std::max<size_t>(chunk, 1024)),
      window(std::make_shared<const std::u16string>()), headerTags(owner) {}

bool MessageReader::readMore() {
  if (exhausted) return false;
  // The window starts over with what is left, so the parsed messages keep theirs alive alone.
  std::u16string next = window->substr(position);
  windowStart += static_cast<int64_t>(position);
  position = 0;
  // Doubling keeps a message far larger than a chunk from being parsed over and over.
  const size_t wanted = std::max(next.size() + chunkSize, 2 * next.size());
  while (next.size() < wanted) {
    if (!source(next)) {
      exhausted = true;
      break;
    }
  }
  window = std::make_shared<const std::u16string>(std::move(next));
  failures.clear();
  return true;
}

size_t MessageReader::nextHeaderAt(size_t from) {
  if (from >= window->size()) return window->size();
  const char16_t* const begin = window->data();
  return static_cast<size_t>(headerTags.next(begin + from, begin + window->size()) - begin);
}

void MessageReader::skip(Item& item, size_t end) {
  item.message.reset();
  item.offset = windowStart + static_cast<int64_t>(position);
  item.length = static_cast<int64_t>(end - position);
  item.skipped = window->substr(position, end - position);
  position = end;
}

bool MessageReader::next(Item& item) {
  if (hasWaiting) {
    item = std::move(waiting);
    hasWaiting = false;
    return true;
  }
  while (true) {
    if (window->size() - position < chunkSize / 2 && readMore()) continue;
    if (position >= window->size()) return false;

    StringParserStream stream(window->data() + position, static_cast<int32_t>(window->size() - position));
    MessageParser::Extent extent;
    std::unique_ptr<MessageElement> message = MessageParser::parseTopLevel(warehouse, window, stream, nullptr, &extent, &headerTags,
                                                                           &typeSearches);
    if (!message) {
      // Nothing in what is held is a message: a little more text may complete one, else all but
      // the held-back end is skipped.
      if (!exhausted && window->size() - position <= 2 * kHeldBack) {
        readMore();
        continue;
      }
      // Where another message may begin, the skipping stops: text that no set takes would
      // otherwise swallow a message of another standard behind it, read with the wrong separators.
      // The parse tried every header before the one its last failed message began with.
      const size_t heldBack = exhausted ? window->size() : window->size() - kHeldBack;
      const size_t tried = std::max(position, static_cast<size_t>(std::max(extent.start, 0)));
      // A header inside the first segment of a failed message is tried in turn, but not forever.
      size_t resume = nextHeaderAt(tried + 1);
      if (extent.end >= 0) {
        resume = std::max(resume, static_cast<size_t>(failures.note(extent.end, static_cast<int64_t>(resume))));
      }
      skip(item, std::max(position + 1, std::min(heldBack, resume)));
      return true;
    }
    const size_t end = static_cast<size_t>(extent.end);
    // A message that reaches the end of what is held may go on in the text not read yet.
    if (end >= window->size() && !exhausted) {
      readMore();
      continue;
    }
    const size_t start = static_cast<size_t>(extent.start);
    Item found;
    found.message = std::move(message);
    found.offset = windowStart + static_cast<int64_t>(start);
    found.length = static_cast<int64_t>(end - start);
    if (start > position) {
      skip(item, start);
      waiting = std::move(found);
      hasWaiting = true;
      position = end;
      return true;
    }
    item = std::move(found);
    position = end;
    return true;
  }
}

}  // namespace vantrelia
