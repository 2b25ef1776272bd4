// Segments of name/value pairs: pairs read in any order and written in definition order, bare
// names, missing names, names the definition doesn't know, and names told apart by themselves.

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "elements/NVPairSegmentImpl.h"
#include "support/CompilerTesting.h"
#include "support/ElementTesting.h"

namespace vantrelia::testing {
namespace {

const char* const kNamePairDefinition = R"yaml(
messageSets:
  - name: NVP
    trimSegments: true
    separators:
      segment: {value: "\n", style: terminator}
      field1: {value: "|", style: initiator}
    messageTypeFields: [HDR/1]
    segments:
      - name: HDR
        fields: [{name: Type, required: true}]
      - name: KV
        nameValuePair: {separator: string, text: "="}
        fields: [{name: A}, {name: B}, {name: Code, required: true, default: X}]
      # No separator between name and value: the longest name that begins a pair is its name.
      - name: NS
        tag: "NS"
        nameValuePair: {separator: string, text: ""}
        fields: [{name: A}, {name: AB}, {name: ABC}]
    messages:
      - name: M
        type: M
        items:
          - {segment: HDR, required: true}
          - {segment: KV}
          - {segment: NS}
)yaml";

class NVPairSegment : public ElementTreeTest {
 protected:
  void SetUp() override {
    compileAndLoad(factory, kNamePairDefinition);
    message = create("M");
  }
  std::vector<std::pair<int, std::string>> read(const std::string& name, const std::string& text) {
    return readSegmentText(*at(*message, name), text);
  }

  std::unique_ptr<MessageElement> message;
};

using Findings = std::vector<std::pair<int, std::string>>;

TEST_F(NVPairSegment, PairsAreReadByNameAndWrittenInDefinitionOrder) {
  EXPECT_NE(dynamic_cast<NVPairSegmentImpl*>(at(*message, "KV")), nullptr);
  struct Case {
    const char* segment;
    const char* text;
    std::vector<std::pair<const char*, const char*>> values;
    std::vector<const char*> present;  // fields made, with or without a value
    Findings findings;
    const char* written;
  };
  const Case cases[] = {
      {"KV", "KV|B=2|A=1|Code=Q\n", {{"A", "1"}, {"B", "2"}, {"Code", "Q"}}, {}, {}, "KV|A=1|B=2|Code=Q\n"},
      // A required pair that isn't there is written with its default.
      {"KV", "KV|A=1\n", {{"A", "1"}}, {}, {}, "KV|A=1|Code=X\n"},
      // A bare name makes its field, empty.
      {"KV", "KV|B|A=7\n", {{"A", "7"}, {"B", ""}}, {"B"}, {}, "KV|A=7|Code=X\n"},
      {"KV", "KV|=1|B=2\n", {{"B", "2"}}, {}, {{1039, "No field name provided in name/value pair segment"}},
       "KV|B=2|Code=X\n"},
      // A name the definition doesn't know loses its pair only.
      {"KV", "KV|Z=9|A=1\n", {{"A", "1"}}, {}, {{1038, "Field not found in name/value pair segment: Z"}},
       "KV|A=1|Code=X\n"},
      // The longest name that begins the pair wins.
      {"NS", "NS|ABC5|A1|AB22\n", {{"A", "1"}, {"AB", "22"}, {"ABC", "5"}}, {}, {}, "NS|A1|AB22|ABC5\n"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    at(*message, c.segment)->setEmpty();
    EXPECT_EQ(read(c.segment, c.text), c.findings);
    for (const auto& [name, expected] : c.values)
      EXPECT_EQ(narrow(at(*message, std::string(c.segment) + "/" + name)->getValue()), expected) << name;
    for (const char* name : c.present) {
      auto* segment = static_cast<SegmentImplBase*>(at(*message, c.segment));
      int index = -1;
      for (int i = 0; i < segment->getFieldCount(); ++i)
        if (segment->getFieldDefns()[static_cast<size_t>(i)]->getName().str() == name) index = i;
      EXPECT_TRUE(segment->isChildPresent(index)) << name;
    }
    EXPECT_EQ(narrow(at(*message, c.segment)->getEncodedValue()), c.written);
  }
}

}  // namespace
}  // namespace vantrelia::testing
