// Parsing whole texts: which message a text is, where each segment goes, what is kept of what
// doesn't fit, and how the tree writes itself back.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "elements/MessageImpl.h"
#include "foundation/MessageFactory.h"
#include "parsing/MessageReader.h"
#include "support/CompilerTesting.h"
#include "support/ElementTesting.h"

namespace vantrelia::testing {
namespace {

// Number and text of each finding the parse recorded, in the order kept.
std::vector<std::pair<int32_t, std::string>> numberedFindingsOf(MessageElement& message) {
  std::vector<std::pair<int32_t, std::string>> result;
  static_cast<MessageImpl&>(message).getRecordedErrors().forEach([&](MessageElement*, const ValidationError& error) {
    result.emplace_back(error.getErrorNumber(), narrow(error.getError()));
  });
  return result;
}

// The value at a path, or the engine's reason for refusing the path.
std::string valueAt(MessageElement& message, const char* path) {
  try {
    return narrow(message.getElementAt(path)->getValue());
  } catch (const std::exception& refused) {
    return std::string("refused: ") + refused.what();
  }
}

class MessageParseTest : public ElementTreeTest {
 protected:
  std::unique_ptr<MessageElement> parse(const std::string& text) { return factory.Parse(wide(text).c_str()); }
  std::string value(MessageElement& message, const char* path) { return narrow(message.getElementAt(path)->getValue()); }
};

TEST_F(MessageParseTest, SegmentsGoToTheirPlacesAndWriteBack) {
  const std::string text = "MSH|s|ADT\rPID|1|a^b~c^d|n|19700101|M\rNTE|one\rNTE|two\rPV1|I\rOBX|v|u\rPV1|O\r";
  auto message = parse(text);
  ASSERT_NE(message, nullptr);
  EXPECT_STREQ(message->getName(), "ADT");
  EXPECT_EQ(value(*message, "PID/Sex"), "M");
  EXPECT_EQ(value(*message, "PID/Ids[1]/Check"), "d");
  EXPECT_EQ(value(*message, "NTE[1]/Text"), "two");
  EXPECT_EQ(message->getElementAt("VISIT")->getElementCount(), 2);
  EXPECT_EQ(value(*message, "VISIT[0]/OBX[0]/Units"), "u");
  EXPECT_TRUE(numberedFindingsOf(*message).empty());
  EXPECT_EQ(narrow(message->getEncodedValue()), text);
}

TEST_F(MessageParseTest, MessageTypeChoosesTheMessage) {
  auto flat = parse("MSH|s|FLAT\rNTE|n\r");
  ASSERT_NE(flat, nullptr);
  EXPECT_STREQ(flat->getName(), "FLAT");
  // A type no message has: nothing takes the text.
  EXPECT_EQ(parse("MSH|s|ORU\rPID|1\r"), nullptr);
  EXPECT_EQ(parse("no segment here"), nullptr);
  EXPECT_EQ(parse(""), nullptr);
}

TEST_F(MessageParseTest, WhatDoesntFitIsKeptWithItsFinding) {
  // PV1 is required before OBX; a second PID has no place; "ZZZ" is no segment at all.
  auto message = parse("MSH|s|ADT\rPID|1\rOBX|v\rZZZ|junk\rPID|2\rPV1|I\r");
  ASSERT_NE(message, nullptr);
  const auto findings = numberedFindingsOf(*message);
  std::vector<int32_t> numbers;
  for (const auto& [number, text] : findings) numbers.push_back(number);
  EXPECT_NE(std::find(numbers.begin(), numbers.end(), 1003), numbers.end());
  EXPECT_NE(std::find(numbers.begin(), numbers.end(), 1004), numbers.end());
  for (const auto& [number, text] : findings) {
    if (number == 1003) {
      EXPECT_EQ(text, "Segment [3] ZZZ|junk: Unknown segment, ignored");
    } else if (number == 1004) {
      EXPECT_EQ(text, "Segment \"PID\" [4]: Unexpected segment");
    }
  }
  // The unplaced PID is kept, not lost, though no writer writes it.
  int unknown = message->getUnknownSegmentCount();
  for (int i = 0; i < message->getElementCount(); ++i) {
    if (MessageElement* child = message->getElementAt(i); child->getNodeType() == qxRepeating) {
      for (int j = 0; j < child->getElementCount(); ++j) {
        try {
          unknown += child->getElementAt(j)->getUnknownSegmentCount();
        } catch (const std::exception&) {
        }
      }
    }
  }
  EXPECT_EQ(unknown, 1);
}

// Every message parsed starts from a copy of a list the definition keeps; options set between two
// parses still reach the second.
TEST_F(MessageParseTest, OptionsSetBetweenParsesReachTheNextParse) {
  const std::string unknown = "MSH|s|ADT\rPID|1\rZZZ|junk\rPV1|I\r";
  const auto numbers = [&](const std::string& text) {
    std::vector<int32_t> result;
    auto message = parse(text);
    if (!message) return std::vector<int32_t>{-1};
    for (const auto& finding : numberedFindingsOf(*message)) result.push_back(finding.first);
    return result;
  };
  ASSERT_EQ(numbers(unknown), std::vector<int32_t>{1003});
  const std::u16string severity = std::u16string(OptionUriPrefix) + u"/edi/validationErrorSeverity?ERROR=1003";
  factory.SetOption(severity, Any::any(int(qxVESIgnore)));
  EXPECT_EQ(numbers(unknown), std::vector<int32_t>{});
  factory.SetOption(severity, Any::any(int(qxVESError)));
  EXPECT_EQ(numbers(unknown), std::vector<int32_t>{1003});

  const std::string crlf = "MSH|s|ADT\r\nPID|1\r\nPV1|I\r\n";
  const std::u16string replaceCrlf = std::u16string(OptionUriPrefix) + u"/edi/replaceCRLFWithSegmentSeparator";
  factory.SetOption(replaceCrlf, Any::any(false));
  const std::vector<int32_t> withLineFeeds = numbers(crlf);
  EXPECT_FALSE(withLineFeeds.empty()) << "a line feed is text of the next segment";
  factory.SetOption(replaceCrlf, Any::any(true));
  EXPECT_EQ(numbers(crlf), std::vector<int32_t>{});
  factory.SetOption(replaceCrlf, Any::any(false));
  EXPECT_EQ(numbers(crlf), withLineFeeds);
}

TEST_F(MessageParseTest, PreservedTextComesBackUnitForUnit) {
  // Trailing empty fields, which the tree's own writer drops.
  const std::string text = "MSH|s|ADT||\rPID|1|||||||\rPV1|I|\r";
  auto normal = parse(text);
  ASSERT_NE(normal, nullptr);
  // The tree's writer drops trailing empties and fills in the required sex's default.
  EXPECT_EQ(narrow(normal->getEncodedValue()), "MSH|s|ADT\rPID|1||||U\rPV1|I\r");

  factory.SetOption(std::u16string(OptionUriPrefix) + u"/edi/preserveParsedText", Any::any(true));
  auto preserved = parse(text);
  ASSERT_NE(preserved, nullptr);
  EXPECT_EQ(narrow(preserved->getEncodedValue()), text);
  EXPECT_EQ(narrow(preserved->getEncodedValue()), text) << "writing is no change";
  // A changed segment is written the tree's way; the others stay as they were read.
  preserved->getElementAt("VISIT[0]/PV1/Location")->setValue(u"B2");
  EXPECT_EQ(narrow(preserved->getEncodedValue()), "MSH|s|ADT||\rPID|1|||||||\rPV1|I|B2\r");
}

TEST_F(MessageParseTest, NodesOfATreeTakeTextOfTheirOwn) {
  auto message = create("ADT");
  // A whole message: what it holds is replaced, and the rest of the text comes back.
  EXPECT_EQ(narrow(message->setEncodedValue(u"MSH|s|ADT\rPID|1||||F\rPV1|I\r")), "");
  EXPECT_EQ(value(*message, "PID/Sex"), "F");
  EXPECT_EQ(value(*message, "VISIT[0]/PV1/Class"), "I");

  // A repeat takes as many as the text holds and leaves the rest; a fourth try that takes nothing
  // leaves no empty element behind.
  MessageElement* notes = message->getElementAt("NTE");
  EXPECT_EQ(narrow(notes->setEncodedValue(u"NTE|a\rNTE|b\rNTE|c\rPV1|O\r")), "PV1|O\r");
  ASSERT_EQ(notes->getElementCount(), 3);
  EXPECT_EQ(value(*notes->getElementAt(2), "Text"), "c");

  // A group stops at a required child that takes nothing.
  MessageElement* visit = message->getElementAt("VISIT")->appendElement(nullptr);
  EXPECT_EQ(narrow(visit->setEncodedValue(u"OBX|v\r")), "OBX|v\r");
  EXPECT_EQ(narrow(visit->setEncodedValue(u"PV1|E\rOBX|v|u\rAL1|x\r")), "AL1|x\r");
  EXPECT_EQ(value(*visit, "OBX[0]/Units"), "u");

  // A choice keeps only the first alternative that takes the text.
  MessageElement* either = message->getElementAt("EITHER");
  EXPECT_EQ(narrow(either->setEncodedValue(u"DG1|d\rAL1|a\r")), "AL1|a\r");
  EXPECT_TRUE(either->getElementAt(0)->isEmpty());
  EXPECT_EQ(value(*either, "DG1:2/Diagnosis"), "d");
}

TEST_F(MessageParseTest, ReaderYieldsEveryMessageAndTheTextBetween) {
  // Text before the first message is skipped text of its own; text inside a message is that
  // message's, with its finding. Segments are numbered by the reads of one parse, the skipped
  // text's included.
  const std::string junk = "garbage line\r";
  const std::string first = "MSH|s|ADT\rPID|1\rPV1|I\rstray text\r";
  const std::string second = "MSH|t|FLAT\rNTE|x\r";
  const std::string text = junk + first + second;
  for (size_t chunk : {size_t{1024}, MessageReader::kDefaultChunk}) {
    SCOPED_TRACE(chunk);
    const std::u16string wideText = wide(text);
    size_t served = 0;
    MessageReader reader(factory.getWarehouse(), [&](std::u16string& out) {
      if (served >= wideText.size()) return false;
      const size_t piece = std::min<size_t>(7, wideText.size() - served);
      out.append(wideText, served, piece);
      served += piece;
      return true;
    }, chunk);
    std::vector<std::string> seen;
    MessageReader::Item item;
    int64_t covered = 0;
    while (reader.next(item)) {
      EXPECT_EQ(item.offset, covered);
      covered += item.length;
      seen.push_back(item.message ? std::string(item.message->getName()) : "skipped:" + narrow(item.skipped));
      if (item.message && seen.back() == "ADT") {
        EXPECT_EQ(item.length, static_cast<int64_t>(first.size()));
        EXPECT_EQ(numberedFindingsOf(*item.message),
                  (std::vector<std::pair<int32_t, std::string>>{{1003, "Segment [4] stray text: Unknown segment, ignored"}}));
      }
    }
    EXPECT_EQ(covered, static_cast<int64_t>(text.size()));
    EXPECT_EQ(seen, (std::vector<std::string>{"skipped:" + junk, "ADT", "FLAT"}));
  }
}

TEST_F(MessageParseTest, ReaderOverASharedTextKeepsItForItsMessages) {
  auto text = std::make_shared<const std::u16string>(wide("MSH|s|ADT\rPID|1\rPV1|I\rMSH|t|FLAT\rNTE|x\r"));
  const std::weak_ptr<const std::u16string> watched = text;
  std::vector<std::unique_ptr<MessageElement>> messages;
  {
    MessageReader reader(factory.getWarehouse(), std::move(text));
    MessageReader::Item item;
    while (reader.next(item)) {
      ASSERT_NE(item.message, nullptr);
      messages.push_back(std::move(item.message));
    }
  }
  ASSERT_EQ(messages.size(), 2u);
  // The fields were left in the text, which the messages alone keep alive now.
  EXPECT_FALSE(watched.expired());
  EXPECT_EQ(value(*messages[1], "NTE/Text"), "x");
  messages.clear();
  EXPECT_TRUE(watched.expired());
  MessageReader empty(factory.getWarehouse(), std::shared_ptr<const std::u16string>());
  MessageReader::Item none;
  EXPECT_FALSE(empty.next(none));
}

// A set whose segments of one tag are told apart by a qualifier, in the item and in the segment
// definitions, and whose loops repeat and can stay undecided until a later segment.
const char* const kQualifierDefinition = R"(
messageSets:
  - name: Q
    trimSegments: true
    separators:
      segment: {value: "~", style: terminator}
      field1: {value: '*', style: initiator}
    segments:
      - {name: HD, fields: [{name: Kind}]}
      - {name: NM1, fields: [{name: Role}, {name: Name}]}
      - {name: REF, fields: [{name: Code}]}
      - {name: END, fields: [{name: Count}]}
    messages:
      - name: M
        items:
          - {segment: HD, required: true}
          - {segment: NM1, name: PAYER, matches: [{path: Role, value: "PR"}]}
          - group: PATIENT
            maxRepeats: 0
            items:
              - {segment: NM1, required: true, matches: [{path: Role, value: "IL|QC"}]}
              - {segment: REF, maxRepeats: 2}
          - group: TAIL
            items:
              - {segment: REF, required: true}
              - {segment: END, required: true}
)";

TEST(MessageParseWalkTest, QualifiersLookAheadAndRelaxedPlacesDecideWhereSegmentsGo) {
  MessageFactory factory;
  compileAndLoad(factory, kQualifierDefinition);
  struct Case {
    const char* text;
    std::vector<std::pair<const char*, const char*>> values;  // path, value
    int findings;
  };
  // A text whose required first segment is missing isn't taken for the message at all.
  EXPECT_EQ(factory.Parse(u"NM1*PR*ACME~REF*t~END*0~"), nullptr);
  const Case cases[] = {
      // The qualifier sends each NM1 to its item.
      {"HD*x~NM1*PR*ACME~NM1*IL*DOE~REF*a~NM1*QC*ROE~END*3~",
       {{"PAYER/Name", "ACME"}, {"PATIENT[0]/NM1/Name", "DOE"}, {"PATIENT[1]/NM1/Name", "ROE"}}, 0},
      // REF could close a patient or open the tail: END, which only the tail's REF leads to,
      // settles it there.
      {"HD*x~NM1*IL*DOE~REF*a~END*1~", {{"TAIL/REF/Code", "a"}, {"PATIENT[0]/NM1/Name", "DOE"}}, 0},
      // Three REFs wait undecided; END settles them backwards: the last is the tail's, the ones
      // before it the patient's.
      {"HD*x~NM1*IL*DOE~REF*a~REF*b~REF*c~END*1~",
       {{"PATIENT[0]/REF[1]/Code", "b"}, {"TAIL/REF/Code", "c"}, {"TAIL/END/Count", "1"}}, 0},
      // The tail's REF is required but missing: the relaxed table takes END all the same.
      {"HD*x~NM1*PR*ACME~END*0~", {{"PAYER/Name", "ACME"}, {"TAIL/END/Count", "0"}}, 0},
      // A qualifier no item takes: the segment is kept as unknown with finding 1023.
      {"HD*x~NM1*ZZ*WHO~REF*t~END*0~", {{"TAIL/REF/Code", "t"}}, 1},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    auto message = factory.Parse(wide(c.text).c_str());
    ASSERT_NE(message, nullptr);
    for (const auto& [path, expected] : c.values) EXPECT_EQ(valueAt(*message, path), expected) << path;
    const auto findings = numberedFindingsOf(*message);
    EXPECT_EQ(static_cast<int>(findings.size()), c.findings);
    if (c.findings == 1) {
      EXPECT_EQ(findings.front(), (std::pair<int32_t, std::string>{1023, "Segment \"NM1\" [1]: Message Item Match-List failed to match correctly"}));
      EXPECT_EQ(message->getUnknownSegmentCount(), 1);
    }
  }
}

// Claims under a subscriber or under a patient, as in a claim transaction: a claim holds an
// optional other-payer loop that a required SBR opens, then its service lines.
const char* const kClaimDefinition = R"(
messageSets:
  - name: C
    trimSegments: true
    separators:
      segment: {value: "~", style: terminator}
      field1: {value: '*', style: initiator}
    segments:
      - {name: HD, fields: [{name: Kind}]}
      - {name: HL, fields: [{name: Level}]}
      - {name: DMG, fields: [{name: Born}]}
      - {name: CLM, fields: [{name: Id}]}
      - {name: SBR, fields: [{name: Payer}]}
      - {name: LX, fields: [{name: Line}]}
      - {name: DTP, fields: [{name: Date}]}
    messages:
      - name: M
        items:
          - {segment: HD, required: true}
          - group: SUBSCRIBER
            maxRepeats: 0
            items:
              - {segment: HL, required: true, matches: [{path: Level, value: "22"}]}
              - &claim
                group: CLAIM
                maxRepeats: 0
                items:
                  - {segment: CLM, required: true}
                  - group: OTHER
                    items:
                      - {segment: SBR, required: true}
                      - {segment: DTP}
                  - group: LINE
                    maxRepeats: 0
                    items:
                      - {segment: LX, required: true}
                      - {segment: DTP}
              - group: PATIENT
                maxRepeats: 0
                items:
                  - {segment: HL, required: true, matches: [{path: Level, value: "23"}]}
                  - {segment: DMG, required: true}
                  - *claim
)";

// A segment that only the relaxed table takes (a claim behind a patient without its required
// DMG) may belong to several loops, and waits. The segments behind it are placed by the strict
// table: a service line's DTP stays in its line and doesn't jump into an other-payer loop whose
// required SBR never came.
// A set whose header opens every message, and a message that takes the header's tag again inside.
const char* const kRepeatedHeaderDefinition = R"(
messageSets:
  - name: R
    headerItemCount: 1
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', style: initiator}
    messageTypeFields: [HDR.1]
    segments:
      - {name: HDR, fields: [{name: Type}]}
      - {name: BODY, fields: [{name: Text}]}
    messages:
      - name: ONE
        type: ONE
        items:
          - {segment: HDR, required: true}
          - {segment: BODY, maxRepeats: 0}
      - name: TWO
        type: TWO
        items:
          - {segment: HDR, required: true}
          - {segment: BODY}
          - group: AGAIN
            items:
              - {segment: HDR, required: true}
              - {segment: BODY}
)";

// A message ends where its set's header opens the next one, unless the message itself expects a
// segment of that tag there; reading that header in full first gives the same messages.
TEST(MessageParseWalkTest, AHeaderTagEndsTheMessageUnlessTheMessageExpectsIt) {
  MessageFactory factory;
  compileAndLoad(factory, kRepeatedHeaderDefinition);
  struct Case {
    const char* text;
    std::vector<std::string> messages;  // name and length of each
  };
  const std::vector<Case> cases = {
      {"HDR|ONE\rBODY|a\rBODY|b\rHDR|ONE\rBODY|c\r", {"ONE 22", "ONE 15"}},
      {"HDR|TWO\rBODY|a\rHDR|ignored\rBODY|b\rHDR|ONE\r", {"TWO 34", "ONE 8"}},
      {"HDR|ONE\rHDR|TWO\rBODY|x\r", {"ONE 8", "TWO 15"}},
  };
  for (const bool inFull : {false, true}) {
    factory.SetOption(std::u16string(OptionUriPrefix) + u"/edi/cutFieldsWhenRead", Any::any(inFull));
    for (const Case& test : cases) {
      SCOPED_TRACE(std::string(test.text) + (inFull ? " read in full" : ""));
      MessageReader reader(factory.getWarehouse(), wide(test.text));
      MessageReader::Item item;
      std::vector<std::string> seen;
      while (reader.next(item)) {
        seen.push_back((item.message ? std::string(item.message->getName()) : "skipped") + " " +
                       std::to_string(item.length));
      }
      EXPECT_EQ(seen, test.messages);
    }
  }
}

// Segments of one tag, and a segment whose own match list may refuse its text.
const char* const kTagChoiceDefinition = R"(
messageSets:
  - name: S
    trimSegments: true
    separators:
      segment: {value: "~", style: terminator}
      field1: {value: '*', style: initiator}
    segments:
      - {name: HD, fields: [{name: Kind}]}
      - {name: B, fields: [{name: Text}]}
      - {name: NOTE, tag: NT, fields: [{name: Text}]}
      - {name: ANOTE, tag: NT, fields: [{name: Text}, {name: More}]}
      - {name: QTY, fields: [{name: Amount}, {name: Unit}], matches: [{path: Unit, value: KG}]}
      - {name: END, fields: [{name: Count}]}
    messages:
      - name: M
        items:
          - {segment: HD, required: true}
          - {segment: B}
          - {segment: ANOTE, maxRepeats: 0}
          - {segment: NOTE}
          - {segment: QTY}
          - {segment: END, required: true}
)";

// Most segments are read without a choice: the tag names one segment, which the walk expects.
// Where the tag names several, or the segment's match list may refuse it, the read must still
// choose as it always did. (Behind the header the next segment is read in full anyway, so the
// cases put B between.)
TEST(MessageParseWalkTest, ATagOfSeveralSegmentsOrOneWithAMatchListIsChosenAsEver) {
  MessageFactory factory;
  compileAndLoad(factory, kTagChoiceDefinition);
  struct Case {
    const char* text;
    std::vector<std::pair<const char*, const char*>> values;  // path, value
    std::vector<int32_t> findings;
  };
  const Case cases[] = {
      // Both segments of the tag are expected: ANOTE, first by name, takes the text, although
      // NOTE comes first among the segments of the tag.
      {"HD*x~B*1~NT*a*b~NT*c~QTY*5*KG~END*1~", {{"ANOTE[0]/More", "b"}, {"ANOTE[1]/Text", "c"}, {"QTY/Amount", "5"}}, {}},
      // A QTY whose unit its match list refuses is no QTY: its text is skipped as unknown.
      {"HD*x~B*1~QTY*5*LB~END*1~", {{"END/Count", "1"}, {"QTY/Amount", ""}}, {1003}},
  };
  for (const bool inFull : {false, true}) {
    factory.SetOption(std::u16string(OptionUriPrefix) + u"/edi/cutFieldsWhenRead", Any::any(inFull));
    for (const Case& c : cases) {
      SCOPED_TRACE(std::string(c.text) + (inFull ? " read in full" : ""));
      auto message = factory.Parse(wide(c.text).c_str());
      ASSERT_NE(message, nullptr);
      for (const auto& [path, expected] : c.values) EXPECT_EQ(valueAt(*message, path), expected) << path;
      std::vector<int32_t> numbers;
      for (const auto& finding : numberedFindingsOf(*message)) numbers.push_back(finding.first);
      EXPECT_EQ(numbers, c.findings);
    }
  }
}

TEST(MessageParseWalkTest, SegmentsBehindARelaxedJumpFollowTheStrictTable) {
  MessageFactory factory;
  compileAndLoad(factory, kClaimDefinition);
  const char* const head = "HD*x~HL*22~HL*23~";
  const char* const claims = "CLM*one~LX*1~DTP*d1~LX*2~DTP*d2~CLM*two~LX*1~DTP*d3~";
  for (const char* dmg : {"DMG*19700101~", ""}) {
    SCOPED_TRACE(*dmg ? "with DMG" : "without DMG");
    auto message = factory.Parse(wide(std::string(head) + dmg + claims).c_str());
    ASSERT_NE(message, nullptr);
    const std::pair<const char*, const char*> expected[] = {
        {"SUBSCRIBER[0]/PATIENT[0]/CLAIM[0]/CLM/Id", "one"},
        {"SUBSCRIBER[0]/PATIENT[0]/CLAIM[0]/LINE[0]/DTP/Date", "d1"},
        {"SUBSCRIBER[0]/PATIENT[0]/CLAIM[0]/LINE[1]/DTP/Date", "d2"},
        {"SUBSCRIBER[0]/PATIENT[0]/CLAIM[1]/CLM/Id", "two"},
        {"SUBSCRIBER[0]/PATIENT[0]/CLAIM[1]/LINE[0]/DTP/Date", "d3"},
    };
    for (const auto& [path, value] : expected) EXPECT_EQ(valueAt(*message, path), value) << path;
    EXPECT_EQ(numberedFindingsOf(*message).size(), 0u);
  }
}

// Two segments share a tag. Where the strict table takes neither (a required segment is missing
// before both), the relaxed table offers both, and its candidates are tried by name: the one
// named first takes the segment, whatever the order of the items.
const char* const kSharedTagDefinition = R"(
messageSets:
  - name: R
    trimSegments: true
    separators:
      segment: {value: "~", style: terminator}
      field1: {value: '*', style: initiator}
    segments:
      - {name: HD, fields: [{name: Kind}]}
      - {name: REQ, fields: [{name: R}]}
      - {name: NOTEZ, tag: NTE, fields: [{name: Z}]}
      - {name: BODY, fields: [{name: B}]}
      - {name: NOTEA, tag: NTE, fields: [{name: A}]}
    messages:
      - name: M
        items:
          - {segment: HD, required: true}
          - {segment: REQ, required: true}
          - {segment: NOTEZ}
          - {segment: BODY}
          - {segment: NOTEA}
)";

TEST(MessageParseWalkTest, RelaxedCandidatesOfOneTagAreTriedByName) {
  MessageFactory factory;
  compileAndLoad(factory, kSharedTagDefinition);
  auto message = factory.Parse(u"HD*x~NTE*1~");
  ASSERT_NE(message, nullptr);
  std::vector<std::string> names;
  for (int i = 0; i < message->getElementCount(); ++i) {
    MessageElement* child = message->getElementAt(i);
    if (child && child->isPresent()) names.push_back(child->getName());
  }
  for (int i = 0; i < message->getUnknownSegmentCount(); ++i) {
    names.push_back(std::string("unknown ") + message->getUnknownSegment(i)->getName());
  }
  EXPECT_EQ(names, (std::vector<std::string>{"HD", "NOTEA"}));
  EXPECT_TRUE(numberedFindingsOf(*message).empty());
}

// Two messages of one set around an embedded set: the first is given up only after its embedded
// message was finished, at the message's own match list.
const char* const kEmbeddingDefinition = R"(
messageSets:
  - name: OUT
    trimSegments: true
    separators: &separators
      segment: {value: "~", style: terminator}
      field1: {value: '*', style: initiator}
    segments:
      - {name: H, fields: [{name: Kind}]}
      - {name: T, fields: [{name: Kind}]}
    messages:
      - name: FIRST
        matches: [{path: T/Kind, value: "one"}]
        items: &items
          - {segment: H, required: true}
          - {embeddedSet: IN, name: INNER, maxRepeats: 0}
          - {segment: T, required: true}
      - {name: SECOND, items: *items}
  - name: IN
    trimSegments: true
    separators: *separators
    segments:
      - {name: S, fields: [{name: Value}]}
    messages:
      - name: INNER_MESSAGE
        items: [{segment: S, required: true, maxRepeats: 0}]
)";

TEST(MessageParseEmbeddingTest, EmbeddedMessagesSurviveTheirEnclosingCandidateBeingGivenUp) {
  MessageFactory factory;
  compileAndLoad(factory, kEmbeddingDefinition);
  const std::u16string text = u"H*x~S*a~S*b~T*two~";
  auto message = factory.Parse(text.c_str());
  ASSERT_NE(message, nullptr);
  EXPECT_STREQ(message->getName(), "SECOND");
  MessageElement* inner = message->getElementAt("INNER");
  ASSERT_EQ(inner->getElementCount(), 1);
  EXPECT_EQ(narrow(inner->getElementAt(0)->getElementAt("S[1]/Value")->getValue()), "b");
  EXPECT_TRUE(numberedFindingsOf(*message).empty());
  EXPECT_EQ(message->getEncodedValue(), text);
}

// An embedded message that fails leaves its finding, and its segments stay in the tree.
TEST(MessageParseEmbeddingTest, SegmentsOfAFailedEmbeddedMessageAreKept) {
  MessageFactory factory;
  std::string definition = kEmbeddingDefinition;
  const std::string inner = "      - name: INNER_MESSAGE\n";
  definition.replace(definition.find(inner), inner.size(), inner + "        matches: [{path: S/Value, value: ok}]\n");
  compileAndLoad(factory, definition);
  auto message = factory.Parse(u"H*x~S*bad~S*worse~T*two~");
  ASSERT_NE(message, nullptr);
  EXPECT_STREQ(message->getName(), "SECOND");
  const auto findings = numberedFindingsOf(*message);
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings.front().first, 1005);
  ASSERT_EQ(message->getUnknownSegmentCount(), 2);
  EXPECT_EQ(narrow(message->getUnknownSegment(1)->getElementAt("Value")->getValue()), "worse");
  EXPECT_EQ(narrow(message->getElementAt("T/Kind")->getValue()), "two");
}

}  // namespace
}  // namespace vantrelia::testing
