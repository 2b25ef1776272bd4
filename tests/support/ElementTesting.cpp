#include "support/ElementTesting.h"

#include "elements/SegmentImplBase.h"
#include "support/CompilerTesting.h"
#include "validation/RecordedErrors.h"
#include "validation/ValidationErrorList.h"

namespace vantrelia::testing {

const char* const kElementTreeDefinition = R"(
messageSets:
  - name: HL7
    trimSegments: true
    separators:
      segment: {value: "\r", style: terminator}
      field1: {value: '|', style: initiator}
      field2: '^'
      field3: '&'
      repeat: '~'
      "null": '""'
    messageTypeFields: [MSH.2]
    composites:
      - name: HD
        fields: [{name: Namespace}, {name: Universal}]
      - name: CX
        fields:
          - {name: Id}
          - {name: Check}
          - {name: Authority, composite: HD}
      - name: ONE
        fields: [{name: Only}]
    segments:
      - name: MSH
        fields:
          - {name: Sender}
          - {name: Type, required: true}
      - name: PID
        fields:
          - {name: SetId, dataType: long}
          - {name: Ids, composite: CX, maxRepeats: 0}
          - {name: Name, composite: CX}
          - {name: Birth, maxLength: 8}
          - {name: Sex, required: true, default: U}
          - {name: Single, composite: ONE}
          - {name: Codes, maxRepeats: 3}
          - {name: Amount, dataType: long, alignment: zeroMin, minLength: 4}
      - name: NTE
        fields: [{name: Text}, {name: Comment, default: none}]
      - name: PV1
        fields: [{name: Class, required: true}, {name: Location}]
      - name: OBX
        fields: [{name: Value}, {name: Units}]
      - name: AL1
        fields: [{name: Allergy}]
      - name: DG1
        fields: [{name: Diagnosis}]
      - name: ZFX
        fixedWidth: true
        separator: none
        fields:
          - {name: Code, maxLength: 3}
          - {name: Count, dataType: long, maxLength: 5, alignment: rightMax}
          - {name: Note, maxLength: 4}
      - name: BIN
        fields:
          - {name: Length, dataType: long}
          - {name: Data, dataType: binary, lengthField: Length}
          - {name: Coded, dataType: base64}
    messages:
      - name: ADT
        type: ADT
        items:
          - {segment: MSH, required: true}
          - {segment: PID, required: true}
          - {segment: NTE, maxRepeats: 0}
          - group: VISIT
            maxRepeats: 0
            items:
              - {segment: PV1, required: true}
              - {segment: OBX, maxRepeats: 0}
          - group: EXTRA
            unordered: true
            items: [{segment: AL1}, {segment: DG1}]
          - group: EITHER
            choice: true
            items: [{segment: AL1, name: "AL1:2"}, {segment: DG1, name: "DG1:2"}]
          - {segment: ZFX}
          - {segment: BIN}
          - {embeddedSet: OTHER, name: INNER, maxRepeats: 0}
      - name: FLAT
        type: FLAT
        visibleChildren: {counts: {1: 2}, total: 3}
        items:
          - {segment: MSH, required: true}
          - group: SHOWN
            hidden: true
            items: [{segment: NTE}, {segment: OBX}]
  - name: OTHER
    trimSegments: true
    separators:
      segment: {value: "\n", style: terminator}
      field1: {value: '*', style: initiator}
      field2: ':'
    segments:
      - name: ST
        fields: [{name: Code}]
    messages:
      - name: INNER_MSG
        items: [{segment: ST}]
)";

std::u16string wide(std::string_view text) { return std::u16string(text.begin(), text.end()); }

std::string narrow(std::u16string_view text) {
  std::string result;
  for (const char16_t unit : text) result += static_cast<char>(unit);
  return result;
}

std::vector<std::pair<int, std::string>> readSegmentText(InternalElement& segment, const std::string& text) {
  RecordedErrors errors;
  EXPECT_EQ(static_cast<SegmentImplBase&>(segment).parseEncodedValue(wide(text), errors), u"")
      << "the whole text is the segment's";
  ValidationErrorList list;
  errors.replayInto(
      list, true, [](int32_t) { return qxVESError; }, [](MessageElement& e) { return e.getPath(); });
  std::vector<std::pair<int, std::string>> result;
  for (const ValidationError& error : list) result.emplace_back(error.getErrorNumber(), narrow(error.getError()));
  return result;
}

void ElementTreeTest::SetUp() { compileAndLoad(factory, kElementTreeDefinition); }

std::unique_ptr<MessageElement> ElementTreeTest::create(const std::string& name) {
  auto message = factory.CreateMessage(name);
  EXPECT_NE(message, nullptr) << name;
  return message;
}

InternalElement* ElementTreeTest::at(MessageElement& root, const std::string& path) {
  return static_cast<InternalElement*>(root.getElementAt(path.c_str()));
}

}  // namespace vantrelia::testing
