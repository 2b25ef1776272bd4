#include <gtest/gtest.h>

#include "elements/InternalElement.h"
#include "support/ElementTesting.h"

namespace vantrelia::testing {
namespace {

class MessageParseTest : public ElementTreeTest {
 protected:
  std::unique_ptr<MessageElement> parse(const std::string& text) { return factory.Parse(wide(text).c_str()); }
};

TEST_F(MessageParseTest, SmokeAdt) {
  auto message = parse("MSH|s|ADT\rPID|1|a^b~c^d|n|19700101|M\rNTE|one\rNTE|two\rPV1|I\rOBX|v|u\rPV1|O\r");
  ASSERT_NE(message, nullptr);
  EXPECT_STREQ(message->getName(), "ADT");
  EXPECT_EQ(narrow(message->getElementAt("PID/Sex")->getValue()), "M");
  EXPECT_EQ(narrow(message->getElementAt("NTE[1]/Text")->getValue()), "two");
  EXPECT_EQ(message->getElementAt("VISIT")->getElementCount(), 2);
  EXPECT_EQ(narrow(message->getEncodedValue()), "MSH|s|ADT\rPID|1|a^b~c^d|n|19700101|M\rNTE|one\rNTE|two\rPV1|I\rOBX|v|u\rPV1|O\r");
}

}  // namespace
}  // namespace vantrelia::testing
