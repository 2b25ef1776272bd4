// The separator state of one message tree: levels in and out of force, reading with escapes and
// quotes, separators taken from header fields, and writing with trailing empties dropped.

#include "parsing/SeparatorList.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <functional>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <thread>

#include "definitions/DataTypeCodes.h"
#include "validation/ValidationErrorNumbers.h"
#include "compiler/DefinitionCompiler.h"
#include "definitions/DefinitionFile.h"
#include "definitions/FieldPathDefn.h"
#include "definitions/MessageDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "foundation/BadParameter.h"
#include "parsing/ParserToken.h"
#include "parsing/ParsingMessages.h"
#include "parsing/SeparatorCut.h"
#include "parsing/StringParserStream.h"

namespace vantrelia {
namespace {

std::unique_ptr<MessageWarehouseDefn> loadWarehouse(const std::string& source) {
  const std::vector<uint8_t> bytes = compiler::DefinitionCompiler::compile(source);
  std::istringstream input(std::string(bytes.begin(), bytes.end()));
  DefinitionFile file(input);
  auto warehouse = std::make_unique<MessageWarehouseDefn>();
  warehouse->read(file);
  return warehouse;
}

// An HL7-like set; the component, repeat and sub-component separators come from the header field
// MSH.Encoding, and the escape type brackets its values with user1 and user2.
std::string hl7Source(bool trimSegments, std::string_view repeat = "~") {
  return std::string(R"(
primitiveTypes:
  - {name: Escaped, escapeCharacters: {start: user1, end: user2}}
messageSets:
  - name: HL7
    trimSegments: )") + (trimSegments ? "true" : "false") + R"(
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', replacement: '\F\'}
      field2: {value: '^', fromField: MSH.Encoding, position: 0, replacement: '\S\'}
      repeat: {value: ')" + std::string(repeat) + R"(', fromField: MSH.Encoding, position: 1}
      field3: {value: '&', fromField: MSH.Encoding, position: 3}
      user1: '{'
      user2: '}'
    validationErrorSettings: {1015: warning}
)";
}

struct Hl7Set {
  explicit Hl7Set(bool trimSegments = true, std::string_view repeat = "~")
      : warehouse(loadWarehouse(hl7Source(trimSegments, repeat))) {}
  const MessageSetDefn& set() const { return *warehouse->getMessageSets().front(); }
  std::unique_ptr<MessageWarehouseDefn> warehouse;
};

// A field element as far as the list sees it.
class TestField : public SeparatorField {
 public:
  TestField(const PrimitiveTypeDefn* type, int32_t fieldType, const char* path)
      : type(type), fieldType(fieldType), path(FieldPathDefn::parse(path)) {}
  const PrimitiveTypeDefn* getCustomType() const override { return type; }
  int32_t getFieldType() const override { return fieldType; }
  bool isSeparatorAllowed(int32_t separator) const override { return separator == allowed; }
  const FieldPathDefn& getFieldPath() const override { return path; }
  int32_t allowed = -1;

 private:
  const PrimitiveTypeDefn* type;
  int32_t fieldType;
  FieldPathDefn path;
};

struct TokenRead {
  std::u16string text;
  int32_t separator;
};

TokenRead readOne(SeparatorList& list, StringParserStream& stream, const SeparatorField* field = nullptr) {
  ParserToken token;
  token.useView = true;
  list.readToken(stream, token, 0, true, false, field);
  return {std::u16string(token.characters()), token.separator};
}

TEST(SeparatorListTest, ResetFromDefinitionLeavesHeaderSeparatorsPending) {
  Hl7Set hl7;
  SeparatorList list(hl7.set(), false, nullptr);
  list.reset(true, true, true);
  EXPECT_TRUE(list.getVariablePending());
  EXPECT_TRUE(list.getSlot(qxSepField1).known);
  EXPECT_FALSE(list.getSlot(qxSepField2).known);
  EXPECT_FALSE(list.getSlot(qxSepField2).active) << "from the wire, not known means not active";
  EXPECT_EQ(list.getSeparatorValue(qxSepField2), u"^") << "the default stays in the value";
  EXPECT_EQ(list.getValidationErrorSetting(1015), qxVESWarning);
  EXPECT_EQ(list.getValidationErrorSetting(1043), qxVESIgnore);

  list.reset(false, true, true);
  EXPECT_TRUE(list.getSlot(qxSepField2).active) << "made by the host, defaults are in use";
  EXPECT_EQ(list.getLevels(), (SeparatorList::Levels{qxSepMessage, qxSepGroup, qxSepSegment}));
}

TEST(SeparatorListTest, IndexOutsideTheSeparatorsIsRefused) {
  Hl7Set hl7;
  SeparatorList list(hl7.set(), false, nullptr);
  list.reset(false, true, true);
  for (int32_t index : {22, 23, -2}) {
    SCOPED_TRACE(index);
    try {
      list.setSeparatorValue(index, u"#");
      FAIL() << "no exception";
    } catch (const BadParameter& e) {
      EXPECT_STREQ(e.what(), messages::kInvalidSeparator);
    }
    EXPECT_THROW(list.getSeparatorValue(index), BadParameter);
    EXPECT_THROW(list.getPosition(index), BadParameter);
    EXPECT_THROW(list.getFieldLocation(index), BadParameter);
    EXPECT_THROW(list.writeSeparator(SeparatorList::kWriteSeparator, index), BadParameter);
  }
  EXPECT_NO_THROW(list.setSeparatorValue(21, u"\n"));
}

TEST(SeparatorListTest, TokensEndOnlyAtSeparatorsInForce) {
  Hl7Set hl7;
  SeparatorList list(hl7.set(), false, nullptr);
  list.reset(false, true, true);
  struct Case {
    std::vector<ESeparatorType> pushes;
    int pops;
    std::u16string text;
    std::u16string token;
    int32_t separator;
  };
  const Case cases[] = {
      {{}, 0, u"A|B^C\rD", u"A|B^C", qxSepSegment},
      {{qxSepField1}, 0, u"A^B|C", u"A^B", qxSepField1},
      {{qxSepField1, qxSepField2}, 0, u"A&B^C|D", u"A&B", qxSepField2},
      {{qxSepField1, qxSepField2}, 0, u"AB|C", u"AB", qxSepField1},
      {{qxSepField1, qxSepField2}, 1, u"A^B|C", u"A^B", qxSepField1},
      // The replacement of the field separator is data at every level.
      {{qxSepField1}, 0, u"A\\F\\B|C", u"A|B", qxSepField1},
      {{qxSepField1}, 1, u"A|B\rC", u"A|B", qxSepSegment},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.text.begin(), c.text.end()));
    list.reset(false, true, true);
    for (ESeparatorType index : c.pushes) list.pushSeparator(index);
    for (int i = 0; i < c.pops; ++i) list.popSeparator();
    StringParserStream stream(c.text);
    const TokenRead read = readOne(list, stream);
    EXPECT_EQ(read.text, c.token);
    EXPECT_EQ(read.separator, c.separator);
  }
}

// Random pushes and pops above the three levels a message starts with, each noted in the trace.
// A separator may stand on the stack twice, and a pushed string may be the text of a separator.
struct LevelWalk {
  explicit LevelWalk(uint32_t seed) : random(seed) {}
  void step(SeparatorList& list) {
    static constexpr ESeparatorType kPushable[] = {qxSepField1, qxSepField2, qxSepField3,
                                                   qxSepRepeat, qxSepString, qxSepNone};
    static constexpr std::u16string_view kStrings[] = {u"=", u"::", u"^"};
    if (list.getLevels().size() > 3 && random() % 3 == 0) {
      list.popSeparator();
      trace += " pop";
      return;
    }
    if (list.getLevels().size() > 12) return;
    const ESeparatorType index = kPushable[random() % std::size(kPushable)];
    const std::u16string_view special = kStrings[random() % std::size(kStrings)];
    list.pushSeparator(index, special);
    trace += " push" + std::to_string(index);
    if (index == qxSepString) trace += std::string(special.begin(), special.end());
  }
  std::mt19937 random;
  std::string trace;
};

const std::u16string kWalkText = u"a^b~c|d&e=f::g\\S\\h\rk";

// The read of a copy of the list made on a thread of its own: its trie is built afresh, since
// that thread has none set aside.
TokenRead readAfresh(const SeparatorList& list) {
  TokenRead read;
  std::thread([&] {
    SeparatorList fresh(list);
    StringParserStream stream(kWalkText);
    read = readOne(fresh, stream);
  }).join();
  return read;
}

// The list changes its trie level by level and puts off taking popped sequences out of force;
// after any walk up and down the stack it must cut text as a list whose trie is built afresh from
// the same stack. That holds too where two separators have one text, as a header may give them:
// the inner one goes and the outer one stands again.
TEST(SeparatorListTest, LevelChangesCutAsAFreshTrieWould) {
  for (const char* repeat : {"~", "^"}) {
    SCOPED_TRACE(repeat);
    Hl7Set hl7(true, repeat);
    LevelWalk walk(20261122);
    for (int round = 0; round < 40; ++round) {
      SeparatorList list(hl7.set(), false, nullptr);
      list.reset(false, true, true);
      walk.trace.clear();
      for (int step = 0; step < 30; ++step) {
        walk.step(list);
        SCOPED_TRACE(walk.trace);
        StringParserStream incremental(kWalkText);
        const TokenRead got = readOne(list, incremental);
        const TokenRead want = readAfresh(list);
        EXPECT_EQ(got.text, want.text);
        EXPECT_EQ(got.separator, want.separator);
      }
    }
  }
}

TEST(SeparatorListTest, SpecialStringAndNoneOnTheStack) {
  Hl7Set hl7;
  SeparatorList list(hl7.set(), false, nullptr);
  list.reset(false, true, true);
  list.pushSeparator(qxSepString, u"=");
  EXPECT_EQ(list.getSeparatorValue(SeparatorList::kCurrent), u"=");
  EXPECT_TRUE(list.isSeparatorActive(qxSepString));
  StringParserStream stream(u"KEY=VALUE", -1);
  EXPECT_EQ(readOne(list, stream).separator, qxSepString);
  list.pushSeparator(qxSepString, u"");
  EXPECT_FALSE(list.isSeparatorActive(qxSepString)) << "an empty special string is not in use";
  list.popSeparator();
  list.pushSeparator(qxSepNone);
  EXPECT_EQ(list.getSeparatorValue(SeparatorList::kCurrent), u"");
  EXPECT_FALSE(list.isSeparatorActive(qxSepNone));
  list.popSeparator();
  EXPECT_EQ(list.popSeparator(), qxSepSegment);
  EXPECT_FALSE(list.isSeparatorActive(qxSepString));
}

// In force for reading means on the stack and settled; written, a level's separator is its text.
TEST(SeparatorListTest, WhatIsInUseAtTheTopOfTheStack) {
  Hl7Set hl7;
  struct Case {
    const char* name;
    ESeparatorType pushed;
    std::u16string_view special;
    bool active;
    std::u16string written;  // "K", the separator of the top level, "V"
  };
  const Case cases[] = {
      {"a settled separator", qxSepField1, u"", true, u"K|V"},
      {"a separator still to be read from the header", qxSepField2, u"", false, u"KV"},
      {"a pushed string", qxSepString, u"=", true, u"K=V"},
      {"an empty pushed string", qxSepString, u"", false, u"KV"},
      {"no separator", qxSepNone, u"", false, u"KV"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    SeparatorList list(hl7.set(), false, nullptr);
    list.reset(true, true, true);
    EXPECT_FALSE(list.isSeparatorActive(c.pushed)) << "not on the stack yet";
    list.pushSeparator(c.pushed, c.special);
    EXPECT_EQ(list.isSeparatorActive(SeparatorList::kCurrent), c.active);
    list.writeData(u"K");
    list.writeSeparator(SeparatorList::kWriteSeparator, SeparatorList::kCurrent);
    list.writeData(u"V");
    EXPECT_EQ(list.getOutput(), c.written);
  }
}

// readToken takes a leading double quote as the start of a quoted value; readTokenEscaped takes
// it as data. Both keep the field type's escapes.
TEST(SeparatorListTest, QuotedValuesAndEscapes) {
  Hl7Set hl7;
  SeparatorList list(hl7.set(), false, nullptr);
  list.reset(false, true, true);
  list.pushSeparator(qxSepField1);
  list.pushSeparator(qxSepField2);
  const PrimitiveTypeDefn* escapedType = hl7.warehouse->getPrimitiveTypes().begin()->second.get();
  const TestField escaped(escapedType, 0, "SEG/1");

  struct Case {
    bool quotes;  // readToken rather than readTokenEscaped
    std::u16string text;
    const SeparatorField* field;
    std::u16string token;
    std::u16string after;  // what the stream holds after the read
  };
  const Case cases[] = {
      {true, u"\"A|B^C\"^D", nullptr, u"A|B^C", u"^D"},
      {true, u"\"say \"\"hi\"\"\"|D", nullptr, u"say \"hi\"", u"|D"},
      {true, u"\"open\rX", nullptr, u"open", u"\rX"},
      // Between the escapes, replacement sequences stay as they stand.
      {true, u"A{B\\F\\C}E^F", &escaped, u"A{B\\F\\C}E", u"^F"},
      {true, u"A{B\\F\\C}E^F", nullptr, u"A{B|C}E", u"^F"},
      // A separator inside an escape still ends the value.
      {true, u"A{B^C}E", &escaped, u"A{B", u"^C}E"},
      {false, u"\"A|B\"^C", nullptr, u"\"A", u"|B\"^C"},
      {false, u"\"A{|}B\"^C", &escaped, u"\"A{", u"|}B\"^C"},
      {false, u"A{B\\F\\C}D^E", &escaped, u"A{B\\F\\C}D", u"^E"},
      {false, u"A\\F\\B^E", nullptr, u"A|B", u"^E"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.text.begin(), c.text.end()) + (c.quotes ? "" : " escaped read"));
    StringParserStream stream(c.text);
    ParserToken token;
    token.useView = true;
    if (c.quotes) {
      list.readToken(stream, token, 0, true, false, c.field);
    } else {
      list.readTokenEscaped(stream, token, 0, true, false, c.field);
    }
    EXPECT_EQ(token.characters(), c.token);
    EXPECT_EQ(stream.readRest(), c.after);
    EXPECT_EQ(list.getLevels().size(), 5u) << "the levels come back after a quoted value";
  }
  // The escape sequences leave with the read: the next field cuts at the separator again.
  StringParserStream stream(u"A{B^C", -1);
  EXPECT_EQ(readOne(list, stream).text, u"A{B");
}

TEST(SeparatorListTest, SeparatorsFromHeaderField) {
  Hl7Set hl7;
  const FieldPathDefn msh2 = FieldPathDefn::parse("MSH/Encoding");
  {
    SeparatorList list(hl7.set(), false, nullptr);
    list.reset(true, true, true);
    StringParserStream stream(u"*#%|rest", -1);
    list.readFromStream(msh2, stream);
    EXPECT_EQ(list.getSeparatorValue(qxSepField2), u"*");
    EXPECT_EQ(list.getSeparatorValue(qxSepRepeat), u"#");
    EXPECT_EQ(list.getSeparatorValue(qxSepField3), u"%");
    EXPECT_FALSE(list.getVariablePending());
    EXPECT_EQ(list.getSlot(qxSepField2).replacementValue, u"\\S\\") << "replacements follow the message";
    EXPECT_EQ(list.collectForField(msh2), u"*#%");
  }
  {
    // A header value shorter than its last separator's place is padded with the filler.
    SeparatorList list(hl7.set(), false, nullptr);
    list.reset(true, true, true);
    EXPECT_EQ(list.takeFromField(msh2, u"*#"), u"*# &");
    EXPECT_EQ(list.getSeparatorValue(qxSepField2), u"*");
    EXPECT_EQ(list.getSeparatorValue(qxSepField3), u"&");
    EXPECT_TRUE(list.getSlot(qxSepField3).known);
    EXPECT_FALSE(list.getVariablePending());
  }
  {
    // A path ending the element's own path matches too; the end of the text reads nothing.
    SeparatorList list(hl7.set(), false, nullptr);
    list.reset(true, true, true);
    StringParserStream empty(u"", -1);
    list.readFromStream(msh2, empty);
    EXPECT_TRUE(list.getVariablePending());
    list.applyDefaultForPath("MSH");
    EXPECT_FALSE(list.getVariablePending());
    EXPECT_TRUE(list.getSlot(qxSepField2).active);
  }
}

TEST(SeparatorListTest, HeaderSeparatorsSettledByTheirItem) {
  const auto warehouse = loadWarehouse(R"(
messageSets:
  - name: S
    separators:
      segment: "\r"
      field1: {value: '|', fromField: MSH.2, position: 0}
      field2: {value: '^', fromField: MSH.Encoding, position: 0}
)");
  const MessageSetDefn& set = *warehouse->getMessageSets().front();
  // The item's children: Encoding is its second.
  const auto childIndex = [](std::string_view name) { return name == "Encoding" ? 1 : -1; };
  struct Case {
    const char* path;
    int32_t count;
    bool field1Known;
    bool field2Known;
  };
  const Case cases[] = {
      {"MSH", 1, false, false},  // neither field 2 nor Encoding is among the first child
      {"MSH", 2, true, true},
      {"PID", 5, false, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.path) + " " + std::to_string(c.count));
    SeparatorList list(set, false, nullptr);
    list.reset(true, true, true);
    list.markKnownForChildren(c.path, c.count, childIndex);
    EXPECT_EQ(list.getSlot(qxSepField1).known, c.field1Known);
    EXPECT_EQ(list.getSlot(qxSepField2).known, c.field2Known);
    EXPECT_EQ(list.getVariablePending(), !(c.field1Known && c.field2Known));
  }
  SeparatorList list(set, false, nullptr);
  list.reset(true, true, true);
  list.markKnownForPath("msh/enc");
  EXPECT_TRUE(list.getSlot(qxSepField2).known) << "a path prefix, compared without case";
  EXPECT_FALSE(list.getSlot(qxSepField1).known);
}

// Settled by path without a read: marked known, a pending separator keeps the text it has; given
// its default, it takes the definition's. Either way the next read cuts at the settled text.
TEST(SeparatorListTest, HeaderSeparatorsSettledByPath) {
  Hl7Set hl7;
  struct Case {
    bool applyDefault;
    std::u16string value;
    std::u16string text;
    std::u16string token;
  };
  const Case cases[] = {
      {false, u"*", u"A*B^C", u"A"},
      {true, u"^", u"A*B^C", u"A*B"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.applyDefault);
    SeparatorList list(hl7.set(), false, nullptr);
    list.reset(true, true, true);
    list.setSeparatorValue(qxSepField2, u"*");
    ASSERT_FALSE(list.getSlot(qxSepField2).known);
    if (c.applyDefault) {
      list.applyDefaultForPath("MSH");
    } else {
      list.markKnownForPath("MSH");
    }
    EXPECT_TRUE(list.getSlot(qxSepField2).known);
    EXPECT_EQ(list.getSeparatorValue(qxSepField2), c.value);
    EXPECT_EQ(list.getSlot(qxSepRepeat).value, u"~");
    EXPECT_FALSE(list.getVariablePending());
    list.pushSeparator(qxSepField1);
    list.pushSeparator(qxSepField2);
    StringParserStream stream(c.text);
    EXPECT_EQ(readOne(list, stream).text, c.token);
  }
}

// Before an item is read again (a host re-reading part of a message it built itself), the
// separators that belong to the items before it keep what was read for them, or take the
// definition's texts when nothing was; the others from header fields are forgotten.
TEST(SeparatorListTest, RestoreForItemKeepsOnlyWhatEarlierItemsSettled) {
  const auto warehouse = loadWarehouse(R"(
messageSets:
  - name: S
    separators:
      segment: "\r"
      field1: '|'
      field2: {value: '^', fromField: MSH.Encoding, position: 0}
      repeat: {value: '~', fromField: MSH.Encoding, position: 1}
      field3: {value: '&', fromField: PID.Marks, position: 0}
    segments:
      - {name: MSH, fields: [{name: Encoding}]}
      - {name: EVN, fields: [{name: When}]}
      - {name: PID, fields: [{name: Marks}]}
    messages:
      - name: A01
        items: [{segment: MSH}, {segment: EVN}, {segment: PID}]
)");
  const MessageSetDefn& set = *warehouse->getMessageSets().front();
  const MessageDefn& message = *set.getMessages().front();
  struct Case {
    const char* item;
    bool field2Known;
    bool field3Known;
  };
  const Case cases[] = {
      {"MSH", false, false},  // nothing comes before the first item
      {"PID", true, false},
      {"pid", true, false},   // item names compare without case
      {"NONE", true, true},   // no such item: every item counts as before it
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.item);
    SeparatorList list(set, false, nullptr);
    list.reset(true, true, true);
    // MSH.Encoding was read with its own component separator; the repeat separator was not in it.
    list.takeFromField(FieldPathDefn::parse("MSH/Encoding"), u"*");
    list.setKnown(qxSepRepeat, false);
    list.buildTrie();
    list.restoreForItem(message, c.item);

    EXPECT_EQ(list.getSlot(qxSepField2).known, c.field2Known);
    EXPECT_EQ(list.getSlot(qxSepField3).known, c.field3Known);
    if (c.field2Known) {
      EXPECT_EQ(list.getSeparatorValue(qxSepField2), u"*") << "what was read comes back";
      EXPECT_TRUE(list.getSlot(qxSepRepeat).known);
      EXPECT_EQ(list.getSeparatorValue(qxSepRepeat), u"~") << "what was never read takes the definition's text";
      EXPECT_TRUE(list.isTrieDirty());
    }
    if (c.field3Known) {
      EXPECT_EQ(list.getSeparatorValue(qxSepField3), u"&");
    }
    EXPECT_TRUE(list.getSlot(qxSepField1).known) << "a preset separator is never forgotten";
  }
}

TEST(SeparatorListTest, HostValueOfPresetSeparatorSurvivesReset) {
  Hl7Set hl7;
  SeparatorList list(hl7.set(), false, nullptr);
  list.reset(false, true, true);
  list.setSeparatorValue(qxSepField1, u"!");
  list.reset(true, true, true);
  EXPECT_EQ(list.getSeparatorValue(qxSepField1), u"!");
  StringParserStream stream(u"A!B|C", -1);
  list.pushSeparator(qxSepField1);
  EXPECT_EQ(readOne(list, stream).text, u"A");
}

TEST(SeparatorListTest, InnerListTakesParentSeparators) {
  const auto warehouse = loadWarehouse(R"(
messageSets:
  - name: Outer
    separators: {segment: "\r", field1: '|'}
  - name: Inner
    initializeSeparatorsFromParent: true
    separators: {segment: "\n", field1: '*'}
)");
  SeparatorList outer(*warehouse->getMessageSets()[0], false, nullptr);
  outer.reset(false, true, true);
  outer.setSeparatorValue(qxSepField1, u"!");
  SeparatorList inner(*warehouse->getMessageSets()[1], false, &outer);
  inner.reset(true, true, true);
  EXPECT_EQ(inner.getSeparatorValue(qxSepField1), u"!");
  EXPECT_EQ(inner.getSeparatorValue(qxSepSegment), u"\r");
  EXPECT_TRUE(inner.getSlot(qxSepSegment).known);
  EXPECT_FALSE(inner.getSlot(qxSepField5).known) << "known follows a non-empty value";
}

// Writes a segment of tag and fields as writers do: separator before each field, data when any.
std::u16string writeSegment(SeparatorList& list, std::u16string_view tag, const std::vector<std::u16string>& fields) {
  list.writeData(tag);
  for (const std::u16string& field : fields) {
    list.writeSeparator(SeparatorList::kWriteSeparator, qxSepField1);
    if (!field.empty()) list.writeData(field);
  }
  list.writeSeparator(SeparatorList::kWriteTerminator, qxSepSegment);
  return list.getOutput();
}

TEST(SeparatorListTest, WriteDropsTrailingEmpties) {
  struct Case {
    bool trimSegments;
    std::vector<std::u16string> fields;
    std::u16string written;
  };
  const Case cases[] = {
      {true, {u"A", u"", u"", u"", u""}, u"SEG|A\r"},
      {false, {u"A", u"", u"", u"", u""}, u"SEG|A||||\r"},
      {true, {u"", u"B", u"", u""}, u"SEG||B\r"},
      {true, {u"", u"", u"", u""}, u"SEG\r"},
      {false, {}, u"SEG\r"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.trimSegments);
    Hl7Set hl7(c.trimSegments);
    SeparatorList list(hl7.set(), false, nullptr);
    list.reset(false, true, true);
    EXPECT_EQ(writeSegment(list, u"SEG", c.fields), c.written);
  }
}

// Which pending separators a new one drops or merges with, by level: a script of separator
// writes (G group, S segment, F field, R repeat, C component, D subcomponent) and data (any other
// character); what is still pending at the end is a trailing empty and never goes out.
TEST(SeparatorListTest, PendingSeparatorsFollowTheirRanks) {
  const auto source = [](bool trim) {
    return std::string(R"(
messageSets:
  - name: RANKS
    trimSegments: )") + (trim ? "true" : "false") + R"(
    separators: {group: "#", segment: "'", field1: "+", repeat: "*", field2: ":", field3: "&"}
)";
  };
  struct Case {
    bool trim;
    const char* script;
    const char16_t* written;
  };
  const Case cases[] = {
      {true, "aFFFSb", u"a'b"},         // empty fields before a segment end vanish
      {false, "aFFFSb", u"a+++'b"},     // ... unless segments keep their trailing fields
      {false, "aCFSb", u"a+'b"},        // a component before a field still goes
      {true, "aRFb", u"a+b"},           // an empty repeat before the next field
      {true, "aFRb", u"a+*b"},          // a lower level after a higher one stays
      {true, "aCCFb", u"a+b"},          // trailing components
      {true, "aFFb", u"a++b"},          // fields of one level all stay: each is an empty field
      {true, "aSSb", u"a'b"},           // segments of one level merge: no empty segment
      {true, "aGGb", u"a#b"},           // nor an empty group
      {true, "aGSb", u"a#'b"},          // a segment after a group
      {true, "aSGb", u"a#b"},           // a group closes the segment
      {true, "aDCRFSGb", u"a#b"},       // every level at once
      {true, "aFCF", u"a"},             // nothing follows: nothing goes out
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.script);
    const auto warehouse = loadWarehouse(source(c.trim));
    SeparatorList list(*warehouse->getMessageSets().front(), false, nullptr);
    list.reset(false, true, true);
    for (const char* step = c.script; *step; ++step) {
      const std::string letters = "GSFRCD";
      const ESeparatorType types[] = {qxSepGroup, qxSepSegment, qxSepField1, qxSepRepeat, qxSepField2, qxSepField3};
      const size_t which = letters.find(*step);
      if (which == std::string::npos) {
        list.writeData(std::u16string(1, static_cast<char16_t>(*step)));
      } else {
        list.writeSeparator(SeparatorList::kWriteSeparator, types[which]);
      }
    }
    EXPECT_EQ(list.getOutput(), c.written);
  }
}

TEST(SeparatorListTest, WriteCollapsesSameLevelAndTrailingComponents) {
  Hl7Set hl7;
  SeparatorList list(hl7.set(), false, nullptr);
  list.reset(false, true, true);
  list.writeData(u"SEG");
  list.writeSeparator(SeparatorList::kWriteSeparator, qxSepField1);
  list.writeData(u"A");
  list.writeSeparator(SeparatorList::kWriteSeparator, qxSepField2);
  list.writeSeparator(SeparatorList::kWriteSeparator, qxSepField2);
  list.writeSeparator(SeparatorList::kWriteSeparator, qxSepField1);
  list.writeData(u"B");
  EXPECT_EQ(list.getOutput(), u"SEG|A|B") << "empty trailing components go with the next field";
  list.setCheckOutputTail(true);
  list.writeData(u"|");
  list.writeSeparator(SeparatorList::kWriteSeparator, qxSepField1);
  list.writeData(u"C");
  EXPECT_EQ(list.getOutput(), u"SEG|A|B|C") << "a separator already at the tail isn't written twice";
}

TEST(SeparatorListTest, EncodeDecodeAndTranslate) {
  Hl7Set hl7;
  SeparatorList list(hl7.set(), false, nullptr);
  list.reset(false, true, true);
  struct Case {
    std::u16string value;
    int32_t fieldType;
    std::u16string encoded;
  };
  const Case cases[] = {
      {u"plain", 0, u"plain"},
      {u"A|B^C", 0, u"A\\F\\B\\S\\C"},
      {u"A~B", 0, u"A~B"},
      {u"A~B", DataTypeCodes::kQuotedText, u"\"A~B\""},
      {u"say \"x\"", DataTypeCodes::kQuotedText, u"\"say \"\"x\"\"\""},
      {u"A|B", DataTypeCodes::kQuotedText, u"\"A\\F\\B\""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.value.begin(), c.value.end()));
    EXPECT_EQ(list.encodeValue(c.value, c.fieldType), c.encoded);
    EXPECT_EQ(list.decodeValue(c.encoded, c.fieldType), c.value);
  }
  // A replacement written with default separators follows the message's own.
  list.setSeparatorValue(qxSepField1, u"!");
  EXPECT_EQ(list.translateValue(u"a|b^c"), u"a!b^c");
}

// Where one separator begins another, the longer one is replaced first, in whichever slot order
// the two stand: the shorter must never take the first half of the longer.
TEST(SeparatorListTest, EncodingReplacesTheLongerOfTwoSeparatorsThatBeginAlike) {
  for (const bool longerFirst : {false, true}) {
    SCOPED_TRACE(longerFirst ? "longer in the first slot" : "shorter in the first slot");
    const std::string shorter = "{value: '|', replacement: '\\F\\'}";
    const std::string longer = "{value: '||', replacement: '\\D\\'}";
    const auto warehouse = loadWarehouse(R"(
messageSets:
  - name: Pairs
    separators:
      segment: {value: "\r", style: terminator}
      field1: )" + (longerFirst ? longer : shorter) + R"(
      field2: )" + (longerFirst ? shorter : longer) + "\n");
    SeparatorList list(*warehouse->getMessageSets().front(), false, nullptr);
    list.reset(false, true, true);
    EXPECT_EQ(list.encodeValue(u"A||B|C", 0), u"A\\D\\B\\F\\C");
    EXPECT_EQ(list.decodeValue(u"A\\D\\B\\F\\C", 0), u"A||B|C");
  }
}

// The order follows the separators as they stand: once a separator grows to begin with another's
// text, the longer is replaced first, and once it shrinks back, slot order rules again.
TEST(SeparatorListTest, EncodingFollowsSeparatorsThatChangeTheirLength) {
  const auto warehouse = loadWarehouse(R"(
messageSets:
  - name: Pairs
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', replacement: '\F\'}
      field2: {value: '!', replacement: '\D\'}
)");
  SeparatorList list(*warehouse->getMessageSets().front(), false, nullptr);
  list.reset(false, true, true);
  EXPECT_EQ(list.encodeValue(u"A||B!C", 0), u"A\\F\\\\F\\B\\D\\C");
  list.setSeparatorValue(qxSepField2, u"||");
  EXPECT_EQ(list.encodeValue(u"A||B|C", 0), u"A\\D\\B\\F\\C");
  const SeparatorList copy(list);
  EXPECT_EQ(copy.encodeValue(u"A||B|C", 0), u"A\\D\\B\\F\\C");
  list.setSeparatorValue(qxSepField2, u"!");
  EXPECT_EQ(list.encodeValue(u"A||B!C", 0), u"A\\F\\\\F\\B\\D\\C");
}

TEST(SeparatorListTest, InvalidCharactersFollowTheSeverity) {
  Hl7Set hl7;
  SeparatorList list(hl7.set(), false, nullptr);
  list.reset(false, true, true);
  const PrimitiveTypeDefn* escapedType = hl7.warehouse->getPrimitiveTypes().begin()->second.get();
  TestField plain(nullptr, 0, "SEG/1");
  const TestField escaped(escapedType, 0, "SEG/1");
  EXPECT_EQ(list.findInvalidCharacters(plain, u"A~B", false), std::nullopt) << "1015 is a warning here";
  EXPECT_EQ(list.findInvalidCharacters(plain, u"A~B", true), qxSepRepeat);
  EXPECT_EQ(list.findInvalidCharacters(plain, u"A|B", true), std::nullopt) << "encoded separators are legal";
  EXPECT_EQ(list.findInvalidCharacters(escaped, u"A{~}B", true), std::nullopt);
  EXPECT_EQ(list.findInvalidCharacters(escaped, u"A{~B", true), -1);
  plain.allowed = qxSepRepeat;
  EXPECT_EQ(list.findInvalidCharacters(plain, u"A~B", true), std::nullopt);
  list.setValidationErrorSetting(verr::kInvalidCharacters, qxVESIgnore);
  EXPECT_EQ(list.findInvalidCharacters(escaped, u"A{~B", true), std::nullopt);
}

// A whole round: reset from the wire, the header settles the separators, a nested push and pop
// reads a field, and the write drops trailing empties.
TEST(SeparatorListTest, WireHeaderNestedReadAndWrite) {
  Hl7Set hl7;
  SeparatorList list(hl7.set(), false, nullptr);
  list.reset(true, true, true);
  const std::u16string text = u"MSH|*#\\%|A*B%C|\rPID|1";
  StringParserStream stream(text);

  list.pushSeparator(qxSepField1);
  EXPECT_EQ(readOne(list, stream).text, u"MSH");
  ASSERT_TRUE(stream.consume(std::u16string(u"|")));
  const FieldPathDefn msh2 = FieldPathDefn::parse("MSH/Encoding");
  const TokenRead header = readOne(list, stream);
  EXPECT_EQ(list.takeFromField(msh2, header.text), u"*#\\%");
  ASSERT_EQ(header.separator, qxSepField1);
  ASSERT_TRUE(stream.consume(std::u16string(u"|")));

  list.pushSeparator(qxSepField2);
  EXPECT_EQ(readOne(list, stream).text, u"A") << "the component separator read from the header";
  ASSERT_TRUE(stream.consume(std::u16string(u"*")));
  list.pushSeparator(qxSepField3);
  const TokenRead inner = readOne(list, stream);
  EXPECT_EQ(inner.text, u"B");
  EXPECT_EQ(inner.separator, qxSepField3);
  ASSERT_TRUE(stream.consume(std::u16string(u"%")));
  EXPECT_EQ(readOne(list, stream).separator, qxSepField1);
  list.popSeparator();
  list.popSeparator();
  ASSERT_TRUE(stream.consume(std::u16string(u"|")));
  EXPECT_EQ(readOne(list, stream).separator, qxSepSegment);
  list.popSeparator();
  EXPECT_EQ(list.getLevels().size(), 3u);

  list.clearOutput();
  EXPECT_EQ(writeSegment(list, u"PID", {u"1", u"", u""}), u"PID|1\r");
  list.writeData(u"X");
  list.writeSeparator(SeparatorList::kWriteSeparator, qxSepField2);
  list.writeData(u"Y");
  EXPECT_EQ(list.getOutput(), u"PID|1\rX*Y") << "writing uses the separators of the message";
}

// Lists made for messages of one set change only their own slots: each change stays with the list
// that made it, whichever way the lists came by their slots (from the set, by copy, or settled by
// another), and a cut scans for the separators of its own list, though lists hand on what a cut
// scans for with their slots.
TEST(SeparatorListTest, ListsOfOneSetChangeOnlyTheirOwnSlots) {
  Hl7Set hl7;
  struct Slot {
    std::u16string value;
    bool known;
    bool active;
    bool operator==(const Slot&) const = default;
  };
  const auto slotsOf = [](const SeparatorList& list) {
    std::vector<Slot> slots;
    for (int32_t i = 0; i < SeparatorList::kSeparatorSlots; ++i) {
      const SeparatorImpl& slot = list.getSlot(i);
      slots.push_back({slot.value.str(), slot.known, slot.active});
    }
    return slots;
  };
  struct Change {
    const char* what;
    std::function<void(SeparatorList&)> make;
  };
  const Change changes[] = {
      {"a value set", [](SeparatorList& list) { list.setSeparatorValue(qxSepSegment, u"\n"); }},
      {"a slot settled", [](SeparatorList& list) { list.setKnown(qxSepField2, true); }},
      {"a header read", [](SeparatorList& list) {
         StringParserStream stream(u"*#%|rest", -1);
         list.readFromStream(FieldPathDefn::parse("MSH/Encoding"), stream);
       }},
      {"a reset to the definition", [](SeparatorList& list) { list.reset(false, true, true); }},
      {"a header's slots marked known", [](SeparatorList& list) { list.markKnownForPath("MSH"); }},
      {"a walk finished", [](SeparatorList& list) { list.finishWalk(); }},
  };
  const std::vector<Slot> defined = slotsOf(*SeparatorList::startOfWire(hl7.set(), nullptr));
  for (const Change& change : changes) {
    SCOPED_TRACE(change.what);
    auto first = SeparatorList::startOfWire(hl7.set(), nullptr);
    auto second = SeparatorList::startOfWire(hl7.set(), nullptr);
    SeparatorList copy(*first);
    auto settled = SeparatorList::startOfWire(hl7.set(), nullptr);
    settled->takeSettled(copy);
    for (SeparatorList* changed : {second.get(), &copy, settled.get()}) change.make(*changed);
    // The change took: each changed list holds the same slots, and they are not the definition's.
    EXPECT_NE(slotsOf(*second), defined);
    EXPECT_EQ(slotsOf(copy), slotsOf(*second));
    EXPECT_EQ(slotsOf(*settled), slotsOf(*second));
    // And went nowhere else: not to the list they came from, nor to the set's next list.
    EXPECT_EQ(slotsOf(*first), defined);
    EXPECT_EQ(slotsOf(*SeparatorList::startOfWire(hl7.set(), nullptr)), defined);
  }
  // A cut scans up to the segment separator of its own list.
  auto carriageReturn = SeparatorList::startOfWire(hl7.set(), nullptr);
  auto lineFeed = SeparatorList::startOfWire(hl7.set(), nullptr);
  carriageReturn->shareCut();
  lineFeed->setSeparatorValue(qxSepSegment, u"\n");
  const std::u16string text = u"ab\ncd\r";
  EXPECT_EQ(carriageReturn->shareCut()->scanFields(text.data(), static_cast<int32_t>(text.size())), 5);
  EXPECT_EQ(lineFeed->shareCut()->scanFields(text.data(), static_cast<int32_t>(text.size())), 2);
}

// The scan for a segment's end reads eight characters at a time: a stop at every place in and
// around a block, and texts shorter than one, end it as a plain search for the first stop does.
TEST(SeparatorListTest, ScanForTheSegmentEndFindsTheFirstStopAnywhere) {
  Hl7Set hl7;
  auto list = SeparatorList::startOfWire(hl7.set(), nullptr);
  list->finishWalk();
  const std::shared_ptr<SeparatorCut> cut = list->shareCut();
  const std::u16string stops = SeparatorCut::stopsOf(*list)->stops;
  ASSERT_EQ(stops.front(), u'\r');
  ASSERT_NE(stops.find(u'\\'), std::u16string::npos);
  const auto expected = [&](std::u16string_view text) {
    const size_t first = text.find_first_of(stops);
    if (first == std::u16string_view::npos) return static_cast<int32_t>(text.size());
    return text[first] == u'\r' ? static_cast<int32_t>(first) : -1;
  };
  std::mt19937 random(20261125);
  const std::u16string alphabet = u"ab|^&~\r\\\"";
  for (int32_t length = 0; length <= 40; ++length) {
    for (int round = 0; round < 60; ++round) {
      std::u16string text(static_cast<size_t>(length), u'x');
      // Mostly plain text with one or two stops at random places, sometimes none.
      for (int k = static_cast<int>(random() % 3); k > 0 && length > 0; --k) {
        text[random() % static_cast<size_t>(length)] = alphabet[random() % alphabet.size()];
      }
      SCOPED_TRACE(std::string(text.begin(), text.end()));
      // In a buffer of its own, so that a read past the text's end shows under a sanitizer.
      const std::unique_ptr<char16_t[]> exact(new char16_t[text.size()]);
      std::copy(text.begin(), text.end(), exact.get());
      EXPECT_EQ(cut->scanFields(exact.get(), length), expected(text));
    }
  }
}

TEST(SeparatorListTest, CopyKeepsStateAndRebuildsTrie) {
  Hl7Set hl7;
  SeparatorList list(hl7.set(), false, nullptr);
  list.reset(false, true, true);
  list.setSeparatorValue(qxSepField1, u"!");
  list.pushSeparator(qxSepField1);
  SeparatorList copy(list);
  EXPECT_TRUE(copy.isTrieDirty());
  EXPECT_EQ(copy.getLevels(), list.getLevels());
  StringParserStream stream(u"A!B", -1);
  EXPECT_EQ(readOne(copy, stream).separator, qxSepField1);
}

// A trie that served one list serves the next with the same separators, whatever stack each of
// them stands at: the reads, then and after more pushes and pops, are those of a trie built
// afresh. With one text for two separators, which of them the text stands for depends on the order
// of the pushes that made the trie (it does so for a list's own trie too), so such a trie is never
// handed on.
TEST(SeparatorListTest, ATrieHandedOnReadsAsAFreshOneAtEveryDepth) {
  Hl7Set hl7;
  LevelWalk walk(20261125);
  for (const bool sharedText : {false, true}) {
    const auto makeList = [&] {
      auto list = std::make_unique<SeparatorList>(hl7.set(), false, nullptr);
      list->reset(false, true, true);
      if (sharedText) list->setSeparatorValue(qxSepField3, u"^");
      return list;
    };
    int handedOn = 0;
    for (int round = 0; round < 60; ++round) {
      walk.trace = sharedText ? "shared text, giver:" : "giver:";
      std::unique_ptr<SeparatorList> giver = makeList();
      for (int i = walk.random() % 8; i > 0; --i) walk.step(*giver);
      StringParserStream warmUp(kWalkText);
      readOne(*giver, warmUp);
      const SeparatorTrieNode* given = &giver->getTrie();
      giver->releaseTrie();

      walk.trace += " taker:";
      std::unique_ptr<SeparatorList> taker = makeList();
      for (int i = walk.random() % 8; i > 0; --i) walk.step(*taker);
      for (int i = 0; i < 12; ++i) {
        SCOPED_TRACE(walk.trace);
        StringParserStream handed(kWalkText);
        const TokenRead got = readOne(*taker, handed);
        if (i == 0 && &taker->getTrie() == given) ++handedOn;
        if (!sharedText) {
          const TokenRead want = readAfresh(*taker);
          EXPECT_EQ(got.text, want.text);
          EXPECT_EQ(got.separator, want.separator);
        }
        walk.step(*taker);
      }
    }
    EXPECT_EQ(handedOn, sharedText ? 0 : 60);
  }
}


// Whether a header field lies under a path is whether the field path's text begins with it, without
// case: checked against that text for field paths named and numbered, and paths cut anywhere.
TEST(SeparatorListTest, AFieldLiesUnderEveryBeginningOfItsPathText) {
  const char* const fieldPaths[] = {"MSH/1", "MSH/2", "MSH/12", "msh/2/3", "UNA", "ISA/16", "ISA/1",
                                    "MSH/FieldSeparator", "A/123456789", "AB/1/22/333", "MS"};
  const char* const paths[] = {"", "M", "MSH", "msh", "MSH/", "MSH/1", "MSH/12", "MSH/2", "MSH/2/", "MSH/2/3",
                               "MSH/2/34", "MSH/FIELD", "MSHX", "ISA/1", "ISA/16", "ISA/161", "UNA", "UNAB",
                               "A/12345", "A/1234567890", "AB/1/2", "AB/1/22/33", "AB/1/22/3334", "MSH/1/"};
  for (const char* text : fieldPaths) {
    const FieldPathDefn fieldPath = FieldPathDefn::parse(text);
    const std::string whole = SeparatorList::pathText(fieldPath);
    for (const char* path : paths) {
      const std::string_view prefix(path);
      bool begins = whole.size() >= prefix.size();
      for (size_t i = 0; begins && i < prefix.size(); ++i) {
        begins = std::tolower(static_cast<unsigned char>(whole[i])) == std::tolower(static_cast<unsigned char>(prefix[i]));
      }
      EXPECT_EQ(SeparatorList::fieldLiesUnder(fieldPath, prefix), begins) << text << " under " << path;
    }
  }
  EXPECT_FALSE(SeparatorList::fieldLiesUnder(FieldPathDefn(), ""));
}

}  // namespace
}  // namespace vantrelia
