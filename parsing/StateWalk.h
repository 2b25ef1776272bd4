#pragma once
// Places the segments of one message into its tree by walking the message's state tables like a
// nondeterministic automaton. A segment that exactly one transition takes goes to its place at
// once; one that several could take waits in a look-ahead until a later segment settles it; one
// that none takes is kept as an unknown segment with a finding. The walk never fails on bad
// content: it answers false only when this message can't be the text's.

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include <boost/container/small_vector.hpp>

#include "definitions/ParseState.h"
#include "parsing/SegmentMatch.h"

namespace vantrelia {

class InternalElement;
class MessageDefn;
class MessageImpl;
class ParseContext;
class ParserStream;
class SegmentDefn;
class SegmentElement;
class ValidationLocation;
struct ParseCallback;

class StateWalk {
 public:
  StateWalk(MessageImpl& message, ParseContext& context, LookAheadList& lookAhead, LookAheadList::iterator& iterator,
            ParserStream& stream, const ParseCallback* callback, ValidationLocation& location);

  bool parseSegments();

 private:
  // One segment waiting to be settled, and the states it may be in.
  struct ParsePath {
    LookAheadList::iterator entry;
    std::vector<const ParseState*> states;
    // Whether the path holds the state of that index already; paths hold a few states.
    bool holds(int32_t index) const;
    // The indexes of its states, in rising order.
    std::vector<int32_t> stateIndexes() const;
  };
  using Candidates = ParseState::Candidates;

  bool walk(bool& ended);
  void gatherCandidates();
  void readAhead();
  // Reads the segment at the cursor the short way when nothing is to be chosen; false otherwise.
  bool readPlain();
  // Whether the text at the cursor surely opens the next message, so that the walk ends without
  // reading it (the next parse reads it once, instead of both).
  bool nextMessageBegins();
  // The segment that a transition to `target` reads first: the item's own, or the first of the
  // set it embeds; null for neither.
  static const SegmentDefn* expectedSegmentOf(const ParseState& target);
  std::pair<Candidates::const_iterator, Candidates::const_iterator> rangeOf(std::string_view name) const;
  // Adds the targets of `range` whose match lists hold to the path; true if any had the name.
  void matchCandidates(ParsePath& path, std::pair<Candidates::const_iterator, Candidates::const_iterator> range,
                       int& count);
  // 0: the message fails; 1: go on with the next segment; 2: take the candidates again; 3: the
  // segment belongs to the next message.
  int handleUnexpected();
  bool resolvePending(int32_t target);
  bool placePending();
  // Puts the segment of `path` into the tree; null when the message can't take it.
  InternalElement* placeSegment(ParsePath& path);
  InternalElement* placeEmbedded(InternalElement& parent, int32_t index, SegmentMatch& match);
  bool needsNewRepeat(InternalElement& repeat, const std::vector<int32_t>& current, size_t currentAt,
                      size_t previousAt) const;
  bool isPathPresent(const std::vector<int32_t>& path) const;
  void reportUnplaceable(SegmentMatch& match, bool matchListFailed);
  void keepUnknown(SegmentMatch& match, InternalElement* from);
  void reportUnknownText(const SegmentMatch& match);
  bool segmentMatchesHold(SegmentElement& segment) const;
  bool messageMatchesHold() const;
  bool belongsHere(const SegmentMatch& match) const;
  void cleanUp();

  MessageImpl& message;
  const MessageDefn& defn;
  ParseContext& context;
  LookAheadList& lookAhead;
  LookAheadList::iterator& iterator;
  // The entry before the message's first one, if any: cleaning up starts behind it. Entries before
  // it are older messages' (cleaned up when they ended) or the enclosing message's (cleaned up when
  // it ends), and walking them again for every embedded message of a batch takes time by the square
  // of its length. No message nested in this one erases it.
  std::optional<LookAheadList::iterator> beforeStart;
  ParserStream& stream;
  const ParseCallback* callback;
  ValidationLocation& location;
  int32_t messageSetIndex;

  // What the walk may read next: a state's own settled list when it stands in one state, else
  // `gathered`.
  const Candidates* candidates = &gathered;
  Candidates gathered;
  // On the walk's stack for the messages of most definitions, which have a few dozen states.
  boost::container::small_vector<char, 128> visited;
  std::vector<int32_t> firstStates;
  // What readAhead hands the segment reader: the segments expected next, and the states the walk
  // stands in.
  std::vector<const SegmentDefn*> expectedNext;
  std::vector<int32_t> standingStates;
  std::vector<ParsePath> pending;
  // The name of the segment readPlain read last, and its candidates.
  std::string_view plainName;
  std::pair<Candidates::const_iterator, Candidates::const_iterator> plainRange;
  int32_t currentState = 0;
  // The path of the current state, held by the definitions; {-1} before the first segment.
  static constexpr int32_t kNoPath[] = {-1};
  std::span<const int32_t> currentPath{kNoPath};
  InternalElement* currentElement = nullptr;
};

}  // namespace vantrelia
