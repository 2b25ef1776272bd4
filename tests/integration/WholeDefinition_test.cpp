// Whole definitions end to end: several message sets compiled at different format versions, loaded
// by the engine, and looked at through the inspector and the factory, as a host would.

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>

#include "compiler/DefinitionCompiler.h"
#include "definitions/SegmentDefn.h"
#include "foundation/BadParameter.h"
#include "foundation/Enumerations.h"
#include "foundation/MessageFactory.h"
#include "support/PcfLoad.h"
#include "tool/ModelInspector.h"

namespace vantrelia {
namespace {

using Json = nlohmann::ordered_json;

// Two sets, the first embedding a message of the second, which comes later in the file; nested
// sequence, choice and repeating groups; two header items; message type fields by number and by
// name. Message types and header item counts need 513; without them the source suits 512.
std::string twoSets(const char* tables, bool typed = true) {
  const std::string type = typed ? "\n        type: \"ADT A01\"" : "";
  const std::string headerItems = typed ? "\n    headerItemCount: 2" : "";
  return std::string(R"(
messageSets:
  - name: OUTER
    separators: {segment: "\r", field1: '|', field2: '^'}
    messageTypeFields: [HDR/2]
    segments:
      - {name: HDR, fields: [{name: Sender}, {name: Kind}]}
      - {name: TRL, fields: [{name: Count, dataType: long}]}
    messages:
      - name: WRAP
        stateTables: )") + tables + R"(
        items:
          - {segment: HDR, required: true}
          - {embeddedSet: INNER, name: BODY, required: true, maxRepeats: 0}
          - {segment: TRL}
  - name: INNER
    separators: {segment: "\r", field1: '|', field2: '^'}
    messageTypeFields: [MSH/3/1, MSH.3.2])" + headerItems + R"(
    composites:
      - {name: MSG, separator: field2, fields: [{name: Code}, {name: Event}]}
    segments:
      - {name: MSH, fields: [{name: Sep}, {name: App}, {name: Type, composite: MSG}]}
      - {name: EVN, fields: [{name: When}]}
      - {name: PID, fields: [{name: Id, required: true}]}
      - {name: NTE, fields: [{name: Text, maxRepeats: 0}]}
      - {name: OBX, fields: [{name: Value}]}
      - {name: DG1, fields: [{name: Code}]}
    messages:
      - name: A01)" + type + R"(
        stateTables: )" + tables + R"(
        items:
          - {segment: MSH, required: true}
          - {segment: EVN}
          - {segment: PID, required: true}
          - group: OBSERVATIONS
            maxRepeats: 0
            items:
              - {segment: OBX, required: true}
              - group: DETAIL
                items:
                  - {segment: NTE, name: "NTE:2", maxRepeats: 0}
          - group: EITHER
            choice: true
            items:
              - {segment: DG1}
              - {segment: NTE}
)";
}

Json loadModel(const std::string& source, int version) {
  MessageFactory factory;
  testing::loadBytes(factory, compiler::DefinitionCompiler::compile(source, {version}));
  return tool::ModelInspector(factory.getWarehouse()).toJson();
}

const Json& message(const Json& model, size_t set, size_t index) { return model["messageSets"][set]["messages"][index]; }

TEST(WholeDefinitionTest, SetsLoadAlikeAtTheOldestAndNewestVersions) {
  const Json oldest = loadModel(twoSets("built", false), 512);
  const Json middle = loadModel(twoSets("built"), 851);
  const Json newest = loadModel(twoSets("built"), 883);
  for (const Json* model : {&oldest, &middle, &newest}) {
    ASSERT_EQ((*model)["messageSets"].size(), 2u);
    const Json& inner = (*model)["messageSets"][1];
    const bool typed = model != &oldest;
    EXPECT_EQ(inner["headerItemCount"], typed ? 2 : 1);
    EXPECT_EQ(message(*model, 1, 0)["types"], typed ? Json::array({"ADT", "A01"}) : Json::array({"A01"}))
        << "two type fields split the text; before types existed the name is the type";
    EXPECT_EQ(message(*model, 0, 0)["items"][1]["messageSet"], "INNER") << "a reference to a later set is completed";
    // The message type fields are marked required: MSH field 3, component 1 by number, 2 as well.
    const Json& msg = inner["composites"][0]["fields"];
    EXPECT_EQ(msg[0]["Required"], true);
    EXPECT_EQ(msg[1]["Required"], true);
    EXPECT_EQ(inner["segments"][0]["fields"][2]["Required"], false) << "only the components are named";
    EXPECT_EQ((*model)["messageSets"][0]["segments"][0]["fields"][1]["Required"], true) << "HDR/2 by number";
    EXPECT_EQ(inner["validationErrorSettings"].size(), 52u);
  }
  // What the versions share reads the same in each: the state tables above all.
  for (const char* table : {"strictStates", "relaxedStates"}) {
    EXPECT_EQ(message(oldest, 1, 0)[table], message(newest, 1, 0)[table]) << table;
    EXPECT_EQ(message(middle, 1, 0)[table], message(newest, 1, 0)[table]) << table;
    EXPECT_EQ(message(oldest, 0, 0)[table], message(newest, 0, 0)[table]) << table;
  }
}

TEST(WholeDefinitionTest, EmbeddedTablesAreTheOnesTheEngineBuilds) {
  for (int version : {851, 883}) {
    const Json built = loadModel(twoSets("built"), version);
    const Json embedded = loadModel(twoSets("embedded"), version);
    for (size_t set : {0u, 1u})
      for (const char* table : {"strictStates", "relaxedStates"})
        EXPECT_EQ(message(built, set, 0)[table], message(embedded, set, 0)[table]) << version << " " << table;
  }
  std::string failure;
  try {
    compiler::DefinitionCompiler::compile(twoSets("embedded"), {850});
  } catch (const std::exception& e) {
    failure = e.what();
  }
  EXPECT_NE(failure.find("851"), std::string::npos) << "tables in the file need 851: " << failure;
}

TEST(WholeDefinitionTest, SeverityOptionWorksOnLoadedSets) {
  MessageFactory factory;
  testing::loadBytes(factory, compiler::DefinitionCompiler::compile(twoSets("built")));
  ASSERT_TRUE(factory.IsDefinitionLoaded());
  const std::u16string severity = std::u16string(OptionUriPrefix) + u"/edi/validationErrorSeverity?";
  const auto get = [&](const std::u16string& query) { return Any::any_cast<int>(factory.GetOption(severity + query)); };

  EXPECT_EQ(get(u"ERROR=1043"), qxVESIgnore);
  EXPECT_EQ(get(u"error=1001&messageSet=INNER"), qxVESError);
  factory.SetOption(severity + u"ERROR=1001", Any::any(int(qxVESWarning)));
  EXPECT_EQ(get(u"ERROR=1001&MESSAGESET=OUTER"), qxVESWarning) << "without a set name every set is written";
  EXPECT_EQ(get(u"ERROR=1001&MESSAGESET=INNER"), qxVESWarning);
  factory.SetOption(severity + u"MESSAGESET=INNER&ERROR=1001", Any::any(int(qxVESIgnore)));
  EXPECT_EQ(get(u"ERROR=1001&MESSAGESET=INNER"), qxVESIgnore);
  EXPECT_EQ(get(u"ERROR=1001"), qxVESWarning) << "no set name reads the first set";

  const auto failure = [&](const std::u16string& query) {
    try {
      get(query);
    } catch (const BadParameter& e) {
      return e.message;
    }
    return std::string("no failure");
  };
  EXPECT_EQ(failure(u"ERROR=1001&MESSAGESET=inner"), "Couldn't find Message Set inner") << "set names count case";
  EXPECT_EQ(failure(u"ERROR=1053"), "Couldn't find the error number 1053");
}

// The bundled default from the source tree, as the tool loads it.
Json bundledDefault() {
  std::ifstream file(std::string(VANTRELIA_SOURCE_DIR) + "/bundled/default.yaml");
  std::stringstream source;
  source << file.rdbuf();
  return loadModel(source.str(), 883);
}

// The entry of a model list whose `key` is `name`; a missing one fails the test that asks for it.
const Json& entry(const Json& list, const char* key, const std::string& name) {
  for (const Json& item : list)
    if (item[key] == name) return item;
  throw std::runtime_error(std::string(key) + " " + name + " is missing");
}

TEST(WholeDefinitionTest, BundledDefaultLoadsWithEmbeddedAndBuiltTablesAlike) {
  const Json model = bundledDefault();
  ASSERT_EQ(model["messageSets"].size(), 5u);
  // ADT_A01 has its tables built at loadModel, ADT_A08 the same items with tables in the file.
  const Json& a01 = message(model, 1, 0);
  const Json& a08 = message(model, 1, 2);
  ASSERT_EQ(a08["Name"], "ADT_A08");
  EXPECT_EQ(a01["strictStates"], a08["strictStates"]);
  EXPECT_EQ(a01["relaxedStates"], a08["relaxedStates"]);
  EXPECT_EQ(message(model, 0, 0)["items"][1]["group"]["items"][1]["messageSet"], "HL7");
}

TEST(WholeDefinitionTest, BundledEdifactAndNcpdpSetsLoadAsTheirStandardsAsk) {
  const Json model = bundledDefault();
  const Json& sets = model["messageSets"];
  EXPECT_EQ(entry(entry(sets, "name", "EDIFACT")["messages"], "Name", "ORDERS")["types"], Json({"ORDERS", "D", "96A"}));
  EXPECT_EQ(entry(entry(sets, "name", "NCPDP")["messages"], "Name", "B1")["types"], Json({"B1"}));

  // EDIFACT: type, version and release of UNH's message identifier are made required by the
  // set's message type fields, not by their own definition; the association code stays optional.
  const Json& identifier = entry(entry(sets, "name", "EDIFACT")["composites"], "Name", "S009")["fields"];
  for (const char* name : {"MessageType", "MessageVersionNumber", "MessageReleaseNumber"})
    EXPECT_EQ(entry(identifier, "Name", name)["Required"], true) << name;
  EXPECT_EQ(entry(identifier, "Name", "AssociationAssignedCode")["Required"], false);

  // NCPDP: every field of a tagged segment has a two-character identifier as its tag, none twice,
  // since the parser gives a value to the first field whose tag begins it. The header isn't tagged.
  const Json& segments = entry(sets, "name", "NCPDP")["segments"];
  std::set<std::string> tagged;
  for (const Json& segment : segments) {
    if (!(segment["flags"].get<uint32_t>() & SegmentDefn::kNcpdp)) continue;
    tagged.insert(segment["Name"].get<std::string>());
    std::set<std::string> tags;
    for (const Json& field : segment["fields"]) {
      const std::string tag = field["Tag"];
      EXPECT_EQ(tag.size(), 2u) << segment["Name"] << "/" << field["Name"] << " has no tag of its own: " << tag;
      EXPECT_TRUE(tags.insert(tag).second) << segment["Name"] << " has the tag " << tag << " twice";
    }
  }
  EXPECT_EQ(tagged, std::set<std::string>({"PATIENT", "INSURANCE", "CLAIM", "PRESCRIBER", "PRICING"}));
  EXPECT_EQ(entry(segments, "Name", "CLAIM")["Tag"], "\x1C" "AM07");

  // A repeat count: its linked name is "+" and the counted field, which stands right behind it,
  // and its run of repeating fields ends at the next field that doesn't repeat.
  struct Run {
    const char* segment;
    const char* count;
    const char* counted;
    const char* after;
  };
  for (const Run& run : {Run{"CLAIM", "ProcedureModifierCodeCount", "ProcedureModifierCode", "QuantityDispensed"},
                         Run{"PRICING", "OtherAmountClaimedSubmittedCount", "OtherAmountClaimedSubmittedQualifier",
                             "FlatSalesTaxAmountSubmitted"}}) {
    SCOPED_TRACE(run.count);
    const Json& fields = entry(segments, "Name", run.segment)["fields"];
    size_t at = 0;
    while (at < fields.size() && fields[at]["Name"] != run.count) ++at;
    ASSERT_LT(at + 1, fields.size());
    EXPECT_EQ(fields[at]["linkedFieldName"], std::string("+") + run.counted);
    EXPECT_EQ(fields[at]["countKind"], 0) << "a repeat count counts no item of the message";
    EXPECT_EQ(fields[at + 1]["Name"], run.counted);
    size_t end = at + 1;
    while (end < fields.size() && fields[end]["MaxRepeats"] != 1) ++end;
    ASSERT_LT(end, fields.size());
    EXPECT_EQ(fields[end]["Name"], run.after);
  }
}

}  // namespace
}  // namespace vantrelia
