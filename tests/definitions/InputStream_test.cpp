// The field forms of the definition file, read back from bytes laid out by hand.

#include <gtest/gtest.h>

#include <functional>

#include "compiler/PcfWriter.h"
#include "definitions/PcfMessages.h"
#include "support/DefinitionBytes.h"
#include "support/FailingAllocation.h"
#include "support/TempDir.h"

namespace vantrelia {
namespace {

using compiler::PcfWriter;
using testing::ByteReader;
using testing::invalidFileMessage;

TEST(InputStreamTest, CountTakesOneThreeOrSevenBytes) {
  struct Case { std::vector<uint8_t> bytes; int value; } cases[] = {
      {{0}, 0},
      {{254}, 254},
      {{255, 0x00, 0xFF}, 255},
      {{255, 0xFF, 0xFE}, 65534},
      {{255, 0x00, 0x05}, 5},  // a long form of a small value is still that value
      {{255, 0xFF, 0xFF, 0, 1, 0, 0}, 65536},
      {{255, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}, -1},
  };
  for (const Case& c : cases) {
    std::vector<uint8_t> bytes = c.bytes;
    bytes.push_back(0x7A);  // a marker: the count must consume exactly its own bytes
    ByteReader reader(bytes);
    EXPECT_EQ(reader.file.readCount(), c.value) << "first byte " << int(c.bytes[0]);
    EXPECT_EQ(reader.file.readByte(), 0x7A);
  }
}

TEST(InputStreamTest, NumbersAreMostSignificantByteFirst) {
  PcfWriter w;
  w.u16(0xBEEF).i32(-2).i32(0x01020304).real(-1.5).boolean(true).byte(7);
  ByteReader reader(w.bytes());
  unsigned short u = 0;
  reader.file.read(u);
  EXPECT_EQ(u, 0xBEEF);
  EXPECT_EQ(reader.file.readInt(), -2);
  EXPECT_EQ(reader.file.readInt(), 0x01020304);
  double d = 0;
  reader.file.readDouble(d);
  EXPECT_EQ(d, -1.5);
  bool b = false;
  reader.file.read(b);
  EXPECT_TRUE(b);
  EXPECT_EQ(reader.file.readByte(), 7);
  EXPECT_EQ(std::vector<uint8_t>(w.bytes().begin(), w.bytes().begin() + 6),
            (std::vector<uint8_t>{0xBE, 0xEF, 0xFF, 0xFF, 0xFF, 0xFE}));
}

TEST(InputStreamTest, AnyNonZeroByteIsTrue) {
  ByteReader reader({0, 1, 0x80, 0xFF});
  for (const bool expected : {false, true, true, true}) {
    bool value = !expected;
    reader.file.read(value);
    EXPECT_EQ(value, expected);
  }
}

TEST(InputStreamTest, TextsAreCutAtTheFirstZeroButFullyConsumed) {
  PcfWriter w;
  w.text8(std::string("AB\0CD", 5));
  w.u16(3).u16(u'A').u16(0).u16(u'B');  // text16 "A", 0, "B"
  w.byte(0x7A);
  ByteReader reader(w.bytes());
  std::string narrow;
  reader.file.read(narrow);
  EXPECT_EQ(narrow, "AB");
  kestrel::TRVString<char16_t> wide;
  reader.file.readWide(wide);
  EXPECT_TRUE(wide == u"A");
  EXPECT_EQ(reader.file.readByte(), 0x7A);
}

TEST(InputStreamTest, ByteTextsWidenBySignExtension) {
  PcfWriter w;
  w.text8(std::string("\x80\xE9" "a", 3));
  ByteReader reader(w.bytes());
  std::u16string wide;
  reader.file.read(wide);
  EXPECT_EQ(wide, (std::u16string{char16_t(0xFF80), char16_t(0xFFE9), u'a'}));
}

TEST(InputStreamTest, ValueTextsWidenAtVersion832) {
  PcfWriter w;
  w.textv(u"xy", 831).textv(u"z\u0141", 832);
  ByteReader reader(w.bytes());
  kestrel::TRVString<char16_t> first, second;
  reader.file.readTextV(first, 831);
  reader.file.readTextV(second, 832);
  EXPECT_TRUE(first == u"xy");
  EXPECT_TRUE(second == u"z\u0141");
  EXPECT_EQ(w.size(), size_t{2 + 2 + 2 + 4});
}

TEST(InputStreamTest, EmptyTextIsALengthOfZero) {
  ByteReader reader({0, 0, 0, 0, 0x7A});
  std::string narrow;
  kestrel::TRVString<char16_t> wide(u"old");
  reader.file.read(narrow);
  reader.file.readWide(wide);
  EXPECT_EQ(narrow, "");
  EXPECT_EQ(wide.length(), 0u);
  EXPECT_EQ(reader.file.readByte(), 0x7A);
}

TEST(InputStreamTest, GuidIsThirtyTwoSixteenSixteenThenEightBytes) {
  ByteReader reader({0x01, 0x02, 0x03, 0x04, 0x05, 0x06, 0x07, 0x08, 9, 10, 11, 12, 13, 14, 15, 16});
  Guid guid;
  reader.file.read(guid);
  EXPECT_EQ(guid.data1, 0x01020304u);
  EXPECT_EQ(guid.data2, 0x0506);
  EXPECT_EQ(guid.data3, 0x0708);
  EXPECT_EQ(guid.data4, (std::array<uint8_t, 8>{9, 10, 11, 12, 13, 14, 15, 16}));
}

TEST(InputStreamTest, EveryFormFailsAtTheEndOfInput) {
  struct Case { const char* form; std::function<void(InputStream&)> read; std::vector<uint8_t> tooShort; } cases[] = {
      {"byte", [](InputStream& s) { s.readByte(); }, {}},
      {"i32", [](InputStream& s) { s.readInt(); }, {0, 0, 0}},
      {"u16", [](InputStream& s) { s.readU16(); }, {0}},
      {"double", [](InputStream& s) { double d; s.readDouble(d); }, {0, 0, 0, 0, 0, 0, 0}},
      {"count, 3-byte form", [](InputStream& s) { s.readCount(); }, {255, 1}},
      {"count, 7-byte form", [](InputStream& s) { s.readCount(); }, {255, 0xFF, 0xFF, 0, 0, 0}},
      {"text8 body", [](InputStream& s) { std::string t; s.read(t); }, {0, 3, 'a', 'b'}},
      {"text16 body", [](InputStream& s) { std::u16string t; s.readWide(t); }, {0, 2, 0, 'a', 0}},
  };
  for (const Case& c : cases) {
    ByteReader reader(c.tooShort);
    EXPECT_EQ(invalidFileMessage([&] { c.read(reader.file); }), messages::kUnexpectedEndOfInput) << c.form;
  }
}

TEST(InputStreamTest, ReadsRunAcrossTheBufferBoundary) {
  // A text whose bytes straddle the 32768-byte buffer edge, then a number right behind it.
  const size_t lead = DefinitionFile::kBufferSize - 5;
  PcfWriter w;
  w.raw(std::vector<uint8_t>(lead, 0x11));
  w.text8("boundary").i32(123456);
  ByteReader reader(w.bytes());
  for (size_t i = 0; i < lead; ++i) ASSERT_EQ(reader.file.readByte(), 0x11);
  std::string text;
  reader.file.read(text);
  EXPECT_EQ(text, "boundary");
  EXPECT_EQ(reader.file.readInt(), 123456);
  EXPECT_EQ(invalidFileMessage([&] { reader.file.readByte(); }), messages::kUnexpectedEndOfInput);
}

TEST(InputStreamTest, AFileOfExactlyOneBufferEndsCleanly) {
  for (size_t size : {DefinitionFile::kBufferSize, 2 * DefinitionFile::kBufferSize}) {
    std::vector<uint8_t> bytes(size, 0x22);
    ByteReader reader(bytes);
    std::vector<uint8_t> all(size);
    reader.file.readBytes(all.data(), size);
    EXPECT_EQ(all, bytes);
    EXPECT_EQ(invalidFileMessage([&] { reader.file.readByte(); }), messages::kUnexpectedEndOfInput) << size;
    EXPECT_EQ(invalidFileMessage([&] { reader.file.readByte(); }), messages::kUnexpectedEndOfInput) << "again";
  }
}

// Opening a file makes its stream and its buffer first; without memory for them the reader says
// so in its own words, and a file that isn't there is another text.
TEST(DefinitionFileTest, OpeningFailuresHaveTheirOwnTexts) {
  testing::TempDir dir;
  const std::string path = dir.write("empty.pcf", std::vector<uint8_t>{});
  for (int skipped : {0, 1}) {
    testing::FailingAllocation failing(skipped);
    EXPECT_EQ(invalidFileMessage([&] { DefinitionFile file(path); }), messages::kCouldNotOpenInputFile) << skipped;
    EXPECT_TRUE(failing.fired()) << skipped;
  }
  EXPECT_EQ(invalidFileMessage([&] { DefinitionFile file(path); }), "");
  EXPECT_EQ(invalidFileMessage([&] { DefinitionFile file(dir.path("missing.pcf")); }), messages::kInputFileNotOpened);
  EXPECT_EQ(invalidFileMessage([&] { DefinitionFile file(dir.path("")); }), messages::kInputFileNotOpened) << "a folder";
}

}  // namespace
}  // namespace vantrelia
