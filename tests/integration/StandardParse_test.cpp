// Messages of the real standards parsed against their generated definitions: the right interchange
// and message, the right loops and groups, named fields, and the text written back.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <string>
#include <vector>

#include "definitions/MessageSetDefn.h"
#include "elements/MessageElement.h"
#include "elements/MessageImpl.h"
#include "support/ElementTesting.h"
#include "support/ReadFile.h"
#include "support/StandardDefinition.h"

namespace vantrelia::testing {
namespace {

std::string readSource(const std::string& relative) { return readFile(std::string(VANTRELIA_SOURCE_DIR) + "/" + relative); }

std::string sample(const std::string& file) { return readSource("tests/data/standards/" + file); }

// Number and text of every finding a parse recorded on a message.
std::vector<std::string> findingsOf(MessageElement& message) {
  std::vector<std::string> result;
  static_cast<MessageImpl&>(message).getRecordedErrors().forEach([&](MessageElement*, const ValidationError& error) {
    result.push_back(std::to_string(error.getErrorNumber()) + " " + narrow(error.getError()));
  });
  return result;
}

std::string setOf(MessageElement& message) {
  return static_cast<MessageImpl&>(message).getMessageSetDefn()->getName().str();
}

// Turns the shared factory's preserveParsedText on for one scope: the standard definitions are
// loaded once for all tests, so the option must not outlive the test that wants it.
class PreservedText {
 public:
  explicit PreservedText(MessageFactory& factory) : factory(factory) { set(true); }
  ~PreservedText() { set(false); }
  PreservedText(const PreservedText&) = delete;
  PreservedText& operator=(const PreservedText&) = delete;

 private:
  void set(bool on) { factory.SetOption(std::u16string(OptionUriPrefix) + u"/edi/preserveParsedText", Any::any(on)); }
  MessageFactory& factory;
};

struct PathValue {
  const char* path;
  const char* value;
};

struct Sample {
  const char* file;        // under tests/data/standards
  const char* definition;  // under standards
  const char* rootSet;     // the message set of the root the parse returns
  // Messages inside the root (embedded transaction sets), by path, and the message each must be;
  // an empty path is the root itself.
  std::vector<PathValue> messages;
  std::vector<PathValue> values;  // fields a user reads, by path from the root
  // Where the tree's own writer must differ from the text: the text it writes instead of a part.
  struct {
    const char* read;
    const char* written;
  } normalized = {nullptr, nullptr};
  // Findings the parse of the root message is known to make; none for every other message.
  std::vector<std::string> findings = {};
};

const Sample kSamples[] = {
    {"adt-a04.hl7",
     "hl7/hl7-v2.5.yaml",
     "HL7_2_5",
     {{"", "ADT_A01"}},
     {{"MSH/MessageType/TriggerEvent", "A04"},
      {"PID/PatientName[0]/FamilyName/Surname", "QUINTERO"},
      {"PID/PatientName[0]/GivenName", "MARISOL"},
      {"PID/PatientName[1]/FamilyName/Surname", "DIAZ"},
      {"PID/PatientIdentifierList[1]/IdNumber", "S77120934"},
      {"NK1[0]/Relationship/Identifier", "SPO"},
      {"PV1/AttendingDoctor[0]/FamilyName/Surname", "HALVERSEN"},
      {"INSURANCE[0]/IN1/InsuranceCompanyName[0]/OrganizationName", "OREGON BLUE PLAN"}}},
    {"oru-r01.hl7",
     "hl7/hl7-v2.5.yaml",
     "HL7_2_5",
     {{"", "ORU_R01"}},
     {{"PATIENT_RESULT[0]/PATIENT/PID/PatientName[0]/FamilyName/Surname", "BRANDT"},
      {"PATIENT_RESULT[0]/PATIENT/VISIT/PV1/PatientClass", "O"},
      {"PATIENT_RESULT[0]/ORDER_OBSERVATION[0]/OBR/UniversalServiceIdentifier/Identifier", "24323-8"},
      {"PATIENT_RESULT[0]/ORDER_OBSERVATION[0]/OBSERVATION[0]/OBX/ObservationIdentifier/Text", "Glucose"},
      {"PATIENT_RESULT[0]/ORDER_OBSERVATION[0]/OBSERVATION[1]/OBX/ObservationValue[0]", "1.42"},
      {"PATIENT_RESULT[0]/ORDER_OBSERVATION[0]/OBSERVATION[1]/OBX/AbnormalFlags[0]", "H"},
      {"PATIENT_RESULT[0]/ORDER_OBSERVATION[0]/OBSERVATION[1]/NTE[0]/Comment[0]", "Creatinine above range; repeat advised."},
      {"PATIENT_RESULT[0]/ORDER_OBSERVATION[0]/OBSERVATION[3]/OBX/ObservationIdentifier/Identifier", "2823-3"},
      // Formatting commands stay as they came; a separator's escape is the separator.
      {"PATIENT_RESULT[0]/ORDER_OBSERVATION[0]/OBSERVATION[4]/OBX/ObservationValue[0]",
       "Sample slightly hemolyzed.\\.br\\\\H\\Potassium\\N\\ may read high & should be repeated."}}},
    {"orm-o01.hl7",
     "hl7/hl7-v2.5.yaml",
     "HL7_2_5",
     {{"", "ORM_O01"}},
     {{"PATIENT/PID/PatientName[0]/GivenName", "HANA"},
      {"PATIENT/PATIENT_VISIT/PV1/AssignedPatientLocation/PointOfCare", "RAD"},
      {"ORDER[0]/ORC/OrderControl", "NW"},
      {"ORDER[0]/ORDER_DETAIL/DETAILS[0]/OBR/UniversalServiceIdentifier/Text", "Chest X-ray 2 views"},
      {"ORDER[0]/ORDER_DETAIL/DG1[0]/DiagnosisCode/Identifier", "R05.3"}},
     // DG1-6, the diagnosis type, is required and missing: the writer stands its place.
     {"DG1|1||R05.3^Chronic cough^I10\r", "DG1|1||R05.3^Chronic cough^I10|||\r"}},
    {"837p-two-claims.x12",
     "x12/x12.yaml",
     "X12_005010_INTERCHANGE",
     {{"", "INTERCHANGE"}, {"GS_LOOP[0]/TRANSACTION[0]", "837P"}},
     {{"GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2010AA/NM1/NM109", "1649372815"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2010AA/REF/REF02", "391847265"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/2010BA/NM1/NM109", "GLH448120937"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/2300[0]/CLM/CLM01", "LFM26110-01"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/2300[0]/CLM/CLM02", "185"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/2300[0]/2400[1]/SV1/SV101/C00302", "87880"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/2300[1]/CLM/CLM01", "LFM26110-02"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/2300[1]/HI/HI02/C02202", "G8929"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/2300[1]/2400[0]/DTP/DTP03", "20261107"}}},
    {"835-three-claims.x12",
     "x12/x12.yaml",
     "X12_005010_INTERCHANGE",
     {{"", "INTERCHANGE"}, {"GS_LOOP[0]/TRANSACTION[0]", "835"}},
     {{"GS_LOOP[0]/TRANSACTION[0]/BPR/BPR02", "246"},
      {"GS_LOOP[0]/TRANSACTION[0]/1000A/N1/N102", "GREATLAKES HEALTH PLAN"},
      {"GS_LOOP[0]/TRANSACTION[0]/1000B/N1/N104", "1649372815"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000[0]/2100[0]/CLP/CLP01", "LFM26110-01"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000[0]/2100[0]/2110[1]/SVC/SVC01/C00302", "87880"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000[0]/2100[0]/2110[1]/CAS[0]/CAS03", "5"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000[0]/2100[1]/CLP/CLP01", "LFM26110-02"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000[0]/2100[2]/CLP/CLP01", "LFM26098-05"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000[0]/2100[2]/CLP/CLP02", "4"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000[0]/2100[2]/CAS[0]/CAS02", "50"},
      {"GS_LOOP[0]/TRANSACTION[0]/2000[0]/2100[2]/NM1/NM103", "OYELARAN"}}},
    {"270-family.x12",
     "x12/x12.yaml",
     "X12_005010_INTERCHANGE",
     {{"", "INTERCHANGE"}, {"GS_LOOP[0]/TRANSACTION[0]", "270"}},
     {{"GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[0]/2000A[0]/2100A/NM1/NM109", "GLHP0077"},
      {"GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[1]/2000B[0]/2100B/NM1/NM109", "1649372815"},
      {"GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[2]/2000C[0]/2100C/NM1/NM109", "GLH448120937"},
      {"GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[2]/2000C[0]/2100C/2110C[0]/EQ/EQ01[0]", "30"},
      {"GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[3]/2000D[0]/2100D/NM1/NM104", "SAGA"},
      {"GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[3]/2000D[0]/2100D/DMG/DMG03", "F"}}},
    {"271-benefits.x12",
     "x12/x12.yaml",
     "X12_005010_INTERCHANGE",
     {{"", "INTERCHANGE"}, {"GS_LOOP[0]/TRANSACTION[0]", "271"}},
     {{"GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[2]/2000C[0]/2100C/NM1/NM103", "LINDQVIST"},
      {"GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[2]/2000C[0]/2100C/2110C[0]/EB/EB05", "GOLD PPO 500"},
      {"GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[2]/2000C[0]/2100C/2110C[1]/EB/EB07", "500"},
      {"GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[2]/2000C[0]/2100C/2110C[2]/EB/EB01", "B"},
      {"GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[2]/2000C[0]/2100C/2110C[2]/MSG[0]/MSG01", "COPAY APPLIES TO OFFICE VISITS"}}},
    {"orders-d96a.edi",
     "edifact/edifact_d96a.yaml",
     "EDIFACT_INTERCHANGE",
     {{"", "INTERCHANGE"}, {"MESSAGE[0]", "ORDERS"}},
     {{"MESSAGE[0]/BGM/DocumentMessageNumber", "PO-5120"},
      {"MESSAGE[0]/SG2[0]/NAD/PartyQualifier", "BY"},
      {"MESSAGE[0]/SG2[0]/NAD/PartyIdentificationDetails/PartyIdIdentification", "5412345000013"},
      {"MESSAGE[0]/SG2[0]/SG5[0]/CTA/DepartmentOrEmployeeDetails/DepartmentOrEmployee", "ELS VERMEULEN"},
      {"MESSAGE[0]/SG2[1]/NAD/PartyName/PartyName1", "NORDWIND HANDEL GMBH"},
      {"MESSAGE[0]/SG25[2]/LIN/ItemNumberIdentification/ItemNumber", "4000862141428"},
      {"MESSAGE[0]/SG25[2]/QTY[0]/QuantityDetails/MeasureUnitQualifier", "PCE"},
      {"MESSAGE[0]/CNT[0]/Control/ControlValue", "3"}}},
    {"invoic-d96a.edi",
     "edifact/edifact_d96a.yaml",
     "EDIFACT_INTERCHANGE",
     {{"", "INTERCHANGE"}, {"MESSAGE[0]", "INVOIC"}},
     {{"MESSAGE[0]/BGM/DocumentMessageNumber", "INV-2026-1187"},
      {"MESSAGE[0]/SG2[0]/NAD/PartyQualifier", "SU"},
      {"MESSAGE[0]/SG2[0]/SG3[0]/RFF/Reference/ReferenceNumber", "DE123456789"},
      {"MESSAGE[0]/SG2[1]/NAD/PartyQualifier", "BY"},
      {"MESSAGE[0]/SG25[1]/SG26[0]/MOA/MonetaryAmount/MonetaryAmount", "12.48"},
      {"MESSAGE[0]/SG48[0]/MOA/MonetaryAmount/MonetaryAmountTypeQualifier", "77"},
      {"MESSAGE[0]/SG48[0]/MOA/MonetaryAmount/MonetaryAmount", "40.56"},
      {"MESSAGE[0]/SG50[0]/MOA[0]/MonetaryAmount/MonetaryAmount", "6.48"}}},
    {"ncpdp-b1.ncpdp",
     "ncpdp/ncpdp-d0.yaml",
     "NCPDP_D0",
     {{"", "B1"}},
     {{"HEADER/BinNumber", "610144"},
      {"HEADER/TransactionCode", "B1"},
      {"PATIENT/PatientFirstName", "ERIK"},
      {"PATIENT/PatientLastName", "LINDQVIST"},
      {"INSURANCE/CardholderId", "GLH448120937"},
      {"INSURANCE/GroupId", "GRP55012"},
      {"TRANSACTION[0]/CLAIM/ProductServiceId", "00378180110"},
      {"TRANSACTION[0]/CLAIM/QuantityDispensed", "30000"},
      {"TRANSACTION[0]/PRESCRIBER/PrescriberLastName", "HALVERSEN"},
      {"TRANSACTION[0]/PRICING/OtherAmountClaimedSubmittedCount", "2"},
      {"TRANSACTION[0]/PRICING/OtherAmountClaimedSubmittedQualifier[1]", "02"},
      {"TRANSACTION[0]/PRICING/OtherAmountClaimedSubmitted[1]", "25{"},
      {"TRANSACTION[0]/PRICING/GrossAmountDue", "172E"}},
     // The writer opens every segment with the segment separator, the untagged header too.
     {"610144D0B1", "\x1E" "610144D0B1"}},
};

class StandardSampleTest : public ::testing::TestWithParam<Sample> {};

TEST_P(StandardSampleTest, ParsesIntoItsMessageAndWritesBack) {
  const Sample& s = GetParam();
  MessageFactory& factory = standardDefinition(s.definition);
  const std::string text = sample(s.file);
  ASSERT_FALSE(text.empty()) << s.file;

  auto root = factory.Parse(wide(text).c_str());
  ASSERT_NE(root, nullptr);
  EXPECT_EQ(setOf(*root), s.rootSet);
  for (const PathValue& m : s.messages) {
    SCOPED_TRACE(m.path);
    MessageElement* message = *m.path ? root->getElementAt(m.path) : root.get();
    ASSERT_NE(message, nullptr);
    EXPECT_STREQ(message->getName(), m.value);
    // Every segment found its place: nothing unexpected, unknown or refused by a match list.
    EXPECT_EQ(findingsOf(*message), *m.path ? std::vector<std::string>{} : s.findings);
  }
  for (const PathValue& v : s.values) EXPECT_EQ(narrow(root->getElementAt(v.path)->getValue()), v.value) << v.path;
  // The samples hold no trailing empty items, so the tree's own writer gives the text back too,
  // but for the places of required items that a sample leaves out.
  std::string normalized = text;
  if (s.normalized.read) {
    ASSERT_NE(text.find(s.normalized.read), std::string::npos);
    normalized.replace(text.find(s.normalized.read), std::string(s.normalized.read).size(), s.normalized.written);
  }
  const std::string written = narrow(root->getEncodedValue());
  EXPECT_EQ(written, normalized);
  // What the writer wrote reads back into the same values.
  auto again = factory.Parse(wide(written).c_str());
  ASSERT_NE(again, nullptr);
  for (const PathValue& v : s.values) EXPECT_EQ(narrow(again->getElementAt(v.path)->getValue()), v.value) << v.path;

  PreservedText preserved(factory);
  auto kept = factory.Parse(wide(text).c_str());
  ASSERT_NE(kept, nullptr);
  EXPECT_EQ(narrow(kept->getEncodedValue()), text);
}

INSTANTIATE_TEST_SUITE_P(Samples, StandardSampleTest, ::testing::ValuesIn(kSamples),
                         [](const ::testing::TestParamInfo<Sample>& info) {
                           std::string name;
                           for (const char* c = info.param.file; *c; ++c) name += std::isalnum(static_cast<unsigned char>(*c)) ? *c : '_';
                           return name;
                         });

// Segments of one name that land in different loops, or on different items of one loop, by a
// qualifier value: the segment at each path must be the one that carries that qualifier.
TEST(StandardParseTest, QualifiersChooseTheLoopOfASegment) {
  struct Case {
    const char* file;
    const char* definition;
    const char* path;  // from the root to the qualifier field
    const char* qualifier;
  };
  const Case cases[] = {
      // 837P: NM1 by NM101 in six loops, HL by HL03, DTP and HI of the claim by their qualifiers.
      {"837p-two-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/1000A/NM1/NM101", "41"},
      {"837p-two-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/1000B/NM1/NM101", "40"},
      {"837p-two-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/2000A[0]/HL/HL03", "20"},
      {"837p-two-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2010AA/NM1/NM101", "85"},
      {"837p-two-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2010AB/NM1/NM101", "87"},
      {"837p-two-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/HL/HL03", "22"},
      {"837p-two-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/2010BA/NM1/NM101", "IL"},
      {"837p-two-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/2010BB/NM1/NM101", "PR"},
      {"837p-two-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/2300[1]/2310B/NM1/NM101", "82"},
      {"837p-two-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/2300[1]/DTP/DTP01", "431"},
      {"837p-two-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/2300[1]/HI/HI01/C02201", "ABK"},
      {"837p-two-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/2000A[0]/2000B[0]/2300[1]/2400[0]/DTP/DTP01", "472"},
      // 835: N1 by N101 in the two 1000 loops, NM1 by NM101 on different items of one claim loop.
      {"835-three-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/1000A/N1/N101", "PR"},
      {"835-three-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/1000B/N1/N101", "PE"},
      {"835-three-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/2000[0]/2100[1]/NM1/NM101", "QC"},
      {"835-three-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/2000[0]/2100[1]/NM1:4/NM101", "82"},
      {"835-three-claims.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/2000[0]/2100[0]/DTM[0]/DTM01", "232"},
      // 270 and 271: each level of the hierarchy by HL03, in the order of the tree.
      {"270-family.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[0]/2000A[0]/HL/HL03", "20"},
      {"270-family.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[1]/2000B[0]/HL/HL03", "21"},
      {"270-family.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[2]/2000C[0]/HL/HL03", "22"},
      {"270-family.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[3]/2000D[0]/HL/HL03", "23"},
      {"271-benefits.x12", "x12/x12.yaml", "GS_LOOP[0]/TRANSACTION[0]/HIERARCHY[2]/2000C[0]/HL/HL03", "22"},
      // EDIFACT: every party goes to its own repeat of SG2, whatever its qualifier, in text order.
      {"orders-d96a.edi", "edifact/edifact_d96a.yaml", "MESSAGE[0]/SG2[0]/NAD/PartyQualifier", "BY"},
      {"orders-d96a.edi", "edifact/edifact_d96a.yaml", "MESSAGE[0]/SG2[1]/NAD/PartyQualifier", "SU"},
      {"orders-d96a.edi", "edifact/edifact_d96a.yaml", "MESSAGE[0]/SG2[2]/NAD/PartyQualifier", "DP"},
      {"invoic-d96a.edi", "edifact/edifact_d96a.yaml", "MESSAGE[0]/SG2[0]/NAD/PartyQualifier", "SU"},
      {"invoic-d96a.edi", "edifact/edifact_d96a.yaml", "MESSAGE[0]/SG2[1]/NAD/PartyQualifier", "BY"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(std::string(c.file) + " " + c.path);
    auto root = standardDefinition(c.definition).Parse(wide(sample(c.file)).c_str());
    ASSERT_NE(root, nullptr);
    EXPECT_EQ(narrow(root->getElementAt(c.path)->getValue()), c.qualifier);
  }
}

// A qualifier that no item of the claim loop lists, where every NM1 of the transaction has a match
// list: the segment is kept as one the match lists refused, and no item takes it.
TEST(StandardParseTest, AnUnlistedQualifierIsRefusedByEveryItem) {
  const std::string text = sample("835-three-claims.x12");
  const std::string rendering = "NM1*82*";
  ASSERT_NE(text.find(rendering), std::string::npos);
  std::string changed = text;
  changed.replace(text.find(rendering), rendering.size(), "NM1*ZZ*");
  auto root = standardDefinition("x12/x12.yaml").Parse(wide(changed).c_str());
  ASSERT_NE(root, nullptr);
  MessageElement* remittance = root->getElementAt("GS_LOOP[0]/TRANSACTION[0]");
  EXPECT_STREQ(remittance->getName(), "835");
  EXPECT_FALSE(remittance->getElementAt("2000[0]/2100[1]/NM1:4")->isPresent());
  EXPECT_EQ(narrow(remittance->getElementAt("2000[0]/2100[1]/2110[0]/SVC/SVC01/C00302")->getValue()), "99213")
      << "the claim goes on after the refused segment";
  EXPECT_EQ(findingsOf(*remittance),
            std::vector<std::string>{"1023 Segment \"NM1\" [23]: Message Item Match-List failed to match correctly"});
}

// The 837P sample with a patient level before its claims: the patient's name loop 2010CA opens
// with NM1 whose NM101 is QC and nothing else. An NM1 that carries a qualifier no loop lists, none
// at all, or that of a loop far behind (41, the submitter's) is refused where the patient's name is
// expected instead of being read as it, and the claim goes on after it. Without the patient's
// required DMG the claims still stay the patient's, service dates and all.
TEST(StandardParseTest, OnlyItsQualifierOpensALoopOfOneCode) {
  struct Case {
    const char* qualifier;  // NM101 of the NM1 where 2010CA may open
    bool patientName;       // whether 2010CA takes it
    bool dmg = true;        // whether the patient's DMG is there
  };
  MessageFactory& factory = standardDefinition("x12/x12.yaml");
  const std::string text = sample("837p-two-claims.x12");
  const std::string firstClaim = "CLM*LFM26110-01*";
  ASSERT_NE(text.find(firstClaim), std::string::npos);
  for (const Case& c : {Case{"QC", true}, Case{"QC", true, false}, Case{"ZZ", false}, Case{"", false}, Case{"41", false}}) {
    SCOPED_TRACE(std::string(c.qualifier) + (c.dmg ? "" : " without DMG"));
    const std::string name = std::string("NM1*") + c.qualifier + "*1*LINDQVIST*SOFIA~";
    std::string changed = text;
    changed.insert(text.find(firstClaim), "HL*3*2*23*0~PAT*19~" + name +
                                              "N3*77 BIRCH HOLLOW RD~N4*VERONA*WI*53593~" + (c.dmg ? "DMG*D8*20120301*F~" : ""));
    auto root = factory.Parse(wide(changed).c_str());
    ASSERT_NE(root, nullptr);
    MessageElement* claim = root->getElementAt("GS_LOOP[0]/TRANSACTION[0]");
    ASSERT_STREQ(claim->getName(), "837P");
    EXPECT_EQ(narrow(claim->getElementAt("2000A[0]/2000B[0]/2010BA/NM1/NM104")->getValue()), "ERIK")
        << "the subscriber's name stays the subscriber's";
    MessageElement* patient = claim->getElementAt("2000A[0]/2000B[0]/2000C[0]");
    EXPECT_EQ(narrow(patient->getElementAt("HL/HL03")->getValue()), "23");
    EXPECT_EQ(narrow(patient->getElementAt("2300[0]/CLM/CLM01")->getValue()), "LFM26110-01") << "the claim goes on after it";
    EXPECT_EQ(narrow(patient->getElementAt("2300[0]/2400[0]/SV1/SV101/C00302")->getValue()), "99214");
    EXPECT_EQ(narrow(patient->getElementAt("2300[0]/2400[1]/DTP/DTP03")->getValue()), "20261103");
    if (c.patientName) {
      EXPECT_EQ(narrow(patient->getElementAt("2010CA/NM1/NM104")->getValue()), "SOFIA");
      EXPECT_EQ(patient->getElementAt("2010CA/DMG")->isPresent(), c.dmg);
      EXPECT_EQ(narrow(patient->getElementAt("2300[1]/CLM/CLM01")->getValue()), "LFM26110-02");
      EXPECT_EQ(narrow(patient->getElementAt("2300[1]/2400[0]/DTP/DTP03")->getValue()), "20261107");
      EXPECT_EQ(narrow(patient->getElementAt("2300[1]/2310B/NM1/NM101")->getValue()), "82");
      EXPECT_EQ(findingsOf(*claim), std::vector<std::string>{});
    } else {
      EXPECT_FALSE(patient->getElementAt("2010CA/NM1")->isPresent());
      // A finding names a segment by the number of segments before it in the interchange.
      const std::string place = std::to_string(std::count(changed.begin(), changed.begin() + static_cast<std::ptrdiff_t>(changed.find(name)), '~'));
      EXPECT_EQ(findingsOf(*claim),
                std::vector<std::string>{"1023 Segment \"NM1\" [" + place + "]: Message Item Match-List failed to match correctly"});
    }
    PreservedText preserved(factory);
    auto kept = factory.Parse(wide(changed).c_str());
    ASSERT_NE(kept, nullptr);
    EXPECT_EQ(narrow(kept->getEncodedValue()), changed) << "the refused segment is kept where it stood";
  }
}

TEST(StandardParseTest, EdifactOrderInItsInterchange) {
  MessageFactory& factory = standardDefinition("edifact/edifact_d96a.yaml");
  std::string text = readSource("examples/orders-d96a.edi");
  text.pop_back();  // the line end after the last segment is no part of the interchange
  auto interchange = factory.Parse(wide(text).c_str());
  ASSERT_NE(interchange, nullptr);
  EXPECT_STREQ(interchange->getName(), "INTERCHANGE");
  MessageElement* order = interchange->getElementAt("MESSAGE[0]");
  EXPECT_STREQ(order->getName(), "ORDERS");
  EXPECT_EQ(narrow(order->getElementAt("SG2[1]/NAD/PartyQualifier")->getValue()), "SU");
  EXPECT_EQ(narrow(interchange->getEncodedValue()), text);
}

// The example as written, and the same interchange with the delimiters its ISA declares changed:
// element '|', repetition '!', component '>' and a segment terminator other than '~'.
TEST(StandardParseTest, X12EligibilityInquiryInItsInterchange) {
  MessageFactory& factory = standardDefinition("x12/x12.yaml");
  std::string usual = readSource("examples/eligibility-270.x12");
  usual.pop_back();
  std::string other;
  for (const char c : usual) other += c == '*' ? '|' : c == '~' ? '\n' : c == '^' ? '!' : c == ':' ? '>' : c;
  for (const std::string& text : {usual, other}) {
    SCOPED_TRACE(text.substr(0, 120));
    auto interchange = factory.Parse(wide(text).c_str());
    ASSERT_NE(interchange, nullptr);
    EXPECT_STREQ(interchange->getName(), "INTERCHANGE");
    EXPECT_STREQ(static_cast<MessageImpl&>(*interchange).getMessageSetDefn()->getName().c_str(), "X12_005010_INTERCHANGE");
    MessageElement* inquiry = interchange->getElementAt("GS_LOOP[0]/TRANSACTION[0]");
    ASSERT_NE(inquiry, nullptr);
    EXPECT_STREQ(inquiry->getName(), "270");
    EXPECT_EQ(narrow(interchange->getElementAt("GS_LOOP[0]/GE/GE01")->getValue()), "1");
    EXPECT_EQ(narrow(interchange->getEncodedValue()), text);
  }
}

}  // namespace
}  // namespace vantrelia::testing
