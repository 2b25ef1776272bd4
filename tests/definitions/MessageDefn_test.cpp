// Messages in the definition language, compiled and read back by the engine's message reader
// through a set: types, items, overrides, embedded sets, and both state tables, built at load or
// carried in the file.

#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include "compiler/CompileContext.h"
#include "compiler/CompositeWriter.h"
#include "compiler/MessageWriter.h"
#include "compiler/PcfWriter.h"
#include "compiler/SegmentWriter.h"
#include "compiler/StateTableWriter.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PcfMessages.h"
#include "definitions/SegmentFieldInstancesControl.h"
#include "support/DefinitionBytes.h"
#include "support/DefinitionSetup.h"
#include "tool/MessageJson.h"

namespace vantrelia {
namespace {

using compiler::PcfWriter;
using compiler::SourceNode;

constexpr const char* kSegments = R"(
segments:
  - {name: A, fields: [{name: F1}, {name: F2}]}
  - {name: B, fields: [{name: F1}]}
  - {name: C, fields: [{name: F1}]}
  - {name: NTE, fields: [{name: F1}]}
)";

struct Loaded {
  std::unique_ptr<MessageWarehouseDefn> warehouse = std::make_unique<MessageWarehouseDefn>();
  MessageSetDefn* set = nullptr;
  const MessageDefn& message(int index = 0) const { return *set->getMessages().at(static_cast<size_t>(index)); }
};

// Compiles segments and messages of one set (id 1; a set OTHER has id 2), loads them into a set
// of a warehouse and builds the tables of every message that didn't carry any. `tables` gives
// the file form of each message's tables, for messages that ask for them.
Loaded load(const std::string& messagesYaml, int version = 883, std::vector<std::string> typeFields = {"MSH.9"},
            const std::vector<std::vector<uint8_t>>& tables = {}) {
  const SourceNode root(YAML::Load(std::string(kSegments) + messagesYaml), "the set");
  compiler::CompileContext context(version);
  context.declareMessageSet("SET", 1);
  context.declareMessageSet("OTHER", 2);
  context.beginMessageSet();
  const auto segments = root.records("segments", "segment");
  const auto messages = root.records("messages", "message");
  compiler::SegmentWriter::declare(segments, context);
  compiler::MessageWriter::declare(messages, context);
  PcfWriter out;
  for (const auto& segment : segments) compiler::SegmentWriter::write(segment, context, out);
  for (size_t i = 0; i < messages.size(); ++i)
    compiler::MessageWriter::write(messages[i], context, out,
                                   compiler::MessageWriter::wantsEmbeddedTables(messages[i]) && i < tables.size() ? &tables[i] : nullptr);

  Loaded loaded;
  auto set = testing::DefinitionSetup::messageSet("SET", loaded.warehouse.get(), 1);
  for (const auto& path : typeFields) testing::DefinitionSetup::addMessageTypeField(*set, path);
  loaded.set = &testing::DefinitionSetup::addMessageSet(*loaded.warehouse, std::move(set));
  FieldUpdates updates;
  std::vector<MessageDefn*> deferred;
  testing::readExactly(out.bytes(), [&](DefinitionFile& file) {
    for (size_t i = 0; i < segments.size(); ++i) {
      auto segment = std::make_unique<SegmentDefn>();
      segment->load(*loaded.set, file, version, updates);
      testing::DefinitionSetup::addSegment(*loaded.set, std::move(segment), updates);
    }
    for (size_t i = 0; i < messages.size(); ++i) {
      auto message = std::make_unique<MessageDefn>();
      message->load(*loaded.set, file, version, deferred);
      testing::DefinitionSetup::addMessage(*loaded.set, std::move(message));
    }
  });
  for (MessageDefn* message : deferred) message->buildStateTables();
  return loaded;
}

std::string loadFailure(const std::string& yaml) {
  return testing::invalidFileMessage([&] { load(yaml); });
}

// A table as one line per state: "key>target" for each transition, in order.
std::vector<std::string> describe(const StateTable& table) {
  std::vector<std::string> lines;
  for (const auto& state : table) {
    std::string line;
    for (const auto& transition : state->getTransitions())
      line += (line.empty() ? "" : " ") + transition.key + ">" + std::to_string(transition.target->getIndex());
    lines.push_back(line);
  }
  return lines;
}

std::vector<int32_t> distances(const ParseState& state) {
  std::vector<int32_t> result;
  for (const auto& transition : state.getTransitions()) result.push_back(transition.distance);
  return result;
}

using Lines = std::vector<std::string>;

TEST(MessageDefnTest, TypesBySetAndVersion) {
  struct Case {
    std::string type; int fields; int version; std::vector<std::u16string> types; std::vector<bool> wild;
  } cases[] = {
      {"ADT A01", 2, 883, {u"ADT", u"A01"}, {false, false}},
      {"ADT A01", 1, 883, {u"ADT A01"}, {false}},
      {"A B C", 2, 883, {u"A", u"B C"}, {false, false}},
      {"A B C", 3, 883, {u"A", u"B", u"C"}, {false, false, false}},
      {"ADT ", 2, 883, {u"ADT"}, {false}},  // a delimiter at the end adds no empty type
      {"<WILD> A01", 2, 883, {u"", u"A01"}, {true, false}},
      {"", 2, 817, {u""}, {false}},
      {"", 2, 816, {u"M"}, {false}},  // before 817 an empty type is the name
      {"X", 2, 512, {u"M"}, {false}},  // before 513 there is no type text
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.type + " / " + std::to_string(c.fields) + " / " + std::to_string(c.version));
    std::vector<std::string> typeFields(static_cast<size_t>(c.fields), "MSH.9");
    const std::string yaml = c.version < 513 ? "messages: [{name: M, items: [{segment: A}]}]"
                                             : "messages: [{name: M, type: \"" + c.type + "\", items: [{segment: A}]}]";
    const Loaded loaded = load(yaml, c.version, typeFields);
    std::vector<std::u16string> types;
    for (const auto& type : loaded.message().getTypes()) types.push_back(type.str());
    EXPECT_EQ(types, c.types);
    EXPECT_EQ(loaded.message().getWildTypes(), c.wild);
    EXPECT_EQ(loaded.message().getHasWildType(), c.wild.front());
    EXPECT_EQ(loaded.set->findMessageByType(c.types.front()), &loaded.message());
  }
}

TEST(MessageDefnTest, TypeFromMatchOfTheTypeField) {
  const std::string yaml = R"(
messages:
  - {name: M, items: [{segment: A}], matches: [{path: PID.3, value: X}, {path: MSH.9, value: ADT}]}
)";
  EXPECT_EQ(load(yaml, 817, {"MSH.9"}).message().getTypes().at(0).str(), u"ADT");
  // With two type fields the match doesn't name the type.
  EXPECT_EQ(load(yaml, 817, {"MSH.9", "MSH.10"}).message().getTypes().at(0).str(), u"");
  EXPECT_EQ(load(yaml, 817, {"PID.4"}).message().getTypes().at(0).str(), u"");
}

TEST(MessageDefnTest, ItemsOverridesAndEmbeddedSets) {
  const Loaded loaded = load(R"(
messages:
  - name: M
    items:
      - {segment: A, required: true, overrides: {F2: {required: true, default: Z}}}
      - {group: G, choice: true, items: [{segment: B, maxRepeats: 0}]}
      - {embeddedSet: OTHER, name: EMB}
)");
  const MessageDefn& message = loaded.message();
  const MessageItemDefn& a = message.getItem(0);
  EXPECT_EQ(a.getMinRepeats(), 1);  // required with MinRepeats 0
  EXPECT_EQ(a.getSegment(), loaded.set->findSegmentById(a.getSegment()->getId()));
  const int32_t f2[] = {1};
  const int32_t f1[] = {0};
  EXPECT_TRUE(a.getFieldInstances()->isRequired(f2));
  EXPECT_EQ(a.getFieldInstances()->getDefaultValue(f2).str(), u"Z");
  EXPECT_FALSE(a.getFieldInstances()->isRequired(f1));
  EXPECT_TRUE(a.getSegment()->getFlags() & SegmentDefn::kSituationalData);
  const MessageItemDefn& b = message.getItem(1).getGroup()->getItem(0);
  EXPECT_EQ(b.getParentItem(), &message.getItem(1));
  EXPECT_EQ(&b.getMessage(), &message);
  EXPECT_TRUE(message.getItem(1).getGroup()->isChoiceGroup());

  // The embedded set comes later: open after the load, complete once it is in.
  const MessageItemDefn& embedded = message.getItem(2);
  EXPECT_EQ(embedded.getSetId(), 2);
  EXPECT_EQ(embedded.getMessageSet(), nullptr);
  const MessageSetDefn& added = testing::DefinitionSetup::addMessageSet(
      *loaded.warehouse, testing::DefinitionSetup::messageSet("OTHER", loaded.warehouse.get(), 2));
  loaded.set->getMessages()[0]->completeEmbeddedReferences(*loaded.warehouse);
  EXPECT_EQ(embedded.getMessageSet(), &added);
}

TEST(MessageDefnTest, RefusedRecords) {
  EXPECT_EQ(loadFailure(R"(
messages: [{name: M, items: [{group: U, unordered: true, items: [{segment: A}, {embeddedSet: OTHER}]}]}]
)"),
            messages::kInvalidUnorderedItemType);
  // The same item in a sequence group is fine.
  EXPECT_EQ(loadFailure("messages: [{name: M, items: [{group: U, items: [{segment: A}, {embeddedSet: OTHER}]}]}]"), "");
}

TEST(StateTableTest, BuiltStrictTables) {
  struct Case { const char* what; std::string items; Lines strict; } cases[] = {
      {"required then optional", "[{segment: A, required: true}, {segment: B}]", {"A>1", "B>2 $>3", "$>3", ""}},
      {"both optional", "[{segment: A}, {segment: B}]", {"A>1 B>2 $>3", "B>2 $>3", "$>3", ""}},
      {"repeats", "[{segment: A, required: true, maxRepeats: 0}, {segment: B, maxRepeats: 5}]",
       {"A>1", "A>1 B>2 $>3", "B>2 $>3", ""}},
      {"suffix of a name in a group", "[{group: G, required: true, items: [{segment: NTE, name: 'NTE:2', required: true}]}]",
       {"NTE>1", "$>2", ""}},
      {"repeating sequence group links back",
       "[{segment: A, required: true}, {group: G, maxRepeats: 0, items: [{segment: B, required: true}, {segment: C}]}]",
       {"A>1", "B>2 $>4", "C>3 B>2 $>4", "B>2 $>4", ""}},
      {"optional group of optional items is skipped", "[{segment: A, required: true}, {group: G, items: [{segment: B}]}, {segment: C}]",
       {"A>1", "B>2 C>3 $>4", "C>3 $>4", "$>4", ""}},
      {"choice", "[{group: G, required: true, choice: true, items: [{segment: A}, {segment: B}]}, {segment: C}]",
       {"A>1 B>2", "C>3 $>4", "C>3 $>4", "$>4", ""}},
      {"repeating unordered group adds no links of its own",
       "[{group: G, unordered: true, maxRepeats: 0, items: [{segment: A}, {segment: B}]}]",
       {"A>1 B>2 $>3", "A>1 B>2 $>3", "A>1 B>2 $>3", ""}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const Loaded loaded = load("messages: [{name: M, items: " + c.items + "}]");
    EXPECT_EQ(describe(loaded.message().getStrictStates()), c.strict);
    EXPECT_EQ(loaded.message().getStateCount(), static_cast<int32_t>(c.strict.size()));
    EXPECT_EQ(loaded.message().getRelaxedStates().size(), c.strict.size());
  }
}

TEST(StateTableTest, BuiltRelaxedTablesAndDistances) {
  const Loaded sequence = load("messages: [{name: M, items: [{segment: A, required: true}, {segment: B, required: true}, {segment: C, required: true}]}]");
  EXPECT_EQ(describe(sequence.message().getRelaxedStates()),
            (Lines{"A>1 B>2 C>3 $>4", "B>2 C>3 $>4", "C>3 $>4", "$>4", ""}));
  // Steps through the strict table: one per item passed, the jump itself included.
  EXPECT_EQ(distances(*sequence.message().getRelaxedStates()[0]), (std::vector<int32_t>{1, 2, 3, 4}));
  EXPECT_EQ(distances(*sequence.message().getRelaxedStates()[2]), (std::vector<int32_t>{1, 2}));
  // At the top of a message the strict table never works distances out; the end is 0.
  EXPECT_EQ(distances(*sequence.message().getStrictStates()[0]), (std::vector<int32_t>{ParseTransition::kNoDistance}));
  EXPECT_EQ(distances(*sequence.message().getStrictStates()[3]), (std::vector<int32_t>{0}));

  const Loaded choice = load("messages: [{name: M, items: [{group: G, choice: true, items: [{segment: A}, {segment: B}]}]}]");
  EXPECT_EQ(describe(choice.message().getRelaxedStates()), (Lines{"A>1 B>2 $>3", "$>3", "$>3", ""}));

  const Loaded repeating = load("messages: [{name: M, items: [{segment: A}, {group: G, maxRepeats: 0, items: [{segment: B}]}]}]");
  EXPECT_EQ(describe(repeating.message().getRelaxedStates()), (Lines{"A>1 B>2 $>3", "B>2 $>3", "B>2 $>3", ""}));
  // A jump back walks forward as far as it can and stops where nothing leads on.
  EXPECT_EQ(distances(*repeating.message().getRelaxedStates()[2]), (std::vector<int32_t>{1, 1}));
}

TEST(StateTableTest, EmbeddedTablesAreTheBuiltOnes) {
  const std::string yaml = R"(
messages:
  - name: M
    stateTables: embedded
    items:
      - {segment: A, required: true, maxRepeats: 0}
      - {group: G, maxRepeats: 0, items: [{segment: B, required: true}, {group: H, choice: true, items: [{segment: C}, {segment: NTE}]}]}
)";
  const Loaded built = load(yaml);
  const auto tables = compiler::StateTableWriter::bytesOf(built.message());
  const Loaded carried = load(yaml, 883, {"MSH.9"}, {tables});
  const auto json = tool::toJson(carried.message());
  const auto expected = tool::toJson(built.message());
  EXPECT_EQ(json["strictStates"], expected["strictStates"]);
  EXPECT_EQ(json["relaxedStates"], expected["relaxedStates"]);
  EXPECT_EQ(json["strictStates"][1]["item"], "A");
  EXPECT_EQ(carried.message().getItem(1).getGroup()->getItem(0).getId(), 3);  // ids from 1, depth first
}

TEST(StateTableTest, DistanceForms) {
  struct Case { std::vector<uint8_t> bytes; int32_t distance; } cases[] = {
      {{0x7F}, ParseTransition::kNoDistance},
      {{0x7E}, 126},
      {{0xFF, 0x00, 0x7F}, 127},
      {{0xFE}, 254},
      {{0xFF, 0xFF, 0xFF, 0x00, 0x01, 0x00, 0x00}, 65536},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.distance);
    PcfWriter written;
    compiler::StateTableWriter::writeDistance(c.distance, written);
    EXPECT_EQ(written.bytes(), c.bytes);
    // Two states, start to final, in both tables.
    PcfWriter table;
    table.i32(2).count(0).i32(0).count(1).raw(c.bytes).count(1).count(0).i32(0).count(0).i32(2);
    PcfWriter both;
    both.raw(table.bytes()).raw(table.bytes());
    const Loaded loaded = load("messages: [{name: M, stateTables: embedded, items: [{segment: A}]}]", 883, {"MSH.9"}, {both.take()});
    EXPECT_EQ(loaded.message().getRelaxedStates()[0]->getTransitions().at(0).distance, c.distance);
    EXPECT_EQ(loaded.message().getRelaxedStates()[0]->getTransitions().at(0).key, "$");
  }
}

}  // namespace
}  // namespace vantrelia
