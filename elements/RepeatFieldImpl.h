#pragma once
// The repeats of one field: a list of field or composite items under one index of the segment,
// between repeat separators. Every item exists; a repeat has no empty slots.

#include <cstdint>
#include <memory>
#include <vector>

#include "elements/FieldBase.h"

namespace vantrelia {

struct ParserToken;

class RepeatFieldImpl : public FieldBase {
 public:
  RepeatFieldImpl(const FieldDefn& fieldDefn, InternalElement* parent, int32_t index, ESeparatorType fieldSeparator);
  ~RepeatFieldImpl() override;

  MessageElement* appendElement(const char* messageType) override;
  void removeAllElements() override;
  void removeElementAt(int index) override;
  MessageElement* getElementAt(const char* path) override;
  MessageElement* getElementAt(int index) override;
  int getElementCount() override { return static_cast<int>(items.size()); }
  std::unique_ptr<MessageElement> clone() override;
  void setEmpty() override;
  bool isEmpty() override;
  void setNull() override;
  bool isNull() override;
  ENodeType getNodeType() const override { return qxRepeating; }
  std::u16string_view setEncodedValue(std::u16string_view text) override;
  std::u16string getEncodedValue() override;
  void setValue(const unsigned char* bytes, int length) override;
  void setValue(std::u16string_view text) override { setEncodedValue(text); }
  std::u16string getValue() override { return getEncodedValue(); }
  ElementCollection getElementCollection(const char* spec) override;

  bool isChildRepeating(int) override { return true; }
  bool writeField(bool mayOmitFill, SeparatorList& list, bool minimize, int32_t& counter) override;
  bool parseElement(ParserStream& stream, RecordedErrors& errors, uint32_t& endKind,
                    ValidationLocation& location) override;
  std::unique_ptr<InternalElement> cloneWithParent(InternalElement* newParent) override;
  void validateInto(SeparatorList& separators, ValidationErrorList& errors, bool includeWarnings,
                    ValidationLocation& location, bool asParsed) override;
  void appendNumericPath(std::string& text) override;
  std::u16string getEncodedValueNoTouch() override;
  void forgetParserPositions(RecordedErrors& errors) override;
  void onFieldValueChanged(int fieldIndex, int repeatIndex, bool onlyFollowing) override;
  bool hasCalculatedValue(int fieldIndex) override;
  double getCalculatedNumber(int fieldIndex) override;
  std::u16string getCalculatedText(int fieldIndex) override;

 private:
  std::unique_ptr<FieldBase> makeItem(int32_t itemIndex);
  // Reads one item from the stream: by a token cut here, or by the item itself.
  void readItem(ParserStream& stream, RecordedErrors& errors, ValidationLocation& location, bool separatorActive,
                bool useGeneric);

  std::vector<std::unique_ptr<InternalElement>> items;
  ESeparatorType fieldSeparator;
};

}  // namespace vantrelia
