// Parse findings kept with a message and replayed by each validation under the severities of then.

#include <gtest/gtest.h>

#include <map>

#include "elements/MessageElement.h"
#include "validation/RecordedErrors.h"
#include "validation/SeverityTable.h"
#include "validation/ValidationErrorList.h"

namespace vantrelia {
namespace {

class RecordedErrorsTest : public ::testing::Test {
 protected:
  // Findings only compare their keys and hand them to the path look-up, so two addresses in one
  // array stand in for elements, in index order.
  alignas(MessageElement*) char storage[2][16] = {};
  MessageElement* elements[2] = {reinterpret_cast<MessageElement*>(storage[0]), reinterpret_cast<MessageElement*>(storage[1])};
  std::map<MessageElement*, std::string> paths{{elements[0], "M/A"}, {elements[1], ""}};
  RecordedErrors recorded;
  SeverityTable severities;

  RecordedErrors::SeverityOf severityOf() const {
    return [this](int32_t number) { return severities.get(number); };
  }

  static ValidationError finding(int32_t number, EVErrType type, std::string path = "") {
    return ValidationError(std::move(path), u"", number, type);
  }

  std::vector<std::pair<int32_t, std::string>> replay(bool includeWarnings) const {
    ValidationErrorList list;
    recorded.replayInto(list, includeWarnings, severityOf(), [this](MessageElement& e) { return paths.at(&e); });
    std::vector<std::pair<int32_t, std::string>> got;
    for (const ValidationError& e : list) got.emplace_back(e.getErrorNumber(), e.getPath());
    return got;
  }
};

using Replayed = std::vector<std::pair<int32_t, std::string>>;

TEST_F(RecordedErrorsTest, ElementPathsGoInFrontAndOrderIsByElement) {
  recorded.record(elements[0], finding(1009, qxVESError));
  recorded.record(elements[1], finding(1022, qxVESError, "own"));
  recorded.record(elements[0], finding(1010, qxVESError, "C/2"));
  recorded.record(nullptr, finding(1003, qxVESError, "kept"));
  recorded.record(nullptr, finding(1004, qxVESIgnore));  // ignored when parsed: never kept
  EXPECT_EQ(recorded.count(), 4);
  EXPECT_EQ(replay(false), (Replayed{{1003, "kept"}, {1009, "M/A"}, {1010, "M/A/C/2"}, {1022, "own"}}));
}

TEST_F(RecordedErrorsTest, CurrentSeveritiesDecideAndRecordedTypeStays) {
  recorded.record(nullptr, finding(1003, qxVESError));
  recorded.record(nullptr, finding(1004, qxVESWarning));
  recorded.record(nullptr, finding(1005, qxVESError));
  severities.set(1003, qxVESWarning);
  severities.set(1004, qxVESError);
  severities.set(1005, qxVESIgnore);

  EXPECT_EQ(replay(false), (Replayed{{1004, ""}}));
  ValidationErrorList all;
  recorded.replayInto(all, true, severityOf(), [](MessageElement&) { return std::string(); });
  ASSERT_EQ(all.count(), 2);
  EXPECT_EQ(all.get(0).getErrorNumber(), 1003);
  EXPECT_EQ(all.get(0).getErrorType(), qxVESError) << "the severity it was parsed with";
  EXPECT_EQ(all.get(1).getErrorType(), qxVESWarning);
}

TEST_F(RecordedErrorsTest, ForgettingAndMoving) {
  RecordedErrors context;
  context.record(nullptr, finding(1003, qxVESError));
  context.record(elements[0], finding(1009, qxVESError));
  context.record(elements[1], finding(1022, qxVESError));
  recorded.record(elements[0], finding(1010, qxVESError));
  recorded.takeAll(context);
  EXPECT_TRUE(context.empty());
  EXPECT_EQ(replay(true), (Replayed{{1003, ""}, {1010, "M/A"}, {1009, "M/A"}, {1022, ""}}));

  recorded.forget(elements[0]);
  EXPECT_EQ(replay(true), (Replayed{{1003, ""}, {1022, ""}}));
  recorded.forgetElementFindings();
  EXPECT_EQ(replay(true), (Replayed{{1003, ""}}));
  recorded.clear();
  EXPECT_TRUE(recorded.empty());
}

}  // namespace
}  // namespace vantrelia
