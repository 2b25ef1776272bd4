// The NCPDP Telecommunication D.0 definition, loaded as a host loads it: the fixed headers, the
// tagged request and response segments and the transactions B1, B2, B3 and E1.

#include <gtest/gtest.h>

#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include "definitions/FieldDefn.h"
#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SegmentGroupDefn.h"
#include "definitions/SeparatorDefn.h"
#include "definitions/ValidationTableDefn.h"
#include "foundation/Enumerations.h"
#include "foundation/TextConversion.h"
#include "support/StandardDefinition.h"

namespace vantrelia {
namespace {

constexpr const char* kNcpdpSource = "ncpdp/ncpdp-d0.yaml";

const MessageSetDefn& set(const char* name) { return testing::messageSet(testing::standardDefinition(kNcpdpSource), name); }
const MessageSetDefn& requests() { return set("NCPDP_D0"); }
const MessageSetDefn& responses() { return set("NCPDP_D0_RESPONSE"); }

const SegmentDefn& segment(const MessageSetDefn& in, const std::string& name) {
  for (const auto& candidate : in.getSegments())
    if (candidate->getName().str() == name) return *candidate;
  throw std::runtime_error("no segment " + name);
}

const FieldDefn& field(const SegmentDefn& in, const std::string& name) {
  for (const auto& candidate : in.getFields())
    if (candidate->getName().str() == name) return *candidate;
  throw std::runtime_error("no field " + name + " in " + in.getName().str());
}


// The segment identification (111-AM) of each segment, and one field of it by its identifier.
TEST(StandardNcpdpTest, SegmentsCarryTheirIdentificationAndFieldIdentifiers) {
  struct Case {
    const MessageSetDefn& (*in)();
    const char* segment;
    const char* code;
    const char* field;
    const char* identifier;
  };
  const Case cases[] = {
      {requests, "PATIENT", "01", "DateOfBirth", "C4"},
      {requests, "PHARMACY_PROVIDER", "02", "ProviderId", "E9"},
      {requests, "PRESCRIBER", "03", "PrescriberId", "DB"},
      {requests, "INSURANCE", "04", "CardholderId", "C2"},
      {requests, "WORKERS_COMPENSATION", "06", "DateOfInjury", "DY"},
      {requests, "CLAIM", "07", "ProductServiceId", "D7"},
      {requests, "DUR_PPS", "08", "ReasonForServiceCode", "E4"},
      {requests, "COUPON", "09", "CouponNumber", "ME"},
      {requests, "PRICING", "11", "GrossAmountDue", "DU"},
      {requests, "PRIOR_AUTHORIZATION", "12", "RequestType", "PA"},
      {requests, "CLINICAL", "13", "DiagnosisCode", "DO"},
      {requests, "FACILITY", "15", "FacilityId", "8C"},
      {requests, "NARRATIVE", "16", "NarrativeMessage", "BM"},
      {responses, "RESPONSE_MESSAGE", "20", "Message", "F4"},
      {responses, "RESPONSE_STATUS", "21", "TransactionResponseStatus", "AN"},
      {responses, "RESPONSE_CLAIM", "22", "PrescriptionServiceReferenceNumber", "D2"},
      {responses, "RESPONSE_PRICING", "23", "TotalAmountPaid", "F9"},
      {responses, "RESPONSE_DUR_PPS", "24", "ClinicalSignificanceCode", "FS"},
      {responses, "RESPONSE_INSURANCE", "25", "PayerId", "J8"},
      {responses, "RESPONSE_PATIENT", "29", "PatientLastName", "CB"},
  };
  for (const Case& c : cases) {
    const SegmentDefn& defn = segment(c.in(), c.segment);
    EXPECT_EQ(defn.getTag().str(), u"\x1C" u"AM" + std::u16string(c.code, c.code + 2)) << c.segment;
    EXPECT_TRUE(defn.getFlags() & SegmentDefn::kNcpdp) << c.segment;
    EXPECT_EQ(narrow(field(defn, c.field).getTag().view()), c.identifier) << c.segment << "/" << c.field;
  }
}

// Within a segment each field identifier names one field, and each is two characters.
TEST(StandardNcpdpTest, FieldIdentifiersAreUniqueInTheirSegment) {
  for (const MessageSetDefn* in : {&requests(), &responses()})
    for (const auto& defn : in->getSegments()) {
      if (defn->getTag().empty()) continue;
      std::set<std::u16string> seen;
      for (const auto& each : defn->getFields()) {
        const std::u16string tag = each->getTag().str();
        EXPECT_EQ(tag.size(), 2u) << defn->getName().str() << "/" << each->getName().str();
        EXPECT_TRUE(seen.insert(tag).second) << defn->getName().str() << " repeats " << narrow(tag);
      }
    }
}

// The headers stand in fixed places: 56 characters in a request, 31 in a response.
TEST(StandardNcpdpTest, HeadersHaveTheirFixedWidths) {
  struct Case {
    const MessageSetDefn& (*in)();
    const char* header;
    int width;
    int fields;
  };
  for (const Case& c : {Case{requests, "HEADER", 56, 9}, Case{responses, "RESPONSE_HEADER", 31, 7}}) {
    const SegmentDefn& header = segment(c.in(), c.header);
    EXPECT_TRUE(header.isFixedWidth()) << c.header;
    EXPECT_TRUE(header.getTag().empty()) << c.header;
    ASSERT_EQ(header.getFieldCount(), c.fields) << c.header;
    int width = 0;
    for (const auto& each : header.getFields()) {
      EXPECT_EQ(each->getMinLength(), each->getMaxLength()) << c.header << "/" << each->getName().str();
      width += each->getMaxLength();
    }
    EXPECT_EQ(width, c.width) << c.header;
    EXPECT_EQ(field(header, "TransactionCode").getValidationTable()->getEntryCount(), 4) << c.header;
  }
}

// Each set finds its four transactions by the transaction code of its header.
TEST(StandardNcpdpTest, TransactionsAreFoundByTheirCode) {
  for (const MessageSetDefn* in : {&requests(), &responses()}) {
    ASSERT_EQ(in->getMessageTypeFieldCount(), 1);
    const FieldPathDefn& path = in->getMessageTypeFields()[0];
    EXPECT_TRUE(path.isNumeric());
    EXPECT_EQ(path.getIndexes(), (std::vector<int32_t>{in == &requests() ? 3 : 2}));
    EXPECT_TRUE(field(segment(*in, path.getName().str()), "TransactionCode").isRequired());
    for (const char16_t* code : {u"B1", u"B2", u"B3", u"E1"}) {
      const MessageDefn* message = in->findMessageByType(code);
      ASSERT_NE(message, nullptr) << narrow(code);
      EXPECT_EQ(message->getName().str(), narrow(code));
      EXPECT_EQ(message->getItem(0).getSegment()->getTag().str(), u"") << "the header opens every transmission";
    }
  }
  // A billing carries up to four claims, each with its pricing; a reversal's insurance is optional.
  const MessageDefn* billing = requests().findMessageByType(u"B1");
  const MessageItemDefn& transaction = billing->getItem(3);
  ASSERT_NE(transaction.getGroup(), nullptr);
  EXPECT_EQ(transaction.getMaxRepeats(), 4);
  EXPECT_EQ(transaction.getGroup()->getItem(0).getSegment()->getName().str(), "CLAIM");
  EXPECT_TRUE(billing->getItem(2).isRequired());
  EXPECT_FALSE(requests().findMessageByType(u"B2")->getItem(2).isRequired());
  EXPECT_EQ(requests().getSeparator(qxSepGroup).getValue().str(), u"\x1D");
}

// A count field counts a field that repeats, and the header counts the transaction groups.
TEST(StandardNcpdpTest, CountFieldsCountRepeatingFields) {
  int counted = 0;
  for (const MessageSetDefn* in : {&requests(), &responses()})
    for (const auto& defn : in->getSegments())
      for (const auto& each : defn->getFields()) {
        // A count field links "+" and the name of the field it counts.
        const std::string& link = each->getLinkedFieldName();
        if (link.empty()) continue;
        ASSERT_EQ(link.front(), '+') << defn->getName().str() << "/" << each->getName().str();
        const std::string target = link.substr(1);
        EXPECT_NE(field(*defn, target).getMaxRepeats(), 1) << defn->getName().str() << "/" << each->getName().str();
        ++counted;
      }
  EXPECT_EQ(counted, 8);
  EXPECT_NE(field(segment(requests(), "HEADER"), "TransactionCount").getCountKind(), 0);
}

}  // namespace
}  // namespace vantrelia
