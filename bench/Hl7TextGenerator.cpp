#include "bench/Hl7TextGenerator.h"

namespace vantrelia::bench {

namespace {

using C = Hl7Content;

Hl7FieldShape primitive(Hl7Content content) { return {content, false, 1, false}; }
Hl7FieldShape composite(Hl7Content content, int components, bool subcomponents = false) {
  return {content, false, components, subcomponents};
}
Hl7FieldShape repeating(Hl7FieldShape shape) {
  shape.repeats = true;
  return shape;
}
const Hl7FieldShape kEmpty = primitive(C::Empty);

const std::vector<Hl7SegmentShape>& segmentShapes() {
  static const std::vector<Hl7SegmentShape> shapes = {
      {u"MSH",
       {kEmpty, kEmpty, primitive(C::Word), primitive(C::Word), primitive(C::Word),
        primitive(C::Word), primitive(C::Timestamp), kEmpty, composite(C::Code, 3),
        primitive(C::Identifier), primitive(C::Code), primitive(C::Code)}},
      {u"PID",
       {primitive(C::SetId), kEmpty, repeating(composite(C::Identifier, 5, true)), kEmpty,
        composite(C::Name, 7), composite(C::Name, 2), primitive(C::Date), primitive(C::Code), kEmpty,
        composite(C::Code, 3), repeating(composite(C::Word, 6)), kEmpty,
        repeating(composite(C::Number, 7)), kEmpty, kEmpty, primitive(C::Code), kEmpty,
        composite(C::Identifier, 4, true)}},
      {u"PV1",
       {primitive(C::SetId), primitive(C::Code), composite(C::Word, 4, true), kEmpty, kEmpty, kEmpty,
        repeating(composite(C::Name, 6)), kEmpty, kEmpty, primitive(C::Code), kEmpty, kEmpty,
        kEmpty, kEmpty, kEmpty, kEmpty, kEmpty, primitive(C::Code), composite(C::Identifier, 4)}},
      {u"ORC",
       {primitive(C::Code), composite(C::Identifier, 2), composite(C::Identifier, 2), kEmpty,
        primitive(C::Code), kEmpty, kEmpty, kEmpty, primitive(C::Timestamp), kEmpty, kEmpty,
        repeating(composite(C::Name, 6))}},
      {u"OBR",
       {primitive(C::SetId), composite(C::Identifier, 2), composite(C::Identifier, 2),
        composite(C::Word, 3), kEmpty, kEmpty, primitive(C::Timestamp), kEmpty, kEmpty, kEmpty,
        kEmpty, kEmpty, kEmpty, kEmpty, kEmpty, repeating(composite(C::Name, 6)), kEmpty, kEmpty,
        kEmpty, kEmpty, kEmpty, primitive(C::Timestamp), kEmpty, kEmpty, primitive(C::Code)}},
      {u"OBX",
       {primitive(C::SetId), primitive(C::Code), composite(C::Word, 3), kEmpty,
        primitive(C::Number), composite(C::Code, 3), primitive(C::Word), primitive(C::Code), kEmpty,
        kEmpty, primitive(C::Code), kEmpty, kEmpty, primitive(C::Timestamp)}},
      {u"NTE", {primitive(C::SetId), primitive(C::Code), primitive(C::Text)}},
  };
  return shapes;
}

const char16_t* const kEscapes[] = {u"\\F\\", u"\\S\\", u"\\T\\", u"\\R\\", u"\\E\\"};

}  // namespace

const Hl7SegmentShape* Hl7TextGenerator::shapeOf(std::u16string_view tag) {
  for (const Hl7SegmentShape& shape : segmentShapes()) {
    if (shape.tag == tag) return &shape;
  }
  return nullptr;
}

// splitmix64: small, fast and the same on every platform.
uint64_t Hl7TextGenerator::next() {
  uint64_t z = (state += 0x9E3779B97F4A7C15ull);
  z = (z ^ (z >> 30)) * 0xBF58476D1CE4E5B9ull;
  z = (z ^ (z >> 27)) * 0x94D049BB133111EBull;
  return z ^ (z >> 31);
}

int Hl7TextGenerator::between(int low, int high) {
  return low + static_cast<int>(next() % static_cast<uint64_t>(high - low + 1));
}

std::u16string Hl7TextGenerator::generate(size_t characters) {
  std::u16string out;
  out.reserve(characters + 4096);
  while (out.size() < characters) appendMessage(out);
  return out;
}

void Hl7TextGenerator::appendMessage(std::u16string& out) {
  for (const char16_t* tag : {u"MSH", u"PID", u"PV1", u"ORC", u"OBR"}) {
    appendSegment(out, *shapeOf(tag), 1);
  }
  const int results = between(3, 10);
  for (int i = 1; i <= results; ++i) {
    appendSegment(out, *shapeOf(u"OBX"), i);
    if (between(1, 10) <= 3) appendSegment(out, *shapeOf(u"NTE"), 1);
  }
}

void Hl7TextGenerator::appendSegment(std::u16string& out, const Hl7SegmentShape& shape, int setId) {
  out += shape.tag;
  size_t field = 0;
  if (shape.tag == u"MSH") {
    out += u"|^~\\&";
    field = 2;
  }
  for (; field < shape.fields.size(); ++field) {
    out += u'|';
    const Hl7FieldShape& f = shape.fields[field];
    const int items = f.repeats ? (between(1, 10) <= 7 ? 1 : 2) : 1;
    for (int item = 0; item < items; ++item) {
      if (item) out += u'~';
      for (int component = 0; component < f.components; ++component) {
        if (component) out += u'^';
        // Composites leave some components empty, as real ones do.
        if (component && between(1, 4) == 1) continue;
        if (f.subcomponents && component >= 2 && between(1, 3) == 1) {
          appendLeaf(out, Hl7Content::Word, setId);
          out += u'&';
          appendLeaf(out, Hl7Content::Identifier, setId);
          out += u'&';
          appendLeaf(out, Hl7Content::Code, setId);
        } else {
          appendLeaf(out, f.content, setId);
        }
      }
    }
  }
  out += u'\r';
}

void Hl7TextGenerator::appendLeaf(std::u16string& out, Hl7Content content, int setId) {
  switch (content) {
    case C::Empty:
      break;
    case C::SetId:
      if (setId >= 10) out += static_cast<char16_t>(u'0' + setId / 10 % 10);
      out += static_cast<char16_t>(u'0' + setId % 10);
      break;
    case C::Identifier:
      appendDigits(out, between(6, 10));
      break;
    case C::Word:
      appendLetters(out, between(3, 10), true);
      break;
    case C::Name:
      appendLetters(out, 1, true);
      appendLetters(out, between(2, 11), false);
      break;
    case C::Date:
      out += u"19";
      appendDigits(out, 6);
      break;
    case C::Timestamp:
      out += u"2024";
      appendDigits(out, 10);
      break;
    case C::Code:
      appendLetters(out, between(1, 3), true);
      break;
    case C::Number:
      appendDigits(out, between(1, 4));
      if (between(0, 1)) {
        out += u'.';
        appendDigits(out, between(1, 2));
      }
      break;
    case C::Text:
      appendText(out);
      break;
  }
}

void Hl7TextGenerator::appendLetters(std::u16string& out, int count, bool upper) {
  const char16_t base = upper ? u'A' : u'a';
  for (int i = 0; i < count; ++i) out += static_cast<char16_t>(base + between(0, 25));
}

void Hl7TextGenerator::appendDigits(std::u16string& out, int count) {
  for (int i = 0; i < count; ++i) out += static_cast<char16_t>(u'0' + between(0, 9));
}

void Hl7TextGenerator::appendText(std::u16string& out) {
  const int words = between(4, 16);
  for (int i = 0; i < words; ++i) {
    if (i) out += u' ';
    // About one text in three carries an escaped separator.
    if (between(1, 3 * words) == 1) {
      out += kEscapes[between(0, 4)];
      continue;
    }
    appendLetters(out, between(2, 9), false);
  }
  out += u'.';
}

}  // namespace vantrelia::bench
