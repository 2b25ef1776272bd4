// The definition language, compiled and loaded back by the engine.

#include <gtest/gtest.h>

#include "compiler/CompileError.h"
#include "compiler/DefinitionCompiler.h"
#include "definitions/MessageWarehouseDefn.h"
#include "foundation/MessageFactory.h"
#include "support/PcfLoad.h"

namespace vantrelia::compiler {
namespace {

// Compiles and loads; the factory holds the result.
void compileAndLoad(MessageFactory& factory, const std::string& source, std::optional<int> version = {}) {
  CompileOptions options;
  options.version = version;
  testing::loadBytes(factory, DefinitionCompiler::compile(source, options));
}

// The text of the CompileError the source raises, or "" when it compiles.
std::string compileFailure(const std::string& source, std::optional<int> version = {}) {
  try {
    CompileOptions options;
    options.version = version;
    DefinitionCompiler::compile(source, options);
  } catch (const CompileError& e) {
    return e.what();
  }
  return "";
}

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
    MessageFactory factory;
    ASSERT_NO_THROW(compileAndLoad(factory, c.source, c.version)) << c.version;
    const auto& warehouse = factory.getWarehouse();
    EXPECT_EQ(warehouse.getVersion(), c.version);
    EXPECT_EQ(warehouse.getHasVariableFields(), c.hasVariableFields) << c.version;
    EXPECT_EQ(factory.GetFlags(), c.flags) << c.version;
    std::u16string value;
    EXPECT_EQ(factory.GetUserData(u"Owner", value), c.userData) << c.version;
    if (c.userData) {
      EXPECT_EQ(value, u"ops");
    }
  }
}

TEST(DefinitionCompilerTest, SourceVersionAndDefault) {
  MessageFactory factory;
  compileAndLoad(factory, "version: 700");
  EXPECT_EQ(factory.getWarehouse().getVersion(), 700);
  compileAndLoad(factory, "# nothing but a comment");
  EXPECT_EQ(factory.getWarehouse().getVersion(), 883) << "the newest version is the default";
  compileAndLoad(factory, "version: 700", 512);
  EXPECT_EQ(factory.getWarehouse().getVersion(), 512) << "the option overrides the source";
}

TEST(DefinitionCompilerTest, TheOldestFileIsVersionAndSetCountOnly) {
  EXPECT_EQ(DefinitionCompiler::compile("{}", {512}), (std::vector<uint8_t>{0, 0, 2, 0, 0, 0, 0, 0}));
}

TEST(DefinitionCompilerTest, UserDataKeysAreOneOrderedList) {
  MessageFactory factory;
  compileAndLoad(factory, R"(
userDataKeys: [First, Second]
userData:
  Third: "3"
  First: "1"
  Wide: "\u0141\U0001F600"
)");
  const auto& keys = factory.getWarehouse().getUserDataKeys();
  ASSERT_EQ(keys.size(), 4u);
  EXPECT_EQ(keys[0].str(), u"First");
  EXPECT_EQ(keys[1].str(), u"Second");
  EXPECT_EQ(keys[2].str(), u"Third");
  EXPECT_EQ(keys[3].str(), u"Wide");
  std::u16string value;
  EXPECT_FALSE(factory.GetUserData(u"Second", value)) << "a declared key needs no value";
  ASSERT_TRUE(factory.GetUserData(u"Wide", value));
  EXPECT_EQ(value, u"\u0141\U0001F600") << "text beyond one 16-bit unit arrives as a surrogate pair";
}

TEST(DefinitionCompilerTest, WhatAVersionCantCarryIsAnErrorOnItsLine) {
  struct Case {
    const char* source;
    int version;
    const char* error;
  } cases[] = {
      {"version: 883\nflags: 1", 879, "line 2: 'flags' of the definition needs format version 880 or later; this file is compiled for version 879"},
      {"hasVariableFields: true", 853, "line 1: 'hasVariableFields' of the definition needs format version 854 or later; this file is compiled for version 853"},
      {"\n\nuserData: {A: b}", 854, "line 3: 'userData' of the definition needs format version 855 or later; this file is compiled for version 854"},
      {"userDataKeys: [A]", 512, "line 1: 'userDataKeys' of the definition needs format version 855 or later; this file is compiled for version 512"},
      {"messageSets:\n  - name: A\n    segments:\n      - name: S\n        fields: [{name: F, userData: {A: b}}]", 854,
       "line 5: 'userData' of segment 'S' field 'F' needs format version 855 or later; this file is compiled for version 854"},
      {"messageSets:\n  - name: A\n    messages:\n      - name: M\n        userData: {A: b}", 854,
       "line 5: 'userData' of message 'M' needs format version 855 or later; this file is compiled for version 854"},
  };
  for (const Case& c : cases) EXPECT_EQ(compileFailure(c.source, c.version), c.error) << c.source;
  // Values an old version means anyway are fine to state.
  EXPECT_EQ(compileFailure("flags: 0\nhasVariableFields: false\nuserData: {}", 512), "");
}

TEST(DefinitionCompilerTest, SourceMistakesNameTheLine) {
  const std::string longValue = "messageSets:\n  - name: A\n    userData: {A: " + std::string(65536, 'x') + "}";
  struct Case {
    std::string source;
    std::optional<int> version;
    const char* error;
  } cases[] = {
      {"version: 883\nflag: 1", {}, "line 2: unknown key 'flag' in the definition"},
      {"flags: lots", {}, "line 1: 'flags' of the definition must be a whole number"},
      {"flags: -2147483649", {}, "line 1: 'flags' of the definition must lie between"},
      {"hasVariableFields: maybe", {}, "line 1: 'hasVariableFields' of the definition must be true or false"},
      {"userData: [a, b]", {}, "line 1: 'userData' of the definition must be a mapping"},
      {"userData:\n  A: [1]", {}, "line 2: the value of 'A' must be a text"},
      {longValue, {},
       "line 3: a user-data value of message set 'A' is too long"},
      {"version: 884", {}, "line 1: format version 884 is outside 512 to 883"},
      {"version: 511", {}, "line 1: format version 511 is outside 512 to 883"},
      {"{}", 900, "format version 900 is outside 512 to 883"},
      {"- a list", {}, "line 1: the definition must be a mapping of keys to values"},
      {"a: [unclosed", {}, "line 1: "},
      {"messageSets:\n  - {fixedWidth: true}", {}, "line 2: message set 0 needs a name"},
      {"version: 800\nmessageSets:\n  - name: A\n    genericParsing: true", {},
       "line 4: 'genericParsing' of message set 'A' needs format version 804 or later"},
  };
  for (const Case& c : cases) {
    const std::string failure = compileFailure(c.source, c.version);
    EXPECT_EQ(failure.substr(0, std::string(c.error).size()), c.error) << c.source << "\n gave: " << failure;
  }
}

}  // namespace
}  // namespace vantrelia::compiler
