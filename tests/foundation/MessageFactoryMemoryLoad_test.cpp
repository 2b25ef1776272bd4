// Loading a definition from bytes in memory against loading the same bytes from a file.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "compiler/DefinitionCompiler.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "elements/MessageElement.h"
#include "foundation/InvalidFile.h"
#include "foundation/MessageFactory.h"
#include "support/PcfLoad.h"

namespace vantrelia::testing {
namespace {

const char* kSource = R"(
messageSets:
  - name: LAB
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', style: initiator}
    segments:
      - {name: MSH, fields: [{name: Sender}]}
    messages:
      - {name: REPORT, items: [{segment: MSH, required: true}]}
)";

std::string memoryLoadFailure(const std::vector<uint8_t>& bytes) {
  MessageFactory factory;
  try {
    factory.LoadDefinition(bytes.data(), bytes.size());
  } catch (const InvalidFile& e) {
    return e.message;
  }
  return "";
}

TEST(MessageFactoryMemoryLoadTest, BytesInMemoryLoadAsTheSameFileDoes) {
  const std::vector<uint8_t> bytes = compiler::DefinitionCompiler::compile(kSource, {});
  MessageFactory fromMemory, fromFile;
  fromMemory.LoadDefinition(bytes.data(), bytes.size());
  loadBytes(fromFile, bytes);
  ASSERT_EQ(fromMemory.getWarehouse().getMessageSetCount(), 1);
  EXPECT_EQ(fromMemory.getWarehouse().getVersion(), fromFile.getWarehouse().getVersion());
  auto message = fromMemory.Parse(u"MSH|lab\r");
  ASSERT_NE(message, nullptr);
  EXPECT_STREQ(message->getName(), "REPORT");
  EXPECT_EQ(message->getElementAt("MSH/Sender")->getValue(), u"lab");
}

TEST(MessageFactoryMemoryLoadTest, BrokenBytesFailWithTheFileLoadersText) {
  const std::vector<uint8_t> whole = compiler::DefinitionCompiler::compile(kSource, {});
  for (size_t cut : {size_t{0}, size_t{3}, whole.size() / 2, whole.size() - 1}) {
    const std::vector<uint8_t> bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
    const std::string text = memoryLoadFailure(bytes);
    EXPECT_FALSE(text.empty()) << cut;
    EXPECT_EQ(text, loadFailure(bytes)) << cut;
  }
}

}  // namespace
}  // namespace vantrelia::testing
