#pragma once
// The contract that every node of an element tree keeps, and the whole of what a host reaches a
// node through. Paths and names are narrow text, values and wire text wide. The operations keep
// one fixed order; a new operation goes where its neighbours are, never at the end for convenience.

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "elements/ElementCollection.h"
#include "foundation/Enumerations.h"

namespace vantrelia {

class MetaDataRecord;
class ValidationErrorList;

// A few operations have a behaviour that most node kinds share: refusing with IllegalOperation,
// having nothing to do, or passing through to the wire text. Those have a body here; a node kind
// that supports them overrides. Everything that each kind must answer for itself is pure.
class MessageElement {
 public:
  MessageElement() = default;
  MessageElement(const MessageElement&) = delete;
  MessageElement& operator=(const MessageElement&) = delete;

  // A new child at the end. `messageType` names the message to create and is read by a message
  // set only. Refused by every node that doesn't repeat.
  virtual MessageElement* appendElement(const char* messageType);
  virtual void removeAllElements();
  virtual void removeElementAt(int index);
  // Creates what the path names when it doesn't exist yet.
  virtual MessageElement* getElementAt(const char* path) = 0;
  virtual MessageElement* getElementAt(int index) = 0;
  virtual int getElementCount() = 0;
  // All findings, warnings included; the second keeps the errors only.
  virtual ValidationErrorList validate() = 0;
  virtual ValidationErrorList validateWithErrorsOnly() = 0;
  // A deep copy that keeps this node's parent pointer and index but isn't entered in the parent.
  virtual std::unique_ptr<MessageElement> clone() = 0;
  // Present means not empty, on every node: a node set to null is present.
  virtual bool isPresent();
  virtual void setEmpty() = 0;
  virtual bool isEmpty() = 0;
  // Nodes without a null value ignore setNull and are never null.
  virtual void setNull();
  virtual bool isNull();
  virtual ENodeType getNodeType() const = 0;
  // The name in the definition; the text belongs to the definition.
  virtual const char* getName() const = 0;
  virtual std::string getPath() = 0;
  // Parses wire text into this node and returns the part of `text` that it didn't take.
  virtual std::u16string_view setEncodedValue(std::u16string_view text) = 0;
  virtual std::u16string getEncodedValue() = 0;
  // Refused as "primitive binary fields"; binary fields accept, and messages and array fields
  // refuse with a text of their own.
  virtual void setValue(const unsigned char* bytes, int length);
  // On nodes that aren't fields or composites a value is the wire text.
  virtual void setValue(std::u16string_view text);
  virtual std::u16string getValue();
  virtual std::vector<unsigned char> getBinaryValue();
  // Like getElementAt(path) with "*" for every child, and nothing absent is created.
  virtual ElementCollection getElementCollection(const char* spec) = 0;
  virtual MessageElement* getParent() = 0;
  virtual int getElementIndex() = 0;
  virtual MetaDataRecord* getMetaData() = 0;
  virtual std::u16string getSeparatorValue(ESeparatorType separator) = 0;
  virtual void setSeparatorValue(ESeparatorType separator, std::u16string_view text) = 0;
  // Only segments and what lies inside them have a segment number.
  virtual int getSegmentNumber();
  virtual int getSegmentNumberInMessage();
  // False, and `value` untouched, when the key is empty or unknown.
  virtual bool getUserData(const std::u16string& key, std::u16string& value) = 0;
  virtual EMetaVErrSettingType getValidationErrorSettingType(int errorNumber) = 0;
  virtual void setValidationErrorSettingType(int errorNumber, EMetaVErrSettingType type) = 0;
  // Only messages and segment groups keep segments that they couldn't place.
  virtual int getUnknownSegmentCount();
  virtual MessageElement* getUnknownSegment(int index);
  virtual ~MessageElement() = default;
};

}  // namespace vantrelia
