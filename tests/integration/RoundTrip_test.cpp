// Generated messages of every bundled standard survive the trip through the tree: with the preserve
// option each message comes back as the characters it was read from; without it, what the tree
// writes parses into the same tree, which writes the same text again.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "bench/BundledTextGenerator.h"
#include "elements/MessageElement.h"
#include "elements/MessageImpl.h"
#include "foundation/MessageFactory.h"
#include "parsing/MessageReader.h"
#include "support/CompilerTesting.h"
#include "support/ElementTesting.h"
#include "support/ReadFile.h"

namespace vantrelia::testing {
namespace {

using Standard = bench::BundledTextGenerator::Standard;

const std::u16string kPreserve = std::u16string(OptionUriPrefix) + u"/edi/preserveParsedText";
const std::u16string kCutWhenRead = std::u16string(OptionUriPrefix) + u"/edi/cutFieldsWhenRead";

// Every present node below `element`, one line each: its path, and its value where it has one.
void describe(MessageElement& element, std::string& out) {
  const int count = element.getElementCount();
  for (int index = 0; index < count; ++index) {
    MessageElement* child = element.getElementAt(index);
    if (!child || !child->isPresent()) continue;
    out += child->getPath();
    if (child->getNodeType() == qxPrimitive) out += "=" + narrow(child->getValue());
    out += "\n";
    describe(*child, out);
  }
}

std::string describe(MessageElement& message) {
  std::string out = std::string(message.getName()) + "\n";
  describe(message, out);
  return out;
}

struct Read {
  std::vector<std::unique_ptr<MessageElement>> messages;
  std::vector<std::u16string> spans;
  int64_t skipped = 0;
};

Read readAll(MessageFactory& factory, const std::u16string& text) {
  Read result;
  MessageReader reader(factory.getWarehouse(), text);
  MessageReader::Item item;
  int64_t covered = 0;
  while (reader.next(item)) {
    EXPECT_EQ(item.offset, covered) << "the reader lost or repeated text";
    covered = item.offset + item.length;
    if (!item.message) {
      result.skipped += item.length;
      continue;
    }
    result.spans.push_back(text.substr(static_cast<size_t>(item.offset), static_cast<size_t>(item.length)));
    result.messages.push_back(std::move(item.message));
  }
  EXPECT_EQ(covered, static_cast<int64_t>(text.size()));
  return result;
}

class RoundTripTest : public ::testing::TestWithParam<Standard> {
 protected:
  static void SetUpTestSuite() {
    factory = new MessageFactory();
    compileAndLoad(*factory, readFile(std::string(VANTRELIA_SOURCE_DIR) + "/bundled/default.yaml"));
  }
  static void TearDownTestSuite() {
    delete factory;
    factory = nullptr;
  }
  void TearDown() override { factory->SetOption(kPreserve, Any::any(false)); }

  static std::u16string generated() { return bench::BundledTextGenerator().generate(GetParam(), 40000); }

  static MessageFactory* factory;
};

MessageFactory* RoundTripTest::factory = nullptr;

TEST_P(RoundTripTest, PreservedMessagesComeBackAsRead) {
  factory->SetOption(kPreserve, Any::any(true));
  const std::u16string text = generated();
  Read read = readAll(*factory, text);
  ASSERT_GT(read.messages.size(), 10u);
  EXPECT_EQ(read.skipped, 0);
  for (size_t i = 0; i < read.messages.size(); ++i) {
    ASSERT_EQ(read.messages[i]->getEncodedValue(), read.spans[i]) << "message " << i;
  }
}

TEST_P(RoundTripTest, WrittenTreesParseIntoTheSameTree) {
  const std::u16string text = generated();
  Read first = readAll(*factory, text);
  ASSERT_GT(first.messages.size(), 10u);
  for (size_t i = 0; i < first.messages.size(); ++i) {
    SCOPED_TRACE("message " + std::to_string(i));
    const std::u16string written = first.messages[i]->getEncodedValue();
    auto again = factory->Parse(written.c_str());
    ASSERT_NE(again, nullptr) << narrow(written);
    EXPECT_EQ(describe(*again), describe(*first.messages[i]));
    EXPECT_EQ(again->getEncodedValue(), written);
  }
}

// Lazy reading (fields cut when first needed, a message ended by the tag of the next one's header)
// and reading every segment in full give the same messages, trees, texts and parse findings.
TEST_P(RoundTripTest, LazyReadingAndReadingInFullAgree) {
  const std::u16string text = generated();
  Read late = readAll(*factory, text);
  factory->SetOption(kCutWhenRead, Any::any(true));
  Read atOnce = readAll(*factory, text);
  factory->SetOption(kCutWhenRead, Any::any(false));
  ASSERT_GT(late.messages.size(), 10u);
  ASSERT_EQ(late.messages.size(), atOnce.messages.size());
  const auto findingsOf = [](MessageElement& message) {
    std::multiset<std::pair<int32_t, std::string>> found;
    static_cast<MessageImpl&>(message).getParseFindings().forEach([&](MessageElement*, const ValidationError& error) {
      found.emplace(error.getErrorNumber(), narrow(error.getError()));
    });
    return found;
  };
  for (size_t i = 0; i < late.messages.size(); ++i) {
    SCOPED_TRACE("message " + std::to_string(i));
    EXPECT_EQ(late.spans[i], atOnce.spans[i]);
    EXPECT_EQ(findingsOf(*late.messages[i]), findingsOf(*atOnce.messages[i]));
    EXPECT_EQ(describe(*late.messages[i]), describe(*atOnce.messages[i]));
    EXPECT_EQ(late.messages[i]->getEncodedValue(), atOnce.messages[i]->getEncodedValue());
  }
}

// A batch of all three standards with junk between them is read completely (readAll checks that
// every character is in a message or in skipped text), and each message is still found.
TEST(RoundTripMixedTest, MixedBatchWithJunkIsReadCompletely) {
  MessageFactory factory;
  compileAndLoad(factory, readFile(std::string(VANTRELIA_SOURCE_DIR) + "/bundled/default.yaml"));
  bench::BundledTextGenerator generator;
  const std::u16string hl7 = generator.generate(Standard::Hl7, 3000);
  const std::u16string x12 = generator.generate(Standard::X12, 3000);
  const std::u16string edifact = generator.generate(Standard::Edifact, 3000);
  const std::u16string junk = u"not a message at all\n";
  const std::u16string text = hl7 + junk + x12 + junk + edifact + junk;

  const Read mixed = readAll(factory, text);
  size_t alone = 0;
  for (const auto* part : {&hl7, &x12, &edifact}) alone += readAll(factory, *part).messages.size();
  EXPECT_EQ(mixed.messages.size(), alone);
  // A message followed by junk or by another standard ends where reading everything says.
  factory.SetOption(kCutWhenRead, Any::any(true));
  const Read inFull = readAll(factory, text);
  EXPECT_EQ(inFull.spans, mixed.spans);
  EXPECT_EQ(inFull.skipped, mixed.skipped);
}

// Required items the text lacked: the tree's writer makes them up, unless the host asks for the
// fewest changes, which a parsed message then keeps; a message the host built gets them anyway.
TEST(RoundTripMixedTest, MinimizeChangesKeepsAbsentItemsOfParsedMessagesAbsent) {
  MessageFactory factory;
  compileAndLoad(factory, readFile(std::string(VANTRELIA_SOURCE_DIR) + "/bundled/default.yaml"));
  const std::u16string minimize = std::u16string(OptionUriPrefix) + u"/edi/minimizeChanges";
  const std::string text = "MSH|^~\\&|A|B|C|D|20261123||ADT^A04|1|P|2.5\rPID|1||7^^^H||DOE^JANE\r";
  struct Case {
    bool option;
    bool parsed;
    bool withEvent;
  };
  for (const Case c : {Case{false, true, true}, Case{true, true, false}, Case{true, false, true}}) {
    SCOPED_TRACE(std::string(c.option ? "option on, " : "option off, ") + (c.parsed ? "parsed" : "created"));
    factory.SetOption(minimize, Any::any(c.option));
    auto message = c.parsed ? factory.Parse(wide(text).c_str()) : factory.CreateMessage("ADT_A04");
    ASSERT_NE(message, nullptr);
    const std::string written = narrow(message->getEncodedValue());
    EXPECT_EQ(written.find("\rEVN") != std::string::npos, c.withEvent) << written;
  }
}

INSTANTIATE_TEST_SUITE_P(Bundled, RoundTripTest, ::testing::Values(Standard::Hl7, Standard::X12, Standard::Edifact),
                         [](const ::testing::TestParamInfo<Standard>& info) {
                           switch (info.param) {
                             case Standard::Hl7: return std::string("Hl7");
                             case Standard::X12: return std::string("X12");
                             case Standard::Edifact: return std::string("Edifact");
                           }
                           return std::string("Unknown");
                         });

}  // namespace
}  // namespace vantrelia::testing
