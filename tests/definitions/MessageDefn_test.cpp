// Messages in the definition language, compiled and read back by the engine's message reader
// through a set: types, items, overrides, embedded sets, and both state tables, built at load or
// carried in the file.

#include <gtest/gtest.h>
#include <yaml-cpp/yaml.h>

#include "compiler/CompileContext.h"
#include "compiler/CompositeWriter.h"
#include "compiler/DefinitionCompiler.h"
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
#include "support/PcfLoad.h"
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

// The segments and messages of one set (id 1; a set OTHER has id 2) as the compiler writes them.
// `tables` gives the file form of each message's tables, for messages that ask for them.
struct CompiledSet {
  PcfWriter out;
  size_t segments = 0;
  size_t messages = 0;
};

CompiledSet compile(const std::string& messagesYaml, int version, const std::vector<std::vector<uint8_t>>& tables) {
  const SourceNode root(YAML::Load(std::string(kSegments) + messagesYaml), "the set");
  compiler::CompileContext context(version);
  context.declareMessageSet("SET", 1);
  context.declareMessageSet("OTHER", 2);
  context.beginMessageSet();
  const auto segments = root.records("segments", "segment");
  const auto messages = root.records("messages", "message");
  compiler::SegmentWriter::declare(segments, context);
  compiler::MessageWriter::declare(messages, context);
  CompiledSet compiled;
  for (const auto& segment : segments) compiler::SegmentWriter::write(segment, context, compiled.out);
  for (size_t i = 0; i < messages.size(); ++i)
    compiler::MessageWriter::write(messages[i], context, compiled.out,
                                   compiler::MessageWriter::wantsEmbeddedTables(messages[i]) && i < tables.size() ? &tables[i] : nullptr);
  compiled.segments = segments.size();
  compiled.messages = messages.size();
  return compiled;
}

// Loads the records into a set of a warehouse and builds the tables of every message that didn't
// carry any.
Loaded read(const CompiledSet& compiled, int version, const std::vector<std::string>& typeFields) {
  Loaded loaded;
  auto set = testing::DefinitionSetup::messageSet("SET", loaded.warehouse.get(), 1);
  for (const auto& path : typeFields) testing::DefinitionSetup::addMessageTypeField(*set, path);
  loaded.set = &testing::DefinitionSetup::addMessageSet(*loaded.warehouse, std::move(set));
  FieldUpdates updates;
  std::vector<MessageDefn*> deferred;
  testing::readExactly(compiled.out.bytes(), [&](DefinitionFile& file) {
    for (size_t i = 0; i < compiled.segments; ++i) {
      auto segment = std::make_unique<SegmentDefn>();
      segment->load(*loaded.set, file, version, updates);
      testing::DefinitionSetup::addSegment(*loaded.set, std::move(segment), updates);
    }
    for (size_t i = 0; i < compiled.messages; ++i) {
      auto message = std::make_unique<MessageDefn>();
      message->load(*loaded.set, file, version, deferred);
      testing::DefinitionSetup::addMessage(*loaded.set, std::move(message));
    }
  });
  for (MessageDefn* message : deferred) message->buildStateTables();
  return loaded;
}

Loaded load(const std::string& messagesYaml, int version = 883, std::vector<std::string> typeFields = {"MSH.9"},
            const std::vector<std::vector<uint8_t>>& tables = {}) {
  return read(compile(messagesYaml, version, tables), version, typeFields);
}

std::string messageLoadFailure(const std::string& yaml) {
  return testing::invalidFileMessage([&] { load(yaml); });
}

// Message records laid out by hand at 883 after the compiled segments, for what the compiler never
// writes. Segment A has id 1 and the fields F1 and F2.
namespace laid {

// An item of `type` with the body of that type; not required, 0 to 1 repeats, no user data or rule.
std::vector<uint8_t> item(int32_t type, const std::vector<uint8_t>& body) {
  return PcfWriter().boolean(false).i32(0).i32(1).i32(0).text8("I").boolean(false).i32(type).raw(body).count(0).boolean(false).take();
}

// A segment item of A with the overrides given; no matches, syntax rules or equations.
std::vector<uint8_t> segmentItem(const std::vector<uint8_t>& overrides = PcfWriter().u16(0).i32(-1).take()) {
  return item(MessageItemDefn::kSegmentItem, PcfWriter().i32(1).raw(overrides).i32(0).boolean(false).count(0).take());
}

// A sequence group of the items (their count first) with the visible child table given.
std::vector<uint8_t> groupItem(const std::vector<uint8_t>& items, const std::vector<uint8_t>& visibleChildren = {0}) {
  return item(MessageItemDefn::kGroupItem, PcfWriter().text8("G").boolean(false).boolean(false).raw(items).raw(visibleChildren).take());
}

// Message M with the items (their count first) and visible child table given, tables built at load.
std::vector<uint8_t> message(const std::vector<uint8_t>& items, const std::vector<uint8_t>& visibleChildren = {0}) {
  return PcfWriter().text8("M").text8("").raw(items).i32(0).raw(visibleChildren).boolean(false).count(0).take();
}

std::vector<uint8_t> one(const std::vector<uint8_t>& item) { return PcfWriter().i32(1).raw(item).take(); }

std::vector<uint8_t> nestedGroups(int depth) {
  std::vector<uint8_t> items = one(segmentItem());
  for (int i = 0; i < depth; ++i) items = one(groupItem(items));
  return items;
}

std::string failure(const std::vector<uint8_t>& messageRecord) {
  CompiledSet compiled = compile("messages: []", 883, {});
  compiled.out.raw(messageRecord);
  compiled.messages = 1;
  return testing::invalidFileMessage([&] { read(compiled, 883, {"MSH.9"}); });
}

}  // namespace laid

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
  EXPECT_EQ(messageLoadFailure(R"(
messages: [{name: M, items: [{group: U, unordered: true, items: [{segment: A}, {embeddedSet: OTHER}]}]}]
)"),
            messages::kInvalidUnorderedItemType);
  // The same item in a sequence group is fine.
  EXPECT_EQ(messageLoadFailure("messages: [{name: M, items: [{group: U, items: [{segment: A}, {embeddedSet: OTHER}]}]}]"), "");
}

// What no valid file holds: refused with a text of its own rather than left to break the parser.
TEST(MessageDefnTest, RefusedLaidRecords) {
  using laid::message, laid::one, laid::segmentItem, laid::groupItem;
  const auto table = [](std::initializer_list<int32_t> entries) {
    PcfWriter w;
    w.boolean(true);
    for (const int32_t value : entries) w.i32(value);
    return w.take();
  };
  struct Case { const char* what; std::vector<uint8_t> record; std::string failure; } cases[] = {
      {"the layout itself", message(one(segmentItem())), ""},
      {"items nested as deep as they may", message(laid::nestedGroups(MessageItemDefn::kMaxNesting)), ""},
      {"a visible child table", message(one(segmentItem()), table({1, 0, 0, 0})), ""},
      {"negative item count", message(PcfWriter().i32(-1).take()), messages::kInvalidMessageItemCount},
      {"negative group item count", message(one(groupItem(PcfWriter().i32(-2).take()))), messages::kInvalidMessageItemCount},
      {"item type 3", message(one(laid::item(3, {}))), messages::kInvalidMessageItemType},
      {"negative item type", message(one(laid::item(-1, {}))), messages::kInvalidMessageItemType},
      {"segment item of segment 99", message(one(laid::item(MessageItemDefn::kSegmentItem, PcfWriter().i32(99).take()))),
       messages::kUnknownSegment},
      {"override of field 2 of two", message(one(segmentItem(PcfWriter().u16(0).i32(2).take()))), messages::kItemOverrideIndexOutside},
      {"items nested too deeply", message(laid::nestedGroups(MessageItemDefn::kMaxNesting + 1)), messages::kItemsNestedTooDeeply},
      {"visible child of item 1 of one", message(one(segmentItem()), table({1, 1, 1, 1})), messages::kInvalidVisibleChildTable},
      {"visible child of item -1", message(one(segmentItem()), table({1, -1, 1, 1})), messages::kInvalidVisibleChildTable},
      {"negative visible child count", message(one(segmentItem()), table({-1, 0})), messages::kInvalidVisibleChildTable},
      {"visible child table of a group", message(one(groupItem(one(segmentItem()), table({1, 2, 1, 1})))),
       messages::kInvalidVisibleChildTable},
  };
  for (const Case& c : cases) EXPECT_EQ(laid::failure(c.record), c.failure) << c.what;
}

// Overrides may reach no deeper into composites than items nest: composites C1 to C`depth`, each
// a field F of the next, and a segment item that overrides the last F.
TEST(MessageDefnTest, OverridesNestedTooDeeply) {
  for (const int depth : {MessageItemDefn::kMaxNesting, MessageItemDefn::kMaxNesting + 1}) {
    std::string yaml = "messageSets:\n  - name: S\n    composites:\n";
    for (int i = 1; i <= depth; ++i)
      yaml += "      - {name: C" + std::to_string(i) + ", fields: [{name: F" +
              (i < depth ? ", composite: C" + std::to_string(i + 1) : std::string()) + "}]}\n";
    std::string overrides = "{default: X}";
    for (int i = 0; i < depth; ++i) overrides = "{overrides: {F: " + overrides + "}}";
    yaml += "    segments: [{name: A, fields: [{name: F, composite: C1}]}]\n";
    yaml += "    messages: [{name: M, items: [{segment: A, overrides: {F: " + overrides + "}}]}]\n";
    EXPECT_EQ(testing::loadFailure(compiler::DefinitionCompiler::compile(yaml, {})),
              depth > MessageItemDefn::kMaxNesting ? messages::kItemsNestedTooDeeply : "")
        << depth;
  }
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

// What a walk standing in a state may read next, settled once: each target once, in key order, the
// same for tables built at load and tables carried in the file.
TEST(StateTableTest, CandidatesAreTheTargetsInKeyOrder) {
  const std::string yaml = R"(
messages:
  - name: M
    stateTables: embedded
    items:
      - {segment: A, required: true}
      - {group: G, unordered: true, maxRepeats: 0, items: [{segment: NTE}, {segment: C}, {segment: B}]}
)";
  const auto candidates = [](const ParseState& state) {
    std::string line;
    for (const auto& [key, target] : state.getCandidates())
      line += (line.empty() ? "" : " ") + std::string(key) + ">" + std::to_string(target->getIndex());
    return line;
  };
  const Loaded built = load(yaml);
  const Loaded carried = load(yaml, 883, {"MSH.9"}, {compiler::StateTableWriter::bytesOf(built.message())});
  for (const Loaded* loaded : {&built, &carried}) {
    const StateTable& strict = loaded->message().getStrictStates();
    const std::string any = "NTE>2 C>3 B>4 $>5";
    ASSERT_EQ(describe(strict), (Lines{"A>1", any, any, any, any, ""}));
    EXPECT_EQ(candidates(*strict[0]), "A>1");
    EXPECT_EQ(candidates(*strict[3]), "$>5 B>4 C>3 NTE>2");
    EXPECT_EQ(candidates(*strict[5]), "");
  }
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

// State tables in the file that no parser could run. Message M has one item, A, with id 1.
TEST(StateTableTest, RefusedEmbeddedTables) {
  // Two states: the start, with one transition, and the final state.
  const auto twoStates = [](int32_t item, int32_t target) {
    return PcfWriter().i32(2).count(0).i32(item).count(1).byte(0x7F).count(target).count(0).i32(0).count(0).i32(0).take();
  };
  const auto both = [](const std::vector<uint8_t>& strict, const std::vector<uint8_t>& relaxed) {
    return PcfWriter().raw(strict).raw(relaxed).take();
  };
  const auto oneState = PcfWriter().i32(1).count(0).i32(0).count(0).i32(0).take();
  struct Case { const char* what; std::vector<uint8_t> tables; std::string failure; } cases[] = {
      {"the layout itself", both(twoStates(0, 1), twoStates(0, 1)), ""},
      {"a state of item 1", both(twoStates(1, 1), twoStates(1, 1)), ""},
      {"no states", PcfWriter().i32(0).take(), messages::kInvalidStateCount},
      {"negative state count", PcfWriter().i32(-2).take(), messages::kInvalidStateCount},
      {"negative path length", PcfWriter().i32(1).count(-1).take(), messages::kInvalidStateCount},
      {"negative transition count", PcfWriter().i32(1).count(0).i32(0).count(-1).take(), messages::kInvalidStateCount},
      {"tables of different sizes", both(twoStates(0, 1), oneState), messages::kInvalidStateCount},
      {"a state of an unknown item", both(twoStates(2, 1), twoStates(0, 1)), messages::kUnknownStateItem},
      {"a transition past the last state", both(twoStates(0, 2), twoStates(0, 1)), messages::kInvalidStateTarget},
      {"a transition to state -1", both(twoStates(0, 1), twoStates(0, -1)), messages::kInvalidStateTarget},
  };
  for (const Case& c : cases) {
    const auto failure = testing::invalidFileMessage(
        [&] { load("messages: [{name: M, stateTables: embedded, items: [{segment: A}]}]", 883, {"MSH.9"}, {c.tables}); });
    EXPECT_EQ(failure, c.failure) << c.what;
  }
}

}  // namespace
}  // namespace vantrelia
