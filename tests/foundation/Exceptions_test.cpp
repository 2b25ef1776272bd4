#include <gtest/gtest.h>

#include <climits>
#include <string>

#include "foundation/BadParameter.h"
#include "foundation/CheckIndex.h"
#include "foundation/FoundationMessages.h"
#include "foundation/IllegalOperation.h"
#include "foundation/InvalidFile.h"

namespace {

using vantrelia::BadParameter;
using vantrelia::IllegalOperation;
using vantrelia::InvalidFile;
using vantrelia::VantreliaException;

// The automation layer catches by class; a host sees `message`, so it must survive the catch.
template <class E>
std::string messageCaughtAsEngineException(const std::string& text) {
  try {
    throw E(text);
  } catch (const VantreliaException& e) {
    EXPECT_STREQ(e.what(), e.message.c_str());
    return e.message;
  }
}

TEST(Exceptions, InterfaceErrorsAreEngineExceptions) {
  EXPECT_EQ(messageCaughtAsEngineException<BadParameter>("Internal error"), "Internal error");
  EXPECT_EQ(messageCaughtAsEngineException<IllegalOperation>("not here"), "not here");
}

// A definition file failure must not be mistaken for wrong use of the interface.
TEST(Exceptions, InvalidFileIsNotAnEngineException) {
  bool caughtAsFileError = false;
  try {
    throw InvalidFile("bad file");
  } catch (const VantreliaException&) {
    ADD_FAILURE() << "InvalidFile caught as VantreliaException";
  } catch (const std::exception& e) {
    const auto* file = dynamic_cast<const InvalidFile*>(&e);
    ASSERT_NE(file, nullptr);
    EXPECT_EQ(file->message, "bad file");
    caughtAsFileError = true;
  }
  EXPECT_TRUE(caughtAsFileError);
}

TEST(CheckIndex, RefusesIndexesOutsideTheCount) {
  struct Case {
    int index;
    int count;
    const char* expected;  // null when the index is accepted
  };
  const Case cases[] = {
      {0, 1, nullptr},
      {2, 3, nullptr},
      {-1, 3, "Specified index -1 is less than zero"},
      {INT_MIN, 0, "Specified index -2147483648 is less than zero"},
      {3, 3, "Specified index 3 is too high"},
      {0, 0, "Specified index 0 is too high"},
      {7, -5, "Specified index 7 is too high"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(::testing::Message() << "checkIndex(" << c.index << ", " << c.count << ")");
    if (!c.expected) {
      EXPECT_NO_THROW(vantrelia::checkIndex(c.index, c.count));
      continue;
    }
    try {
      vantrelia::checkIndex(c.index, c.count);
      ADD_FAILURE() << "no exception";
    } catch (const BadParameter& e) {
      EXPECT_EQ(e.message, c.expected);
    }
  }
}

}  // namespace
