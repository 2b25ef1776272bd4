// A header that carries the separators of its message, read again as an earlier header that began
// with the same characters was read: every message reads as it does on a thread that has read
// nothing before, whichever messages came before it.

#include "elements/HeaderReplay.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "elements/MessageImpl.h"
#include "foundation/MessageFactory.h"
#include "support/CompilerTesting.h"
#include "support/ElementTesting.h"

namespace vantrelia::testing {
namespace {

// The header's first field holds the component and repeat separators and the escape character,
// as HL7's MSH does; trailing empty fields are findings.
constexpr const char* kDefinition = R"(
messageSets:
  - name: POS
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', style: initiator, replacement: '\F\', fromField: HDR, position: 1}
      field2: {value: '^', replacement: '\S\', fromField: HDR.1, position: 0}
      repeat: {value: '~', fromField: HDR.1, position: 1}
      user1: {value: '\', replacement: '\E\', fromField: HDR.1, position: 2}
    segments:
      - name: HDR
        fields:
          - {name: Characters, maxLength: 3}
          - {name: From}
          - {name: To, composite: Party}
          - {name: Note, maxRepeats: 3}
      - name: DAT
        fields: [{name: Value}]
    composites:
      - name: Party
        fields: [{name: Id}, {name: Kind}]
    messages:
      - name: M
        items: [{segment: HDR, required: true}, {segment: DAT, required: true}]
)";

// The message's fields by path, its findings and the text it writes.
std::vector<std::string> readMessage(MessageFactory& factory, const std::string& text) {
  std::unique_ptr<MessageElement> message = factory.Parse(wide(text).c_str());
  if (!message) return {"no message"};
  std::vector<std::string> lines;
  for (const char* path : {"HDR/Characters", "HDR/From", "HDR/To/Id", "HDR/To/Kind", "HDR/Note[0]", "HDR/Note[1]",
                           "DAT/Value"}) {
    std::string value = "(none)";
    try {
      if (MessageElement* field = message->getElementAt(path)) value = narrow(field->getValue());
    } catch (const std::exception&) {
      // A repeat that has no such item.
    }
    lines.push_back(std::string(path) + "=" + value);
  }
  lines.push_back("findings " + std::to_string(static_cast<MessageImpl&>(*message).getParseFindings().count()));
  lines.push_back(narrow(message->getEncodedValue()));
  return lines;
}

TEST(HeaderReplayTest, EveryMessageReadsAsOnAThreadThatReadNothingBefore) {
  MessageFactory factory;
  compileAndLoad(factory, kDefinition);
  const std::vector<std::string> texts = {
      "HDR|^~\\|A|B^C|N1~N2\rDAT|v\r",
      // Ends right behind the separators, and right behind the field after them.
      "HDR|^~\\|\rDAT|v\r",
      "HDR|^~\\|A\rDAT|v\r",
      // Empty fields at the end, and more fields than the header has.
      "HDR|^~\\|A|||\rDAT|v\r",
      "HDR|^~\\|A|B|C|D|E\rDAT|v\r",
      // Escapes behind the separators keep the rest from waiting in the text, in the last field
      // too: what the read cuts after its settling is no part of what it keeps.
      "HDR|^~\\|A\\F\\B|\\E\\C^D\rDAT|v\r",
      "HDR|^~\\|A\\E\\B\rDAT|v\r",
      // The text ends inside the header: the first field was ended by the end of the text, not by
      // a separator, which says nothing of a text that goes on.
      "HDR|^~\\",
      "HDR|^~\\|",
      // Other separators, and the same ones once more with a different first field.
      "HDR#@!$#A#B@C\rDAT#v\r",
      "HDR#@!$#A$F$B#B@C\rDAT#v\r",
      "HDR|^~\\|Z|Y^X\rDAT|w\r",
  };
  std::vector<std::vector<std::string>> alone(texts.size());
  for (size_t i = 0; i < texts.size(); ++i) {
    std::thread([&] { alone[i] = readMessage(factory, texts[i]); }).join();
    if (texts[i].find('\r') == std::string::npos) continue;  // a header alone makes no message
    ASSERT_NE(alone[i].front(), "no message") << texts[i];
  }
  for (size_t i = 0; i < texts.size(); ++i) {
    for (size_t j = 0; j < texts.size(); ++j) {
      SCOPED_TRACE(texts[i] + " after " + texts[j]);
      readMessage(factory, texts[j]);
      EXPECT_EQ(readMessage(factory, texts[i]), alone[i]);
    }
  }
  EXPECT_TRUE(HeaderReplay::local()->keeps(u"HDR|^~\\|"));
  EXPECT_TRUE(HeaderReplay::local()->keeps(u"HDR#@!$#"));
}

}  // namespace
}  // namespace vantrelia::testing
