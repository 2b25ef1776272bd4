// Array type records and the warehouse's two type tables, read from bytes laid out by hand.

#include <gtest/gtest.h>

#include "compiler/PcfWriter.h"
#include "definitions/ArrayTypeDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PcfMessages.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "foundation/MessageFactory.h"
#include "support/PcfLoad.h"

namespace vantrelia {
namespace {

using compiler::PcfWriter;
using testing::loadBytes;
using testing::loadFailure;

// A version 883 file around the given type tables, with no user data and no message sets.
std::vector<uint8_t> fileWithTypes(int32_t customCount, const PcfWriter& customTypes, int32_t arrayCount,
                                   const PcfWriter& arrayTypes) {
  PcfWriter w;
  w.i32(883).text8("PCFFILE").i32(customCount).raw(customTypes.bytes()).i32(arrayCount).raw(arrayTypes.bytes());
  return w.boolean(false).count(0).count(0).i32(0).i32(0).take();
}

// A complete custom type record of version 883 with only a name, an id and an expression.
PcfWriter& customType(PcfWriter& w, const char* name, int32_t id, std::u16string_view expression = u"") {
  return w.text8(name).i32(id).i32(4).boolean(false).i32(0).i32(0).text16(expression).boolean(false).i32(0);
}

TEST(ArrayTypeDefnTest, RecordLengthDependsOnDataTypeAndSeparator) {
  PcfWriter customs;
  customType(customs, "Code", 7);
  PcfWriter arrays;
  arrays.text8("Plain").i32(1).i32(0).i32(qxSepRepeat);                 // short items, no extra field
  arrays.text8("OfCode").i32(2).i32(9).i32(7).i32(qxSepField2);         // custom items: one i32 more
  arrays.text8("OfNothing").i32(3).i32(9).i32(99).i32(qxSepField3);     // an id no custom type has
  arrays.text8("Own").i32(4).i32(4).i32(-1).text8w(u"\uFFE9~");           // own separator: a text more
  arrays.text8("NotCustom").i32(5).i32(10).i32(-2);                     // code 10 has no type id
  MessageFactory factory;
  loadBytes(factory, fileWithTypes(1, customs, 5, arrays));
  const auto& warehouse = factory.getWarehouse();

  // customName: nullptr when the array has no custom type
  struct Expected {
    int32_t id; const char* name; int32_t dataType; const char* customName; int32_t separator; std::u16string ownSeparator;
  } expected[] = {
      {1, "Plain", 0, nullptr, qxSepRepeat, u""},
      {2, "OfCode", 9, "Code", qxSepField2, u""},
      {3, "OfNothing", 9, nullptr, qxSepField3, u""},
      {4, "Own", 4, nullptr, -1, u"\uFFE9~"},
      {5, "NotCustom", 10, nullptr, -2, u""},
  };
  ASSERT_EQ(warehouse.getArrayTypeCount(), 5);
  for (const Expected& e : expected) {
    SCOPED_TRACE(e.name);
    const ArrayTypeDefn* array = warehouse.findArrayType(e.id);
    ASSERT_NE(array, nullptr);
    EXPECT_EQ(array->getName().str(), e.name);
    EXPECT_EQ(array->getDataType(), e.dataType);
    EXPECT_EQ(array->getCustomType(), e.customName ? warehouse.findPrimitiveType(7) : nullptr);
    EXPECT_EQ(array->getArraySeparator(), e.separator);
    EXPECT_EQ(array->hasOwnSeparator(), e.separator == -1);
    EXPECT_EQ(array->getOwnSeparator().str(), e.ownSeparator);
  }
}

TEST(ArrayTypeDefnTest, ARepeatedIdKeepsTheFirstRecordAndTheReadGoesOn) {
  PcfWriter customs;
  customType(customs, "First", 1, u"a");
  customType(customs, "Second", 1, u"bb");
  customType(customs, "Third", 2);
  PcfWriter arrays;
  arrays.text8("A1").i32(1).i32(9).i32(1).i32(qxSepRepeat);
  arrays.text8("A1again").i32(1).i32(4).i32(-1).text8w(u"|");
  MessageFactory factory;
  loadBytes(factory, fileWithTypes(3, customs, 2, arrays));
  const auto& warehouse = factory.getWarehouse();

  EXPECT_EQ(warehouse.getPrimitiveTypeCount(), 3) << "the count is the file's";
  EXPECT_EQ(warehouse.getPrimitiveTypes().size(), 2u);
  EXPECT_EQ(warehouse.findPrimitiveType(1)->getName().str(), "First");
  EXPECT_EQ(warehouse.findPrimitiveType(2)->getName().str(), "Third");
  EXPECT_EQ(warehouse.getArrayTypes().size(), 1u);
  EXPECT_EQ(warehouse.findArrayType(1)->getName().str(), "A1");
  EXPECT_EQ(warehouse.findArrayType(1)->getCustomType()->getName().str(), "First");
  for (int32_t unknown : {0, 3, -1}) {
    EXPECT_EQ(warehouse.findPrimitiveType(unknown), nullptr) << unknown;
    EXPECT_EQ(warehouse.findArrayType(unknown), nullptr) << unknown;
  }
  EXPECT_EQ(warehouse.findArrayType(2), nullptr) << "custom and array ids are separate tables";

  // A reload clears both tables before it reads.
  loadBytes(factory, fileWithTypes(0, PcfWriter(), 0, PcfWriter()));
  EXPECT_TRUE(factory.getWarehouse().getPrimitiveTypes().empty());
  EXPECT_TRUE(factory.getWarehouse().getArrayTypes().empty());
  EXPECT_EQ(factory.getWarehouse().findPrimitiveType(1), nullptr);
}

TEST(ArrayTypeDefnTest, BrokenTypeTablesFailTheLoad) {
  PcfWriter oneCustom;
  customType(oneCustom, "C", 1);
  PcfWriter tooManySeparators;
  tooManySeparators.text8("C").i32(1).i32(4).boolean(false).i32(23);
  struct Case { const char* what; std::vector<uint8_t> bytes; const char* failure; } cases[] = {
      {"negative custom count", PcfWriter().i32(883).text8("PCFFILE").i32(-1).bytes(), messages::kInvalidPrimitiveTypeCount},
      {"negative array count", fileWithTypes(1, oneCustom, -1, PcfWriter()), messages::kInvalidArrayTypeCount},
      {"23 separator entries", fileWithTypes(1, tooManySeparators, 0, PcfWriter()), messages::kInvalidSeparatorEntryCount},
      {"more custom types than records", fileWithTypes(2, oneCustom, 0, PcfWriter()), messages::kUnexpectedEndOfInput},
      {"an array without its custom id", PcfWriter().i32(883).text8("PCFFILE").i32(0).i32(1).text8("A").i32(1).i32(9).bytes(),
       messages::kUnexpectedEndOfInput},
  };
  for (const Case& c : cases) EXPECT_EQ(loadFailure(c.bytes), c.failure) << c.what;
}

}  // namespace
}  // namespace vantrelia
