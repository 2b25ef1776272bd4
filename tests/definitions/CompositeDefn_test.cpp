// Composite records read from bytes laid out by hand, the set's fix-up of composite fields, and
// the walks over composites: required marks and the quoted-text flag.

#include <gtest/gtest.h>

#include <sstream>

#include "compiler/PcfWriter.h"
#include "definitions/CompositeDefn.h"
#include "definitions/CompositeFieldInstancesControl.h"
#include "definitions/DefinitionFile.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/PcfMessages.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {
namespace {

using compiler::PcfWriter;

constexpr int32_t kSentinel = 0x5E5E5E5E;

// A field record of the version: primitive of a data type (variable with a key at 0), or a
// composite field with an empty override block.
PcfWriter fieldRecord(const std::string& name, int32_t dataType, int version, int32_t compositeId = -1) {
  PcfWriter w;
  w.text8(name).boolean(false).i32(0).i32(0).i32(0).i32(1).textv(u"", version);
  if (version >= 516) w.boolean(false);
  if (version >= 802) w.boolean(true);
  if (compositeId >= 0) {
    w.i32(1).i32(compositeId);
    if (version >= 871) w.u16(0);
    else if (version >= 801) w.byte(0);
    if (version >= 800) w.i32(-1);
  } else {
    w.i32(0).i32(dataType);
    if (version >= 853 && dataType == 11) w.i32(0).i32(0).i32(0);
    w.i32(0).textv(u"", version);
    if (version >= 515) w.text8("");
  }
  if (version >= 855) w.count(0);
  if (version >= 865) w.boolean(false);
  return w;
}

struct CompositeBytes {
  explicit CompositeBytes(std::string compositeName = "C", int32_t compositeId = 1)
      : name(std::move(compositeName)), id(compositeId) {}

  std::string name;
  int32_t id;
  std::vector<PcfWriter> fields;
  bool syntaxRules = false;
  int32_t equations = 0;
  uint32_t flags = 0;
  bool indicator = false;

  PcfWriter write(int version) const {
    PcfWriter w;
    w.text8(name).text8w(u"&").i32(17).boolean(true).i32(id).i32(static_cast<int32_t>(fields.size()));
    for (const auto& field : fields) w.raw(field.bytes());
    if (version >= 848) w.boolean(syntaxRules);
    if (version >= 852) w.count(equations);
    if (version >= 855) w.count(1).count(0).text16(u"note");
    if (version >= 857) w.i32(static_cast<int32_t>(flags));
    if (version >= 865) {
      w.boolean(indicator);
      if (indicator) w.i32(qxSepUser1).text16(u"\u00A7");
    }
    return w;
  }
};

// Reads the records in order, then lets the set fix up the composite fields.
void loadInto(MessageSetDefn& set, const std::vector<CompositeBytes>& records, int version) {
  PcfWriter all;
  for (const auto& record : records) all.raw(record.write(version).bytes());
  const auto bytes = all.i32(kSentinel).take();
  std::istringstream source(std::string(bytes.begin(), bytes.end()));
  DefinitionFile file(source);
  FieldUpdates updates;
  std::vector<std::unique_ptr<CompositeDefn>> loaded;
  for (size_t i = 0; i < records.size(); ++i) {
    loaded.push_back(std::make_unique<CompositeDefn>());
    loaded.back()->load(set, file, version, updates);
  }
  EXPECT_EQ(file.readInt(), kSentinel) << "the records were not read to their end";
  set.addComposites(std::move(loaded), updates);
  EXPECT_TRUE(updates.empty());
}

std::string loadFailure(const std::vector<CompositeBytes>& records, int version) {
  MessageSetDefn set("SET");
  try {
    loadInto(set, records, version);
  } catch (const InvalidFile& e) {
    return e.message;
  }
  return "";
}

TEST(CompositeDefnTest, RecordByVersion) {
  struct Case {
    int version;
    uint32_t flags;
    bool userData;
    ECompositeType type;
  } cases[] = {
      // Between the syntax rules and the flag word the variable field sets 0x01 by itself; the
      // flag word replaces it, whatever the fields are.
      {847, 0x00, false, qxCompTypeNormal}, {848, 0x01, false, qxCompTypeNormal}, {850, 0x01, false, qxCompTypeNormal},
      {856, 0x01, true, qxCompTypeNormal},  {857, 0x20, true, qxCompTypeNormal},  {864, 0x20, true, qxCompTypeNormal},
      {865, 0x20, true, qxCompTypeFieldPresenceIndicator}, {883, 0x20, true, qxCompTypeFieldPresenceIndicator},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.version);
    CompositeBytes record;
    record.fields = {fieldRecord("A", 4, c.version), fieldRecord("V", 11, c.version)};
    record.flags = 0x20;
    record.indicator = true;
    MessageSetDefn set("SET");
    loadInto(set, {record}, c.version);
    const CompositeDefn& composite = *set.getComposites().at(0);
    EXPECT_EQ(composite.getName().str(), "C");
    EXPECT_EQ(composite.getSpecialSeparatorString().str(), u"&");
    EXPECT_EQ(composite.getSeparatorType(), qxSepString);
    EXPECT_TRUE(composite.isFixedWidth());
    ASSERT_EQ(composite.getFieldCount(), 2);
    EXPECT_EQ(composite.getField(1).getName().str(), "V");
    EXPECT_EQ(composite.getFlags(), c.flags);
    EXPECT_EQ(composite.getUserData().size(), c.userData ? 1u : 0u);
    EXPECT_EQ(composite.getCompositeType(), c.type);
    EXPECT_EQ(composite.getSpecialSeparatorType(), c.type ? qxSepUser1 : qxSepString);
    EXPECT_EQ(composite.getIndicatorSeparatorString().str(), c.type ? u"\u00A7" : u"");
    EXPECT_FALSE(composite.hasEquations());
    EXPECT_EQ(composite.getEquation(0), nullptr);
    EXPECT_EQ(composite.getSyntaxRules(), nullptr);
  }
  // A normal composite reads neither the indicator's separator nor its text.
  CompositeBytes normal;
  MessageSetDefn set("SET");
  loadInto(set, {normal}, 883);
  EXPECT_EQ(set.getComposites().at(0)->getCompositeType(), qxCompTypeNormal);
}

TEST(CompositeDefnTest, RefusedRecords) {
  CompositeBytes twoFields;
  twoFields.fields = {fieldRecord("A", 4, 883), fieldRecord("B", 4, 883)};
  struct Case {
    const char* what;
    CompositeBytes record;
    int version;
    std::string failure;
  } cases[] = {
      {"syntax rules", twoFields, 848, "Syntax rules are not supported yet"},
      {"more equations than fields", twoFields, 852, "Too many validation equations"},
      {"equations", twoFields, 883, "Validation equations are not supported yet"},
      {"equations before they exist are not read", twoFields, 851, ""},
  };
  cases[0].record.syntaxRules = true;
  cases[1].record.equations = 3;
  cases[2].record.equations = 2;
  cases[3].record.equations = 3;
  for (const auto& c : cases) {
    SCOPED_TRACE(c.what);
    auto record = c.record;
    for (auto& field : record.fields) field = fieldRecord("A", 4, c.version);
    EXPECT_EQ(loadFailure({record}, c.version), c.failure);
  }

  const auto negative = PcfWriter().text8("C").text8w(u"").i32(16).boolean(false).i32(1).i32(-1).take();
  std::istringstream source(std::string(negative.begin(), negative.end()));
  DefinitionFile file(source);
  MessageSetDefn set("SET");
  FieldUpdates updates;
  CompositeDefn composite;
  try {
    composite.load(set, file, 883, updates);
    ADD_FAILURE() << "a negative field count loaded";
  } catch (const InvalidFile& e) {
    EXPECT_EQ(e.message, messages::kInvalidFieldCount);
  }
}

TEST(CompositeDefnTest, SetPointsCompositeFieldsAtLaterComposites) {
  CompositeBytes outer("OUTER", 7);
  outer.fields = {fieldRecord("A", 4, 883), fieldRecord("IN", 0, 883, 9)};
  CompositeBytes inner("INNER", 9);
  inner.fields = {fieldRecord("X", 4, 883)};
  CompositeBytes shadow("SHADOW", 9);  // a second composite with the id: the first is found
  MessageSetDefn set("SET");
  loadInto(set, {outer, inner, shadow}, 883);
  const FieldDefn& field = set.getComposites()[0]->getField(1);
  EXPECT_EQ(field.getComposite(), set.getComposites()[1].get());
  EXPECT_EQ(set.findCompositeById(9), set.getComposites()[1].get());
  EXPECT_EQ(set.findCompositeByName("SHADOW"), set.getComposites()[2].get());
  EXPECT_EQ(set.findCompositeByName("shadow"), nullptr);
  EXPECT_EQ(set.findCompositeById(8), nullptr);
  // Every composite field gets a control, without entries when the block is empty.
  ASSERT_NE(field.getInstancesControl(), nullptr);
  EXPECT_EQ(field.getInstancesControl()->getEntry(0), nullptr);

  outer.fields[1] = fieldRecord("IN", 0, 883, 8);
  EXPECT_EQ(loadFailure({outer, inner}, 883), messages::kUnknownComposite);
}

// OUTER: A, MID (composite), B; MID: X, DEEP (composite), Y; DEEP: Z.
std::unique_ptr<MessageSetDefn> nestedSet(int32_t zType = 4) {
  CompositeBytes outer("OUTER", 1);
  outer.fields = {fieldRecord("A", 4, 883), fieldRecord("MID", 0, 883, 2), fieldRecord("B", 4, 883)};
  CompositeBytes mid("MID", 2);
  mid.fields = {fieldRecord("X", 4, 883), fieldRecord("DEEP", 0, 883, 3), fieldRecord("Y", 4, 883)};
  CompositeBytes deep("DEEP", 3);
  deep.fields = {fieldRecord("Z", zType, 883)};
  auto set = std::make_unique<MessageSetDefn>("SET");
  loadInto(*set, {outer, mid, deep}, 883);
  return set;
}

CompositeDefn& named(const MessageSetDefn& set, const std::string& name) {
  for (const auto& composite : set.getComposites())
    if (composite->getName().str() == name) return *composite;
  throw std::runtime_error("no composite " + name);
}

TEST(CompositeDefnTest, MarkRequiredPathWalksOneBasedIndexes) {
  struct Case {
    std::vector<int32_t> path;
    std::string composite, field, failure;
  } cases[] = {
      {{1}, "OUTER", "A", ""},
      {{2}, "OUTER", "MID", ""},
      {{2, 3}, "MID", "Y", ""},
      {{2, 2, 1}, "DEEP", "Z", ""},
      {{0}, "", "", "Invalid composite index in indexed message type field"},
      {{4}, "", "", "Invalid composite index in indexed message type field"},
      {{2, 4}, "", "", "Invalid composite index in indexed message type field"},
      {{1, 1}, "", "", "Expected a nested composite in indexed message type field"},
      {{2, 3, 1}, "", "", "Expected a nested composite in indexed message type field"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path.size());
    auto set = nestedSet();
    CompositeDefn& outer = named(*set, "OUTER");
    try {
      outer.markRequiredPath(c.path);
      EXPECT_EQ(c.failure, "");
    } catch (const InvalidFile& e) {
      EXPECT_EQ(e.message, c.failure);
      continue;
    }
    int marked = 0;
    for (const auto& composite : set->getComposites())
      for (const auto& field : composite->getFields())
        if (field->isRequired()) {
          ++marked;
          EXPECT_EQ(composite->getName().str(), c.composite);
          EXPECT_EQ(field->getName().str(), c.field);
        }
    EXPECT_EQ(marked, 1);
  }
}

TEST(CompositeDefnTest, MarkRequiredByNameIgnoresCaseAndStopsAtUnknownNames) {
  auto set = nestedSet();
  CompositeDefn& outer = named(*set, "OUTER");
  outer.markRequiredByName("mid/Deep/z");
  outer.markRequiredByName("B/");
  outer.markRequiredByName("NONE/X");
  std::vector<std::string> required;
  for (const auto& composite : set->getComposites())
    for (const auto& field : composite->getFields())
      if (field->isRequired()) required.push_back(field->getName().str());
  EXPECT_EQ(required, (std::vector<std::string>{"MID", "B", "DEEP", "Z"}));
}

TEST(CompositeDefnTest, QuotedTextFlagPassesUpThroughNestedComposites) {
  auto set = nestedSet(14);
  for (const auto& composite : set->getComposites()) composite->workOutQuotedText();
  for (const auto& composite : set->getComposites())
    EXPECT_EQ(composite->getFlags() & CompositeDefn::kHoldsQuotedText, CompositeDefn::kHoldsQuotedText)
        << composite->getName().str();
  auto plain = nestedSet(4);
  named(*plain, "OUTER").workOutQuotedText();
  EXPECT_EQ(plain->findCompositeByName("MID")->getFlags(), 0u);

  // A composite that holds itself doesn't send the walk round in circles.
  CompositeBytes self("SELF", 5);
  self.fields = {fieldRecord("ME", 0, 883, 5), fieldRecord("Q", 14, 883)};
  MessageSetDefn selfSet("SET");
  loadInto(selfSet, {self}, 883);
  selfSet.getComposites()[0]->workOutQuotedText();
  EXPECT_EQ(selfSet.getComposites()[0]->getFlags(), CompositeDefn::kHoldsQuotedText);
}

}  // namespace
}  // namespace vantrelia
