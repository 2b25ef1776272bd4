#pragma once
// Turns flat text into segments, one at a time. It looks at the text at the cursor and answers
// which segment of which message set starts there, trying the candidates in a fixed order: the
// segments the state walk expects, then every set's tag map (the set in force first, longest tag
// first), then segments without a tag. Each candidate's own field parser decides; a refused one
// puts the stream back. Text that nothing takes is skipped to the next segment separator.

#include <cstdint>
#include <string>
#include <vector>

#include "definitions/ParseState.h"
#include "parsing/SegmentMatch.h"

namespace vantrelia {

class MessageWarehouseDefn;

class ParseContext;
class ParserStream;
class SegmentDefn;
class ValidationLocation;

class SegmentReader {
 public:
  // `expected`: the segments the walk can take now, in the order of its candidates, or null.
  // `currentStates` and `relaxedTable`: where the walk stands, for the relaxed candidates, or null.
  // `firstGenericOnly`: only at the top of a parse.
  static SegmentMatch readNextSegment(ParseContext& context, ParserStream& stream, ValidationLocation& location,
                                      const std::vector<const SegmentDefn*>* expected,
                                      const std::vector<int32_t>* currentStates, const StateTable* relaxedTable,
                                      bool firstGenericOnly);
  // The segment of set `setIndex` whose tag stands at the cursor, when reading it leaves nothing to
  // choose: the set is in force with its headers behind it, nothing stands before the tag, and
  // the tag names that one segment, which is no header's and has no match list. Whichever
  // candidates the walk expects, the full read takes such a segment whatever its fields hold.
  // Null otherwise.
  static const SegmentDefn* plainSegmentAt(const ParseContext& context, ParserStream& stream, int32_t setIndex);
  // Reads the segment that plainSegmentAt named into `match`, as readNextSegment would.
  static void readPlain(ParseContext& context, ParserStream& stream, ValidationLocation& location,
                        const SegmentDefn& segment, SegmentMatch& match);
  // Puts in force the separators of a segment of set `match.setIndex` (`segmentDefn` may be null):
  // a header seen again opens a new interchange, a set entered opens a nested list, a set returned
  // to takes its list back.
  static void selectSeparators(ParseContext& context, const SegmentDefn* segmentDefn, SegmentMatch& match);
  // The tags of the segments that open a message of some set (MSH, ISA, UNA, UNB and the like):
  // where one stands, text that no segment takes stops being skipped, since a message of another
  // standard may begin there.
  static std::vector<std::u16string> headerTags(const MessageWarehouseDefn& warehouse);
};

}  // namespace vantrelia
