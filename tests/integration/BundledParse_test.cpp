// The bundled default against messages of its standards, as a host parses them: the right set and
// message, named fields, separators taken from the message's own header, and the text written back.

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

#include "elements/HeaderReplay.h"
#include "elements/InternalElement.h"
#include "elements/MessageImpl.h"
#include "elements/SegmentImplBase.h"
#include "foundation/MessageFactory.h"
#include "parsing/MessageReader.h"
#include "parsing/SeparatorList.h"
#include "support/CompilerTesting.h"
#include "support/ElementTesting.h"

namespace vantrelia::testing {
namespace {

std::string readBundledSource(const std::string& relative) {
  std::ifstream file(std::string(VANTRELIA_SOURCE_DIR) + "/" + relative, std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

class BundledParseTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    factory = new MessageFactory();
    compileAndLoad(*factory, readBundledSource("bundled/default.yaml"));
  }
  static void TearDownTestSuite() {
    delete factory;
    factory = nullptr;
  }
  static std::unique_ptr<MessageElement> parse(const std::string& text) { return factory->Parse(wide(text).c_str()); }
  static std::string value(MessageElement& message, const char* path) {
    return narrow(message.getElementAt(path)->getValue());
  }

  static MessageFactory* factory;
};

MessageFactory* BundledParseTest::factory = nullptr;

TEST_F(BundledParseTest, HL7AdmissionTakesItsNamedFields) {
  const std::string text = readBundledSource("examples/adt-a04.hl7");
  auto message = parse(text);
  ASSERT_NE(message, nullptr);
  EXPECT_STREQ(message->getName(), "ADT_A04");
  EXPECT_EQ(value(*message, "PID/PatientName[0]/FamilyName"), "DOE");
  EXPECT_EQ(value(*message, "PID/PatientName[0]/GivenName"), "JANE");
  EXPECT_EQ(value(*message, "MSH/MessageType/TriggerEvent"), "A04");
  EXPECT_EQ(narrow(message->getEncodedValue()), text);
}

TEST_F(BundledParseTest, X12EligibilityInquiryTakesItsLoops) {
  std::string text = readBundledSource("examples/eligibility-270.x12");
  auto message = parse(text);
  ASSERT_NE(message, nullptr);
  EXPECT_STREQ(message->getName(), "270");
  EXPECT_EQ(value(*message, "ISA/SenderId"), "SUBMITTER");
  EXPECT_EQ(value(*message, "LOOP_2000[1]/LOOP_2100/NM1/LastOrOrganizationName"), "DOE");
  text.pop_back();  // the line end after the last segment is no part of the message
  EXPECT_EQ(narrow(message->getEncodedValue()), text);
}

TEST_F(BundledParseTest, EdifactOrderTakesItsParties) {
  std::string text = readBundledSource("examples/orders-d96a.edi");
  auto message = parse(text);
  ASSERT_NE(message, nullptr);
  EXPECT_STREQ(message->getName(), "ORDERS");
  EXPECT_EQ(value(*message, "MESSAGE/PARTY[0]/NAD/PartyQualifier"), "BY");
  text.pop_back();
  EXPECT_EQ(narrow(message->getEncodedValue()), text);
}

// The NCPDP set of the default holds a subset of the standard's segments, enough for the billing
// request written for the standard's own definition.
TEST_F(BundledParseTest, NcpdpBillingTakesItsTaggedFields) {
  const std::string text = readBundledSource("tests/data/standards/ncpdp-b1.ncpdp");
  struct Case {
    const char* path;
    const char* value;
  };
  const Case cases[] = {
      {"HEADER/BinNumber", "610144"},
      {"PATIENT/PatientLastName", "LINDQVIST"},
      {"INSURANCE/CardholderId", "GLH448120937"},
      {"TRANSACTION[0]/CLAIM/ProductServiceId", "00378180110"},
      {"TRANSACTION[0]/PRESCRIBER/PrescriberId", "1366002937"},
      {"TRANSACTION[0]/PRICING/OtherAmountClaimedSubmittedCount", "2"},
      {"TRANSACTION[0]/PRICING/OtherAmountClaimedSubmitted[0]", "5{"},
      {"TRANSACTION[0]/PRICING/BasisOfCostDetermination", "01"},
  };
  auto message = parse(text);
  ASSERT_NE(message, nullptr);
  EXPECT_STREQ(message->getName(), "B1");
  for (const Case& c : cases) EXPECT_EQ(value(*message, c.path), c.value) << c.path;
  // Written by the tree and read again, the fields keep their values.
  auto again = parse(narrow(message->getEncodedValue()));
  ASSERT_NE(again, nullptr);
  for (const Case& c : cases) EXPECT_EQ(value(*again, c.path), c.value) << c.path;
}

TEST_F(BundledParseTest, OtherDelimitersAreReadFromTheHeaders) {
  struct Case {
    const char* file;
    const char* message;
    const char* path;
    const char* value;
  };
  const Case cases[] = {
      {"fuzz/corpus/messages/x12-other-delimiters.x12", "270", "LOOP_2000[1]/LOOP_2100/NM1/LastOrOrganizationName", "DOE"},
      {"fuzz/corpus/messages/edifact-other-delimiters.edi", "ORDERS", "MESSAGE/BGM/DocumentMessageNumber", "PO#1"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.file);
    const std::string text = readBundledSource(c.file);
    auto message = parse(text);
    ASSERT_NE(message, nullptr);
    EXPECT_STREQ(message->getName(), c.message);
    EXPECT_EQ(value(*message, c.path), c.value);
    EXPECT_EQ(narrow(message->getEncodedValue()), text);
  }
}

TEST_F(BundledParseTest, EachHl7MessageKeepsItsOwnDelimiters) {
  const std::u16string text = wide(readBundledSource("fuzz/corpus/messages/hl7-two-delimiters.hl7"));
  MessageReader reader(factory->getWarehouse(), text);
  MessageReader::Item item;
  std::vector<std::string> seen;
  while (reader.next(item)) {
    if (!item.message) {
      seen.push_back("skipped");
      continue;
    }
    seen.push_back(std::string(item.message->getName()) + " " + value(*item.message, "PID/PatientName[0]/FamilyName"));
    // Written back with the delimiters it came with.
    EXPECT_EQ(narrow(item.message->getEncodedValue()),
              narrow(text.substr(static_cast<size_t>(item.offset), static_cast<size_t>(item.length))));
  }
  EXPECT_EQ(seen, (std::vector<std::string>{"skipped", "ADT_A08 DOE", "ADT_A01 ROE"}));
}

// HL7 writes a separator that stands in data as an escape sequence of its escape character: read,
// each is the separator again, whatever characters the header chose, and written, the sequence
// comes back. An escape that names no separator (a format, say) is read as it stands; written, its
// escape characters are escaped in turn, so that reading the text again gives the same value.
TEST_F(BundledParseTest, Hl7EscapeSequencesStandForTheirSeparators) {
  struct Case {
    std::string header;
    std::string name;     // as it stands in PID-5.1
    std::string read;     // the value read
    std::string written;  // PID-5.1 written back
  };
  const Case cases[] = {
      {"MSH|^~\\&|", "O\\F\\B\\S\\C\\T\\D\\R\\E\\E\\F", "O|B^C&D~E\\F",
       "O\\F\\B\\S\\C\\T\\D\\R\\E\\E\\F"},
      {"MSH#!@$%#", "O$F$B$S$C$T$D$R$E$E$F", "O#B!C%D@E$F", "O$F$B$S$C$T$D$R$E$E$F"},
      {"MSH|^~\\&|", "O\\H\\BOLD", "O\\H\\BOLD", "O\\E\\H\\E\\BOLD"},
  };
  for (const Case& c : cases) {
    const char f = c.header[3];
    const char s = c.header[4];
    const auto textWith = [&](const std::string& name) {
      const std::string header = c.header + "A" + f + "FAC" + f + "C" + f + "D" + f + "2026" + f + f + "ADT" + s + "A01" + f +
                                 "1" + f + "P" + f + "2.5\r";
      return header + "EVN" + f + "A01" + f + "2026\rPID" + f + "1" + f + f + "7" + f + f + name + s + "J\rPV1" + f + "1" + f +
             "I\r";
    };
    auto message = parse(textWith(c.name));
    ASSERT_NE(message, nullptr) << c.header;
    EXPECT_EQ(value(*message, "PID/PatientName[0]/FamilyName"), c.read) << c.header;
    EXPECT_EQ(value(*message, "PID/PatientName[0]/GivenName"), "J") << c.header;
    EXPECT_EQ(narrow(message->getEncodedValue()), textWith(c.written)) << c.header;
  }
}

// In formatted text (OBX-5, NTE-3) a sequence between two escape characters that names no separator
// is a formatting command: read and written as it stands, in whatever escape character the header
// chose, also when the segment is written field by field. A lone escape character still goes out
// as its sequence, and so does one that would otherwise be read as a separator's sequence.
TEST_F(BundledParseTest, Hl7FormattingCommandsInFormattedTextGoOutAsTheyCame) {
  struct Case {
    std::string header;
    std::string wire;     // OBX-5 as it stands in the text
    std::string read;     // the value read
    std::string written;  // OBX-5 written back, when not the wire
  };
  const Case cases[] = {
      {"MSH|^~\\&|", "Line one\\.br\\Line \\H\\two\\N\\ end\\X0D0A\\", "Line one\\.br\\Line \\H\\two\\N\\ end\\X0D0A\\", ""},
      {"MSH#!@$%#", "a$.br$b$F$c", "a$.br$b#c", ""},
      {"MSH|^~\\&|", "a\\F\\b\\E\\c", "a|b\\c", ""},
      {"MSH|^~\\&|", "\\E\\F\\E\\", "\\F\\", ""},
      {"MSH|^~\\&|", "x\\E\\\\E\\y", "x\\\\y", ""},
      // Two escaped escape characters around plain text read as a formatting command would: the
      // value can't tell them apart, and goes out in the shorter form.
      {"MSH|^~\\&|", "C:\\E\\temp\\E\\f", "C:\\temp\\f", "C:\\temp\\f"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.wire);
    const char f = c.header[3];
    const char s = c.header[4];
    const auto textWith = [&](const std::string& observation) {
      return c.header + "A" + f + "FAC" + f + "C" + f + "D" + f + "2026" + f + f + "ADT" + s + "A01" + f + "1" + f + "P" +
             f + "2.5\rEVN" + f + "A01" + f + "2026\rPID" + f + "1" + f + f + "7" + f + f + "DOE" + s + "J\rPV1" + f +
             "1" + f + "I\rOBX" + f + "1" + f + "FT" + f + "RPT" + f + f + observation + f + f + f + f + f + f + "F\rNTE" +
             f + "1" + f + f + observation + "\r";
    };
    auto message = parse(textWith(c.wire));
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(value(*message, "OBSERVATION[0]/OBX/ObservationValue[0]"), c.read);
    EXPECT_EQ(value(*message, "OBSERVATION[0]/NTE:2[0]/Comment[0]"), c.read);
    const std::string expected = textWith(c.written.empty() ? c.wire : c.written);
    EXPECT_EQ(narrow(message->getEncodedValue()), expected);
    // A changed segment is written field by field: the same text.
    message->getElementAt("OBSERVATION[0]/OBX/SetId")->setValue(u"1");
    EXPECT_EQ(narrow(message->getEncodedValue()), expected);
  }
}

// Whatever a host sets is what reading the written message gives back, and text read from the wire
// is written so that it reads the same again: values made of separators, escape or release
// characters and the letters of escape sequences, in HL7 formatted and plain text and in EDIFACT.
TEST_F(BundledParseTest, AnyValueReadsBackAsItWasSetOrRead) {
  const std::string hl7 = "MSH|^~\\&|A|FAC|C|D|2026||ADT^A01|1|P|2.5\rEVN|A01|2026\rPID|1||7^@||@^J\rPV1|1|I\r"
                          "OBX|1|FT|RPT||@||||||F\r";
  const std::string edifact = readBundledSource("examples/orders-d96a.edi");
  const struct {
    std::string text;  // '@' stands where the value goes
    const char* path;
    std::string alphabet;
  } cases[] = {
      {hl7, "OBSERVATION[0]/OBX/ObservationValue[0]", "ab.\\|^~&HEFSTRX0"},
      {hl7, "PID/PatientName[0]/FamilyName", "ab.\\|^~&HEFSTRX0"},
      {hl7, "PID/PatientIdentifierList[0]/CheckDigit", "ab.\\|^~&HEFSTRX0"},
      {edifact.substr(0, edifact.find("PO-4711")) + "@" + edifact.substr(edifact.find("PO-4711") + 7),
       "MESSAGE/BGM/DocumentMessageNumber", "ab?+:'. "},
      {edifact.substr(0, edifact.find("5412345000013")) + "@" + edifact.substr(edifact.find("5412345000013") + 13),
       "MESSAGE/PARTY[0]/NAD/PartyIdentificationDetails/PartyIdIdentification", "ab?+:'. "},
  };
  uint32_t state = 12345;
  const auto next = [&state] {
    state = state * 1103515245u + 12345u;
    return state >> 16;
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.path);
    const auto textWith = [&](const std::string& value) {
      std::string text = c.text;
      for (size_t at = text.find('@'); at != std::string::npos; at = text.find('@', at + value.size())) {
        text.replace(at, 1, value);
      }
      return text;
    };
    auto message = parse(textWith("x"));
    ASSERT_NE(message, nullptr);
    for (int round = 0; round < 2000; ++round) {
      std::string value;
      for (uint32_t length = 1 + next() % 12; value.size() < length;) value += c.alphabet[next() % c.alphabet.size()];
      SCOPED_TRACE(value);
      message->getElementAt(c.path)->setValue(wide(value));
      std::string written = narrow(message->getEncodedValue());
      auto again = parse(written);
      ASSERT_NE(again, nullptr) << written;
      ASSERT_EQ(narrow(again->getElementAt(c.path)->getValue()), value) << written;

      // The same characters as text read from the wire: what was read there reads the same from
      // what is written. A text that no longer has the place (a segment cut short) is no case.
      auto read = parse(textWith(value));
      if (!read) continue;
      std::string readValue;
      try {
        readValue = narrow(read->getElementAt(c.path)->getValue());
      } catch (const std::exception&) {
        continue;
      }
      written = narrow(read->getEncodedValue());
      again = parse(written);
      ASSERT_NE(again, nullptr) << written;
      ASSERT_EQ(narrow(again->getElementAt(c.path)->getValue()), readValue) << written;
    }
  }
}

// Where the segment terminator also releases a character, only cutting the fields tells where a
// segment ends: such segments are cut as they are read.
TEST_F(BundledParseTest, ATerminatorThatAlsoReleasesIsCutAsRead) {
  const std::string text =
      "UNA:+.# #UNB+UNOC:3+A:14+B:14+261123:1015+R1#UNH+1+ORDERS:D:96A:UN#BGM+220+PO##4711+9#"
      "DTM+137:20261123:102#UNS+S#UNT+5+1#UNZ+1+R1#";
  auto message = parse(text);
  ASSERT_NE(message, nullptr);
  EXPECT_EQ(value(*message, "MESSAGE/BGM/DocumentMessageNumber"), "PO#4711");
  EXPECT_EQ(narrow(message->getEncodedValue()), text);
}

// Fields read only once every message of the text is parsed are cut with the delimiters of their
// own message, though the reader has read other headers since.
TEST_F(BundledParseTest, FieldsReadAfterTheWholeTextKeepTheirMessagesDelimiters) {
  const std::u16string text = wide(readBundledSource("fuzz/corpus/messages/hl7-two-delimiters.hl7"));
  MessageReader reader(factory->getWarehouse(), text);
  MessageReader::Item item;
  std::vector<std::unique_ptr<MessageElement>> messages;
  while (reader.next(item)) {
    if (item.message) messages.push_back(std::move(item.message));
  }
  ASSERT_EQ(messages.size(), 2u);
  EXPECT_EQ(value(*messages[1], "PID/PatientName[0]/FamilyName"), "ROE");
  EXPECT_EQ(value(*messages[1], "PID/PatientIdentifierList[0]/IdNumber"), "2");
  EXPECT_EQ(value(*messages[0], "PID/PatientName[0]/GivenName"), "J");
  EXPECT_EQ(value(*messages[0], "PV1/PatientClass"), "I");
}

// A header that carries the separators of its message is cut only as far as the fields that carry
// them; the rest waits in the text like the fields of any other segment, the message type is read
// where it stands, and what the header holds comes out as a parse in full finds it.
TEST_F(BundledParseTest, AHeaderWaitsBehindTheFieldsThatCarryItsSeparators) {
  const std::string rest = "EVN|A01|2026\rPID|1||7^^^X||DOE^J\rPV1|1|I\r";
  struct Case {
    std::string text;
    bool waits;  // whether the header's fields after its encoding characters wait in the text
  };
  const Case cases[] = {
      {"MSH|^~\\&|APP^1|FAC|C|D|2026||ADT^A01^ADT_A01|1|P|2.5\r" + rest, true},
      {"MSH#!@$%#APP!1#FAC#C#D#2026##ADT!A01!ADT_A01#1#P#2.5\rEVN#A01#2026\rPID#1##7!!!X##DOE!J\rPV1#1#I\r", true},
      // Data behind the last field: the finding is made once, when the header is cut.
      {"MSH|^~\\&|A|FAC|C|D|2026||ADT^A01|1|P|2.5|EXTRA\r" + rest, true},
      // A quoted value may hold a separator: the header is cut as it is read.
      {"MSH|^~\\&|A|FAC|C|D|2026||ADT^A01|\"1\"|P|2.5\r" + rest, false},
      // The type is the last field there is.
      {"MSH|^~\\&|A||||||ADT^A01\r" + rest, true},
  };
  const std::u16string cutWhenRead = std::u16string(OptionUriPrefix) + u"/edi/cutFieldsWhenRead";
  const auto findingsOf = [](MessageElement& message) {
    std::multiset<std::pair<int32_t, std::string>> found;
    static_cast<MessageImpl&>(message).getParseFindings().forEach([&](MessageElement*, const ValidationError& error) {
      found.emplace(error.getErrorNumber(), narrow(error.getError()));
    });
    return found;
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    auto late = parse(c.text);
    factory->SetOption(cutWhenRead, Any::any(true));
    auto atOnce = parse(c.text);
    factory->SetOption(cutWhenRead, Any::any(false));
    ASSERT_NE(late, nullptr);
    ASSERT_NE(atOnce, nullptr);
    EXPECT_STREQ(late->getName(), atOnce->getName());
    EXPECT_EQ(static_cast<SegmentImplBase*>(late->getElementAt("MSH"))->hasUncutFields(), c.waits);
    for (const char* path : {"MSH/SendingApplication/UniversalId", "MSH/MessageType/TriggerEvent", "MSH/VersionId",
                             "MSH/EncodingCharacters", "PID/PatientName[0]/GivenName"}) {
      EXPECT_EQ(value(*late, path), value(*atOnce, path)) << path;
    }
    EXPECT_EQ(findingsOf(*late), findingsOf(*atOnce));
    EXPECT_EQ(findingsOf(*late).size(), c.text.find("EXTRA") == std::string::npos ? 0u : 1u);
    if (c.text.find("EXTRA") == std::string::npos) {
      EXPECT_EQ(narrow(late->getEncodedValue()), narrow(atOnce->getEncodedValue()));
    }
  }
  EXPECT_EQ(value(*parse(cases[1].text), "MSH/SendingApplication/UniversalId"), "1");
}

// The read looks for a segment's end over its fields eight characters at a time: wherever the end,
// a release character or a quote stands in the text, the segment ends where it does, and it waits
// in the text only when nothing in it may hide a separator.
TEST_F(BundledParseTest, TheEndOfASegmentIsFoundWhereverItStands) {
  const std::string hl7 = "MSH|^~\\&|A|F|C|D|2026||ADT^A01|1|P|2.5\rPID|1||7||";
  const std::string edifact = "UNA:+.? 'UNB+UNOC:3+A:14+B:14+261123:1015+R1'UNH+1+ORDERS:D:96A:UN'BGM+220+";
  const std::string edifactRest = "+9'DTM+137:20261123:102'UNS+S'UNT+5+1'UNZ+1+R1'";
  struct Case {
    std::string text;
    const char* segment;  // the segment with the stop
    const char* path;     // a value in it, and the value
    std::string expected;
    const char* next;  // a value of the segment behind it, and the value
    const char* nextValue;
    bool waits;
  };
  for (size_t place = 1; place <= 24; ++place) {
    const std::string name(place, 'N');
    const Case cases[] = {
        {hl7 + name + "\rPV1|1|I\r", "PID", "PID/PatientName[0]/FamilyName", name, "PV1/PatientClass", "I", true},
        {hl7 + name + "^G|\"Q\"\rPV1|1|I\r", "PID", "PID/PatientName[0]/FamilyName", name, "PV1/PatientClass", "I",
         false},
        {edifact + name + edifactRest, "MESSAGE/BGM", "MESSAGE/BGM/DocumentMessageNumber", name,
         "MESSAGE/DTM[0]/DateTimePeriod/DateTimePeriod", "20261123", true},
        {edifact + name + "?'X" + edifactRest, "MESSAGE/BGM", "MESSAGE/BGM/DocumentMessageNumber", name + "'X",
         "MESSAGE/DTM[0]/DateTimePeriod/DateTimePeriod", "20261123", false},
    };
    for (const Case& c : cases) {
      SCOPED_TRACE(c.text);
      auto message = parse(c.text);
      ASSERT_NE(message, nullptr);
      EXPECT_EQ(static_cast<SegmentImplBase*>(message->getElementAt(c.segment))->hasUncutFields(), c.waits);
      EXPECT_EQ(value(*message, c.next), c.nextValue);
      EXPECT_EQ(value(*message, c.path), c.expected);
    }
  }
}

// What the reader learns of a set's definitions on first use is kept for every later message and
// shared between threads: readers started at once on a fresh load, with all caches still empty,
// read a text of every standard and delimiter as one reader alone reads it.
TEST(BundledConcurrentReading, ReadersOnSeveralThreadsAgreeWithOneAlone) {
  std::string joined;
  for (const char* name : {"adt-a04.hl7", "eligibility-270.x12", "orders-d96a.edi", "hl7-two-delimiters.hl7",
                           "x12-other-delimiters.x12", "edifact-other-delimiters.edi"}) {
    joined += readBundledSource(std::string("fuzz/corpus/messages/") + name);
  }
  const std::u16string text = wide(joined);
  MessageFactory fresh;
  compileAndLoad(fresh, readBundledSource("bundled/default.yaml"));
  const auto readAll = [&] {
    std::vector<std::string> seen;
    MessageReader reader(fresh.getWarehouse(), text);
    MessageReader::Item item;
    while (reader.next(item)) {
      std::string line = std::to_string(item.offset) + "+" + std::to_string(item.length);
      if (item.message) {
        line += " " + std::string(item.message->getName()) + " " + narrow(item.message->getEncodedValue());
      }
      seen.push_back(std::move(line));
    }
    return seen;
  };
  std::vector<std::vector<std::string>> results(4);
  std::vector<std::thread> threads;
  for (auto& result : results) threads.emplace_back([&] { result = readAll(); });
  for (std::thread& thread : threads) thread.join();
  const std::vector<std::string> alone = readAll();
  EXPECT_GE(alone.size(), 6u);  // a message or more from each file
  for (const auto& result : results) EXPECT_EQ(result, alone);
}

// Every node by its path, with the values of fields, and the text written back: what tells two
// parses apart.
void describe(MessageElement& node, const std::string& path, std::vector<std::string>& lines) {
  const int count = node.getElementCount();
  if (count == 0) lines.push_back(path + "=" + narrow(node.getValue()));
  for (int i = 0; i < count; ++i) {
    MessageElement* child = node.getElementAt(i);
    if (child) describe(*child, path + "/" + child->getName(), lines);
  }
}

std::vector<std::string> describeParse(MessageFactory& factory, const std::string& text) {
  std::unique_ptr<MessageElement> message = factory.Parse(wide(text).c_str());
  if (!message) return {"no message"};
  std::vector<std::string> lines;
  describe(*message, message->getName(), lines);
  lines.push_back(narrow(message->getEncodedValue()));
  lines.push_back("findings: " + std::to_string(static_cast<MessageImpl&>(*message).getParseFindings().count()));
  return lines;
}

std::string replaced(std::string text, const std::string& from, const std::string& to) {
  for (char& c : text) {
    const size_t at = from.find(c);
    if (at != std::string::npos) c = to[at];
  }
  return text;
}

// Messages read one after another hand their separator tries on to the next with the same
// separators, and a header that begins as an earlier one did is read as that one was; each message
// still reads as it does alone, whatever its neighbours' separators are, when two of its separators
// are one character, when its header ends right behind the separators, and when the header's
// later fields hold an escape.
TEST_F(BundledParseTest, MessagesWithOtherSeparatorsBesideThemReadAsTheyDoAlone) {
  const std::string hl7 = readBundledSource("examples/adt-a04.hl7");
  const std::string x12 = readBundledSource("examples/eligibility-270.x12");
  const std::string edifact = readBundledSource("examples/orders-d96a.edi");
  std::string sharedHl7 = hl7;
  sharedHl7.replace(0, 9, "MSH|^~\\^|");  // one character for components and sub-components
  const std::vector<std::string> texts = {
      hl7,
      replaced(hl7, "|^~\\&", "#@!$%"),
      x12,
      replaced(x12, "*:^~", "|>!\n"),
      edifact,
      replaced(edifact, ":+'", "#*\n"),
      sharedHl7,
      replaced(hl7, "|^~\\&", "#@!$%"),
      "MSH|^~\\&|\r" + hl7.substr(hl7.find('\r') + 1),
      "MSH|^~\\&|AD\\T\\MIT|" + hl7.substr(hl7.find("|GENERAL") + 1),
      "MSH|^~\\&|||||" + hl7.substr(hl7.find("|20261123") + 1),
  };
  std::vector<std::vector<std::string>> alone(texts.size());
  for (size_t i = 0; i < texts.size(); ++i) {
    std::thread([&] { alone[i] = describeParse(*factory, texts[i]); }).join();
    // The header without its message type makes no message; the others all do.
    if (texts[i].starts_with("MSH|^~\\&|\r")) continue;
    ASSERT_GT(alone[i].size(), 10u) << texts[i];
  }
  // Each text after every other, twice over.
  for (int round = 0; round < 2; ++round) {
    for (size_t i = 0; i < texts.size(); ++i) {
      for (size_t j = 0; j < texts.size(); ++j) {
        SCOPED_TRACE(texts[i] + " after " + texts[j]);
        describeParse(*factory, texts[j]);
        EXPECT_EQ(describeParse(*factory, texts[i]), alone[i]);
      }
    }
  }
  // The HL7 headers were read again as kept, not only as the first time.
  EXPECT_TRUE(HeaderReplay::local()->keeps(u"MSH|^~\\&|"));
  EXPECT_TRUE(HeaderReplay::local()->keeps(u"MSH#@!$%#"));
}

// Every item of a text as the batch reader gives it: where it stands, and for a message the text
// it writes and its parse findings.
std::vector<std::string> readItems(MessageFactory& factory, const std::string& text) {
  MessageReader reader(factory.getWarehouse(), std::make_shared<const std::u16string>(wide(text)));
  MessageReader::Item item;
  std::vector<std::string> items;
  while (reader.next(item)) {
    std::string line = std::to_string(item.offset) + "+" + std::to_string(item.length);
    if (item.message) {
      line += " " + narrow(item.message->getEncodedValue()) + " findings " +
              std::to_string(static_cast<MessageImpl&>(*item.message).getParseFindings().count());
    }
    items.push_back(line);
  }
  return items;
}

// A header read on the thread before, whose read went on past where its separators settled, hands
// on nothing of what lay behind that point: neither a field cut there (an escape kept the rest from
// waiting in the text) nor the end of the text that ended its first field.
TEST_F(BundledParseTest, AHeaderReadAgainTakesNothingFromBehindWhereTheKeptReadSettled) {
  const std::pair<std::string, std::string> cases[] = {
      {"MSH#^~\\&#\\&\r", "MSH#^~\\&#A#B#C#D#002026##ADT^A01^Ak "},
      {"MSH|^~\\&|A|B|C|D|2026||ADT^A08^ADT_A01|1|P|2.5\rMSH|^~\\&",
       "MSH|^~\\&|A|B|C|D|2026||ADT^A08^ADT_A01|1|P|2.5\rMSH|^~\\&"},
  };
  for (const auto& [before, text] : cases) {
    SCOPED_TRACE(text + " after " + before);
    std::vector<std::string> alone;
    std::thread([&] { alone = readItems(*factory, text); }).join();
    ASSERT_FALSE(alone.empty());
    std::thread([&] {
      readItems(*factory, before);
      EXPECT_EQ(readItems(*factory, text), alone);
    }).join();
  }
}

// The items of a text as readItems gives them, and the separators each message was read with.
std::vector<std::string> readWithSeparators(MessageFactory& factory, const std::string& text) {
  std::vector<std::string> items = readItems(factory, text);
  MessageReader reader(factory.getWarehouse(), std::make_shared<const std::u16string>(wide(text)));
  MessageReader::Item item;
  while (reader.next(item)) {
    if (!item.message) continue;
    const SeparatorList& list = *static_cast<MessageImpl&>(*item.message).getSeparatorList();
    std::string separators;
    for (const ESeparatorType slot : {qxSepSegment, qxSepField1, qxSepField2, qxSepRepeat, qxSepDecimal, qxSepUser1}) {
      separators += narrow(list.getSeparatorValue(slot)) + "/";
    }
    items.push_back(separators);
  }
  return items;
}

// Each text, read on a thread that read the example before, reads as it does alone; so does the
// example read after it. The example's header was kept whole.
void expectEachReadsAsAlone(MessageFactory& factory, const std::string& example, const std::string& header,
                            const std::vector<std::pair<const char*, std::string>>& cases) {
  std::vector<std::string> exampleAlone;
  std::thread([&] { exampleAlone = readWithSeparators(factory, example); }).join();
  for (const auto& [name, text] : cases) {
    SCOPED_TRACE(name);
    ASSERT_NE(text, example);
    std::vector<std::string> alone;
    std::thread([&] { alone = readWithSeparators(factory, text); }).join();
    ASSERT_FALSE(alone.empty());
    std::thread([&] {
      readWithSeparators(factory, example);
      EXPECT_EQ(readWithSeparators(factory, text), alone);
      EXPECT_TRUE(HeaderReplay::local()->keeps(wide(header)));
    }).join();
    std::thread([&] {
      readWithSeparators(factory, text);
      EXPECT_EQ(readWithSeparators(factory, example), exampleAlone);
    }).join();
  }
}

// X12's ISA settles its separators only with its last character, and is kept whole: a later ISA
// reads as kept when it differs only in the characters of fields that carry no separator.
TEST_F(BundledParseTest, AnInterchangeHeaderKeptWholeServesOnlyHeadersThatReadAlike) {
  const std::string x12 = readBundledSource("examples/eligibility-270.x12");
  const std::string isa = x12.substr(0, x12.find('~') + 1);
  ASSERT_EQ(isa.size(), 106u);
  const auto withIsa = [&](const std::string& header) { return header + x12.substr(isa.size()); };
  const auto at = [&](const std::string& field, const std::string& text) {
    std::string header = isa;
    const size_t from = header.find(field);
    header.replace(from, text.size(), text);
    return withIsa(header);
  };
  std::string otherSeparators = at("*^*00501", "*!*00501");
  otherSeparators[104] = '>';
  expectEachReadsAsAlone(*factory, x12, isa, {
      {"another control number and date", at("000000001", "000004711").replace(70, 6, "270101")},
      {"letters in the time", at("*1015*", "*10X5*")},
      {"a sender with a space inside", at("SUBMITTER      ", "SUB MITTER     ")},
      {"a sender filling its width", at("SUBMITTER      ", "SUBMITTERSUBMIT")},
      {"a component separator in the sender", at("SUBMITTER      ", "SUB:ITTER      ")},
      {"a repetition separator in the sender", at("SUBMITTER      ", "SUB^ITTER      ")},
      {"a segment terminator in the sender", at("SUBMITTER      ", "SUB~ITTER      ")},
      {"an element separator in the sender", at("SUBMITTER      ", "SUB*ITTER      ")},
      {"a line end in the sender", at("SUBMITTER      ", "SUB\rITTER      ")},
      {"a quote in the sender", at("SUBMITTER      ", "SUB\"ITTER      ")},
      {"a shorter sender", withIsa(replaced(isa, "SUBMITTER      ", "SUBMITTER"))},
      {"other repetition and component separators", otherSeparators},
      {"another segment terminator", replaced(x12, "~", "\n")},
      {"a line end behind the terminator", withIsa(isa + "\r\n")},
      {"a header cut short", isa.substr(0, 95)},
      {"a header without its terminator", isa.substr(0, 105)},
      {"an empty field", at("*0*P*", "**P*")},
  });
}

// EDIFACT's UNA too: its one field, the reserved character, is read at a fixed position before the
// separators settle, and a settled list would trim it otherwise, so it must be the kept one.
TEST_F(BundledParseTest, AServiceStringAdviceKeptWholeServesOnlyAdvicesThatReadAlike) {
  const std::string edifact = readBundledSource("examples/orders-d96a.edi");
  const std::string una = edifact.substr(0, 9);
  ASSERT_EQ(una, "UNA:+.? '");
  const auto withUna = [&](const std::string& header) { return header + edifact.substr(una.size()); };
  expectEachReadsAsAlone(*factory, edifact, una, {
      {"another reserved character", withUna("UNA:+.?*'")},
      {"a reserved character that is a separator", withUna("UNA:+.?+'")},
      {"no reserved character", withUna("UNA:+.?'")},
      {"another release character", withUna("UNA:+.! '")},
      {"other separators", replaced(edifact, ":+'", "#*\n")},
      {"a line end behind the advice", withUna(una + "\r\n")},
      {"an advice cut short", una.substr(0, 6)},
      {"an advice alone", una},
      {"another interchange behind it", withUna(una) + edifact.substr(una.size())},
  });
}

}  // namespace
}  // namespace vantrelia::testing
