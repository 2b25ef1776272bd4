// Messages of the real standards parsed against their generated definitions: the right interchange
// and message, named fields, and the text written back.

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

#include "elements/MessageElement.h"
#include "definitions/MessageSetDefn.h"
#include "elements/MessageImpl.h"
#include "support/ElementTesting.h"
#include "support/StandardDefinition.h"

namespace vantrelia::testing {
namespace {

std::string readSource(const std::string& relative) {
  std::ifstream file(std::string(VANTRELIA_SOURCE_DIR) + "/" + relative, std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  return text.str();
}

TEST(StandardParseTest, EdifactOrderInItsInterchange) {
  MessageFactory& factory = standardDefinition("edifact/edifact_d96a.yaml");
  std::string text = readSource("examples/orders-d96a.edi");
  text.pop_back();  // the line end after the last segment is no part of the interchange
  auto interchange = factory.Parse(wide(text).c_str());
  ASSERT_NE(interchange, nullptr);
  EXPECT_STREQ(interchange->getName(), "INTERCHANGE");
  MessageElement* order = interchange->getElementAt("MESSAGE[0]");
  EXPECT_STREQ(order->getName(), "ORDERS");
  EXPECT_EQ(narrow(order->getElementAt("SG2[1]/NAD/PartyQualifier")->getValue()), "SU");
  EXPECT_EQ(narrow(interchange->getEncodedValue()), text);
}

// The example as written, and the same interchange with the delimiters its ISA declares changed:
// element '|', repetition '!', component '>' and a segment terminator other than '~'.
TEST(StandardParseTest, X12EligibilityInquiryInItsInterchange) {
  MessageFactory& factory = standardDefinition("x12/x12.yaml");
  std::string usual = readSource("examples/eligibility-270.x12");
  usual.pop_back();
  std::string other;
  for (const char c : usual) other += c == '*' ? '|' : c == '~' ? '\n' : c == '^' ? '!' : c == ':' ? '>' : c;
  for (const std::string& text : {usual, other}) {
    SCOPED_TRACE(text.substr(0, 120));
    auto interchange = factory.Parse(wide(text).c_str());
    ASSERT_NE(interchange, nullptr);
    EXPECT_STREQ(interchange->getName(), "INTERCHANGE");
    EXPECT_STREQ(static_cast<MessageImpl&>(*interchange).getMessageSetDefn()->getName().c_str(), "X12_005010_INTERCHANGE");
    MessageElement* inquiry = interchange->getElementAt("GS_LOOP[0]/TRANSACTION[0]");
    ASSERT_NE(inquiry, nullptr);
    EXPECT_STREQ(inquiry->getName(), "270");
    EXPECT_EQ(narrow(interchange->getElementAt("GS_LOOP[0]/GE/GE01")->getValue()), "1");
    EXPECT_EQ(narrow(interchange->getEncodedValue()), text);
  }
}

}  // namespace
}  // namespace vantrelia::testing
