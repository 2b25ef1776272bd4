#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>
#include <vector>

#include "elements/ElementCollection.h"
#include "elements/ElementMessages.h"
#include "elements/InternalElement.h"
#include "foundation/BadParameter.h"
#include "foundation/Enumerations.h"
#include "foundation/Format.h"
#include "foundation/FoundationMessages.h"
#include "foundation/IllegalOperation.h"
#include "validation/RecordedErrors.h"
#include "validation/ValidationError.h"
#include "validation/ValidationErrorList.h"

namespace {

using namespace vantrelia;

class ProbeElement : public InternalElement {
 public:
  ProbeElement(std::string nodeName, InternalElement* parentNode = nullptr, int32_t indexInParent = 0)
      : InternalElement(parentNode, indexInParent), name(std::move(nodeName)) {}

  MessageElement* getElementAt(const char*) override { return nullptr; }
  MessageElement* getElementAt(int childIndex) override { return children.at(static_cast<size_t>(childIndex)); }
  int getElementCount() override { return static_cast<int>(children.size()); }
  std::unique_ptr<MessageElement> clone() override { return nullptr; }
  void setEmpty() override { empty = true; }
  bool isEmpty() override { return empty; }
  ENodeType getNodeType() const override { return qxComposite; }
  const char* getName() const override { return name.c_str(); }
  // Takes text up to the first "|", as a node that stops at its own end would.
  std::u16string_view setEncodedValue(std::u16string_view text) override {
    const size_t end = std::min(text.find(u'|'), text.size());
    encoded = std::u16string(text.substr(0, end));
    return text.substr(end);
  }
  std::u16string getEncodedValue() override { return encoded; }
  ElementCollection getElementCollection(const char*) override { return {}; }
  MetaDataRecord* getMetaData() override { return nullptr; }
  std::u16string getSeparatorValue(ESeparatorType) override { return {}; }
  void setSeparatorValue(ESeparatorType, std::u16string_view) override {}
  bool getUserData(const std::u16string&, std::u16string&) override { return false; }
  EMetaVErrSettingType getValidationErrorSettingType(int) override { return qxVESError; }
  void setValidationErrorSettingType(int, EMetaVErrSettingType) override {}

  bool isChildPresent(int) override { return false; }
  bool attachSegment(SegmentElement*, int) override { return false; }
  bool canStartOnPath(std::vector<int32_t>::const_iterator, std::vector<int32_t>::const_iterator) override {
    return false;
  }
  bool isChildRepeating(int) override { return false; }
  bool parseElement(ParserStream&, RecordedErrors&, uint32_t&, ValidationLocation&) override { return false; }
  int getCountForPath(std::string_view, int, bool) override { return 0; }
  int countSegments(bool) override { return 0; }
  int countGroups(bool) override { return 0; }
  int countMessages(bool) override { return 0; }
  std::unique_ptr<InternalElement> cloneWithParent(InternalElement*) override { return nullptr; }
  void validateInto(SeparatorList&, ValidationErrorList&, bool, ValidationLocation&, bool) override {}
  // Leaves one finding whose number tells which way it was asked.
  void validateTop(ValidationErrorList& out, bool includeWarnings) override;
  void appendPath(std::string& text) override {
    if (parent) parent->appendPath(text);
    if (!text.empty()) text += '/';
    text += name;
  }
  std::u16string getEncodedValueNoTouch() override { return encoded; }
  void forgetParserPositions(RecordedErrors&) override {}
  SeparatorList* getSeparatorList() override { return nullptr; }
  const MessageSetDefn* getMessageSetDefn() override { return nullptr; }

  std::string name;
  bool empty = true;
  std::u16string encoded;
  std::vector<MessageElement*> children;
};
// Stands where a message stands in a tree: it keeps the change flags and the minimising option.
class RootProbe : public ProbeElement {
 public:
  using ProbeElement::ProbeElement;

  bool isTreeChanged() override { return treeChanged; }
  void setTreeChanged(bool flag) override { treeChanged = flag; }
  bool isChanged() override { return changed; }
  void setChanged(bool flag) override {
    changed = flag;
    if (flag) setTreeChanged(true);
  }
  bool isMinimizeChanges() override { return minimize; }

  bool treeChanged = false;
  bool changed = false;
  bool minimize = false;
};

void ProbeElement::validateTop(ValidationErrorList& out, bool includeWarnings) {
  out.add(ValidationError(getPath(), u"probe", includeWarnings ? 1 : 2, qxVESWarning));
}

// The refusals that every node kind shares unless it overrides: each must be IllegalOperation
// with the exact text a host sees.
TEST(ElementContractDefaults, RefusedOperationsThrowIllegalOperationWithTheirText) {
  ProbeElement node("PID");
  const unsigned char bytes[] = {1, 2};
  struct Case {
    const char* text;
    std::function<void()> call;
  };
  const std::vector<Case> cases = {
      {messages::kAppendElementRepeatingOnly, [&] { node.appendElement("ADT"); }},
      {messages::kRemoveAllElementsRepeatingOnly, [&] { node.removeAllElements(); }},
      {messages::kRemoveElementAtRepeatingOnly, [&] { node.removeElementAt(0); }},
      {messages::kSetBinaryPrimitiveFieldsOnly, [&] { node.setValue(bytes, 2); }},
      {messages::kGetBinaryValuePrimitiveOnly, [&] { node.getBinaryValue(); }},
      {messages::kSegmentNumberInSegmentOnly, [&] { node.getSegmentNumber(); }},
      {messages::kSegmentNumberInMessageInSegmentOnly, [&] { node.getSegmentNumberInMessage(); }},
      {messages::kUnknownSegmentsMessagesAndGroupsOnly, [&] { node.getUnknownSegmentCount(); }},
      {messages::kUnknownSegmentsMessagesAndGroupsOnly, [&] { node.getUnknownSegment(0); }},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.text);
    try {
      c.call();
      ADD_FAILURE() << "no exception";
    } catch (const IllegalOperation& e) {
      EXPECT_STREQ(e.what(), c.text);
    }
  }
}

TEST(ElementContractDefaults, PresentIsNotEmptyAndNullIsIgnored) {
  ProbeElement node("PID");
  EXPECT_FALSE(node.isPresent());
  node.empty = false;
  EXPECT_TRUE(node.isPresent());
  node.setNull();
  EXPECT_FALSE(node.isNull());
  EXPECT_TRUE(node.isPresent());
}

// On nodes that aren't fields a value is the wire text, both ways.
TEST(ElementContractDefaults, ValueIsTheEncodedValue) {
  ProbeElement node("MSH");
  node.setValue(std::u16string_view(u"MSH^abc|rest"));
  EXPECT_EQ(node.encoded, u"MSH^abc");
  node.encoded = u"changed";
  EXPECT_EQ(node.getValue(), u"changed");
}

TEST(ElementContractDefaults, InternalQuestionsAnswerNothingByDefault) {
  ProbeElement node("PID");
  EXPECT_FALSE(node.isRequired());
  EXPECT_FALSE(node.hasCalculatedValue(0));
  EXPECT_EQ(node.getCalculatedNumber(3), 0.0);
  EXPECT_TRUE(node.getCalculatedText(3).empty());
  EXPECT_FALSE(node.isPlaceholderSegment());
  node.setMessageDefn(nullptr);
  node.onFieldValueChanged(-1, -1, false);
  node.addUnknownSegment(nullptr);

  std::string numeric = "3[1]";
  node.appendNumericPath(numeric);
  EXPECT_EQ(numeric, "3[1]");

  // A node that parses nothing hands back the very text it got, not a copy.
  RecordedErrors errors;
  const std::u16string text = u"PID|1";
  const std::u16string_view rest = node.parseEncodedValue(text, errors);
  EXPECT_EQ(rest.data(), text.data());
  EXPECT_EQ(rest.size(), text.size());
}

TEST(ElementContractDefaults, ChildCreatingIsElementAtByIndex) {
  ProbeElement parentNode("GRP");
  ProbeElement first("A", &parentNode, 0);
  ProbeElement second("B", &parentNode, 1);
  parentNode.children = {&first, &second};
  EXPECT_EQ(parentNode.getChildCreating(1), &second);
  EXPECT_EQ(parentNode.getChildCreating(0), &first);
}

TEST(ElementContractDefaults, ParentIndexAndPath) {
  RootProbe root("");
  ProbeElement group("ORDER", &root, 2);
  ProbeElement segment("OBR", &group, 4);

  EXPECT_FALSE(root.hasParent());
  EXPECT_EQ(root.getParent(), nullptr);
  EXPECT_TRUE(segment.hasParent());
  EXPECT_EQ(segment.getParent(), &group);
  EXPECT_EQ(segment.getElementIndex(), 4);
  EXPECT_EQ(segment.getPath(), "ORDER/OBR");
  EXPECT_EQ(root.getPath(), "");
}

TEST(ElementContractDefaults, ValidateAsksWithWarningsAndErrorsOnlyWithout) {
  ProbeElement node("PID");
  const ValidationErrorList all = node.validate();
  ASSERT_EQ(all.count(), 1);
  EXPECT_EQ(all.get(0).getErrorNumber(), 1);
  const ValidationErrorList errorsOnly = node.validateWithErrorsOnly();
  ASSERT_EQ(errorsOnly.count(), 1);
  EXPECT_EQ(errorsOnly.get(0).getErrorNumber(), 2);
}

// Change flags live at the message: nodes below only pass the question and the change upward.
TEST(ElementChangeTracking, ChangesTravelToTheMessage) {
  RootProbe root("");
  ProbeElement group("ORDER", &root, 0);
  ProbeElement segment("OBR", &group, 0);

  EXPECT_FALSE(segment.isChanged());
  segment.setTreeChanged(true);
  EXPECT_TRUE(root.treeChanged);
  EXPECT_FALSE(root.changed);
  EXPECT_TRUE(segment.isTreeChanged());
  segment.setTreeChanged(false);
  EXPECT_FALSE(root.treeChanged);

  // Whatever flag a node below passes, the message learns that something changed.
  segment.setChanged(false);
  EXPECT_TRUE(root.changed);
  EXPECT_TRUE(root.treeChanged);
  EXPECT_TRUE(segment.isChanged());
}

TEST(ElementChangeTracking, WithoutAMessageAboveNothingHasChanged) {
  ProbeElement group("ORDER");
  ProbeElement segment("OBR", &group, 0);
  segment.setChanged(true);
  segment.setTreeChanged(true);
  EXPECT_FALSE(segment.isChanged());
  EXPECT_FALSE(segment.isTreeChanged());
  EXPECT_FALSE(segment.isMinimizeChanges());
}

TEST(ElementChangeTracking, MinimizeIsTheMessagesAnswer) {
  RootProbe root("");
  ProbeElement group("ORDER", &root, 0);
  ProbeElement segment("OBR", &group, 0);
  EXPECT_FALSE(segment.isMinimizeChanges());
  root.minimize = true;
  EXPECT_TRUE(segment.isMinimizeChanges());
}

TEST(ElementCollections, KeepsNodesInTheOrderAdded) {
  ProbeElement a("A"), b("B");
  ElementCollection collection;
  EXPECT_EQ(collection.getCount(), 0);
  collection.add(&b);
  collection.add(&a);
  collection.add(&b);
  ASSERT_EQ(collection.getCount(), 3);
  EXPECT_EQ(collection.getItem(0), &b);
  EXPECT_EQ(collection.getItem(1), &a);
  EXPECT_EQ(collection.getItem(2), &b);
}

TEST(ElementCollections, IndexOutsideTheListIsABadParameter) {
  ProbeElement a("A");
  ElementCollection collection;
  collection.add(&a);
  struct Case {
    int index;
    std::string text;
  };
  const std::vector<Case> cases = {
      {-1, formatMessage(messages::kIndexBelowZero, -1)},
      {1, formatMessage(messages::kIndexTooHigh, 1)},
  };
  for (const Case& c : cases) {
    try {
      collection.getItem(c.index);
      ADD_FAILURE() << "no exception for " << c.index;
    } catch (const BadParameter& e) {
      EXPECT_EQ(e.message, c.text);
    }
  }
  EXPECT_THROW(ElementCollection().getItem(0), BadParameter);
}

TEST(ElementCollections, CopiesShareOneList) {
  ProbeElement a("A"), b("B");
  ElementCollection first;
  first.add(&a);
  ElementCollection copy = first;
  copy.add(&b);
  ASSERT_EQ(first.getCount(), 2);
  EXPECT_EQ(first.getItem(1), &b);
}

TEST(ElementCollections, AddAllAppendsInOrder) {
  ProbeElement a("A"), b("B"), c("C");
  ElementCollection target, source;
  target.add(&a);
  source.add(&b);
  source.add(&c);
  target.addAll(source);
  ASSERT_EQ(target.getCount(), 3);
  EXPECT_EQ(target.getItem(1), &b);
  EXPECT_EQ(target.getItem(2), &c);
  EXPECT_EQ(source.getCount(), 2);

  // Adding a collection to itself must copy what was there, not chase its own growth.
  target.addAll(target);
  ASSERT_EQ(target.getCount(), 6);
  EXPECT_EQ(target.getItem(3), &a);
  EXPECT_EQ(target.getItem(5), &c);
}

}  // namespace
