// The structural nodes of a tree and the path grammar: creation, lazy children, paths and their
// refusals, hidden and unordered groups, collections, clones and change marks.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "definitions/MessageDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "elements/ElementMessages.h"
#include "foundation/FoundationMessages.h"
#include "elements/MessageImpl.h"
#include "elements/SegmentGroupImpl.h"
#include "foundation/BadParameter.h"
#include "foundation/Format.h"
#include "foundation/IllegalOperation.h"
#include "support/CompilerTesting.h"
#include "support/ElementTesting.h"

namespace vantrelia::testing {
namespace {

// The text of what `call` throws as the named exception class, or a note of what happened instead.
template <typename Exception>
std::string thrown(const std::function<void()>& call) {
  try {
    call();
  } catch (const Exception& e) {
    return e.what();
  } catch (const std::exception& e) {
    return std::string("other exception: ") + e.what();
  }
  return "nothing thrown";
}

class ElementTree : public ElementTreeTest {};

TEST_F(ElementTree, CreateMessageFindsByBareOrSetQualifiedNameIgnoringCase) {
  struct Case {
    const char* name;
    const char* found;  // null: no message
  };
  const Case cases[] = {
      {"ADT", "ADT"},          {"adt", "ADT"},        {"HL7/ADT", "ADT"},  {"hl7.flat", "FLAT"},
      {"OTHER.INNER_MSG", "INNER_MSG"}, {"INNER_MSG", "INNER_MSG"}, {"OTHER/ADT", nullptr}, {"NOPE/ADT", nullptr},
      {"NOPE", nullptr},      {"", nullptr},
  };
  for (const Case& c : cases) {
    auto message = factory.CreateMessage(c.name);
    if (!c.found) {
      EXPECT_EQ(message, nullptr) << c.name;
      continue;
    }
    ASSERT_NE(message, nullptr) << c.name;
    EXPECT_STREQ(message->getName(), c.found);
    EXPECT_EQ(message->getNodeType(), qxComposite);
    EXPECT_TRUE(message->isEmpty());
  }
}

TEST_F(ElementTree, ReadingAPathCreatesTheChildButLeavesItEmptyAndTheMessageUnchanged) {
  const MessageDefn& adt = *factory.getWarehouse().getMessageSets()[0]->getMessages()[0];
  MessageImpl message(adt, nullptr, 0);  // as a parse leaves it: not built by the host
  message.setTreeChanged(false);
  EXPECT_FALSE(message.isChildPresent(1));
  InternalElement* pid = at(message, "PID");
  EXPECT_TRUE(message.isChildPresent(1));
  EXPECT_TRUE(pid->isEmpty());
  EXPECT_FALSE(pid->isPresent());
  EXPECT_TRUE(message.isEmpty());
  EXPECT_TRUE(message.isTreeChanged());
  EXPECT_FALSE(message.isChanged());

  // Null is a value: a field set to null makes its segment present.
  at(message, "PID/Birth")->setNull();
  EXPECT_TRUE(pid->isPresent());
  EXPECT_TRUE(message.isChanged());
}

TEST_F(ElementTree, PathsReachEveryKindOfNodeAndNameItBack) {
  auto message = create("ADT");
  at(*message, "NTE")->appendElement(nullptr);
  at(*message, "NTE")->appendElement(nullptr);
  at(*message, "VISIT")->appendElement(nullptr);
  at(*message, "INNER")->appendElement("INNER_MSG");
  at(*message, "PID/Ids")->appendElement(nullptr);

  struct Case {
    const char* path;
    const char* shownAs;
    ENodeType type;
  };
  const Case cases[] = {
      {"PID", "PID", qxComposite},
      {"pid/setid", "PID/SetId", qxPrimitive},
      {"PID.Name.Authority.Universal", "PID/Name/Authority/Universal", qxPrimitive},
      {"PID/Name/Authority", "PID/Name/Authority", qxComposite},
      {"NTE", "NTE", qxRepeating},
      {"NTE[1]", "NTE[1]", qxComposite},
      {"NTE[1]/Text", "NTE[1]/Text", qxPrimitive},
      {"NTE/[0].Comment", "NTE[0]/Comment", qxPrimitive},
      {"VISIT[0]/PV1/Class", "VISIT[0]/PV1/Class", qxPrimitive},
      {"VISIT[0]/OBX", "VISIT[0]/OBX", qxRepeating},
      {"EXTRA[7].AL1", "EXTRA/AL1", qxComposite},  // an unordered group has no index
      {"EXTRA", "EXTRA", qxComposite},
      {"INNER", "INNER", qxMessageSet},
      {"INNER[0]", "INNER[0]", qxComposite},
      {"INNER[0]/ST/Code", "INNER[0]/ST/Code", qxPrimitive},
      {"PID/Ids", "PID/Ids", qxRepeating},
      {"PID/Ids[0]/Authority/Namespace", "PID/Ids[0]/Authority/Namespace", qxPrimitive},
      {"PID/(parent)/MSH", "MSH", qxComposite},
      {"NTE[1]/Text/(parent)", "NTE[1]", qxComposite},
      {"NTE[0]/(PARENT)/[1]", "NTE[1]", qxComposite},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.path);
    InternalElement* node = at(*message, c.path);
    ASSERT_NE(node, nullptr);
    EXPECT_EQ(node->getPath(), c.shownAs);
    EXPECT_EQ(node->getNodeType(), c.type);
  }
  EXPECT_EQ(at(*message, "NTE")->getElementAt("[0]junk.Text"), at(*message, "NTE[0]/Text"));
  EXPECT_EQ(at(*message, "PID/Name")->getElementAt(100), at(*message, "PID/Name"));
  EXPECT_EQ(at(*message, "PID/Name")->getElementAt(-1), at(*message, "PID/Name"));
}

TEST_F(ElementTree, BadPathsAreRefusedWithTheEngineText) {
  auto message = create("ADT");
  at(*message, "NTE")->appendElement(nullptr);
  at(*message, "NTE")->appendElement(nullptr);
  at(*message, "VISIT")->appendElement(nullptr);
  InternalElement* notes = at(*message, "NTE");
  InternalElement* inner = at(*message, "INNER");

  struct Case {
    std::function<void()> call;
    std::string text;
  };
  const std::vector<Case> badParameters = {
      {[&] { at(*message, "NOPE"); }, formatMessage(messages::kChildNotFoundInMessage, "NOPE", "ADT")},
      {[&] { at(*message, "(parent)"); }, "Child (parent) not found in message ADT"},
      {[&] { at(*message, "PID/Nope"); }, formatMessage(messages::kChildNotFoundInSegment, "Nope", "PID")},
      {[&] { at(*message, "PID/Name/Nope"); }, formatMessage(messages::kChildNotFoundInComposite, "Nope", "CX")},
      {[&] { at(*message, "VISIT[0]/NOPE"); }, formatMessage(messages::kChildNotFoundInGroup, "NOPE", "VISIT")},
      {[&] { at(*message, "NTE[5]"); }, "Specified index 5 is too high"},
      {[&] { at(*message, "NTE[1"); }, std::string(messages::kMissingBracketBefore) + "1" + messages::kMissingBracketAfter},
      {[&] { at(*message, "NTE[a]"); }, formatMessage(messages::kNotValidArrayIndex, "a")},
      {[&] { at(*message, "NTE[-1]"); }, "-1 is not a valid array index"},
      {[&] { notes->getElementAt("x"); }, std::string(messages::kIndexNotFoundBefore) + "x" + messages::kIndexNotFoundAfter},
      {[&] { notes->getElementAt(""); }, "Specified path is null or empty"},
      {[&] { notes->getElementAt(static_cast<const char*>(nullptr)); }, "Specified path is null or empty"},
      {[&] { notes->getElementAt(-1); }, "Specified index -1 is less than zero"},
      {[&] { inner->appendElement("NOPE"); }, formatMessage(messages::kMessageTypeNotFound, "NOPE")},
      {[&] { inner->appendElement(""); }, "Message type is null or empty"},
      {[&] { message->getElementAt(9); }, "Specified index 9 is too high"},
      {[&] { message->setSeparatorValue(static_cast<ESeparatorType>(22), u"x"); }, "Invalid separator specified"},
      {[&] { message->getValidationErrorSettingType(1000); }, "Specified error number is out of the valid range"},
      {[&] { message->setValidationErrorSettingType(1053, qxVESError); },
       "Specified error number is out of the valid range"},
  };
  for (size_t i = 0; i < badParameters.size(); ++i) {
    EXPECT_EQ(thrown<BadParameter>(badParameters[i].call), badParameters[i].text) << "case " << i;
  }
  // A failed append changes nothing.
  EXPECT_EQ(inner->getElementCount(), 0);
}

TEST_F(ElementTree, OperationsANodeKindDoesNotHaveAreRefusedWithTheirText) {
  auto message = create("ADT");
  const unsigned char bytes[] = {1};
  InternalElement* group = at(*message, "EXTRA");
  InternalElement* segment = at(*message, "PID");
  InternalElement* field = at(*message, "PID/SetId");
  InternalElement* notes = at(*message, "NTE");
  struct Case {
    std::function<void()> call;
    const char* text;
  };
  const std::vector<Case> cases = {
      {[&] { message->appendElement("ADT"); }, messages::kAppendElementRepeatingOnly},
      {[&] { segment->removeElementAt(0); }, messages::kRemoveElementAtRepeatingOnly},
      {[&] { group->removeAllElements(); }, messages::kRemoveAllElementsRepeatingOnly},
      {[&] { message->setValue(bytes, 1); }, messages::kSetBinaryPrimitiveValuesOnly},
      {[&] { group->setValue(bytes, 1); }, messages::kSetBinaryPrimitiveFieldsOnly},
      {[&] { notes->getBinaryValue(); }, messages::kGetBinaryValuePrimitiveOnly},
      {[&] { group->getSegmentNumber(); }, messages::kSegmentNumberInSegmentOnly},
      {[&] { notes->getSegmentNumberInMessage(); }, messages::kSegmentNumberInMessageInSegmentOnly},
      {[&] { segment->getUnknownSegmentCount(); }, messages::kUnknownSegmentsMessagesAndGroupsOnly},
      {[&] { message->getParent(); }, messages::kMessageWithoutParent},
      {[&] { segment->setNull(); }, messages::kSegmentsNotNull},
      {[&] { field->getElementAt(0); }, messages::kGetElementAtOnPrimitive},
      {[&] { field->getElementAt("x"); }, messages::kGetElementAtOnPrimitive},
      {[&] { field->getElementCollection("*"); }, messages::kGetElementCollectionOnPrimitive},
      {[&] { field->countSegments(false); }, messages::kCannotCountFields},
      {[&] { at(*message, "PID/Name")->countGroups(false); }, messages::kCannotCountComposites},
      {[&] { segment->countSegments(false); }, messages::kInternalError},
      {[&] { segment->countGroups(false); }, messages::kGroupCountOfSegment},
      {[&] { segment->countMessages(false); }, messages::kMessageCountOfSegment},
      {[&] { at(*message, "PID/Name")->setValue(bytes, 1); }, messages::kBinaryValueOfComposite},
      {[&] { field->setValue(bytes, 1); }, messages::kSetBinaryOnPrimitiveBinaryOnly},
      {[&] { at(*message, "PID/Ids")->setValue(bytes, 1); }, messages::kSetBinaryPrimitiveValuesOnly},
  };
  for (size_t i = 0; i < cases.size(); ++i) {
    EXPECT_EQ(thrown<IllegalOperation>(cases[i].call), cases[i].text) << "case " << i;
  }
  EXPECT_EQ(thrown<BadParameter>([&] { segment->getCountForPath("x", 1, false); }), messages::kInvalidPathInCountItem);
  EXPECT_EQ(segment->getCountForPath("", 2, false), 1);
  EXPECT_EQ(field->getParent(), segment);
}

TEST_F(ElementTree, HiddenGroupsShowTheirChildrenInTheirPlace) {
  auto message = create("FLAT");
  EXPECT_EQ(message->getElementCount(), 3);
  InternalElement* header = at(*message, "MSH");
  auto* note = static_cast<InternalElement*>(message->getElementAt(1));
  auto* result = static_cast<InternalElement*>(message->getElementAt(2));
  EXPECT_STREQ(note->getName(), "NTE");
  EXPECT_STREQ(result->getName(), "OBX");
  EXPECT_EQ(at(*message, "NTE"), note);  // a hidden group takes the path
  EXPECT_EQ(at(*message, "obx"), result);
  // The group adds nothing to paths and indexes, and "(parent)" passes over it.
  EXPECT_EQ(note->getPath(), "NTE");
  EXPECT_EQ(header->getElementIndex(), 0);
  EXPECT_EQ(note->getElementIndex(), 1);
  EXPECT_EQ(result->getElementIndex(), 2);
  EXPECT_EQ(note->getElementAt("(parent)"), message.get());
  EXPECT_EQ(thrown<BadParameter>([&] { message->getElementAt(3); }), "Specified index 3 is too high");
  // A collection of every child sees through the hidden group as well.
  EXPECT_EQ(message->getElementCollection("*").getCount(), 3);
}

TEST_F(ElementTree, CollectionsCreateNothingAndSkipEmptyOptionalChildren) {
  auto message = create("ADT");
  at(*message, "PID/SetId")->setValue(u"1");
  at(*message, "ZFX");  // optional and empty
  EXPECT_EQ(message->getElementCollection("*").getCount(), 2);
  // With a rest, an empty optional child is passed over: ZFX has no SetId and isn't asked.
  ElementCollection ids = message->getElementCollection("*/SetId");
  ASSERT_EQ(ids.getCount(), 1);
  EXPECT_EQ(ids.getItem(0), at(*message, "PID/SetId"));
  // An empty required child is walked: MSH has no SetId.
  at(*message, "MSH");
  EXPECT_EQ(thrown<BadParameter>([&] { message->getElementCollection("*/SetId"); }),
            "Child SetId of segment MSH not found");
  // A named child that doesn't exist gives nothing and stays absent.
  auto* adt = static_cast<InternalElement*>(message.get());
  EXPECT_EQ(message->getElementCollection("VISIT").getCount(), 0);
  EXPECT_FALSE(adt->isChildPresent(3));

  InternalElement* notes = at(*message, "NTE");
  for (const char* text : {"a", "b", "c"}) at(*static_cast<MessageElement*>(notes->appendElement(nullptr)), "Text")->setValue(wide(text));
  EXPECT_EQ(notes->getElementCollection("[*]").getCount(), 3);
  EXPECT_EQ(notes->getElementCollection("[*]/Text").getCount(), 3);
  EXPECT_EQ(notes->getElementCollection("[a]").getItem(0), notes->getElementAt(0));  // no digit check here
  EXPECT_EQ(message->getElementCollection("NTE/[2]/Text").getItem(0)->getValue(), u"c");
}

TEST_F(ElementTree, RemovingRepeatsRenumbersThoseBehind) {
  auto message = create("ADT");
  InternalElement* notes = at(*message, "NTE");
  for (const char* text : {"a", "b", "c"}) at(*static_cast<MessageElement*>(notes->appendElement(nullptr)), "Text")->setValue(wide(text));
  notes->removeElementAt(0);
  ASSERT_EQ(notes->getElementCount(), 2);
  EXPECT_EQ(notes->getElementAt(0)->getElementIndex(), 0);
  EXPECT_EQ(at(*message, "NTE[1]/Text")->getValue(), u"c");
  EXPECT_EQ(at(*message, "NTE[1]")->getPath(), "NTE[1]");
  notes->removeAllElements();
  EXPECT_EQ(notes->getElementCount(), 0);
  EXPECT_TRUE(notes->isEmpty());
}

TEST_F(ElementTree, ClonesAreDeepAndIndependentAndKnownToNoParent) {
  auto message = create("ADT");
  at(*message, "PID/SetId")->setValue(u"1");
  InternalElement* pid = at(*message, "PID");

  std::unique_ptr<MessageElement> pidCopy = pid->clone();
  EXPECT_EQ(pidCopy->getParent(), message.get());
  EXPECT_EQ(at(*message, "PID"), pid);  // the parent still holds the source
  at(*pidCopy, "SetId")->setValue(u"2");
  EXPECT_EQ(at(*message, "PID/SetId")->getValue(), u"1");
  EXPECT_EQ(at(*pidCopy, "SetId")->getPath(), "PID/SetId");

  std::unique_ptr<MessageElement> copy = message->clone();
  EXPECT_EQ(at(*copy, "PID/SetId")->getValue(), u"1");
  at(*copy, "PID/SetId")->setValue(u"3");
  copy->setSeparatorValue(qxSepField1, u"#");
  EXPECT_EQ(copy->getSeparatorValue(qxSepField1), u"#");
  EXPECT_EQ(message->getSeparatorValue(qxSepField1), u"|");
  EXPECT_EQ(at(*message, "PID/SetId")->getValue(), u"1");
  EXPECT_EQ(at(*copy, "PID")->getEncodedValue(), u"PID#3####U\r");

  // Two messages of one set have lists of their own.
  InternalElement* inner = at(*message, "INNER");
  MessageElement* first = inner->appendElement("INNER_MSG");
  MessageElement* second = inner->appendElement("INNER_MSG");
  first->setSeparatorValue(qxSepField1, u"+");
  EXPECT_EQ(second->getSeparatorValue(qxSepField1), u"*");
  EXPECT_EQ(first->getPath(), "INNER[0]");
  EXPECT_EQ(second->getElementIndex(), 1);
}

TEST_F(ElementTree, UnorderedGroupsWriteInTheOrderTheirChildrenCame) {
  auto message = create("ADT");
  at(*message, "EXTRA/DG1/Diagnosis")->setValue(u"d");
  at(*message, "EXTRA/AL1/Allergy")->setValue(u"a");
  EXPECT_EQ(at(*message, "EXTRA")->getEncodedValue(), u"DG1|d\rAL1|a\r");
  auto copy = at(*message, "EXTRA")->clone();
  EXPECT_EQ(copy->getEncodedValue(), u"DG1|d\rAL1|a\r");
  at(*message, "EXTRA")->setEmpty();
  at(*message, "EXTRA/AL1/Allergy")->setValue(u"a");
  EXPECT_EQ(at(*message, "EXTRA")->getEncodedValue(), u"AL1|a\r");
}

TEST_F(ElementTree, ChoiceGroupsWriteOnlyTheirFirstFilledChild) {
  auto message = create("ADT");
  at(*message, "EITHER/DG1:2/Diagnosis")->setValue(u"d");
  at(*message, "EITHER/AL1:2/Allergy")->setValue(u"a");
  EXPECT_EQ(at(*message, "EITHER")->getEncodedValue(), u"AL1|a\r");
}

TEST_F(ElementTree, ANewMessageWritesItsRequiredSegmentsAndWhatWasSet) {
  auto message = create("ADT");
  EXPECT_EQ(message->getEncodedValue(), u"MSH||ADT\rPID|||||U\r");
  at(*message, "NTE")->appendElement(nullptr);
  at(*message, "NTE[0]/Text")->setValue(u"hello");
  at(*message, "VISIT")->appendElement(nullptr);  // optional and empty: nothing, though PV1 is required
  at(*message, "INNER")->appendElement("INNER_MSG");
  at(*message, "INNER[0]/ST/Code")->setValue(u"X");
  at(*message, "MSH/Sender")->setValue(u"me");
  EXPECT_EQ(message->getEncodedValue(), u"MSH|me|ADT\rPID|||||U\rNTE|hello\rST*X\n");
  // Writing numbers the segments from 0, and a required segment made for the write is gone after.
  EXPECT_EQ(at(*message, "NTE[0]")->getSegmentNumber(), 2);
  EXPECT_EQ(at(*message, "NTE[0]")->getSegmentNumberInMessage(), 2);
  EXPECT_EQ(at(*message, "VISIT[0]/PV1")->getSegmentNumber(), -1);
}

TEST(ElementTreeEmptyGroup, ASegmentNumberNeedsAFirstSegmentToCountFrom) {
  MessageFactory factory;
  compileAndLoad(factory, R"(
messageSets:
  - name: S
    segments: [{name: A, fields: [{name: F}]}]
    messages:
      - name: M
        items:
          - {group: NONE, items: []}
          - {segment: A}
)");
  auto message = factory.CreateMessage("M");
  ASSERT_NE(message, nullptr);
  MessageElement* segment = message->getElementAt("A");
  EXPECT_EQ(thrown<IllegalOperation>([&] { segment->getSegmentNumberInMessage(); }),
            messages::kNoItemsInSegmentGroup);
}

}  // namespace
}  // namespace vantrelia::testing
