// The generated HL7 v2.5 definition, loaded as a host loads it: its structures, trigger events,
// segments, data types, code tables and separators against facts of the standard.

#include <gtest/gtest.h>

#include <algorithm>
#include <boost/regex.hpp>
#include <functional>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "definitions/CompositeDefn.h"
#include "definitions/FieldDefn.h"
#include "definitions/MatchDefn.h"
#include "definitions/MessageDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SegmentGroupDefn.h"
#include "definitions/SeparatorDefn.h"
#include "definitions/ValidationEntryDefn.h"
#include "definitions/ValidationTableDefn.h"
#include "elements/MessageElement.h"
#include "foundation/Enumerations.h"
#include "foundation/TextConversion.h"
#include "support/StandardDefinition.h"

namespace vantrelia {
namespace {

constexpr const char* kHl7Source = "hl7/hl7-v2.5.yaml";
constexpr const char* kTriggerEventPath = "MSH/MessageType/TriggerEvent";

const MessageSetDefn& hl7() { return testing::messageSet(testing::standardDefinition(kHl7Source), "HL7_2_5"); }


const SegmentDefn& segment(const std::string& name) {
  for (const auto& candidate : hl7().getSegments())
    if (candidate->getName().str() == name) return *candidate;
  throw std::runtime_error("no segment " + name);
}

const CompositeDefn& composite(const std::string& name) {
  const CompositeDefn* found = hl7().findCompositeByName(name);
  if (!found) throw std::runtime_error("no composite " + name);
  return *found;
}

// A match value as the engine reads it: a whole-value POSIX extended expression.
bool matchAccepts(const MatchDefn& match, const std::string& value) {
  return boost::regex_match(value, boost::regex(narrow(match.getValue().view()), boost::regex::extended));
}

// Whether a message of the set takes MSH-9 "code^event" by its types and its match list on the
// trigger event. The order of the answer is the order in which the set tries messages: those with
// a match list, those without, then those with a wild type.
std::vector<const MessageDefn*> messagesFor(const std::string& code, const std::string& event) {
  std::vector<const MessageDefn*> passes[3];
  for (const auto& message : hl7().getMessages()) {
    const auto& types = message->getTypes();
    const std::string values[] = {code, event};
    bool typesAgree = types.size() == 2;
    for (size_t i = 0; typesAgree && i < 2; ++i)
      typesAgree = message->getWildTypes()[i] || narrow(types[i].view()) == values[i];
    if (!typesAgree) continue;
    bool matchesHold = true;
    for (const auto& match : message->getMatches())
      if (match->getFieldPath().str() == kTriggerEventPath) matchesHold = matchesHold && matchAccepts(*match, event);
    if (!matchesHold) continue;
    const int pass = message->getHasWildType() ? 2 : message->getMatches().empty() ? 1 : 0;
    passes[pass].push_back(message.get());
  }
  std::vector<const MessageDefn*> all;
  for (const auto& pass : passes) all.insert(all.end(), pass.begin(), pass.end());
  return all;
}

TEST(StandardHl7Test, TriggerEventsFindTheStructureOfTable0354) {
  struct Case {
    const char* code;
    const char* event;
    const char* structure;
  };
  const Case cases[] = {
      {"ADT", "A01", "ADT_A01"}, {"ADT", "A04", "ADT_A01"}, {"ADT", "A08", "ADT_A01"}, {"ADT", "A13", "ADT_A01"},
      {"ADT", "A05", "ADT_A05"}, {"ADT", "A28", "ADT_A05"}, {"ADT", "A31", "ADT_A05"}, {"ADT", "A02", "ADT_A02"},
      {"ADT", "A40", "ADT_A39"}, {"ADT", "A47", "ADT_A30"}, {"ORU", "R01", "ORU_R01"}, {"MDM", "T03", "MDM_T01"},
      {"MDM", "T04", "MDM_T02"}, {"ORM", "O01", "ORM_O01"}, {"ACK", "A01", "ACK"},     {"ACK", "R01", "ACK"},
      {"RPI", "I01", "RPI_I01"}, {"RPI", "I04", "RPI_I04"},
  };
  for (const Case& c : cases) {
    const auto found = messagesFor(c.code, c.event);
    ASSERT_FALSE(found.empty()) << c.code << "^" << c.event;
    EXPECT_EQ(found.front()->getName().str(), c.structure) << c.code << "^" << c.event;
  }
  // A pattern holds whole events only, and an event of another structure finds no other.
  for (const Case& c : {Case{"ADT", "A0", ""}, Case{"ADT", "A011", ""}, Case{"ADT", "X01", ""}})
    EXPECT_TRUE(messagesFor(c.code, c.event).empty()) << c.code << "^" << c.event;
}

// No two structures of one message code claim the same trigger event: the first in the set's
// order would silently hide the other.
TEST(StandardHl7Test, EachTriggerEventHasOneStructure) {
  const boost::regex event("[A-Z0-9]{3}");
  std::map<std::string, std::string> claimed;
  size_t events = 0;
  for (const auto& message : hl7().getMessages()) {
    const std::string code = narrow(message->getTypes()[0].view());
    std::vector<std::string> own;
    if (!message->getWildTypes()[1]) own.push_back(narrow(message->getTypes()[1].view()));
    for (const auto& match : message->getMatches()) {
      const std::string pattern = narrow(match->getValue().view());
      ASSERT_TRUE(pattern.front() == '(' && pattern.back() == ')') << pattern;
      const std::string inside = pattern.substr(1, pattern.size() - 2);
      for (boost::sregex_token_iterator it(inside.begin(), inside.end(), boost::regex("\\|"), -1), end; it != end; ++it) {
        ASSERT_TRUE(boost::regex_match(it->str(), event)) << message->getName().str() << ": " << pattern;
        own.push_back(it->str());
      }
    }
    for (const std::string& name : own) {
      const auto [place, fresh] = claimed.emplace(code + "^" + name, message->getName().str());
      EXPECT_TRUE(fresh) << code << "^" << name << " in " << place->second << " and " << message->getName().str();
      ++events;
    }
  }
  EXPECT_GT(events, 300u) << "the events of table 0354";
}

TEST(StandardHl7Test, StructuresHoldTheirSegmentsAndGroups) {
  const MessageDefn* a01 = messagesFor("ADT", "A01").front();
  std::vector<std::string> top;
  for (const auto& item : a01->getItems()) top.push_back(item->getName().str());
  const std::vector<std::string> expected = {"MSH", "SFT",       "EVN",  "PID",       "PD1",
                                             "ROL", "NK1",       "PV1",  "PV2",       "ROL:2",
                                             "DB1", "OBX",       "AL1",  "DG1",       "DRG",
                                             "PROCEDURE", "GT1", "INSURANCE", "ACC", "UB1",
                                             "UB2", "PDA"};
  EXPECT_EQ(top, expected);
  const MessageItemDefn& insurance = a01->getItem(17);
  ASSERT_NE(insurance.getGroup(), nullptr);
  EXPECT_EQ(insurance.getMaxRepeats(), 0) << "any number of insurances";
  EXPECT_EQ(insurance.getGroup()->getItem(0).getSegment()->getName().str(), "IN1");
  EXPECT_TRUE(insurance.getGroup()->getItem(0).isRequired());
  EXPECT_TRUE(a01->getItem(0).isRequired());
  EXPECT_FALSE(a01->getItem(1).isRequired());

  // ORM_O01's order detail is a choice of one of six segments.
  const MessageDefn* orm = messagesFor("ORM", "O01").front();
  const SegmentGroupDefn* detail = nullptr;
  std::vector<const SegmentGroupDefn*> groups;
  for (const auto& item : orm->getItems())
    if (item->getGroup()) groups.push_back(item->getGroup());
  while (!groups.empty() && !detail) {
    const SegmentGroupDefn* group = groups.back();
    groups.pop_back();
    if (group->isChoiceGroup()) detail = group;
    for (const auto& item : group->getItems())
      if (item->getGroup()) groups.push_back(item->getGroup());
  }
  ASSERT_NE(detail, nullptr);
  std::vector<std::string> choices;
  for (const auto& item : detail->getItems()) choices.push_back(item->getSegment()->getName().str());
  EXPECT_EQ(choices, (std::vector<std::string>{"OBR", "RQD", "RQ1", "RXO", "ODS", "ODT"}));
}

TEST(StandardHl7Test, PidHasItsThirtyNineNamedFields) {
  const SegmentDefn& pid = segment("PID");
  ASSERT_EQ(pid.getFieldCount(), 39);
  struct Case {
    int number;
    const char* name;
    const char* composite;
    bool required;
    int maxRepeats;
  };
  const Case cases[] = {
      {1, "SetId", nullptr, false, 1},
      {3, "PatientIdentifierList", "CX", true, 0},
      {5, "PatientName", "XPN", true, 0},
      {7, "DateTimeOfBirth", "TS", false, 1},
      {8, "AdministrativeSex", nullptr, false, 1},
      {11, "PatientAddress", "XAD", false, 0},
      {19, "SsnNumberPatient", nullptr, false, 1},
      {30, "PatientDeathIndicator", nullptr, false, 1},
      {39, "TribalCitizenship", "CWE", false, 0},
  };
  for (const Case& c : cases) {
    const FieldDefn& field = pid.getField(c.number - 1);
    EXPECT_EQ(field.getName().str(), c.name) << "PID-" << c.number;
    EXPECT_EQ(field.isComposite(), c.composite != nullptr) << c.name;
    if (c.composite) {
      EXPECT_EQ(field.getComposite()->getName().str(), c.composite) << c.name;
    }
    EXPECT_EQ(field.isRequired(), c.required) << c.name;
    EXPECT_EQ(field.getMaxRepeats(), c.maxRepeats) << c.name;
  }
  // Primitive HL7 types are types of the file: PID-1 is an SI, PID-8 an IS.
  EXPECT_EQ(pid.getField(0).getCustomType()->getName().str(), "SI");
  EXPECT_EQ(pid.getField(7).getCustomType()->getName().str(), "IS");
  EXPECT_EQ(pid.getField(7).getMaxLength(), 1);
  std::set<std::string> names;
  for (const auto& field : pid.getFields()) names.insert(field->getName().str());
  EXPECT_EQ(names.size(), 39u) << "field names are unique";
}

TEST(StandardHl7Test, CompositeTypesHaveTheirComponents) {
  const CompositeDefn& xpn = composite("XPN");
  ASSERT_EQ(xpn.getFieldCount(), 14);
  const char* names[] = {"FamilyName", "GivenName", "SecondAndFurtherGivenNamesOrInitialsThereof", "Suffix", "Prefix",
                         "Degree", "NameTypeCode", "NameRepresentationCode", "NameContext", "NameValidityRange",
                         "NameAssemblyOrder", "EffectiveDate", "ExpirationDate", "ProfessionalSuffix"};
  for (int i = 0; i < 14; ++i) EXPECT_EQ(xpn.getField(i).getName().str(), names[i]) << "XPN." << i + 1;
  EXPECT_EQ(xpn.getField(0).getComposite()->getName().str(), "FN");
  EXPECT_EQ(xpn.getField(6).getValidationTable(), hl7().findValidationTable("HL70200"));

  // A date range as a field keeps its time stamps as composites; as a component of XPN its time
  // stamps are subcomponents, so there they are text.
  const CompositeDefn& range = composite("DR");
  EXPECT_EQ(range.getField(0).getComposite()->getName().str(), "TS");
  const CompositeDefn* rangeInName = xpn.getField(9).getComposite();
  ASSERT_NE(rangeInName, nullptr);
  EXPECT_EQ(rangeInName->getName().str(), "DR_SUB");
  EXPECT_FALSE(rangeInName->getField(0).isComposite());
  EXPECT_EQ(rangeInName->getField(0).getName().str(), range.getField(0).getName().str());
}

// HL7 has fields, components and subcomponents: no composite of the set may reach a fourth level.
TEST(StandardHl7Test, NoFieldNestsDeeperThanSubcomponents) {
  std::function<int(const FieldDefn&)> depth = [&](const FieldDefn& field) {
    if (!field.isComposite()) return 0;
    int deepest = 0;
    for (const auto& component : field.getComposite()->getFields()) deepest = std::max(deepest, depth(*component));
    return deepest + 1;
  };
  for (const auto& seg : hl7().getSegments())
    for (const auto& field : seg->getFields())
      EXPECT_LE(depth(*field), 2) << seg->getName().str() << "/" << field->getName().str();
}

TEST(StandardHl7Test, CodeTablesHoldTheirValues) {
  struct Case {
    const char* table;
    std::vector<std::u16string> values;
  };
  const Case cases[] = {
      {"HL70003", {u"A01", u"A04", u"R01", u"O01"}},
      {"HL70076", {u"ADT", u"ORU", u"ACK"}},
      {"HL70354", {u"ADT_A01", u"ORU_R01"}},
      {"HL70103", {u"D", u"P", u"T"}},
      {"HL70136", {u"Y", u"N"}},
      {"HL70001", {u"F", u"M", u"U"}},
  };
  for (const Case& c : cases) {
    const ValidationTableDefn* table = hl7().findValidationTable(c.table);
    ASSERT_NE(table, nullptr) << c.table;
    for (const std::u16string& value : c.values) EXPECT_TRUE(table->contains(value)) << c.table << " " << narrow(value);
    EXPECT_FALSE(table->contains(u"ZZZ9")) << c.table;
  }
  std::map<std::u16string, std::u16string> yesNo;
  for (const auto& entry : hl7().findValidationTable("HL70136")->getEntries())
    yesNo[entry.getValue().str()] = entry.getDescription().str();
  EXPECT_EQ(yesNo, (std::map<std::u16string, std::u16string>{{u"N", u"No"}, {u"Y", u"Yes"}}));
  // PID-8 is of the user-defined type IS: its table only suggests values, so the field names it
  // and isn't checked against it.
  const FieldDefn& sex = segment("PID").getField(7);
  EXPECT_EQ(sex.getValidationTable(), nullptr);
  const int tableKey = testing::standardDefinition(kHl7Source).getWarehouse().getUserDataKeyIndex(u"Table");
  ASSERT_GE(tableKey, 0);
  EXPECT_EQ(sex.getUserData().at(tableKey).str(), u"HL70001");
  // MSH-11.1, the processing ID, is checked against table 0103.
  const FieldDefn& processing = segment("MSH").getField(8);
  ASSERT_EQ(processing.getName().str(), "ProcessingId");
  EXPECT_EQ(processing.getComposite()->getField(0).getValidationTable(), hl7().findValidationTable("HL70103"));
}

TEST(StandardHl7Test, SeparatorsAreReadRightBehindMsh) {
  struct Case {
    int type;
    char16_t value;
    const char16_t* replacement;
    int position;
  };
  const Case cases[] = {
      {qxSepField1, u'|', u"\\F\\", 1}, {qxSepField2, u'^', u"\\S\\", 2}, {qxSepRepeat, u'~', u"\\R\\", 3},
      {qxSepUser1, u'\\', u"\\E\\", 4}, {qxSepField3, u'&', u"\\T\\", 5},
  };
  for (const Case& c : cases) {
    const SeparatorDefn& separator = hl7().getSeparator(c.type);
    EXPECT_EQ(separator.getValue().str(), std::u16string(1, c.value)) << c.type;
    EXPECT_EQ(separator.getReplacementValue().str(), c.replacement) << c.type;
    EXPECT_EQ(separator.getFieldPath().getName().str(), "MSH") << c.type;
    EXPECT_EQ(separator.getPosition(), c.position) << c.type;
    EXPECT_TRUE(separator.getFlags() & SeparatorDefn::kFromField) << c.type;
  }
  EXPECT_TRUE(hl7().getSeparator(qxSepField1).getFlags() & SeparatorDefn::kInitiator) << "every field opens with |";
  EXPECT_TRUE(hl7().getSeparator(qxSepSegment).getFlags() & SeparatorDefn::kTerminator);

  // MSH-1 and MSH-2 are the separators; its fields begin with MSH-3, and the message type fields
  // MSH-9.1 and MSH-9.2 are required by the set.
  const SegmentDefn& msh = segment("MSH");
  EXPECT_EQ(msh.getField(0).getName().str(), "SendingApplication");
  const FieldDefn& type = msh.getField(6);
  ASSERT_EQ(type.getName().str(), "MessageType");
  EXPECT_TRUE(type.getComposite()->getField(0).isRequired());
  EXPECT_TRUE(type.getComposite()->getField(1).isRequired());
  EXPECT_FALSE(type.getComposite()->getField(2).isRequired());

  // The batch headers open with their encoding characters, which stand as they are when written.
  for (const char* header : {"FHS", "BHS"}) {
    const PrimitiveTypeDefn* encoding = segment(header).getField(0).getCustomType();
    ASSERT_NE(encoding, nullptr) << header;
    for (ESeparatorType allowed : {qxSepField2, qxSepRepeat, qxSepUser1, qxSepField3})
      EXPECT_TRUE(encoding->isSeparatorAllowed(allowed)) << header << " " << allowed;
    EXPECT_FALSE(encoding->isSeparatorAllowed(qxSepField1)) << header;
  }
}

// A created message writes the separators it reads behind MSH, and every other segment opens its
// fields with the field separator.
TEST(StandardHl7Test, ACreatedMessageWritesItsSeparatorsBehindMsh) {
  auto message = testing::standardDefinition(kHl7Source).CreateMessage("ADT_A01");
  ASSERT_NE(message, nullptr);
  message->getElementAt("PID/SetId")->setValue(u"1");
  message->getElementAt("EVN/EventTypeCode")->setValue(u"A|4");
  const std::u16string text = message->getEncodedValue();
  EXPECT_EQ(text.substr(0, 8), u"MSH|^~\\&") << narrow(text);
  EXPECT_NE(text.find(u"\rEVN|A\\F\\4"), std::u16string::npos) << narrow(text);
  EXPECT_NE(text.find(u"\rPID|1|"), std::u16string::npos) << narrow(text);
}

}  // namespace
}  // namespace vantrelia
