#include "foundation/MessageFactory.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "foundation/BadParameter.h"
#include "foundation/Enumerations.h"
#include "foundation/FoundationMessages.h"
#include "foundation/TextConversion.h"
#include "support/DefinitionSetup.h"

namespace {

using vantrelia::BadParameter;
using vantrelia::MessageFactory;
using vantrelia::MessageSetDefn;
using vantrelia::narrow;

std::u16string option(std::u16string_view path) { return std::u16string(vantrelia::OptionUriPrefix) + std::u16string(path); }

// The message of the BadParameter that `call` throws, or a note that it threw nothing.
std::string badParameterText(const std::function<void()>& call) {
  try {
    call();
  } catch (const BadParameter& e) {
    return e.message;
  }
  return "<no BadParameter>";
}

const std::u16string_view kBoolOptions[] = {
    u"/edi/test/bool",          u"/edi/replaceCRLFWithSegmentSeparator", u"/edi/truncateFieldsToMaxLength",
    u"/edi/minimizeChanges",    u"/edi/forceCountUpdate",                u"/edi/ignoreGenericSegments",
};

class MessageFactoryTest : public ::testing::Test {
 protected:
  // A message set held in memory, with the given severities by error number.
  MessageSetDefn& addSet(const std::string& name, std::vector<std::pair<int, vantrelia::EVErrType>> severities) {
    using vantrelia::testing::DefinitionSetup;
    auto& set = DefinitionSetup::addMessageSet(factory.getWarehouse(), DefinitionSetup::messageSet(name, &factory.getWarehouse()));
    for (const auto& [number, severity] : severities) DefinitionSetup::addValidationErrorSetting(set, number, severity);
    return set;
  }
  int getInt(std::u16string_view path) const { return Any::any_cast<int>(factory.GetOption(option(path))); }
  bool getBool(std::u16string_view path) const { return Any::any_cast<bool>(factory.GetOption(option(path))); }

  MessageFactory factory;
};

TEST_F(MessageFactoryTest, NewFactoryStartsEmptyWithDefaults) {
  EXPECT_FALSE(factory.IsDefinitionLoaded());
  EXPECT_FALSE(factory.GetValidationCaching());
  EXPECT_FALSE(factory.GetCreateGenericMessages());
  EXPECT_EQ(factory.GetFlags(), 0u);
  for (auto path : kBoolOptions) EXPECT_FALSE(getBool(path)) << narrow(std::u16string(path));
  EXPECT_EQ(getInt(u"/edi/test/int"), 0);
  EXPECT_EQ(Any::any_cast<double>(factory.GetOption(option(u"/edi/test/double"))), 0.0);
  EXPECT_EQ(Any::any_cast<std::u16string>(factory.GetOption(option(u"/edi/test/string"))), u"");

  std::u16string value = u"untouched";
  EXPECT_FALSE(factory.GetUserData(u"anything", value));
  EXPECT_EQ(value, u"untouched");

  addSet("X12", {});
  EXPECT_TRUE(factory.IsDefinitionLoaded());
}

// Each bool option reaches its own setting and no other, and the properties stay apart from them.
TEST_F(MessageFactoryTest, EachBoolOptionHasItsOwnSetting) {
  for (auto path : kBoolOptions) {
    SCOPED_TRACE(narrow(std::u16string(path)));
    factory.SetOption(option(path), Any::any());  // an empty value switches it on
    for (auto other : kBoolOptions) EXPECT_EQ(getBool(other), other == path) << narrow(std::u16string(other));
    EXPECT_FALSE(factory.GetValidationCaching());
    EXPECT_FALSE(factory.GetCreateGenericMessages());
    factory.SetOption(option(path), Any::any(false));
    EXPECT_FALSE(getBool(path));
  }
  factory.SetValidationCaching(true);
  EXPECT_TRUE(factory.GetValidationCaching());
  EXPECT_FALSE(factory.GetCreateGenericMessages());
  factory.SetCreateGenericMessages(true);
  EXPECT_TRUE(factory.GetCreateGenericMessages());
}

TEST_F(MessageFactoryTest, TypedOptionsKeepTheirValueAndType) {
  factory.SetOption(option(u"/edi/test/int"), Any::any(-17));
  factory.SetOption(option(u"/edi/test/double"), Any::any(6.25));
  factory.SetOption(option(u"/edi/test/string"), Any::any(std::u16string(u"\u0141x")));
  const Any::any number = factory.GetOption(option(u"/edi/test/int"));
  const Any::any real = factory.GetOption(option(u"/edi/test/double"));
  const Any::any text = factory.GetOption(option(u"/edi/test/string"));
  EXPECT_EQ(number.type(), typeid(int));
  EXPECT_EQ(Any::any_cast<int>(number), -17);
  EXPECT_EQ(real.type(), typeid(double));
  EXPECT_EQ(Any::any_cast<double>(real), 6.25);
  EXPECT_EQ(text.type(), typeid(std::u16string));
  EXPECT_EQ(Any::any_cast<std::u16string>(text), u"\u0141x");
}

TEST_F(MessageFactoryTest, WrongValueTypeNamesBothTypes) {
  const std::string prefix = vantrelia::narrow(vantrelia::OptionUriPrefix);
  EXPECT_EQ(badParameterText([&] { factory.SetOption(option(u"/edi/test/int"), Any::any(2.5)); }),
            "Expected option '" + prefix + "/edi/test/int' to be type 'int' instead it was type 'double'.");

  struct Case {
    std::u16string_view path;
    Any::any value;
    const char* wanted;
    const char* given;
  };
  const Case cases[] = {
      {u"/edi/test/int", Any::any(), "int", "void"},
      {u"/edi/test/double", Any::any(3), "double", "int"},
      {u"/edi/test/string", Any::any(), "std::u16string", "void"},
      {u"/edi/test/string", Any::any(1), "std::u16string", "int"},
      {u"/edi/minimizeChanges", Any::any(1), "bool", "int"},
      {u"/edi/test/bool", Any::any(std::u16string(u"true")), "bool", "std::u16string"},
  };
  for (const Case& c : cases) {
    const std::u16string name = option(c.path);
    EXPECT_EQ(badParameterText([&] { factory.SetOption(name, c.value); }),
              std::string(vantrelia::messages::kExpectedOptionBefore) + vantrelia::narrow(name) +
                  vantrelia::messages::kExpectedOptionWanted + c.wanted + vantrelia::messages::kExpectedOptionGiven +
                  c.given + vantrelia::messages::kExpectedOptionAfter);
  }
  // A refused value leaves the old one.
  EXPECT_EQ(getInt(u"/edi/test/int"), 0);
  EXPECT_FALSE(getBool(u"/edi/minimizeChanges"));
}

TEST_F(MessageFactoryTest, UnknownOptionNames) {
  const std::u16string names[] = {
      option(u"/edi/minimizeChanges?x=1"),    // the cut name keeps its "?"
      option(u"/edi/validationErrorSeverity"),  // and the severity option needs it
      option(u"/EDI/minimizeChanges"),        // paths compare exactly
      option(u"/edi/nothing"),
      option(u""),
      u"/edi/minimizeChanges",                // the prefix is required
  };
  for (const std::u16string& name : names) {
    const std::string expected = "Unknown option '" + vantrelia::narrow(name) + "'.";
    EXPECT_EQ(badParameterText([&] { factory.GetOption(name); }), expected);
    EXPECT_EQ(badParameterText([&] { factory.SetOption(name, Any::any(true)); }), expected);
  }
}

TEST_F(MessageFactoryTest, CacheSegmentCountIsRefused) {
  const std::u16string name = option(u"/edi/cacheSegmentCount");
  const std::string expected = "cacheSegmentCount is not implemented in the C++ engine.";
  EXPECT_EQ(badParameterText([&] { factory.GetOption(name); }), expected);
  EXPECT_EQ(badParameterText([&] { factory.SetOption(name, Any::any(true)); }), expected);
}

TEST_F(MessageFactoryTest, FlagWord) {
  factory.SetFlag(vantrelia::qxSyntaxRulesSetRequiredFlagOnOutput, true);
  factory.SetFlag(4, true);  // no public name, still allowed
  EXPECT_EQ(factory.GetFlags(), 6u);
  EXPECT_TRUE(factory.GetFlag(4));
  EXPECT_FALSE(factory.GetFlag(vantrelia::qxOutputDefaultValuesForOptionalFields));
  factory.SetFlag(2, false);
  EXPECT_EQ(factory.GetFlags(), 4u);

  // The whole word is stored as given, bits nothing reads included.
  factory.SetFlags(0x80000001u);
  EXPECT_EQ(factory.GetFlags(), 0x80000001u);
  EXPECT_TRUE(factory.GetFlag(0x80000000u));
  EXPECT_FALSE(factory.GetFlag(4));

  struct Case {
    std::function<void()> call;
    const char* expected;
  };
  const Case cases[] = {
      {[&] { factory.GetFlag(0); }, "No flag was specified"},
      {[&] { factory.SetFlag(0, true); }, vantrelia::messages::kNoFlagSpecified},
      {[&] { factory.GetFlag(3); }, "Can only retrieve 1 flag at a time"},
      {[&] { factory.SetFlag(3, true); }, "Can only set 1 flag at a time"},
      {[&] { factory.SetFlag(0xFFFFFFFFu, false); }, vantrelia::messages::kSetOneFlagOnly},
  };
  for (const Case& c : cases) EXPECT_EQ(badParameterText(c.call), c.expected);
  EXPECT_EQ(factory.GetFlags(), 0x80000001u);
}

TEST_F(MessageFactoryTest, SeverityNeedsALoadedDefinition) {
  const std::u16string name = option(u"/edi/validationErrorSeverity?ERROR=1001");
  EXPECT_EQ(badParameterText([&] { factory.GetOption(name); }), "No message sets loaded.");
  EXPECT_EQ(badParameterText([&] { factory.SetOption(name, Any::any(1)); }), "No message sets loaded.");
}

TEST_F(MessageFactoryTest, ReadsSeverityFromTheQuery) {
  using namespace vantrelia;
  addSet("ALPHA", {{1001, qxVESError}, {1002, qxVESWarning}});
  addSet("Beta", {{1001, qxVESIgnore}, {1002, qxVESError}});

  struct Case {
    std::u16string_view query;
    int expected;
  };
  const Case found[] = {
      {u"ERROR=1001", qxVESError},                      // no set named: the first
      {u"ERROR=1002", qxVESWarning},
      {u"ERROR=1001&MESSAGESET=Beta", qxVESIgnore},
      {u"error=1001&messageSet=Beta", qxVESIgnore},     // keys in any case
      {u"MESSAGESET=Beta&ERROR=1002", qxVESError},
      {u"FOO=1&ERROR=1002&BAR", qxVESWarning},          // other keys are ignored
      {u"ERROR=1001&ERROR=1002", qxVESWarning},         // a later key wins
      {u"MESSAGESET=Beta&ERROR=1001&MESSAGESET=", qxVESError},
  };
  for (const Case& c : found)
    EXPECT_EQ(getInt(std::u16string(u"/edi/validationErrorSeverity?") + std::u16string(c.query)), c.expected)
        << narrow(std::u16string(c.query));

  struct Failure {
    std::u16string_view query;
    const char* expected;
  };
  const Failure failures[] = {
      {u"ERROR=1001&MESSAGESET=beta", "Couldn't find Message Set beta"},  // set names are exact
      {u"ERROR=1001&MESSAGESET=Gamma", "Couldn't find Message Set Gamma"},
      {u"MESSAGESET=ALPHA", "Couldn't find the error number 0"},
      {u"", "Couldn't find the error number 0"},
      {u"ERROR", "Couldn't find the error number 0"},
      {u"ERROR=abc", "Couldn't find the error number 0"},
      {u"ERROR=9999", "Couldn't find the error number 9999"},
  };
  for (const Failure& f : failures) {
    const std::u16string name = option(std::u16string(u"/edi/validationErrorSeverity?") + std::u16string(f.query));
    EXPECT_EQ(badParameterText([&] { factory.GetOption(name); }), f.expected) << narrow(std::u16string(f.query));
  }
}

TEST_F(MessageFactoryTest, WritesSeverityToOneSetOrAll) {
  using namespace vantrelia;
  MessageSetDefn& alpha = addSet("ALPHA", {{1001, qxVESError}, {1002, qxVESError}});
  MessageSetDefn& beta = addSet("Beta", {{1001, qxVESError}, {1002, qxVESError}});
  const auto severity = [](MessageSetDefn& set, int number) { return set.getValidationErrorSetting(number).getErrorType(); };

  factory.SetOption(option(u"/edi/validationErrorSeverity?ERROR=1002"), Any::any(int{qxVESIgnore}));
  EXPECT_EQ(severity(alpha, 1002), qxVESIgnore);
  EXPECT_EQ(severity(beta, 1002), qxVESIgnore);

  factory.SetOption(option(u"/edi/validationErrorSeverity?error=1001&messageset=Beta"), Any::any(int{qxVESWarning}));
  EXPECT_EQ(severity(alpha, 1001), qxVESError);
  EXPECT_EQ(severity(beta, 1001), qxVESWarning);
  EXPECT_EQ(getInt(u"/edi/validationErrorSeverity?ERROR=1001&MESSAGESET=Beta"), qxVESWarning);

  // The number is stored unchecked.
  factory.SetOption(option(u"/edi/validationErrorSeverity?ERROR=1001&MESSAGESET=ALPHA"), Any::any(7));
  EXPECT_EQ(getInt(u"/edi/validationErrorSeverity?ERROR=1001"), 7);

  const std::u16string name = option(u"/edi/validationErrorSeverity?ERROR=1001");
  EXPECT_EQ(badParameterText([&] { factory.SetOption(name, Any::any(true)); }),
            "Expected option '" + narrow(name) + "' to be type 'int' instead it was type 'bool'.");
  EXPECT_EQ(badParameterText([&] { factory.SetOption(option(u"/edi/validationErrorSeverity?ERROR=1001&MESSAGESET=alpha"),
                                                     Any::any(1)); }),
            "Couldn't find Message Set alpha");
  EXPECT_EQ(badParameterText([&] { factory.SetOption(option(u"/edi/validationErrorSeverity?ERROR=1003"), Any::any(1)); }),
            "Couldn't find the error number 1003");
  EXPECT_EQ(severity(alpha, 1001), 7);
  EXPECT_EQ(severity(beta, 1001), qxVESWarning);
}

}  // namespace
