// One segment's text cut into its fields and written back: every field kind, the trailing parts
// that vanish, fixed widths, null values, and the findings of what doesn't fit.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "elements/SegmentImplBase.h"
#include "support/ElementTesting.h"
#include "validation/RecordedErrors.h"
#include "validation/ValidationErrorList.h"

namespace vantrelia::testing {
namespace {

class SegmentText : public ElementTreeTest {
 protected:
  // The findings that reading `text` into the segment at `path` records.
  std::vector<std::pair<int, std::u16string>> findings(MessageElement& message, const std::string& path,
                                                       const std::u16string& text) {
    auto* segment = static_cast<SegmentImplBase*>(at(message, path));
    RecordedErrors errors;
    segment->parseEncodedValue(text, errors);
    ValidationErrorList list;
    errors.replayInto(
        list, true, [](int32_t) { return qxVESError; }, [](MessageElement& e) { return e.getPath(); });
    std::vector<std::pair<int, std::u16string>> result;
    for (const ValidationError& error : list) result.emplace_back(error.getErrorNumber(), error.getError());
    return result;
  }
};

TEST_F(SegmentText, TextsReadIntoFieldsAndWriteBackAsTheEngineWritesThem) {
  struct Case {
    const char* segment;
    const char* text;
    const char* written;  // null: the same text
  };
  const Case cases[] = {
      {"PID", "PID|1\r", "PID|1||||U\r"},  // a required field's default goes out
      {"PID", "PID|1|A^B^C&D~E||19700101|M|solo|x~y~z|0042\r", nullptr},
      {"PID", "PID||~~X\r", "PID||~~X|||U\r"},  // empty repeats before a value stay
      {"PID", "PID|||^^&u\r", "PID|||^^&u||U\r"},
      {"PID", "PID|1||||M\r", nullptr},
      {"PID", "PID|1|||||\r", "PID|1||||U\r"},  // trailing empties go, a required default comes
      {"NTE[0]", "NTE|a|b\r", nullptr},
      {"NTE[0]", "NTE||b\r", nullptr},
      {"NTE[0]", "NTE|a|\r", "NTE|a\r"},
      {"NTE[0]", "NTE|\"\"\r", nullptr},  // the null value
      {"ZFX", "ZFXAB     7ok  \r", "ZFXAB     7ok\r"},  // the optional last field isn't padded
      {"ZFX", "ZFX   12345    \r", "ZFX   12345\r"},  // fill for the empty code
  };
  auto message = create("ADT");
  at(*message, "NTE")->appendElement(nullptr);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    InternalElement* segment = at(*message, c.segment);
    const std::u16string text = wide(c.text);
    EXPECT_EQ(segment->setEncodedValue(text), u"");
    EXPECT_EQ(segment->getEncodedValue(), wide(c.written ? c.written : c.text));
  }
}

TEST_F(SegmentText, FieldsHoldTheirValuesWithoutWireForm) {
  auto message = create("ADT");
  at(*message, "PID")->setEncodedValue(u"PID|1|A^B^C&D~E||1970|M|solo|x~y~z|0042\r");
  struct Case {
    const char* path;
    const char* value;
  };
  const Case cases[] = {
      {"PID/SetId", "1"},
      {"PID/Ids[0]/Id", "A"},
      {"PID/Ids[0]/Authority/Namespace", "C"},
      {"PID/Ids[0]/Authority/Universal", "D"},
      {"PID/Ids[1]/Id", "E"},
      {"PID/Ids[0]/Authority", "C&D"},
      {"PID/Single", "solo"},  // a composite of one field gives that field's value
      {"PID/Codes[2]", "z"},
      {"PID/Amount", "42"},  // zeros of the alignment are taken off
      {"PID/Name/Id", ""},
  };
  // Absent fields stay absent: only what the text held was made.
  EXPECT_FALSE(static_cast<InternalElement*>(at(*message, "PID"))->isChildPresent(2));
  EXPECT_TRUE(static_cast<InternalElement*>(at(*message, "PID"))->isChildPresent(3));
  for (const Case& c : cases) EXPECT_EQ(at(*message, c.path)->getValue(), wide(c.value)) << c.path;
  EXPECT_EQ(at(*message, "PID/Ids")->getElementCount(), 2);
  EXPECT_EQ(at(*message, "PID/Codes")->getElementCount(), 3);
  EXPECT_EQ(at(*message, "PID/Ids[0]")->getEncodedValue(), u"A^B^C&D");
  EXPECT_EQ(at(*message, "PID/Ids")->getEncodedValue(), u"A^B^C&D~E");
  EXPECT_EQ(at(*message, "PID/Amount")->getEncodedValue(), u"0042");
}

TEST_F(SegmentText, RepeatsEndAtAnOuterSeparatorOrMakeAnEmptyLastItemAtTheEnd) {
  auto message = create("ADT");
  at(*message, "PID")->setEncodedValue(u"PID|||||||A~B~|next\r");
  EXPECT_EQ(at(*message, "PID/Codes")->getElementCount(), 2);
  at(*message, "PID/Codes")->setEncodedValue(u"A~B~");
  EXPECT_EQ(at(*message, "PID/Codes")->getElementCount(), 3);
  EXPECT_TRUE(at(*message, "PID/Codes[2]")->isEmpty());
  at(*message, "PID/Codes")->setEncodedValue(u"A");
  EXPECT_EQ(at(*message, "PID/Codes")->getElementCount(), 1);
}

TEST_F(SegmentText, NullValuesAreValuesAndWriteTheirMarker) {
  auto message = create("ADT");
  at(*message, "PID")->setEncodedValue(u"PID||\"\"|\"\"|\"\"\r");
  InternalElement* birth = at(*message, "PID/Birth");
  EXPECT_TRUE(birth->isNull());
  EXPECT_FALSE(birth->isEmpty());
  EXPECT_EQ(birth->getValue(), u"\"\"");
  // A composite whose first child read the marker, with nothing beside it, is null.
  EXPECT_TRUE(at(*message, "PID/Name")->isNull());
  EXPECT_FALSE(at(*message, "PID/Name")->isEmpty());
  // A repeat with one null item is null; a second item ends that.
  InternalElement* ids = at(*message, "PID/Ids");
  EXPECT_TRUE(ids->isNull());
  ids->appendElement(nullptr);
  EXPECT_FALSE(ids->isNull());
  ids->setNull();
  EXPECT_EQ(ids->getElementCount(), 1);
  EXPECT_TRUE(ids->isNull());
  EXPECT_EQ(at(*message, "PID")->getEncodedValue(), u"PID||\"\"|\"\"|\"\"|U\r");
}

TEST_F(SegmentText, WhatDoesNotFitIsFoundAndTheRestIsKept) {
  auto message = create("ADT");
  message->setValidationErrorSettingType(1046, qxVESError);
  message->setValidationErrorSettingType(1047, qxVESError);
  at(*message, "NTE")->appendElement(nullptr);
  using Findings = std::vector<std::pair<int, std::u16string>>;
  EXPECT_EQ(findings(*message, "NTE[0]", u"NTE|a|b\r"), Findings{});
  EXPECT_EQ(findings(*message, "NTE[0]", u"NTE|a|\r"),
            (Findings{{1046, u"Unnecessary field separator found at end of segment"}}));
  // The field separator introduces fields and doesn't end the last one: what stands behind the
  // last field, separator and all, is extra.
  EXPECT_EQ(findings(*message, "NTE[0]", u"NTE|a|b|c\r"), (Findings{{1022, u"Extra data found at end of segment: |c"}}));
  EXPECT_EQ(at(*message, "NTE[0]/Comment")->getValue(), u"b");
  EXPECT_EQ(findings(*message, "PID", u"PID||A^B^C&D^\r"),
            (Findings{{1047, u"Unnecessary field separator found at end of composite"}}));
  // The separator after the last child promises one more, and what follows doesn't fit.
  EXPECT_EQ(findings(*message, "PID", u"PID|||A^B^C^D\r"),
            (Findings{{1047, u"Unnecessary field separator found at end of composite"},
                      {1010, u"Extra data found at end of composite: D"}}));
  // Ignored by default: the same texts find nothing.
  message->setValidationErrorSettingType(1046, qxVESIgnore);
  EXPECT_EQ(findings(*message, "NTE[0]", u"NTE|a|\r"), Findings{});
}

TEST_F(SegmentText, AWrongTagIsNotThisSegmentAndTheRestOfTheTextIsReturned) {
  auto message = create("ADT");
  auto* segment = static_cast<SegmentImplBase*>(at(*message, "PID"));
  RecordedErrors errors;
  EXPECT_EQ(segment->parseEncodedValue(u"NTE|a\r", errors), u"NTE|a\r");
  EXPECT_TRUE(segment->isEmpty());
  EXPECT_EQ(segment->setEncodedValue(u"PID|1\rNTE|a\r"), u"NTE|a\r");
  EXPECT_EQ(at(*message, "PID/SetId")->getValue(), u"1");
}

}  // namespace
}  // namespace vantrelia::testing
