// Custom and array types in the definition language, compiled and loaded back by the engine.

#include <gtest/gtest.h>

#include "compiler/CompileError.h"
#include "compiler/DefinitionCompiler.h"
#include "definitions/MessageWarehouseDefn.h"
#include "foundation/MessageFactory.h"
#include "support/PcfLoad.h"

namespace vantrelia::compiler {
namespace {

const MessageWarehouseDefn& compileAndLoad(MessageFactory& factory, const std::string& source, int version) {
  testing::loadBytes(factory, DefinitionCompiler::compile(source, {version}));
  return factory.getWarehouse();
}

std::string compileFailure(const std::string& source, int version = 883) {
  try {
    DefinitionCompiler::compile(source, {version});
  } catch (const CompileError& e) {
    return e.what();
  }
  return "";
}

const PrimitiveTypeDefn& customNamed(const MessageWarehouseDefn& warehouse, const std::string& name) {
  for (const auto& [id, type] : warehouse.getPrimitiveTypes())
    if (type->getName().str() == name) return *type;
  throw std::runtime_error("no custom type " + name);
}

const ArrayTypeDefn& arrayNamed(const MessageWarehouseDefn& warehouse, const std::string& name) {
  for (const auto& [id, type] : warehouse.getArrayTypes())
    if (type->getName().str() == name) return *type;
  throw std::runtime_error("no array type " + name);
}

TEST(TypeWriterTest, RoundTripsAtEachVersionThatChangedTypes) {
  for (const int version : {853, 870, 873, 881, 883}) {
    SCOPED_TRACE(version);
    std::string source = R"(
primitiveTypes:
  - name: ID
    baseType: strictInteger
    noValidation: true
    allowedSeparators: [repeat, crlf]
    regularExpression: "[0-9]+\u0141"
)";
    if (version >= 870) source += "    escapeCharacters: {start: user1, end: user5}\n";
    if (version >= 873) source += "    characterRanges: {allowed: [\"0020-007E\", \"\\u00E9\"], excluded: ['\"', \"0-9\"]}\n";
    source += R"(
  - {name: Amount, baseType: 13, plainAlias: true}
  - {name: Bare}
arrayTypes:
  - {name: IDs, dataType: ID, separator: repeat}
  - {name: Amounts, dataType: double, ownSeparator: "~"}
  - {name: Texts}
)";
    MessageFactory factory;
    const auto& warehouse = compileAndLoad(factory, source, version);

    const auto& id = customNamed(warehouse, "ID");
    EXPECT_EQ(id.getBaseType(), 12);
    EXPECT_FALSE(id.getDoValidation());
    EXPECT_TRUE(id.isSeparatorAllowed(qxSepRepeat));
    EXPECT_TRUE(id.isSeparatorAllowed(qxSepCrlf));
    EXPECT_FALSE(id.isSeparatorAllowed(qxSepField1));
    EXPECT_EQ(id.getRegularExpression().str(), u"[0-9]+\u0141");
    EXPECT_EQ(id.getFlags(), 0x01u | 0x04u | (version >= 870 ? 0x08u : 0u));
    if (version >= 870) {
      EXPECT_EQ(id.getStartEscapeCharacter(), qxSepUser1);
      EXPECT_EQ(id.getEndEscapeCharacter(), qxSepUser5);
    }
    ASSERT_EQ(id.getCharacterRangeCount(), version >= 873 ? 4 : 0);
    if (version >= 873) {
      const CharacterRanges& ranges = *id.getCharacterRanges();
      EXPECT_EQ(ranges.getAllowedRanges()[0].getEndChar(), 0x7E);
      EXPECT_EQ(ranges.getAllowedRanges()[1].getStartChar(), 0xE9);
      EXPECT_EQ(ranges.getExcludedRanges()[0].getStartChar(), u'"');
      EXPECT_EQ(ranges.getExcludedRanges()[1].getEndChar(), u'9');
      EXPECT_EQ(ranges.validate(u"A\u00E9 z"), std::nullopt);
      EXPECT_EQ(ranges.validate(u"A7"), 1u);
    }

    const auto& amount = customNamed(warehouse, "Amount");
    EXPECT_TRUE(amount.isPlainAlias());
    EXPECT_EQ(amount.getBaseType(), 13);
    const auto& bare = customNamed(warehouse, "Bare");
    EXPECT_EQ(bare.getBaseType(), 4);
    EXPECT_EQ(bare.getFlags(), 0u);

    const auto& ids = arrayNamed(warehouse, "IDs");
    EXPECT_EQ(ids.getDataType(), 9);
    EXPECT_EQ(ids.getCustomType(), &id);
    EXPECT_EQ(ids.getArraySeparator(), qxSepRepeat);
    const auto& amounts = arrayNamed(warehouse, "Amounts");
    EXPECT_EQ(amounts.getDataType(), 3);
    EXPECT_TRUE(amounts.hasOwnSeparator());
    EXPECT_EQ(amounts.getOwnSeparator().str(), u"~");
    const auto& texts = arrayNamed(warehouse, "Texts");
    EXPECT_EQ(texts.getDataType(), 4);
    EXPECT_EQ(texts.getArraySeparator(), qxSepField2);
  }
}

TEST(TypeWriterTest, IdsAreOneSpaceWithGivenIdsTakenFirst) {
  MessageFactory factory;
  const auto& warehouse = compileAndLoad(factory, R"(
primitiveTypes: [{name: A, baseType: quoted}, {name: B, id: 1, baseType: "8"}, {name: C, id: -4, baseType: base64}]
arrayTypes: [{name: D}, {name: E, id: 3}, {name: F}]
)", 883);
  const std::pair<const char*, int32_t> customs[] = {{"A", 2}, {"B", 1}, {"C", -4}};
  for (const auto& [name, id] : customs) EXPECT_EQ(customNamed(warehouse, name).getId(), id) << name;
  EXPECT_EQ(customNamed(warehouse, "A").getBaseType(), 14);
  EXPECT_EQ(customNamed(warehouse, "B").getBaseType(), 8);
  EXPECT_EQ(customNamed(warehouse, "C").getBaseType(), 6);
  const std::pair<const char*, int32_t> arrays[] = {{"D", 4}, {"E", 3}, {"F", 5}};
  for (const auto& [name, id] : arrays) EXPECT_EQ(arrayNamed(warehouse, name).getId(), id) << name;
}

TEST(TypeWriterTest, WhatAVersionCantCarryIsAnErrorOnItsLine) {
  struct Case {
    int version;
    const char* source;
    const char* error;  // "" for a source that compiles
  } cases[] = {
      {852, "\nprimitiveTypes: [{name: A}]",
       "line 2: 'primitiveTypes' of the definition needs format version 853 or later; this file is compiled for version 852"},
      {852, "arrayTypes: [{name: A}]",
       "line 1: 'arrayTypes' of the definition needs format version 853 or later; this file is compiled for version 852"},
      {869, "primitiveTypes:\n  - name: A\n    escapeCharacters: {start: user1, end: user2}",
       "line 3: 'escapeCharacters' of primitive type 'A' needs format version 870 or later; this file is compiled for version 869"},
      {872, "primitiveTypes:\n  - name: A\n    characterRanges: {allowed: [a]}",
       "line 3: 'characterRanges' of primitive type 'A' needs format version 873 or later; this file is compiled for version 872"},
      // What an older version means anyway may be stated.
      {512, "primitiveTypes: []\narrayTypes: []", ""},
      {872, "primitiveTypes:\n  - name: A\n    characterRanges: {allowed: [], excluded: []}", ""},
  };
  for (const Case& c : cases) EXPECT_EQ(compileFailure(c.source, c.version), c.error) << c.source;
}

TEST(TypeWriterTest, SourceMistakesNameTheLine) {
  struct Case {
    const char* source;
    const char* error;  // the start of the message
  } cases[] = {
      {"primitiveTypes:\n  - {id: 3}", "line 2: primitive type 0 needs a name"},
      {"primitiveTypes:\n  - name: A\n    colour: red", "line 3: unknown key 'colour' in primitive type 'A'"},
      {"primitiveTypes: [{name: A}]\narrayTypes: [{name: A}]", "line 2: type name 'A' is used twice"},
      {"primitiveTypes: [{name: A, id: 2}]\narrayTypes: [{name: B, id: 2}]",
       "line 2: id 2 of array type 'B' is already used by primitive type 'A'"},
      {"primitiveTypes:\n  - {name: A, baseType: custom}", "line 2: 'baseType' of primitive type 'A' must be a basic data type"},
      {"primitiveTypes:\n  - {name: A, baseType: 15}", "line 2: 'baseType' of primitive type 'A' must be a basic data type"},
      {"primitiveTypes:\n  - name: A\n    plainAlias: true\n    regularExpression: x",
       "line 4: 'regularExpression' of primitive type 'A' has no place in a plain alias"},
      {"primitiveTypes:\n  - name: A\n    allowedSeparators:\n      - repeat\n      - field9",
       "line 5: an entry of 'allowedSeparators' of primitive type 'A' must name a separator"},
      {"primitiveTypes:\n  - name: A\n    allowedSeparators: [repeat, repeat]", "line 3: separator 'repeat' is allowed twice"},
      {"primitiveTypes:\n  - name: A\n    escapeCharacters: {start: user1}", "line 3: 'escapeCharacters' of primitive type 'A' needs both"},
      {"primitiveTypes:\n  - name: A\n    characterRanges:\n      allowed: [\"a-\"]",
       "line 4: character range 'a-' of primitive type 'A' must be one character"},
      {"primitiveTypes:\n  - name: A\n    characterRanges:\n      excluded: [\"007E-0020\"]",
       "line 4: character range '007E-0020' of primitive type 'A' starts above its end"},
      {"primitiveTypes:\n  - name: A\n    characterRanges:\n      excluded: [\"-0041\"]",
       "line 4: character range '-0041' of primitive type 'A' must be one character"},
      {"arrayTypes:\n  - {name: A, dataType: Nothing}", "line 2: 'dataType' of array type 'A' names neither"},
      {"arrayTypes:\n  - {name: A, dataType: custom}", "line 2: 'dataType' of array type 'A' names its custom type by"},
      {"arrayTypes:\n  - {name: A}\n  - {name: B, dataType: A}", "line 3: the items of array type 'B' can't be of an array type"},
      {"arrayTypes:\n  - {name: A, separator: repeat, ownSeparator: x}", "line 2: array type 'A' has either"},
      {"arrayTypes:\n  - {name: A, ownSeparator: \"\\u00E9\"}", "line 2: 'ownSeparator' of array type 'A' has a character"},
  };
  for (const Case& c : cases) {
    const std::string failure = compileFailure(c.source);
    EXPECT_EQ(failure.substr(0, std::string(c.error).size()), c.error) << c.source << "\n gave: " << failure;
  }
}

}  // namespace
}  // namespace vantrelia::compiler
