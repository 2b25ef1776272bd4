#pragma once
// Cuts HL7-like text by the shapes of its segments, as a segment parser will: one level for the
// fields of a segment, and one more for each repeat, component and sub-component separator while a
// field is read, with the separator consumed by the cutter once the read says which one it was.
//
// What a level is and how a value is read is the Levels policy's: it has push(index, text),
// pop(index, text) and read(stream, token), so that the bare trie and the separator list are
// measured over the very same walk.

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "bench/Hl7TextGenerator.h"
#include "foundation/Enumerations.h"
#include "parsing/ParserToken.h"
#include "parsing/StringParserStream.h"

namespace vantrelia::bench {

template <typename Levels>
class Hl7Cutter {
 public:
  template <typename... Arguments>
  explicit Hl7Cutter(Arguments&&... arguments) : levels{std::forward<Arguments>(arguments)...} {}

  // Reads the stream to its end; returns a checksum of what was read so nothing is optimised
  // away, or 0 when the cutter lost its place.
  size_t cutAll(StringParserStream& stream) {
    size_t checksum = 0;
    while (!stream.atEnd()) {
      const int32_t before = stream.getRemaining();
      checksum += cutSegment(stream);
      if (stream.getRemaining() == before) return 0;
    }
    return checksum;
  }

 private:
  void readLeaf(StringParserStream& stream, size_t& checksum) {
    token.useView = true;
    levels.read(stream, token);
    checksum += token.characters().size() + static_cast<size_t>(token.separator + 1);
  }

  size_t cutSegment(StringParserStream& stream) {
    size_t checksum = 0;
    levels.push(qxSepField1, u"|");
    readLeaf(stream, checksum);
    const Hl7SegmentShape* shape = Hl7TextGenerator::shapeOf(token.characters());
    size_t field = 0;
    if (shape && shape->tag == u"MSH") {
      // Fields 1 and 2 are the separators themselves, read by count.
      stream.consume(kField);
      stream.readChars(4, token);
      token.separator = qxSepField1;
      field = 2;
    }
    while (token.separator == qxSepField1 && stream.consume(kField)) {
      const Hl7FieldShape simple;
      readField(stream, shape && field < shape->fields.size() ? shape->fields[field] : simple, checksum);
      ++field;
    }
    levels.pop(qxSepField1, u"|");
    stream.consume(kSegment);
    return checksum;
  }

  void readField(StringParserStream& stream, const Hl7FieldShape& shape, size_t& checksum) {
    if (shape.repeats) levels.push(qxSepRepeat, u"~");
    do {
      if (shape.components > 1) {
        levels.push(qxSepField2, u"^");
        do {
          if (shape.subcomponents) {
            levels.push(qxSepField3, u"&");
            do readLeaf(stream, checksum);
            while (token.separator == qxSepField3 && stream.consume(kSubcomponent));
            levels.pop(qxSepField3, u"&");
          } else {
            readLeaf(stream, checksum);
          }
        } while (token.separator == qxSepField2 && stream.consume(kComponent));
        levels.pop(qxSepField2, u"^");
      } else {
        readLeaf(stream, checksum);
      }
    } while (shape.repeats && token.separator == qxSepRepeat && stream.consume(kRepeat));
    if (shape.repeats) levels.pop(qxSepRepeat, u"~");
  }

  const std::u16string kSegment = u"\r";
  const std::u16string kField = u"|";
  const std::u16string kComponent = u"^";
  const std::u16string kSubcomponent = u"&";
  const std::u16string kRepeat = u"~";
  Levels levels;
  ParserToken token;
};

}  // namespace vantrelia::bench
