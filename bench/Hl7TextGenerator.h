#pragma once
// A deterministic source of HL7-like wire text for benchmarks: result messages of MSH, PID, PV1,
// ORC, OBR, OBX and NTE segments with realistic field lengths, segments ended by "\r", fields by
// "|", components by "^", repeats by "~", sub-components by "&", and now and then an escape
// sequence such as "\F\" inside free text. The same seed gives the same text.
//
// The shapes of the segments are public, so that a reader can cut the text at the levels a
// definition would give each field.

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vantrelia::bench {

// What the leaves of a field look like.
enum class Hl7Content { Empty, SetId, Identifier, Word, Name, Date, Timestamp, Code, Number, Text };

struct Hl7FieldShape {
  Hl7Content content = Hl7Content::Empty;
  bool repeats = false;        // several items split by "~"
  int components = 1;          // above 1: a composite split by "^"
  bool subcomponents = false;  // some components are split by "&"
};

struct Hl7SegmentShape {
  std::u16string_view tag;
  // Field 1 is fields[0]. For MSH, fields 1 and 2 are the separators themselves.
  std::vector<Hl7FieldShape> fields;
};

class Hl7TextGenerator {
 public:
  explicit Hl7TextGenerator(uint64_t seed = 0x5EED5EED2024ull) : state(seed) {}

  // Whole messages, appended until the text has at least characters characters.
  std::u16string generate(size_t characters);

  // The shape of the segment with that tag, or null.
  static const Hl7SegmentShape* shapeOf(std::u16string_view tag);

 private:
  uint64_t next();
  int between(int low, int high);  // inclusive
  void appendMessage(std::u16string& out);
  void appendSegment(std::u16string& out, const Hl7SegmentShape& shape, int setId);
  void appendLeaf(std::u16string& out, Hl7Content content, int setId);
  void appendLetters(std::u16string& out, int count, bool upper);
  void appendDigits(std::u16string& out, int count);
  void appendText(std::u16string& out);

  uint64_t state;
};

}  // namespace vantrelia::bench
