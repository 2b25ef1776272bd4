// The definition language, compiled and loaded back by the engine.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "compiler/DefinitionCompiler.h"
#include "support/CompilerTesting.h"

namespace vantrelia::compiler {
namespace {

using ::testing::StartsWith;
using testing::compileAndLoad;
using testing::definitionCompileFailure;
using testing::versionGate;

TEST(DefinitionCompilerTest, EachVersionCarriesWhatItCan) {
  struct Case {
    int version;
    const char* source;
    bool hasVariableFields;
    uint32_t flags;
    bool userData;
  } cases[] = {
      {512, "{}", false, 0, false},
      {853, "{}", false, 0, false},
      {854, "hasVariableFields: true", true, 0, false},
      {855, "userData: {Owner: ops}", false, 0, true},
      {865, "userData: {Owner: ops}\nhasVariableFields: true", true, 0, true},
      {866, "userData: {Owner: ops}", false, 0, true},
      {879, "userData: {Owner: ops}", false, 0, true},
      {880, "userData: {Owner: ops}\nflags: 7", false, 7, true},
      {883, "userData: {Owner: ops}\nflags: 0xFFFFFFFF\nhasVariableFields: true", true, 0xFFFFFFFF, true},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.version);
    MessageFactory factory;
    const auto& warehouse = compileAndLoad(factory, c.source, c.version);
    EXPECT_EQ(warehouse.getVersion(), c.version);
    EXPECT_EQ(warehouse.getHasVariableFields(), c.hasVariableFields);
    EXPECT_EQ(factory.GetFlags(), c.flags);
    std::u16string value;
    EXPECT_EQ(factory.GetUserData(u"Owner", value), c.userData);
    EXPECT_EQ(value, c.userData ? u"ops" : u"");
  }
}

TEST(DefinitionCompilerTest, SourceVersionAndDefault) {
  MessageFactory factory;
  EXPECT_EQ(compileAndLoad(factory, "version: 700").getVersion(), 700);
  EXPECT_EQ(compileAndLoad(factory, "# nothing but a comment").getVersion(), 883) << "the newest version is the default";
  EXPECT_EQ(compileAndLoad(factory, "version: 700", 512).getVersion(), 512) << "the option overrides the source";
}

TEST(DefinitionCompilerTest, TheOldestFileIsVersionAndSetCountOnly) {
  EXPECT_EQ(DefinitionCompiler::compile("{}", {512}), (std::vector<uint8_t>{0, 0, 2, 0, 0, 0, 0, 0}));
}

TEST(DefinitionCompilerTest, UserDataKeysAreOneOrderedList) {
  MessageFactory factory;
  const auto& keys = compileAndLoad(factory, R"(
userDataKeys: [First, Second]
userData:
  Third: "3"
  First: "1"
  Wide: "\u0141\U0001F600"
)").getUserDataKeys();
  const std::u16string names[] = {u"First", u"Second", u"Third", u"Wide"};
  ASSERT_EQ(keys.size(), std::size(names));
  for (size_t i = 0; i < keys.size(); ++i) EXPECT_EQ(keys[i].str(), names[i]);
  std::u16string value;
  EXPECT_FALSE(factory.GetUserData(u"Second", value)) << "a declared key needs no value";
  ASSERT_TRUE(factory.GetUserData(u"Wide", value));
  EXPECT_EQ(value, u"\u0141\U0001F600") << "text beyond one 16-bit unit arrives as a surrogate pair";
}

TEST(DefinitionCompilerTest, MistakesAndVersionLimitsNameTheLine) {
  const std::string def = "the definition";
  const std::string longValue = "messageSets:\n  - name: A\n    userData: {A: " + std::string(65536, 'x') + "}";
  const struct {
    std::string source;
    ::testing::Matcher<const std::string&> error;  // a text is the whole message; "" for a source that compiles
    std::optional<int> version = {};
  } cases[] = {
      {"version: 883\nflags: 1", versionGate(2, "flags", def, 880, 879), 879},
      {"hasVariableFields: true", versionGate(1, "hasVariableFields", def, 854, 853), 853},
      {"\n\nuserData: {A: b}", versionGate(3, "userData", def, 855, 854), 854},
      {"userDataKeys: [A]", versionGate(1, "userDataKeys", def, 855, 512), 512},
      {"messageSets:\n  - name: A\n    segments:\n      - name: S\n        fields: [{name: F, userData: {A: b}}]",
       versionGate(5, "userData", "segment 'S' field 'F'", 855, 854), 854},
      {"messageSets:\n  - name: A\n    messages:\n      - name: M\n        userData: {A: b}", versionGate(5, "userData", "message 'M'", 855, 854), 854},
      // Values an old version means anyway are fine to state.
      {"flags: 0\nhasVariableFields: false\nuserData: {}", "", 512},
      {"version: 883\nflag: 1", StartsWith("line 2: unknown key 'flag' in the definition (known keys: ")},
      {"flags: lots", "line 1: 'flags' of the definition must be a whole number"},
      {"flags: -2147483649", "line 1: 'flags' of the definition must lie between -2147483648 and 4294967295"},
      {"hasVariableFields: maybe", "line 1: 'hasVariableFields' of the definition must be true or false"},
      {"userData: [a, b]", "line 1: 'userData' of the definition must be a mapping"},
      {"userData:\n  A: [1]", "line 2: the value of 'A' must be a text"},
      {longValue, "line 3: a user-data value of message set 'A' is too long"},
      {"version: 884", "line 1: format version 884 is outside 512 to 883"},
      {"version: 511", "line 1: format version 511 is outside 512 to 883"},
      {"{}", "format version 900 is outside 512 to 883", 900},
      {"- a list", "line 1: the definition must be a mapping of keys to values"},
      {"a: [unclosed", StartsWith("line 1: ")},
      {"messageSets:\n  - {fixedWidth: true}", "line 2: message set 0 needs a name"},
      {"version: 800\nmessageSets:\n  - name: A\n    genericParsing: true", versionGate(4, "genericParsing", "message set 'A'", 804, 800)},
  };
  for (const auto& c : cases) EXPECT_THAT(definitionCompileFailure(c.source, c.version), c.error) << c.source;
}

}  // namespace
}  // namespace vantrelia::compiler
