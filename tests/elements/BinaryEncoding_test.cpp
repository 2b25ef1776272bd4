#include "elements/BinaryEncoding.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace {

using vantrelia::BinaryEncoding;
using Bytes = std::vector<unsigned char>;
using namespace std::string_view_literals;

constexpr int32_t kEncodings[] = {BinaryEncoding::kBase64, BinaryEncoding::kUuencode, BinaryEncoding::kHexadecimal};

Bytes bytesOf(std::string_view text) { return Bytes(text.begin(), text.end()); }

Bytes allByteValues() {
  Bytes bytes;
  for (int b = 0; b < 256; ++b) bytes.push_back(static_cast<unsigned char>(b));
  return bytes;
}

// The 45 bytes 0 to 44 make one full uuencoded line.
const std::u16string kUuencodedLine = uR"uu(M``$"`P0%!@<("0H+#`T.#Q`1$A,4%187&!D:&QP='A\@(2(C)"4F)R@I*BLL)uu" u"\r\n";

// Known encodings both ways: the RFC 4648 Base64 vectors, uuencoded lines as other encoders
// write them (with "`" for zero), and upper-case hex.
TEST(BinaryEncoding, KnownVectorsEncodeAndDecode) {
  const Bytes all = allByteValues();
  Bytes first45(all.begin(), all.begin() + 45), first46(first45);
  first46.push_back(45);
  struct Case { int32_t type; Bytes bytes; std::u16string text; } cases[] = {
      {BinaryEncoding::kBase64, bytesOf("f"), u"Zg=="},
      {BinaryEncoding::kBase64, bytesOf("fo"), u"Zm8="},
      {BinaryEncoding::kBase64, bytesOf("foo"), u"Zm9v"},
      {BinaryEncoding::kBase64, bytesOf("foob"), u"Zm9vYg=="},
      {BinaryEncoding::kBase64, bytesOf("fooba"), u"Zm9vYmE="},
      {BinaryEncoding::kBase64, bytesOf("foobar"), u"Zm9vYmFy"},
      {BinaryEncoding::kBase64, {0xFB, 0xFF, 0xBF}, u"+/+/"},
      {BinaryEncoding::kUuencode, bytesOf("Cat"), u"#0V%T\r\n"},
      {BinaryEncoding::kUuencode, {0xFF}, u"!_P``\r\n"},
      {BinaryEncoding::kUuencode, {0, 0, 0, 0}, u"$````````\r\n"},
      {BinaryEncoding::kUuencode, first45, kUuencodedLine},
      {BinaryEncoding::kUuencode, first46, kUuencodedLine + u"!+0``\r\n"},
      {BinaryEncoding::kHexadecimal, {0x00, 0x0F, 0xAB, 0xFF}, u"000FABFF"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "case " << &c - cases);
    std::u16string text;
    EXPECT_TRUE(BinaryEncoding::encode(c.type, c.bytes, text));
    EXPECT_EQ(text, c.text);
    Bytes bytes;
    EXPECT_TRUE(BinaryEncoding::decode(c.type, c.text, bytes));
    EXPECT_EQ(bytes, c.bytes);
  }
}

// Every length from 0 to 100 crosses the 3-byte groups and the 45-byte uuencode lines; the
// bytes run through all 256 values. The text's length is checked against each layout.
TEST(BinaryEncoding, EveryLengthRoundTrips) {
  const Bytes all = allByteValues();
  for (int32_t type : kEncodings) {
    for (size_t length = 0; length <= 100; ++length) {
      SCOPED_TRACE(::testing::Message() << "type " << type << ", length " << length);
      Bytes original;
      for (size_t i = 0; i < length; ++i) original.push_back(all[(i * 97 + length) % 256]);
      std::u16string text = u"stale";
      const bool encoded = BinaryEncoding::encode(type, original, text);
      EXPECT_EQ(encoded, length > 0);
      const size_t groups = (length + 2) / 3, lines = (length + 44) / 45;
      const size_t expected = type == BinaryEncoding::kBase64 ? groups * 4
                              : type == BinaryEncoding::kUuencode ? groups * 4 + lines * 3 : length * 2;
      EXPECT_EQ(text.size(), expected);
      Bytes decoded{1, 2};
      EXPECT_EQ(BinaryEncoding::decode(type, text, decoded), length > 0);
      EXPECT_EQ(decoded, original);
    }
    std::u16string text;
    Bytes decoded;
    ASSERT_TRUE(BinaryEncoding::encode(type, all, text));
    ASSERT_TRUE(BinaryEncoding::decode(type, text, decoded));
    EXPECT_EQ(decoded, all);
  }
}

// What each decoder accepts beyond its own output, and what it refuses: an empty `bytes` means
// the text must fail and leave nothing. Views cut from longer text check that a decoder never
// reads past the end, even where the text behind would complete the last group.
TEST(BinaryEncoding, DecodingAcceptsLenientFormsAndRefusesMalformedOnes) {
  constexpr int32_t b64 = BinaryEncoding::kBase64, uu = BinaryEncoding::kUuencode, hex = BinaryEncoding::kHexadecimal;
  struct Case { int32_t type; std::u16string_view text; Bytes bytes = {}; } cases[] = {
      {b64, u"Zh==", bytesOf("f")},  // bits below the last byte are ignored
      {b64, u"Zm9=", bytesOf("fo")},
      {b64, u""}, {b64, u"Zg="}, {b64, u"Zg===="}, {b64, u"Zm9vZ==="}, {b64, u"===="}, {b64, u"Zg==Zm8="},
      {b64, u"Zm=v"}, {b64, u"Zm9v\r\nZm9v"}, {b64, u"Zm 9"}, {b64, u"Zm9\u0176"}, {b64, u"Zm9-"},
      {b64, u"Zm9\0"sv}, {b64, u"Zm9vZm9v"sv.substr(0, 6)},
      {uu, u"#0V%T", bytesOf("Cat")},  // last line end missing
      {uu, u"#0V%T\n!_P``\n", {'C', 'a', 't', 0xFF}},
      {uu, u"#0V%T\r\n`\r\n", bytesOf("Cat")},  // closing zero-length line
      {uu, u"#    \r\n", {0, 0, 0}},            // blank for zero
      {uu, u""}, {uu, u"`\r\n"}, {uu, u"#0V%"}, {uu, u"M0V%T\r\n"}, {uu, u"#0V%Tx#0V%T"}, {uu, u"#0V%T\r\r\n"},
      {uu, u"#0V%a\r\n"}, {uu, u"#0V%\u0154\r\n"}, {uu, u"\u0123"}, {uu, u"\r\n#0V%T"}, {uu, u"#0V%T"sv.substr(0, 4)},
      {hex, u"abCd", {0xAB, 0xCD}},
      {hex, u"ABC", {0xAB}},  // odd last character dropped unread
      {hex, u"AB\u0141", {0xAB}},
      {hex, u"ABCD"sv.substr(0, 3), {0xAB}},
      {hex, u""}, {hex, u"A"}, {hex, u"4G"}, {hex, u"-1"}, {hex, u" 1"}, {hex, u"0x"},
      {hex, u"\u0141\u0141"},  // low bytes read "AA"
      {hex, u"AB\u0130\u0130"},
      {5, u"Zm9v"}, {9, u"AB"},  // not encodings
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "case " << &c - cases);
    Bytes bytes{1, 2, 3};
    EXPECT_EQ(BinaryEncoding::decode(c.type, c.text, bytes), !c.bytes.empty());
    EXPECT_EQ(bytes, c.bytes);
  }
  std::u16string text = u"stale";
  EXPECT_FALSE(BinaryEncoding::encode(5, bytesOf("abc"), text));
  EXPECT_TRUE(text.empty());
}

// Any wide text at all: short random strings mixing each alphabet with line ends, padding and
// wide characters. Nothing may crash, and the answer and the bytes must agree.
TEST(BinaryEncoding, RandomTextNeverBreaksADecoder) {
  const std::u16string pool = u"AZaz09+/=`!#M \r\n-x\u00FF\u0141\u0130\uFFFF";
  std::mt19937 random(20240611);
  for (int32_t type : kEncodings) {
    for (int round = 0; round < 3000; ++round) {
      std::u16string text(random() % 14, u' ');
      for (char16_t& c : text) c = pool[random() % pool.size()];
      Bytes bytes{9};
      const bool decoded = BinaryEncoding::decode(type, text, bytes);
      EXPECT_EQ(decoded, !bytes.empty());
    }
  }
}

}  // namespace
