// Custom and array types in the definition language, compiled and loaded back by the engine.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/CompilerTesting.h"

namespace vantrelia::compiler {
namespace {

using ::testing::StartsWith;
using testing::compileAndLoad;
using testing::definitionCompileFailure;
using testing::versionGate;

// The type of that name among the warehouse's custom or array types.
template <typename Types>
const auto& named(const Types& types, const std::string& name) {
  for (const auto& [id, type] : types)
    if (type->getName().str() == name) return *type;
  throw std::runtime_error("no type " + name);
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

    const auto& id = named(warehouse.getPrimitiveTypes(), "ID");
    EXPECT_EQ(id.getBaseType(), 12);
    EXPECT_TRUE(id.isSeparatorAllowed(qxSepRepeat));
    EXPECT_TRUE(id.isSeparatorAllowed(qxSepCrlf));
    EXPECT_FALSE(id.isSeparatorAllowed(qxSepField1));
    EXPECT_EQ(id.getRegularExpression().str(), u"[0-9]+\u0141");
    EXPECT_EQ(id.getFlags(), PrimitiveTypeDefn::kNoValidation | PrimitiveTypeDefn::kSomeSeparatorAllowed |
                                 (version >= 870 ? PrimitiveTypeDefn::kSpecialEscapeCharacters : 0u));
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

    EXPECT_TRUE(named(warehouse.getPrimitiveTypes(), "Amount").isPlainAlias());
    EXPECT_EQ(named(warehouse.getPrimitiveTypes(), "Amount").getBaseType(), 13);
    EXPECT_EQ(named(warehouse.getPrimitiveTypes(), "Bare").getBaseType(), 4);
    EXPECT_EQ(named(warehouse.getPrimitiveTypes(), "Bare").getFlags(), 0u);

    const auto& ids = named(warehouse.getArrayTypes(), "IDs");
    EXPECT_EQ(ids.getDataType(), 9);
    EXPECT_EQ(ids.getCustomType(), &id);
    EXPECT_EQ(ids.getArraySeparator(), qxSepRepeat);
    const auto& amounts = named(warehouse.getArrayTypes(), "Amounts");
    EXPECT_EQ(amounts.getDataType(), 3);
    EXPECT_TRUE(amounts.hasOwnSeparator());
    EXPECT_EQ(amounts.getOwnSeparator().str(), u"~");
    EXPECT_EQ(named(warehouse.getArrayTypes(), "Texts").getDataType(), 4);
    EXPECT_EQ(named(warehouse.getArrayTypes(), "Texts").getArraySeparator(), qxSepField2);
  }
}

TEST(TypeWriterTest, IdsAreOneSpaceWithGivenIdsTakenFirst) {
  MessageFactory factory;
  const auto& warehouse = compileAndLoad(factory, R"(
primitiveTypes: [{name: A, baseType: quoted}, {name: B, id: 1, baseType: "8"}, {name: C, id: -4, baseType: base64}]
arrayTypes: [{name: D}, {name: E, id: 3}, {name: F}]
)", 883);
  const std::tuple<const char*, int32_t, int32_t> customs[] = {{"A", 2, 14}, {"B", 1, 8}, {"C", -4, 6}};
  for (const auto& [name, id, baseType] : customs) {
    EXPECT_EQ(named(warehouse.getPrimitiveTypes(), name).getId(), id) << name;
    EXPECT_EQ(named(warehouse.getPrimitiveTypes(), name).getBaseType(), baseType) << name;
  }
  const std::pair<const char*, int32_t> arrays[] = {{"D", 4}, {"E", 3}, {"F", 5}};
  for (const auto& [name, id] : arrays) EXPECT_EQ(named(warehouse.getArrayTypes(), name).getId(), id) << name;
}

TEST(TypeWriterTest, MistakesAndVersionLimitsNameTheLine) {
  const std::string def = "the definition", a = "primitive type 'A'";
  const struct {
    const char* source;
    ::testing::Matcher<const std::string&> error;  // a text is the whole message; "" for a source that compiles
    std::optional<int> version = {};
  } cases[] = {
      {"\nprimitiveTypes: [{name: A}]", versionGate(2, "primitiveTypes", def, 853, 852), 852},
      {"arrayTypes: [{name: A}]", versionGate(1, "arrayTypes", def, 853, 852), 852},
      {"primitiveTypes:\n  - name: A\n    escapeCharacters: {start: user1, end: user2}", versionGate(3, "escapeCharacters", a, 870, 869), 869},
      {"primitiveTypes:\n  - name: A\n    characterRanges: {allowed: [a]}", versionGate(3, "characterRanges", a, 873, 872), 872},
      // What an older version means anyway may be stated.
      {"primitiveTypes: []\narrayTypes: []", "", 512},
      {"primitiveTypes:\n  - name: A\n    characterRanges: {allowed: [], excluded: []}", "", 872},
      {"primitiveTypes:\n  - {id: 3}", StartsWith("line 2: primitive type 0 needs a name")},
      {"primitiveTypes:\n  - name: A\n    colour: red", StartsWith("line 3: unknown key 'colour' in primitive type 'A'")},
      {"primitiveTypes: [{name: A}]\narrayTypes: [{name: A}]", StartsWith("line 2: type name 'A' is used twice")},
      {"primitiveTypes: [{name: A, id: 2}]\narrayTypes: [{name: B, id: 2}]", "line 2: id 2 of array type 'B' is already used by primitive type 'A'"},
      {"primitiveTypes:\n  - {name: A, baseType: custom}", StartsWith("line 2: 'baseType' of primitive type 'A' must be a basic data type")},
      {"primitiveTypes:\n  - {name: A, baseType: 15}", StartsWith("line 2: 'baseType' of primitive type 'A' must be a basic data type")},
      {"primitiveTypes:\n  - name: A\n    plainAlias: true\n    regularExpression: x",
       StartsWith("line 4: 'regularExpression' of primitive type 'A' has no place in a plain alias")},
      {"primitiveTypes:\n  - name: A\n    allowedSeparators:\n      - repeat\n      - field9",
       StartsWith("line 5: an entry of 'allowedSeparators' of primitive type 'A' must name a separator")},
      {"primitiveTypes:\n  - name: A\n    allowedSeparators: [repeat, repeat]", StartsWith("line 3: separator 'repeat' is allowed twice")},
      {"primitiveTypes:\n  - name: A\n    escapeCharacters: {start: user1}", StartsWith("line 3: 'escapeCharacters' of primitive type 'A' needs both")},
      {"primitiveTypes:\n  - name: A\n    characterRanges:\n      allowed: [\"a-\"]",
       StartsWith("line 4: character range 'a-' of primitive type 'A' must be one character")},
      {"primitiveTypes:\n  - name: A\n    characterRanges:\n      excluded: [\"007E-0020\"]",
       "line 4: character range '007E-0020' of primitive type 'A' starts above its end"},
      {"primitiveTypes:\n  - name: A\n    characterRanges:\n      excluded: [\"-0041\"]",
       StartsWith("line 4: character range '-0041' of primitive type 'A' must be one character")},
      {"arrayTypes:\n  - {name: A, dataType: Nothing}", StartsWith("line 2: 'dataType' of array type 'A' names neither")},
      {"arrayTypes:\n  - {name: A, dataType: custom}", StartsWith("line 2: 'dataType' of array type 'A' names its custom type by")},
      {"arrayTypes:\n  - {name: A}\n  - {name: B, dataType: A}", "line 3: the items of array type 'B' can't be of an array type"},
      {"arrayTypes:\n  - {name: A, separator: repeat, ownSeparator: x}", StartsWith("line 2: array type 'A' has either")},
      {"arrayTypes:\n  - {name: A, ownSeparator: \"\\u00E9\"}", StartsWith("line 2: 'ownSeparator' of array type 'A' has a character")},
  };
  for (const auto& c : cases) EXPECT_THAT(definitionCompileFailure(c.source, c.version), c.error) << c.source;
}

}  // namespace
}  // namespace vantrelia::compiler
