// The generated X12 and UN/EDIFACT definitions, as the build compiled them: loaded by the engine
// and checked against facts of the standards that a user relies on.

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "definitions/CompositeDefn.h"
#include "definitions/DataTypeCodes.h"
#include "definitions/FieldDefn.h"
#include "definitions/MatchDefn.h"
#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/ParseState.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SegmentFieldInstancesControl.h"
#include "definitions/SegmentGroupDefn.h"
#include "definitions/SeparatorDefn.h"
#include "definitions/ValidationTableDefn.h"
#include "foundation/Enumerations.h"
#include "foundation/MessageFactory.h"

namespace vantrelia {
namespace {

using Items = std::vector<std::unique_ptr<MessageItemDefn>>;

// Each PCF is loaded once for all tests, as a host loads it.
const MessageWarehouseDefn& loaded(const std::string& file) {
  static std::map<std::string, std::unique_ptr<MessageFactory>> factories;
  auto& factory = factories[file];
  if (!factory) {
    factory = std::make_unique<MessageFactory>();
    factory->LoadDefinition(std::string(VANTRELIA_BUNDLED_DIR) + "/" + file);
  }
  return factory->getWarehouse();
}

// The first entry of a definition list with the name; a missing one fails the test that asks.
template <typename List>
const auto& named(const List& list, const std::string& name, const char* what) {
  for (const auto& entry : list)
    if (entry->getName().str() == name) return *entry;
  throw std::runtime_error(std::string("no ") + what + " " + name);
}

const MessageSetDefn& setNamed(const MessageWarehouseDefn& warehouse, const std::string& name) {
  return named(warehouse.getMessageSets(), name, "message set");
}

const MessageDefn& messageNamed(const MessageSetDefn& set, const std::string& name) {
  return named(set.getMessages(), name, "message");
}

const FieldDefn& fieldNamed(const FieldListDefn& fields, const std::string& name) {
  return named(fields.getFields(), name, "field");
}

const SegmentDefn& segmentNamed(const MessageSetDefn& set, const std::string& name) {
  return named(set.getSegments(), name, "segment");
}

const Items& childrenOf(const MessageItemDefn& item) {
  if (!item.getGroup()) throw std::runtime_error(item.getName().str() + " is no group");
  return item.getGroup()->getItems();
}

// The item at a path of item names ("2000A/2010AA/NM1"); the first of equal names.
const MessageItemDefn& itemAt(const Items& top, const std::string& path) {
  const Items* items = &top;
  const MessageItemDefn* found = nullptr;
  size_t start = 0;
  while (start <= path.size()) {
    const size_t end = std::min(path.find('/', start), path.size());
    const std::string step = path.substr(start, end - start);
    found = nullptr;
    for (const auto& item : *items)
      if (item->getName().str() == step) {
        found = item.get();
        break;
      }
    if (!found) throw std::runtime_error("no item " + step + " on the way to " + path);
    if (end < path.size()) items = &childrenOf(*found);
    start = end + 1;
  }
  return *found;
}

// All items of a segment under one parent, in order: "NM1" finds "NM1", "NM1:2", ...
std::vector<const MessageItemDefn*> segmentItems(const Items& items, const std::string& tag) {
  std::vector<const MessageItemDefn*> result;
  for (const auto& item : items)
    if (item->getSegment() && item->getSegment()->getName().str() == tag) result.push_back(item.get());
  return result;
}

std::vector<std::pair<std::string, std::u16string>> matchesOf(const std::vector<std::unique_ptr<MatchDefn>>& list) {
  std::vector<std::pair<std::string, std::u16string>> result;
  for (const auto& match : list) result.emplace_back(match->getFieldPath().str(), match->getValue().str());
  return result;
}

using Matches = std::vector<std::pair<std::string, std::u16string>>;

std::vector<std::u16string> valuesOf(const ValidationTableDefn& table) {
  std::vector<std::u16string> values;
  for (const auto& entry : table.getEntries()) values.push_back(entry.getValue().str());
  return values;
}

// The validation table that a message item puts on a field of its segment.
const ValidationTableDefn* itemTable(const MessageItemDefn& item, std::vector<int32_t> path) {
  return item.getFieldInstances()->getValidationTable(FieldPath(path));
}

const MessageWarehouseDefn& x12() { return loaded("x12.pcf"); }
const MessageWarehouseDefn& edifact() { return loaded("edifact_d96a.pcf"); }

TEST(StandardDefinitionsTest, X12InterchangesReadTheirSeparatorsFromIsa) {
  ASSERT_EQ(x12().getMessageSetCount(), 4);
  struct Case {
    const char* interchange;
    const char* transactions;
    const char16_t* versions;
    bool repetition;
  };
  for (const Case& c : {Case{"X12_005010_INTERCHANGE", "X12_005010", u"00501", true},
                        Case{"X12_004010_INTERCHANGE", "X12_004010", u"(00400|00401|00402)", false}}) {
    SCOPED_TRACE(c.interchange);
    const MessageSetDefn& set = setNamed(x12(), c.interchange);
    const auto from = [&](ESeparatorType type) {
      const SeparatorDefn& separator = set.getSeparator(type);
      return std::make_pair(separator.fieldPathText(), separator.getPosition());
    };
    EXPECT_EQ(from(qxSepField1), std::make_pair(std::string("ISA"), 1)) << "the character right behind the tag";
    EXPECT_EQ(from(qxSepSegment), std::make_pair(std::string("ISA"), -1)) << "the character after ISA16";
    EXPECT_EQ(from(qxSepField2), std::make_pair(std::string("ISA.16"), 0));
    EXPECT_EQ(set.getSeparator(qxSepSegment).getValue().str(), u"~");
    if (c.repetition)
      EXPECT_EQ(from(qxSepRepeat), std::make_pair(std::string("ISA.11"), 0));
    else
      EXPECT_TRUE(set.getSeparator(qxSepRepeat).getValue().str().empty()) << "ISA11 is no separator before 00501";

    // ISA12 picks the interchange set; the groups embed the transaction sets of the version,
    // which take their separators from the interchange.
    EXPECT_EQ(matchesOf(segmentNamed(set, "ISA").getMatches()), (Matches{{"ISA12", c.versions}}));
    const Items& items = set.getMessages().at(0)->getItems();
    EXPECT_EQ(items.at(0)->getSegment()->getName().str(), "ISA");
    EXPECT_EQ(items.at(1)->getSegment()->getName().str(), "TA1") << "acknowledgments come before the groups";
    const MessageItemDefn& embedded = itemAt(items, "GS_LOOP/TRANSACTION");
    ASSERT_EQ(embedded.getMessageItemType(), MessageItemDefn::kMessageSetItem);
    EXPECT_EQ(embedded.getMessageSet()->getName().str(), c.transactions);
    EXPECT_EQ(embedded.getMaxRepeats(), 0);
    EXPECT_TRUE(embedded.getMessageSet()->getInitializeSeparatorsFromParent());
    EXPECT_EQ(itemAt(items, "IEA").isRequired(), true);
  }
}

TEST(StandardDefinitionsTest, X12TransactionSetsArePickedByTheirIdAndGuide) {
  const MessageSetDefn& set = setNamed(x12(), "X12_005010");
  struct Case {
    const char* name;
    const char16_t* type;
    const char16_t* guide;
  };
  for (const Case& c : {Case{"837P", u"837", u"005010X222A1"}, Case{"837I", u"837", u"005010X223A2"},
                        Case{"277", u"277", u"005010X212"}, Case{"277CA", u"277", u"005010X214"},
                        Case{"270", u"270", u"005010X279A1"}, Case{"999", u"999", u"005010X231A1"}}) {
    const MessageDefn& message = messageNamed(set, c.name);
    EXPECT_EQ(message.getTypes(), std::vector<MessageDefn::WideText>{c.type}) << c.name;
    EXPECT_EQ(matchesOf(message.getMatches()), (Matches{{"ST/ST03", c.guide}})) << c.name;
  }
  // The trade sets carry no guide: any ST03 will do.
  for (const char* name : {"850", "810", "855", "856"}) {
    EXPECT_TRUE(messageNamed(set, name).getMatches().empty()) << name;
    EXPECT_TRUE(messageNamed(setNamed(x12(), "X12_004010"), name).getMatches().empty()) << name;
  }
  EXPECT_EQ(messageNamed(setNamed(x12(), "X12_004010"), "997").getTypes(), std::vector<MessageDefn::WideText>{u"997"});
}

TEST(StandardDefinitionsTest, X12ProfessionalClaimLoopsAndQualifiers) {
  const Items& claim = messageNamed(setNamed(x12(), "X12_005010"), "837P").getItems();
  const MessageItemDefn& billing = itemAt(claim, "2000A/2010AA");
  EXPECT_EQ(billing.getMessageItemType(), MessageItemDefn::kGroupItem);
  EXPECT_TRUE(billing.isRequired());
  EXPECT_EQ(itemAt(claim, "2000A").getMaxRepeats(), 0) << "billing provider levels repeat without limit";

  // NM1 opens both 2010AA and 2010AB; NM101 tells them apart.
  const MessageItemDefn& billingName = itemAt(claim, "2000A/2010AA/NM1");
  EXPECT_TRUE(billingName.isRequired());
  EXPECT_EQ(matchesOf(billingName.getMatches()), (Matches{{"NM101", u"85"}}));
  EXPECT_EQ(matchesOf(itemAt(claim, "2000A/2010AB/NM1").getMatches()), (Matches{{"NM101", u"87"}}));
  // The same qualifier is required and limited to its code by the item, not by the segment.
  const SegmentDefn& nm1 = *billingName.getSegment();
  EXPECT_FALSE(fieldNamed(nm1, "NM101").isRequired());
  EXPECT_EQ(fieldNamed(nm1, "NM101").getValidationTable(), nullptr);
  EXPECT_TRUE(billingName.getFieldInstances()->isRequired(FieldPath(std::vector<int32_t>{0})));
  const ValidationTableDefn* entity = itemTable(billingName, {0});
  ASSERT_NE(entity, nullptr);
  EXPECT_EQ(valuesOf(*entity), std::vector<std::u16string>{u"85"});

  // Three HI segments in 2300, told apart by the code list qualifier of their first composite.
  const Items& claimLoop = childrenOf(itemAt(claim, "2000A/2000B/2300"));
  std::vector<Matches> hi;
  for (const MessageItemDefn* item : segmentItems(claimLoop, "HI")) hi.push_back(matchesOf(item->getMatches()));
  EXPECT_EQ(hi, (std::vector<Matches>{{{"HI01/C02201", u"(ABK|BK)"}},
                                      {{"HI01/C02201", u"BP"}},
                                      {{"HI01/C02201", u"BG"}}}));
  // The dates of the claim by DTP01.
  const auto dates = segmentItems(claimLoop, "DTP");
  ASSERT_GT(dates.size(), 5u);
  std::set<Matches> distinct;
  for (const MessageItemDefn* item : dates) distinct.insert(matchesOf(item->getMatches()));
  EXPECT_EQ(distinct.size(), dates.size()) << "every DTP of 2300 has a match list of its own";
}

// A loop that alone opens with its segment still matches on the segment's qualifier, the element
// whose codes tell the loops of that segment apart elsewhere in the guide, so that a qualifier of
// another loop or of none is refused rather than read as this loop's. Elements whose code lists
// overlap wherever the segment opens a loop, or that the guide leaves situational, carry none.
TEST(StandardDefinitionsTest, X12LoopOpenersMatchOnTheirQualifier) {
  const MessageSetDefn& set = setNamed(x12(), "X12_005010");
  struct Case {
    const char* message;
    const char* opener;  // path of the loop's opening segment item
    Matches matches;
  };
  const Case cases[] = {
      {"837P", "2000A/2000B/2000C/2010CA/NM1", {{"NM101", u"QC"}}},
      {"837I", "2000A/2000B/2000C/2010CA/NM1", {{"NM101", u"QC"}}},
      {"270", "HIERARCHY/2000D/2100D/NM1", {{"NM101", u"03"}}},
      {"271", "HIERARCHY/2000C/2100C/2110C/2115C/2120C/NM1",
       {{"NM101", u"(13|1I|1P|2B|36|73|FA|GP|GW|I3|IL|LR|OC|P3|P4|P5|PR|PRP|SEP|TTP|VER|VN|VY|X3|Y2)"}}},
      {"277CA", "2000A/2200A/TRN", {{"TRN01", u"1"}}},
      {"277CA", "2000A/2000B/2200B/TRN", {{"TRN01", u"2"}}},
      {"834", "2000/LS_LOOP/2700/2750/N1", {{"N101", u"75"}}},
      // Siblings keep the lists that tell them apart.
      {"837P", "2000A/2010AA/NM1", {{"NM101", u"85"}}},
      {"837P", "2000A/2000B/2000C/HL", {{"HL03", u"23"}}},
      // The same codes wherever CLM, SBR and CLP open a loop; ADX02 lists overlap; EQ01 is situational.
      {"837P", "2000A/2000B/2300/CLM", {}},
      {"837P", "2000A/2000B/2300/2320/SBR", {}},
      {"835", "2000/2100/CLP", {}},
      {"820", "2000A/2200A/ADX", {}},
      {"820", "2000A/2300A/2320A/ADX", {}},
      {"270", "HIERARCHY/2000C/2100C/2110C/EQ", {}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.message) + " " + c.opener);
    EXPECT_EQ(matchesOf(itemAt(messageNamed(set, c.message).getItems(), c.opener).getMatches()), c.matches);
  }
}

// Where a guide lists its hierarchical levels side by side, they come on the wire in the order
// of the tree (a second information source after the first one's subscribers): one repeating
// choice holds them, each level opening with its own HL03. Guides that nest their levels keep
// the nesting.
TEST(StandardDefinitionsTest, X12SideBySideLevelsFollowEachOtherInAnyOrder) {
  const MessageSetDefn& set = setNamed(x12(), "X12_005010");
  for (const char* name : {"270", "271"}) {
    SCOPED_TRACE(name);
    const MessageItemDefn& levels = itemAt(messageNamed(set, name).getItems(), "HIERARCHY");
    ASSERT_NE(levels.getGroup(), nullptr);
    EXPECT_TRUE(levels.getGroup()->isChoiceGroup());
    EXPECT_EQ(levels.getMaxRepeats(), 0);
    std::vector<std::string> names;
    std::vector<Matches> openers;
    for (const auto& level : childrenOf(levels)) {
      names.push_back(level->getName().str());
      openers.push_back(matchesOf(childrenOf(*level).at(0)->getMatches()));
    }
    EXPECT_EQ(names, (std::vector<std::string>{"2000A", "2000B", "2000C", "2000D"}));
    EXPECT_EQ(openers, (std::vector<Matches>{{{"HL03", u"20"}}, {{"HL03", u"21"}}, {{"HL03", u"22"}}, {{"HL03", u"23"}}}));
  }
  EXPECT_THROW(itemAt(messageNamed(set, "837P").getItems(), "HIERARCHY"), std::runtime_error);
  EXPECT_EQ(itemAt(messageNamed(set, "837P").getItems(), "2000A/2000B/2000C/2300").getName().str(), "2300");
}

// Siblings that begin with the same segment must be told apart by their match lists, in every
// transaction set: at most one of them may do without one, and no two may have the same list.
void expectSiblingsDistinct(const Items& items, const std::string& where, int& groupsChecked) {
  std::map<std::string, std::vector<Matches>> byTag;
  for (const auto& item : items) {
    const MessageItemDefn* opener = item.get();
    while (opener->getGroup()) opener = opener->getGroup()->getItems().at(0).get();
    if (opener->getSegment()) byTag[opener->getSegment()->getName().str()].push_back(matchesOf(opener->getMatches()));
    if (item->getGroup()) expectSiblingsDistinct(item->getGroup()->getItems(), where + "/" + item->getName().str(), groupsChecked);
  }
  for (const auto& [tag, lists] : byTag) {
    if (lists.size() < 2) continue;
    ++groupsChecked;
    std::set<Matches> distinct(lists.begin(), lists.end());
    EXPECT_EQ(distinct.size(), lists.size()) << tag << " siblings in " << where;
  }
}

TEST(StandardDefinitionsTest, X12SegmentsSharingALoopHaveMatchListsOfTheirOwn) {
  int groupsChecked = 0;
  for (const char* set : {"X12_005010", "X12_004010"})
    for (const auto& message : setNamed(x12(), set).getMessages())
      if (message->getMatches().size() == 1)  // the guides; the trade sets repeat loops by design
        expectSiblingsDistinct(message->getItems(), message->getName().str(), groupsChecked);
  EXPECT_GT(groupsChecked, 100) << "the guides have many such siblings";
}

// The distance of a jump of the relaxed table, walked step by step through the strict table: each
// step goes as far as it can without passing the target (going back: to the furthest state at or
// before it, or else as far forward as it can), until it reaches the target or stands still, and
// at most one step more than there are states.
int32_t walkedDistance(const StateTable& strict, int32_t from, int32_t target) {
  const int32_t states = static_cast<int32_t>(strict.size());
  int32_t steps = 0;
  for (int32_t current = from; current >= 0 && current < states && steps <= states;) {
    int32_t best = from < target ? current : -1;
    for (const auto& transition : strict[static_cast<size_t>(current)]->getTransitions())
      if (transition.target->getIndex() <= target) best = std::max(best, transition.target->getIndex());
    if (best == -1) {
      best = current;
      for (const auto& transition : strict[static_cast<size_t>(current)]->getTransitions())
        best = std::max(best, transition.target->getIndex());
    }
    ++steps;
    if (best == current) break;
    current = best;
    if (current == target) break;
  }
  return steps;
}

// Large messages have a jump from every state to every later one, which the load works out in one
// go; every distance must still be the one the walk gives.
TEST(StandardDefinitionsTest, RelaxedDistancesAreTheWalksThroughTheStrictTable) {
  size_t jumps = 0;
  size_t backwards = 0;
  for (const MessageWarehouseDefn* warehouse : {&x12(), &edifact()})
    for (const auto& set : warehouse->getMessageSets())
      for (const auto& message : set->getMessages())
        for (const auto& state : message->getRelaxedStates())
          for (const auto& transition : state->getTransitions()) {
            const int32_t target = transition.target->getIndex();
            ASSERT_EQ(transition.distance, walkedDistance(message->getStrictStates(), state->getIndex(), target))
                << message->getName().str() << " from " << state->getIndex() << " to " << target;
            ++jumps;
            backwards += target <= state->getIndex() ? 1 : 0;
          }
  EXPECT_GT(jumps, 100000u);
  EXPECT_GT(backwards, 1000u) << "repeats jump back";
}

TEST(StandardDefinitionsTest, X12ElementsKeepTheirTypesLengthsAndComposites) {
  const MessageSetDefn& set = setNamed(x12(), "X12_005010");
  struct Case {
    const char* segment;
    const char* field;
    int32_t dataType;
    int minLength;
    int maxLength;
  };
  for (const Case& c : {Case{"SE", "SE01", DataTypeCodes::kStrictInteger, 0, 10}, Case{"CLM", "CLM02", DataTypeCodes::kStrictReal, 0, 18},
                        Case{"NM1", "NM103", DataTypeCodes::kString, 0, 60}, Case{"BHT", "BHT04", DataTypeCodes::kString, 8, 8}}) {
    const FieldDefn& field = fieldNamed(segmentNamed(set, c.segment), c.field);
    EXPECT_EQ(field.getDataType(), c.dataType) << c.field;
    EXPECT_EQ(field.getMinLength(), c.minLength) << c.field;
    EXPECT_EQ(field.getMaxLength(), c.maxLength) << c.field;
  }
  // SV101 is the composite medical procedure identifier: qualifier of 2, code up to 48.
  const FieldDefn& procedure = fieldNamed(segmentNamed(set, "SV1"), "SV101");
  ASSERT_TRUE(procedure.isComposite());
  const CompositeDefn& c003 = *procedure.getComposite();
  EXPECT_EQ(c003.getName().str(), "C003");
  EXPECT_EQ(c003.getSeparatorType(), qxSepField2);
  ASSERT_GE(c003.getFieldCount(), 2);
  EXPECT_EQ(c003.getField(0).getName().str(), "C00301");
  EXPECT_EQ(c003.getField(0).getMaxLength(), 2);
  EXPECT_EQ(c003.getField(1).getMaxLength(), 48);
  // Repeating elements repeat through the repetition separator.
  EXPECT_EQ(fieldNamed(segmentNamed(set, "EB"), "EB03").getMaxRepeats(), 99);
}

TEST(StandardDefinitionsTest, X12TradeSetsAtBothVersions) {
  for (const char* version : {"X12_005010", "X12_004010"}) {
    SCOPED_TRACE(version);
    const MessageSetDefn& set = setNamed(x12(), version);
    const Items& order = messageNamed(set, "850").getItems();
    EXPECT_TRUE(itemAt(order, "BEG").isRequired());
    EXPECT_EQ(itemAt(order, "PO1_LOOP").getMaxRepeats(), 100000);
    EXPECT_EQ(itemAt(order, "N1_LOOP").getMaxRepeats(), 200);
    EXPECT_EQ(itemAt(order, "PO1_LOOP/PID_LOOP/PID").getSegment()->getName().str(), "PID");
    const FieldDefn& purpose = fieldNamed(segmentNamed(set, "BEG"), "BEG01");
    EXPECT_EQ(purpose.getMaxLength(), 2);
    EXPECT_TRUE(itemAt(order, "BEG").getFieldInstances()->isRequired(FieldPath(std::vector<int32_t>{2})))
        << "BEG03, the purchase order number, is mandatory";
    EXPECT_TRUE(itemAt(messageNamed(set, "810").getItems(), "TDS").isRequired());
    EXPECT_EQ(itemAt(messageNamed(set, "856").getItems(), "HL_LOOP").getMaxRepeats(), 200000);
    EXPECT_EQ(itemAt(messageNamed(set, "855").getItems(), "PO1_LOOP/ACK").getMaxRepeats(), 104);
  }
}

TEST(StandardDefinitionsTest, EdifactInterchangeEmbedsEveryMessageOfTheDirectory) {
  ASSERT_EQ(edifact().getMessageSetCount(), 2);
  const MessageSetDefn& interchange = setNamed(edifact(), "EDIFACT_INTERCHANGE");
  EXPECT_EQ(interchange.getSeparator(qxSepField2).fieldPathText(), "UNA");
  EXPECT_EQ(interchange.getSeparator(qxSepField2).getPosition(), 1);
  EXPECT_EQ(interchange.getSeparator(qxSepSegment).getPosition(), -1);
  EXPECT_EQ(interchange.getHeaderItemCount(), 2);
  const Items& items = interchange.getMessages().at(0)->getItems();
  EXPECT_EQ(itemAt(items, "MESSAGE").getMessageSet()->getName().str(), "EDIFACT_D96A");
  EXPECT_EQ(itemAt(items, "FUNCTIONAL_GROUP/MESSAGE").getMessageSet()->getName().str(), "EDIFACT_D96A");
  EXPECT_TRUE(itemAt(items, "FUNCTIONAL_GROUP/UNG").isRequired());

  const MessageSetDefn& directory = setNamed(edifact(), "EDIFACT_D96A");
  EXPECT_EQ(directory.getMessageCount(), 126) << "125 messages and CONTRL";
  for (const auto& message : directory.getMessages()) {
    const auto& types = message->getTypes();
    ASSERT_EQ(types.size(), 3u) << message->getName().str();
    const std::string name = message->getName().str();
    EXPECT_EQ(types[0].str(), std::u16string(name.begin(), name.end()));
    EXPECT_EQ(types[1].str(), u"D");
    EXPECT_EQ(types[2].str(), name == "CONTRL" ? u"3" : u"96A") << "CONTRL is of syntax 3";
    EXPECT_EQ(message->getItems().front()->getSegment()->getName().str(), "UNH");
    EXPECT_EQ(message->getItems().back()->getSegment()->getName().str(), "UNT");
  }
}

TEST(StandardDefinitionsTest, EdifactOrdersGroupsSegmentsCompositesAndCodes) {
  const MessageSetDefn& directory = setNamed(edifact(), "EDIFACT_D96A");
  const Items& orders = messageNamed(directory, "ORDERS").getItems();
  const MessageItemDefn& parties = itemAt(orders, "SG2");
  EXPECT_EQ(parties.getMaxRepeats(), 99);
  EXPECT_FALSE(parties.isRequired());
  EXPECT_EQ(childrenOf(parties).at(0)->getSegment()->getName().str(), "NAD");
  EXPECT_TRUE(childrenOf(parties).at(0)->isRequired()) << "a group opens with its mandatory trigger";
  EXPECT_EQ(itemAt(orders, "SG2/SG5/CTA").getSegment()->getName().str(), "CTA");
  EXPECT_EQ(itemAt(orders, "DTM").getMaxRepeats(), 35);

  const SegmentDefn& nad = segmentNamed(directory, "NAD");
  const FieldDefn& qualifier = nad.getField(0);
  EXPECT_EQ(qualifier.getName().str(), "PartyQualifier");
  EXPECT_TRUE(qualifier.isRequired());
  EXPECT_EQ(qualifier.getMaxLength(), 3);
  ASSERT_NE(qualifier.getValidationTable(), nullptr);
  const ValidationTableDefn& parties3035 = *qualifier.getValidationTable();
  EXPECT_TRUE(parties3035.contains(u"BY"));
  EXPECT_TRUE(parties3035.contains(u"SU"));
  EXPECT_FALSE(parties3035.contains(u"by"));
  std::map<std::u16string, std::u16string> descriptions;
  for (const auto& entry : parties3035.getEntries()) descriptions[entry.getValue().str()] = entry.getDescription().str();
  EXPECT_EQ(descriptions[u"BY"], u"Buyer");
  EXPECT_EQ(descriptions[u"SU"], u"Supplier");

  // C080 spells out its five name lines, each numbered, and the name format code.
  const FieldDefn& name = nad.getField(3);
  ASSERT_TRUE(name.isComposite());
  const CompositeDefn& c080 = *name.getComposite();
  EXPECT_EQ(c080.getName().str(), "C080");
  ASSERT_EQ(c080.getFieldCount(), 6);
  EXPECT_EQ(c080.getField(0).getName().str(), "PartyName1");
  EXPECT_TRUE(c080.getField(0).isRequired());
  EXPECT_EQ(c080.getField(4).getName().str(), "PartyName5");
  EXPECT_FALSE(c080.getField(4).isRequired());
  EXPECT_EQ(c080.getField(0).getMaxLength(), 35);

  // Numeric elements are strict numbers; fixed lengths have a minimum.
  const FieldDefn& quantity = segmentNamed(directory, "QTY").getField(0).getComposite()->getField(1);
  EXPECT_EQ(quantity.getDataType(), DataTypeCodes::kStrictReal);
  EXPECT_EQ(quantity.getMaxLength(), 15);
  const FieldDefn& identifier = segmentNamed(setNamed(edifact(), "EDIFACT_INTERCHANGE"), "UNB").getField(0).getComposite()->getField(0);
  EXPECT_EQ(identifier.getMinLength(), 4) << "the syntax identifier is a4";
  ASSERT_NE(identifier.getValidationTable(), nullptr);
  EXPECT_TRUE(identifier.getValidationTable()->contains(u"UNOC"));
}

}  // namespace
}  // namespace vantrelia
