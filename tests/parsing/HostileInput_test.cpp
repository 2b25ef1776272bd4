// Shapes of text a partner may send by mistake or on purpose: very many tiny segments, one huge
// segment, thousands of repeats, escapes and quotes left open, and headers that declare odd
// separators. Each is read to its end without fault, nothing of it is lost, and what the tree holds
// is what the text said. (How time grows with the size of such inputs is measured by the
// benchmarks, not here.)

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "elements/MessageElement.h"
#include "elements/MessageImpl.h"
#include "foundation/MessageFactory.h"
#include "parsing/MessageReader.h"
#include "fuzz/MessageInput.h"
#include "support/CompilerTesting.h"
#include "support/ElementTesting.h"
#include "support/ReadFile.h"

namespace vantrelia::testing {
namespace {

const std::string kHeader = "MSH|^~\\&|SEND|FAC|RECV|FAC|20261123||ADT^A04|1|P|2.5\r";
const std::string kPatient = "PID|1||123^^^H||DOE^JANE\r";

std::string repeated(const std::string& piece, size_t count) {
  std::string text;
  text.reserve(piece.size() * count);
  for (size_t i = 0; i < count; ++i) text += piece;
  return text;
}

// Read by the batch reader, written back both ways: "" when nothing was lost or thrown.
std::string readsCleanly(const std::string& text) {
  return fuzz::parseAndWrite(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

class HostileInputTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    factory = new MessageFactory();
    compileAndLoad(*factory, readFile(std::string(VANTRELIA_SOURCE_DIR) + "/bundled/default.yaml"));
  }
  static void TearDownTestSuite() {
    delete factory;
    factory = nullptr;
  }
  static std::unique_ptr<MessageElement> parse(const std::string& text) { return factory->Parse(wide(text).c_str()); }

  static MessageFactory* factory;
};

MessageFactory* HostileInputTest::factory = nullptr;

TEST_F(HostileInputTest, ManyTinySegmentsAreAllKept) {
  constexpr size_t kCount = 2000;
  // Segments of a tag no set knows: each one stays in the message's text with its finding.
  const std::string text = kHeader + kPatient + repeated("ZZ1|x\r", kCount);
  EXPECT_EQ(readsCleanly(text), "");
  auto message = parse(text);
  ASSERT_NE(message, nullptr);
  size_t unknownText = 0;
  static_cast<MessageImpl&>(*message).getRecordedErrors().forEach([&](MessageElement*, const ValidationError& error) {
    if (error.getErrorNumber() == 1003) ++unknownText;
  });
  EXPECT_EQ(unknownText, kCount);
  // Segments without any tag at all: the text between separators.
  EXPECT_EQ(readsCleanly(kHeader + repeated("\r", kCount)), "");
  EXPECT_EQ(readsCleanly(kHeader + repeated("|", kCount) + "\r"), "");
}

TEST_F(HostileInputTest, OneHugeSegmentKeepsItsValue) {
  const std::string name(2'000'000, 'N');
  const std::string text = kHeader + "PID|1||123^^^H||" + name + "^JANE\r";
  EXPECT_EQ(readsCleanly(text), "");
  auto message = parse(text);
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(narrow(message->getElementAt("PID/PatientName[0]/FamilyName")->getValue()), name);
}

TEST_F(HostileInputTest, ThousandsOfRepeatsAreEachAnItem) {
  constexpr size_t kCount = 5000;
  const std::string text = kHeader + "PID|1||" + repeated("7^^^H~", kCount) + "8^^^H||DOE^JANE\r";
  EXPECT_EQ(readsCleanly(text), "");
  auto message = parse(text);
  ASSERT_NE(message, nullptr);
  MessageElement* identifiers = message->getElementAt("PID/PatientIdentifierList");
  ASSERT_NE(identifiers, nullptr);
  EXPECT_EQ(identifiers->getElementCount(), static_cast<int>(kCount + 1));
  EXPECT_EQ(narrow(message->getElementAt("PID/PatientIdentifierList[5000]/IDNumber")->getValue()), "8");
}

// Escapes, releases and quotes that never close, at the end of a field, a segment and the text.
TEST_F(HostileInputTest, OpenEscapesAndReleasesEndWithTheText) {
  for (const std::string& text : {
           kHeader + "PID|1||\\",
           kHeader + "PID|1||\\X4142",
           kHeader + "PID|1||\\H\\DOE\\N|\\E\\\\E\r",
           kHeader + "PID|1||" + repeated("\\", 10000) + "\r",
           std::string("UNB+UNOC:3+S+R+261123:1015+1'UNH+1+ORDERS:D:96A:UN'BGM+220+?"),
           std::string("UNB+UNOC:3+S+R+261123:1015+1'UNH+1+ORDERS:D:96A:UN'BGM+220+\"unclosed"),
           "UNA:+.? 'UNB+UNOC:3+S+R+261123:1015+1'UNH+1+ORDERS:D:96A:UN'BGM+220+" + repeated("?", 9999),
       }) {
    SCOPED_TRACE(text.substr(0, 80));
    EXPECT_EQ(readsCleanly(text), "");
  }
}

// Headers whose separators are odd: the same character twice, letters, the segment terminator
// among them, a header cut short.
TEST_F(HostileInputTest, HeadersDeclaringOddSeparatorsAreReadToTheEnd) {
  for (const std::string& text : {
           std::string("MSH||||||ADT\rPID|1\r"),
           std::string("MSHA^~\\&ASENDAFAC\rPIDA1\r"),
           std::string("MSH|\r~\\&|SEND\rPID|1\r"),
           std::string("MSH|^^^^|SEND\rPID|1|a^b\r"),
           std::string("MSH"),
           std::string("MSH|"),
           std::string("ISA*00*          *00*          *ZZ*S              *ZZ*R              *261123*1015*^*00501*000000001*0*P*~~"),
           std::string("ISA*00*          *00*          *ZZ*S              *ZZ*R              *261123*1015*^*00501*000000001*0*P*"),
           std::string("ISA~00~"),
           std::string("ISA**********************************"),
           std::string("UNA::::::UNB:UNOC"),
           std::string("UNA"),
           std::string("UNA:+.? "),
           // The terminator also releases, or also separates components.
           std::string("UNA:+.# #UNB+UNOC:3+A:14+B:14+261123:1015+R1#UNH+1+ORDERS:D:96A:UN#BGM+220+PO##1+9#UNT+3+1#"),
           std::string("UNA#+.? #UNB+UNOC#3+A#14+B#14+261123#1015+R1#UNH+1+ORDERS#D#96A#UN#BGM+220+PO1+9#UNT+3+1#"),
       }) {
    SCOPED_TRACE(text);
    EXPECT_EQ(readsCleanly(text), "");
  }
}

// Text packed with header tags: each tag is a place where a message may begin, and where the
// segment separators are missing each attempt reads on to the same far end. All of it comes to
// the host, as skipped text or as the messages hidden in it.
TEST_F(HostileInputTest, TextPackedWithHeadersIsHandedOverWhole) {
  const std::string adt = readFile(std::string(VANTRELIA_SOURCE_DIR) + "/examples/adt-a04.hl7");
  const std::string orders = readFile(std::string(VANTRELIA_SOURCE_DIR) + "/examples/orders-d96a.edi");
  struct Case {
    std::string text;
    std::vector<std::string> messages;  // the messages the reader finds, in order
  };
  const Case cases[] = {
      {repeated("MSH|^~\\&|A|", 3000), {}},
      {repeated("MSH|x|UNB+y+ISA*z*", 2000), {}},
      {repeated("UNB+UNOA:1+A+B+X+", 2000), {}},
      {repeated("UNB+UNOA:1+A+B+X'", 2000), {}},
      // A good message behind the segment that all those headers are part of.
      {repeated("MSH|x|", 3000) + "\r" + adt, {"ADT_A04"}},
      // A good message behind a few broken headers, inside the same segment.
      {repeated("MSH|x|", 3) + orders, {"ORDERS"}},
      // Behind many broken headers inside the same segment, the rest of that segment is junk, a
      // good message in it too: it comes to the host as skipped text, not as a message.
      {repeated("MSH|x|", 20) + orders, {}},
      // Segments that may open a message, and no header that names its type anywhere behind them.
      {repeated("PID|1\rPV1|1|I UNB+x\r", 2000) + adt, {"ADT_A04"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text.substr(0, 60));
    EXPECT_EQ(readsCleanly(c.text), "");
    const std::u16string text = wide(c.text);
    MessageReader reader(factory->getWarehouse(), text);
    MessageReader::Item item;
    std::vector<std::string> found;
    while (reader.next(item)) {
      if (item.message) found.push_back(item.message->getName());
    }
    EXPECT_EQ(found, c.messages);
  }
}

}  // namespace
}  // namespace vantrelia::testing
