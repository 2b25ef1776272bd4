// Segments whose fields stand behind a presence indicator: marked fields absent without theirs,
// unmarked fields read either way, composites that read the indicator themselves, and the way
// back out, where an absent marked field leaves no trace unless a marked value follows it.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "elements/FPSegmentImpl.h"
#include "support/CompilerTesting.h"
#include "support/ElementTesting.h"

namespace vantrelia::testing {
namespace {

const char* const kPresenceDefinition = R"yaml(
messageSets:
  - name: FPI
    trimSegments: true
    separators:
      segment: {value: "\n", style: terminator}
      field1: {value: "|", style: initiator}
      field2: {value: "^"}
    messageTypeFields: [HDR/1]
    composites:
      # Reads the segment's indicator for its first child itself.
      - name: PC
        separator: field2
        presenceIndicator: {separator: string, text: "~"}
        fields:
          - {name: Code, fieldPresenceIndicator: true}
          - {name: Text}
    segments:
      - name: HDR
        fields: [{name: Type, required: true}]
      - name: FP
        presenceIndicator: {separator: string, text: "~"}
        fields:
          - {name: A, fieldPresenceIndicator: true}
          - {name: B, fieldPresenceIndicator: true}
          - {name: C}
          - {name: D, fieldPresenceIndicator: true}
      - name: FC
        presenceIndicator: {separator: string, text: "~"}
        fields:
          - {name: P, composite: PC, fieldPresenceIndicator: true}
          - {name: Q, fieldPresenceIndicator: true}
    messages:
      - name: M
        type: M
        items:
          - {segment: HDR, required: true}
          - {segment: FP}
          - {segment: FC}
)yaml";

class FPSegment : public ElementTreeTest {
 protected:
  void SetUp() override {
    compileAndLoad(factory, kPresenceDefinition);
    message = create("M");
  }

  std::unique_ptr<MessageElement> message;
};

using Findings = std::vector<std::pair<int, std::string>>;

TEST_F(FPSegment, MarkedFieldsAreThereOnlyBehindTheirIndicator) {
  EXPECT_NE(dynamic_cast<FPSegmentImpl*>(at(*message, "FP")), nullptr);
  struct Case {
    const char* segment;
    const char* text;
    std::vector<std::pair<const char*, const char*>> values;  // "-" for a field not made
    const char* written;
  };
  const Case cases[] = {
      {"FP", "FP|~1|~2|3|~4\n", {{"A", "1"}, {"B", "2"}, {"C", "3"}, {"D", "4"}}, "FP|~1|~2|3|~4\n"},
      // Without its indicator a marked field is absent, separator and all: the text goes to the
      // next field that takes it.
      {"FP", "FP|~2|3\n", {{"A", "2"}, {"B", "-"}, {"C", "3"}, {"D", "-"}}, "FP|~2|3\n"},
      {"FP", "FP|3|~4\n", {{"A", "-"}, {"B", "-"}, {"C", "3"}, {"D", "4"}}, "FP|3|~4\n"},
      // An unmarked field takes an indicator in front of it as well.
      {"FP", "FP|~1|~9\n", {{"A", "1"}, {"B", "9"}, {"C", "-"}}, "FP|~1|~9\n"},
      {"FP", "FP|~1|~2|~3|~4\n", {{"C", "3"}, {"D", "4"}}, "FP|~1|~2|3|~4\n"},
      // An indicator ends the value before it and opens the next marked field, separator or not.
      {"FP", "FP|~1~2\n", {{"A", "1"}, {"B", "2"}, {"C", "-"}}, "FP|~1|~2\n"},
      // A composite with the same indicator reads it for its first child.
      {"FC", "FC|~X^Y|~Z\n", {{"P/Code", "X"}, {"P/Text", "Y"}, {"Q", "Z"}}, "FC|~X^Y|~Z\n"},
      // The indicators of the two are alike: the first one is the composite's.
      {"FC", "FC|~X\n", {{"P/Code", "X"}, {"Q", "-"}}, "FC|~X\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    at(*message, c.segment)->setEmpty();
    EXPECT_EQ(readSegmentText(*at(*message, c.segment), c.text), Findings{});
    for (const auto& [path, expected] : c.values) {
      MessageElement* field = at(*message, std::string(c.segment) + "/" + path);
      if (std::string(expected) == "-") {
        EXPECT_FALSE(field->isPresent()) << path;
      } else {
        EXPECT_EQ(narrow(field->getValue()), expected) << path;
      }
    }
    EXPECT_EQ(narrow(at(*message, c.segment)->getEncodedValue()), c.written);
  }
}

// An absent marked field shows its indicator only where a marked field with a value follows it
// before any unmarked field; otherwise it leaves nothing behind.
TEST_F(FPSegment, AbsentMarkedFieldsLeaveNoTraceUnlessAMarkedValueFollows) {
  struct Case {
    std::vector<std::pair<const char*, const char*>> values;
    const char* written;
  };
  const Case cases[] = {
      {{{"B", "2"}}, "FP|~|~2\n"},
      {{{"C", "3"}}, "FP|3\n"},
      {{{"A", "1"}, {"C", "3"}}, "FP|~1|3\n"},
      // An unmarked field keeps its place, empty or not.
      {{{"A", "1"}, {"D", "4"}}, "FP|~1||~4\n"},
      {{{"C", "3"}, {"D", "4"}}, "FP|3|~4\n"},
  };
  for (const Case& c : cases) {
    InternalElement* segment = at(*message, "FP");
    segment->setEmpty();
    std::string trace;
    for (const auto& [name, value] : c.values) {
      at(*segment, name)->setValue(wide(value));
      trace += std::string(name) + "=" + value + " ";
    }
    SCOPED_TRACE(trace);
    const std::string written = narrow(segment->getEncodedValue());
    EXPECT_EQ(written, c.written);
    // And reads back as it was set.
    segment->setEmpty();
    EXPECT_EQ(readSegmentText(*segment, written), Findings{});
    for (const auto& [name, value] : c.values) EXPECT_EQ(narrow(at(*segment, name)->getValue()), value) << name;
  }
}

}  // namespace
}  // namespace vantrelia::testing
