#pragma once
// The top of a parse: decides by attempt which message set and which message a text is, and
// builds its tree. A text says nothing of its dialect; the first segment and the message type
// fields point to candidates, and each candidate is parsed in full. One that fails is taken apart,
// its segments kept for the next.

#include <memory>
#include <string>

#include "parsing/SegmentMatch.h"

namespace vantrelia {

class HeaderTagFinder;
class TypeSearchMemory;
class InternalElement;
class MessageElement;
class MessageImpl;
class MessageSetImpl;
class MessageWarehouseDefn;
class ParseContext;
class ParserStream;
class ValidationLocation;
struct ParseCallback;

class MessageParser {
 public:
  // Where the first message of a text began and ended, counted in characters of the text.
  struct Extent {
    int32_t start = -1;
    int32_t end = -1;
  };

  // The root of the first message of the stream's text, or null. `text` is the whole text the
  // stream reads; the tree's values may point into it. `extent`, if given, gets where the message
  // lies, so that a reader of many messages can go on behind it; without a message, it gets where
  // the first segment of the last message that failed lies, or the end of the text for both.
  // `tagFinder` and `typeSearches`, if given, are those of a reader that comes back to the same
  // text again and again.
  static std::unique_ptr<MessageElement> parseTopLevel(const MessageWarehouseDefn& warehouse,
                                                       std::shared_ptr<const std::u16string> text,
                                                       ParserStream& stream, const ParseCallback* callback,
                                                       Extent* extent = nullptr, HeaderTagFinder* tagFinder = nullptr,
                                                       TypeSearchMemory* typeSearches = nullptr);
  // The next message of the set from the look-ahead and the stream, or null. A set with a parent
  // keeps the message; a set without one hands it over as a root.
  static MessageElement* parseMessage(MessageSetImpl& set, ParseContext& context, LookAheadList& lookAhead,
                                      LookAheadList::iterator& iterator, ParserStream& stream,
                                      const ParseCallback* callback, ValidationLocation& location);
  // Takes a failed message apart: every segment of the look-ahead that it took goes back to its
  // entry, unhooked, with the separators it was read with.
  static void detachForRetry(MessageImpl& message, LookAheadList& lookAhead, ParseContext& context);

 private:
  // One attempt from the cursor with a fresh context, its segments numbered on from
  // `segmentsRead`. `headerAhead` is set when it stopped, with no message, behind text that no
  // set takes, at the tag of a header; `segmentsRead` then counts the skipped text too, and
  // `failedEnd` is where the first segment of a message that failed on the way ended, if one did.
  static std::unique_ptr<MessageElement> parseFrom(const MessageWarehouseDefn& warehouse,
                                                   const std::shared_ptr<const std::u16string>& text,
                                                   ParserStream& stream, const ParseCallback* callback, Extent* extent,
                                                   HeaderTagFinder& tagFinder, TypeSearchMemory& typeSearches,
                                                   int32_t& segmentsRead, int32_t& failedEnd, bool& headerAhead);
};

}  // namespace vantrelia
