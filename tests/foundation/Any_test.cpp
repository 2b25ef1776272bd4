#include "foundation/Any.h"

#include <gtest/gtest.h>

#include <string>

namespace {

constexpr const char* kBadCastText = "boost::bad_any_cast: failed conversion using boost::any_cast";

// Runs any_cast<T> expecting it to fail, and returns the type it reports as wanted.
template <class T>
const std::type_info* wantedTypeOfFailedCast(const Any::any& value) {
  try {
    (void)Any::any_cast<T>(value);
  } catch (const Any::bad_any_cast& e) {
    EXPECT_STREQ(e.what(), kBadCastText);
    return &e.wantedType();
  }
  ADD_FAILURE() << "any_cast<" << Any::printableTypeName(typeid(T)) << "> did not throw";
  return nullptr;
}

TEST(Any, EmptyValueReadsAsVoidAndRefusesEveryCast) {
  const Any::any empty;
  EXPECT_TRUE(empty.empty());
  EXPECT_EQ(empty.type(), typeid(void));
  EXPECT_EQ(wantedTypeOfFailedCast<int>(empty), &typeid(int));
  EXPECT_EQ(wantedTypeOfFailedCast<std::u16string>(empty), &typeid(std::u16string));
  EXPECT_EQ(Any::any_cast<int>(&empty), nullptr);
  EXPECT_EQ(Any::any_cast<int>(static_cast<const Any::any*>(nullptr)), nullptr);
  // Handlers that only know the standard library must still catch it.
  EXPECT_THROW((void)Any::any_cast<bool>(empty), std::bad_cast);
}

// The four types that carry option values: each is held exactly and refuses the others.
TEST(Any, HoldsOptionTypesExactly) {
  const Any::any flag(true);
  const Any::any number(42);
  const Any::any real(2.5);
  const Any::any text(std::u16string(u"\u0141ódź"));

  EXPECT_EQ(flag.type(), typeid(bool));
  EXPECT_EQ(number.type(), typeid(int));
  EXPECT_EQ(real.type(), typeid(double));
  EXPECT_EQ(text.type(), typeid(std::u16string));
  EXPECT_TRUE(Any::any_cast<bool>(flag));
  EXPECT_EQ(Any::any_cast<int>(number), 42);
  EXPECT_EQ(Any::any_cast<double>(real), 2.5);
  EXPECT_EQ(Any::any_cast<std::u16string>(text), u"\u0141ódź");
  // A const-qualified request finds the same value.
  EXPECT_EQ(Any::any_cast<const int>(number), 42);
  EXPECT_EQ(Any::any_cast<const std::u16string>(text), u"\u0141ódź");

  // No conversion between them, not even between the numeric ones.
  EXPECT_EQ(wantedTypeOfFailedCast<int>(flag), &typeid(int));
  EXPECT_EQ(wantedTypeOfFailedCast<double>(number), &typeid(double));
  EXPECT_EQ(wantedTypeOfFailedCast<int>(real), &typeid(int));
  EXPECT_EQ(wantedTypeOfFailedCast<bool>(text), &typeid(bool));
}

TEST(Any, CopiesAreIndependent) {
  Any::any original(std::u16string(u"first"));
  const Any::any copy(original);
  Any::any assigned;
  assigned = original;
  original = 7;
  EXPECT_EQ(Any::any_cast<int>(original), 7);
  EXPECT_EQ(Any::any_cast<std::u16string>(copy), u"first");
  EXPECT_EQ(Any::any_cast<std::u16string>(assigned), u"first");
  assigned = Any::any();
  EXPECT_TRUE(assigned.empty());
  EXPECT_EQ(Any::any_cast<std::u16string>(copy), u"first");
}

}  // namespace
