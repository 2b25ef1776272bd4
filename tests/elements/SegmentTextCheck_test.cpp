// Which segment texts go out as they were read, without cutting or writing their fields: only
// those the fields would give character for character. Every case also writes the segment, which
// debug builds hold to the fields' own write, and release builds take from the text.
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

#include "elements/SegmentImplBase.h"
#include "foundation/Any.h"
#include "parsing/SeparatorList.h"
#include "support/CompilerTesting.h"
#include "support/ElementTesting.h"

namespace vantrelia::testing {
namespace {

const char* const kDefinition = R"(
messageSets:
  - name: T
    trimSegments: true
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', style: initiator}
      field2: '^'
      field3: '&'
      repeat: '~'
      user1: {value: '\', replacement: '\E\'}
      "null": '""'
    messageTypeFields: [MSH.1]
    composites:
      - name: HD
        fields: [{name: Namespace}, {name: Universal}]
      - name: CX
        fields:
          - {name: Id, required: true}
          - {name: Check}
          - {name: Authority, composite: HD}
    segments:
      - name: MSH
        fields: [{name: Type, required: true}]
      - name: AAA
        fields:
          - {name: SetId, dataType: long}
          - {name: Ids, composite: CX, maxRepeats: 2}
          - {name: Code, required: true}
          - {name: Note, maxLength: 4}
      - name: BBB
        fields: [{name: Amount, dataType: long, alignment: zeroMin}, {name: Text}]
      - name: CCC
        fields: [{name: Value}, {name: Unit}]
      - name: FIL
        fields:
          - {name: Left, minLength: 4, alignment: leftMin}
          - {name: Right, minLength: 3, alignment: rightMin}
          - {name: Blank, required: true, minLength: 2, alignment: leftMin, default: ' '}
    messages:
      - name: M
        type: M
        items:
          - {segment: MSH, required: true}
          - {segment: AAA}
          - {segment: BBB}
          - {segment: CCC, maxRepeats: 0}
          - {segment: FIL}
)";

class SegmentTextCheckTest : public ::testing::Test {
 protected:
  void SetUp() override { compileAndLoad(factory, kDefinition); }

  // The segment at `path` of a new message, read from `text`.
  SegmentImplBase& read(MessageElement& message, const char* path, const std::string& text) {
    auto& segment = static_cast<SegmentImplBase&>(*message.getElementAt(path));
    EXPECT_EQ(segment.setEncodedValue(wide(text)), u"") << "the whole text is the segment's";
    return segment;
  }
  static bool writtenAsRead(SegmentImplBase& segment) {
    return segment.fieldTextAsRead(*segment.getSeparatorList()).has_value();
  }

  MessageFactory factory;
};

TEST_F(SegmentTextCheckTest, OnlyTextsTheFieldsWouldGiveAgainGoOutAsRead) {
  struct Case {
    const char* path;
    const char* text;
    bool asRead;
    const char* written;  // null: the text as it was read
  };
  const Case cases[] = {
      {"AAA", "AAA|1|X^^A&B|C|n\r", true, nullptr},
      {"AAA", "AAA|1||C\r", true, nullptr},               // an empty field inside
      {"AAA", "AAA|1|X~Y|C\r", true, nullptr},            // repeats up to the maximum
      {"AAA", "AAA|1|X^^&B|C\r", true, nullptr},          // an empty component and subcomponent inside
      {"AAA", "AAA|1|X|C\r", true, nullptr},
      {"AAA", "AAA|1|X|C", true, "AAA|1|X|C\r"},          // the last segment of a text, unterminated
      {"AAA", "AAA|1||C|\r", false, "AAA|1||C\r"},        // empty items at the end go
      {"AAA", "AAA|1|X^|C\r", false, "AAA|1|X|C\r"},
      {"AAA", "AAA|1|X~|C\r", false, "AAA|1|X|C\r"},
      {"AAA", "AAA|1|X^^A&|C\r", false, "AAA|1|X^^A|C\r"},
      {"AAA", "AAA|1\r", false, "AAA|1||\r"},             // a required field shows
      {"AAA", "AAA|1|^K|C\r", false, nullptr},            // a required component left empty
      {"AAA", "AAA|1|X|C\\E\\D\r", false, nullptr},       // an escape sequence
      {"AAA", "AAA|1|X|\"\"\r", false, nullptr},          // the null value
      {"AAA", "AAA|1|X|C|abcde\r", true, nullptr},        // longer than its maximum, kept
      {"AAA", "AAA|1|X|C|n|more\r", false, "AAA|1|X|C|n\r"},  // a field the definition hasn't
      {"AAA", "AAA|1|X~Y~Z|C\r", true, nullptr},          // repeats beyond the maximum, kept
      {"AAA", "AAA|1|X^K^A^Z|C\r", false, "AAA|1|X^K^A|C\r"},  // a component the composite hasn't
      {"BBB", "BBB|0042|t\r", false, "BBB|42|t\r"},       // a field whose zeros are taken off
      // Values filled to a width, which the read takes the filler off
      {"FIL", "FIL|AB  |  7|XY\r", true, nullptr},
      {"FIL", "FIL|ABCDE|1234|XYZ\r", true, nullptr},     // longer than the width
      {"FIL", "FIL|ABCD|  7|  \r", true, nullptr},        // a required field of filler, its default filled
      {"FIL", "FIL||  7|XY\r", true, nullptr},            // an empty field is no value to fill
      {"FIL", "FIL|AB|  7|XY\r", false, "FIL|AB  |  7|XY\r"},     // short of the width
      {"FIL", "FIL|AB   |  7|XY\r", false, "FIL|AB  |  7|XY\r"},  // more filler than the width
      {"FIL", "FIL|AB  C|7  |XY\r", true, nullptr},       // filler inside or on the other side is data
      {"FIL", "FIL|ABCD|  77 |XY\r", false, "FIL|ABCD|77 |XY\r"},
      {"FIL", "FIL|ABCD| 7|XY\r", false, "FIL|ABCD|  7|XY\r"},
      {"FIL", "FIL|    |  7|XY\r", false, "FIL||  7|XY\r"},       // filler alone is an empty value
      {"FIL", "FIL|ABCD|  7|   \r", false, "FIL|ABCD|  7|  \r"},  // more filler than its default fills
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    auto message = factory.CreateMessage("M");
    SegmentImplBase& segment = read(*message, c.path, c.text);
    EXPECT_EQ(writtenAsRead(segment), c.asRead);
    EXPECT_EQ(narrow(segment.getEncodedValue()), c.written ? c.written : c.text);
  }
}

TEST_F(SegmentTextCheckTest, ChangesAfterTheReadWriteTheFields) {
  // A changed field, a changed separator of the message, and the same text again.
  auto message = factory.CreateMessage("M");
  SegmentImplBase& segment = read(*message, "AAA", "AAA|1|X|C\r");
  ASSERT_TRUE(writtenAsRead(segment));
  message->getElementAt("AAA/Code")->setValue(u"D");
  EXPECT_FALSE(writtenAsRead(segment));
  EXPECT_EQ(narrow(segment.getEncodedValue()), "AAA|1|X|D\r");

  SegmentImplBase& other = read(*message, "AAA", "AAA|1|X^K|C\r");
  ASSERT_TRUE(writtenAsRead(other));
  message->setSeparatorValue(qxSepField2, u"!");
  EXPECT_FALSE(writtenAsRead(other));
  EXPECT_EQ(narrow(other.getEncodedValue()), "AAA|1|X!K|C\r");
  message->setSeparatorValue(qxSepField2, u"^");
  EXPECT_TRUE(writtenAsRead(other)) << "the separators it was read with are back";
  EXPECT_EQ(narrow(other.getEncodedValue()), "AAA|1|X^K|C\r");
}

TEST_F(SegmentTextCheckTest, WritesAgainFollowTheOptionsOfTheirTime) {
  // What the check found is kept for the next write; an option changed in between still counts.
  auto message = factory.Parse(wide("MSH|M\rAAA|1|X|C|abcde\r").c_str());
  ASSERT_NE(message, nullptr);
  const std::u16string truncate = std::u16string(OptionUriPrefix) + u"/edi/truncateFieldsToMaxLength";
  const struct {
    bool truncating;
    const char* written;
  } writes[] = {
      {false, "MSH|M\rAAA|1|X|C|abcde\r"},
      {true, "MSH|M\rAAA|1|X|C|abcd\r"},
      {true, "MSH|M\rAAA|1|X|C|abcd\r"},
      {false, "MSH|M\rAAA|1|X|C|abcde\r"},
  };
  for (const auto& write : writes) {
    SCOPED_TRACE(write.truncating);
    factory.SetOption(truncate, Any::any(write.truncating));
    EXPECT_EQ(writtenAsRead(static_cast<SegmentImplBase&>(*message->getElementAt("AAA"))), !write.truncating);
    EXPECT_EQ(narrow(message->getEncodedValue()), write.written);
  }
}

TEST_F(SegmentTextCheckTest, AWholeMessageWritesItsUntouchedSegmentsAsRead) {
  const std::string text = "MSH|M\rAAA|1|X^^A&B|C\rBBB|7\rCCC|1|kg\rCCC|2||\rCCC|3|g\r";
  auto message = factory.Parse(wide(text).c_str());
  ASSERT_NE(message, nullptr);
  EXPECT_TRUE(writtenAsRead(static_cast<SegmentImplBase&>(*message->getElementAt("CCC[0]"))));
  EXPECT_FALSE(writtenAsRead(static_cast<SegmentImplBase&>(*message->getElementAt("CCC[1]"))));
  // The second CCC loses its empty last fields; the others stand as they were read.
  EXPECT_EQ(narrow(message->getEncodedValue()), "MSH|M\rAAA|1|X^^A&B|C\rBBB|7\rCCC|1|kg\rCCC|2\rCCC|3|g\r");
  message->getElementAt("CCC[2]/Unit")->setValue(u"mg");
  EXPECT_EQ(narrow(message->getEncodedValue()), "MSH|M\rAAA|1|X^^A&B|C\rBBB|7\rCCC|1|kg\rCCC|2\rCCC|3|mg\r");
}

// A header that carries the separators of its message, as HL7's MSH does, in a set that trims its
// segments; a set that keeps their empty fields; and a header that carries the segment separator
// too, as X12's ISA does.
const char* const kHeaderDefinition = R"(
messageSets:
  - name: H
    trimSegments: true
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', style: initiator, replacement: '\F\', fromField: HDR, position: 1}
      field2: {value: '^', replacement: '\S\', fromField: HDR.1, position: 0}
      repeat: {value: '~', replacement: '\R\', fromField: HDR.1, position: 1}
      user1: {value: '\', replacement: '\E\', fromField: HDR.1, position: 2}
    segments:
      - name: HDR
        fields:
          - {name: Characters, maxLength: 3}
          - {name: From}
          - {name: To, composite: Party}
          - {name: Note, maxRepeats: 3}
      - name: DAT
        fields: [{name: Value, composite: Party}]
    composites:
      - name: Party
        fields: [{name: Id}, {name: Kind}]
    messages:
      - name: M
        items: [{segment: HDR, required: true}, {segment: DAT, maxRepeats: 0}]
  - name: K
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '!', style: initiator}
      field2: ':'
    segments:
      - name: KEY
        fields: [{name: Type, required: true}]
      - name: VAL
        fields: [{name: Amount}, {name: Unit}, {name: Note}]
    messageTypeFields: [KEY.1]
    messages:
      - name: K
        type: K
        items: [{segment: KEY, required: true}, {segment: VAL, maxRepeats: 0}]
  - name: X
    trimSegments: true
    separators:
      segment: {value: "~", style: terminator, fromField: IHD, position: -1}
      field1: {value: '*', style: initiator, fromField: IHD, position: 1}
      field2: {value: ':', fromField: IHD.3, position: 0}
    segments:
      - name: IHD
        fields:
          - {name: Sender, required: true, minLength: 5, maxLength: 8, alignment: leftMin}
          - {name: Secret, required: true, minLength: 4, maxLength: 4, alignment: leftMin, default: '    '}
          - {name: Component, required: true, minLength: 1, maxLength: 1}
      - name: ROW
        fields: [{name: Value, composite: Pair}, {name: Note}]
    composites:
      - name: Pair
        fields: [{name: A}, {name: B}]
    messages:
      - name: X
        items: [{segment: IHD, required: true}, {segment: ROW, maxRepeats: 0}]
)";

TEST(SegmentTextCheckHeaderTest, AHeaderGoesOutAsReadOnlyWhereItsFieldsWouldGiveItsText) {
  // Debug and fuzz builds hold each header written as read to a write of its fields on a copy of
  // the list: text and separators alike.
  MessageFactory factory;
  compileAndLoad(factory, kHeaderDefinition);
  struct Case {
    const char* text;
    bool asRead;
    const char* written;  // null: the text as it was read
  };
  const Case cases[] = {
      {"HDR|^~\\|A|B^C|N1~N2\rDAT|v^w\r", true, nullptr},
      {"HDR|^~\\|A\rDAT|v\r", true, nullptr},
      {"HDR|^~\\||B\rDAT|v\r", true, nullptr},                         // an empty field inside
      {"HDR|#~\\|A|B#C\rDAT|v#w\r", true, nullptr},                    // separators of its own
      {"HDR|^~\\|A|\rDAT|v\r", false, "HDR|^~\\|A\rDAT|v\r"},          // an empty field at the end
      {"HDR|^~\\|A\\S\\B\rDAT|v\r", false, nullptr},                   // an escape sequence
      {"HDR|^~|A\rDAT|v\r", false, "HDR|^~\\|A\rDAT|v\r"},             // a separator the header lacks
      {"HDR|^~\\|A|B|C|D\rDAT|v\r", false, "HDR|^~\\|A|B|C\rDAT|v\r"},  // a field the definition hasn't
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    std::unique_ptr<MessageElement> message = factory.Parse(wide(c.text).c_str());
    ASSERT_NE(message, nullptr);
    for (int write = 0; write < 2; ++write) {
      EXPECT_EQ(narrow(message->getEncodedValue()), c.written ? c.written : c.text);
    }
#if defined(NDEBUG) && !defined(VANTRELIA_CHECK_FAST_PATHS)
    // Fields left in the text stay there when the header is written from it.
    EXPECT_EQ(static_cast<SegmentImplBase&>(*message->getElementAt("HDR")).hasUncutFields(), c.asRead);
#endif
    // The separators the header settled are the message's still.
    EXPECT_EQ(narrow(message->getSeparatorValue(qxSepField2)), std::string(1, c.text[4]));
  }
}

TEST(SegmentTextCheckHeaderTest, AHeaderThatEndsItsOwnSegmentGoesOutAsReadWithEveryField) {
  // As X12's ISA: the header carries the segment separator too, so none is in force while it is
  // written, and its fields are filled to their widths. Its read cuts every field, so only debug
  // builds tell whether it went out as read; they hold every such write to a write of its fields.
  MessageFactory factory;
  compileAndLoad(factory, kHeaderDefinition);
  const struct {
    const char* text;
    const char* written;  // null: the text as it was read
  } cases[] = {
      {"IHD*AB   *    *:~ROW*1:2*n~", nullptr},
      {"IHD*ABCDEF*PASS*:~ROW*1~", nullptr},
      {"IHD*AB   *    *!|ROW*1!2|", nullptr},                 // separators of its own
      {"IHD*AB*    *:~ROW*1~", "IHD*AB   *    *:~ROW*1~"},     // short of its width
      {"IHD*AB   *    *:~ROW*1:~", "IHD*AB   *    *:~ROW*1~"},  // the segment after it trims
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    std::unique_ptr<MessageElement> message = factory.Parse(wide(c.text).c_str());
    ASSERT_NE(message, nullptr);
    for (int write = 0; write < 2; ++write) {
      EXPECT_EQ(narrow(message->getEncodedValue()), c.written ? c.written : c.text);
    }
  }
}

TEST(SegmentTextCheckHeaderTest, ASetThatKeepsEmptyFieldsShowsEveryFieldAsItsWriterDoes) {
  MessageFactory factory;
  compileAndLoad(factory, kHeaderDefinition);
  const struct {
    const char* text;
    const char* written;
  } cases[] = {
      {"KEY!K\rVAL!1!kg!n\r", "KEY!K\rVAL!1!kg!n\r"},
      {"KEY!K\rVAL!1!kg\r", "KEY!K\rVAL!1!kg!\r"},
      {"KEY!K\rVAL!1\r", "KEY!K\rVAL!1!!\r"},
      {"KEY!K\rVAL!!kg!n\r", "KEY!K\rVAL!!kg!n\r"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.text);
    std::unique_ptr<MessageElement> message = factory.Parse(wide(c.text).c_str());
    ASSERT_NE(message, nullptr);
    EXPECT_EQ(narrow(message->getEncodedValue()), c.written);
  }
}

}  // namespace
}  // namespace vantrelia::testing
