// The byte writer that tests and the compiler lay files out with.

#include <gtest/gtest.h>

#include <stdexcept>

#include "compiler/PcfWriter.h"

namespace vantrelia::compiler {
namespace {

using Bytes = std::vector<uint8_t>;

TEST(PcfWriterTest, CountPicksTheShortestFormOrTheOneAskedFor) {
  using F = PcfWriter::CountForm;
  struct Case {
    int32_t value;
    F form;
    Bytes bytes;
  } cases[] = {
      {0, F::Shortest, {0}},
      {254, F::Shortest, {254}},
      {255, F::Shortest, {255, 0x00, 0xFF}},
      {65534, F::Shortest, {255, 0xFF, 0xFE}},
      {65535, F::Shortest, {255, 0xFF, 0xFF, 0x00, 0x00, 0xFF, 0xFF}},
      {65536, F::Shortest, {255, 0xFF, 0xFF, 0x00, 0x01, 0x00, 0x00}},
      {-1, F::Shortest, {255, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF, 0xFF}},
      {3, F::ThreeBytes, {255, 0x00, 0x03}},
      {3, F::SevenBytes, {255, 0xFF, 0xFF, 0, 0, 0, 3}},
  };
  for (const Case& c : cases) EXPECT_EQ(PcfWriter().count(c.value, c.form).bytes(), c.bytes) << c.value;
  EXPECT_THROW(PcfWriter().count(255, F::OneByte), std::invalid_argument);
  EXPECT_THROW(PcfWriter().count(65535, F::ThreeBytes), std::invalid_argument);
}

TEST(PcfWriterTest, ByteTextsCarryOnlyUnitsThatSurviveSignExtension) {
  struct Case {
    char16_t unit;
    bool fits;
  } cases[] = {{0x41, true}, {0x7F, true}, {0x80, false}, {0xE9, false}, {0x141, false}, {0xFF7F, false}, {0xFF80, true}, {0xFFFF, true}};
  for (const Case& c : cases) {
    const std::u16string text(1, c.unit);
    EXPECT_EQ(PcfWriter::fitsText8w(text), c.fits) << std::hex << int(c.unit);
    if (c.fits) {
      EXPECT_EQ(PcfWriter().text8w(text).bytes(), (Bytes{0, 1, static_cast<uint8_t>(c.unit & 0xFF)}));
    } else {
      EXPECT_THROW(PcfWriter().text8w(text), std::invalid_argument);
    }
  }
}

TEST(PcfWriterTest, TextsAreLengthThenUnits) {
  EXPECT_EQ(PcfWriter().text8("ab").bytes(), (Bytes{0, 2, 'a', 'b'}));
  EXPECT_EQ(PcfWriter().text16(u"a\u0141").bytes(), (Bytes{0, 2, 0, 'a', 0x01, 0x41}));
  EXPECT_EQ(PcfWriter().textv(u"a", 831).bytes(), (Bytes{0, 1, 'a'}));
  EXPECT_EQ(PcfWriter().textv(u"a", 832).bytes(), (Bytes{0, 1, 0, 'a'}));
  EXPECT_EQ(PcfWriter().real(1.0).bytes(), (Bytes{0x3F, 0xF0, 0, 0, 0, 0, 0, 0}));
}

}  // namespace
}  // namespace vantrelia::compiler
