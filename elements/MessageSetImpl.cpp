#include "elements/MessageSetImpl.h"

#include <string>

#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "elements/ElementMessages.h"
#include "elements/ElementPath.h"
#include "elements/ElementUserData.h"
#include "elements/ItemListNode.h"
#include "elements/MessageImpl.h"
#include "foundation/BadParameter.h"
#include "foundation/CheckIndex.h"
#include "foundation/Format.h"
#include "foundation/IllegalOperation.h"
#include "parsing/MessageParser.h"
#include "parsing/ParseContext.h"
#include "parsing/ParseFindingsScope.h"
#include "parsing/SeparatorList.h"
#include "parsing/StringParserStream.h"
#include "validation/ValidationLocation.h"
#include "validation/RecordedErrors.h"

namespace vantrelia {

MessageSetImpl::MessageSetImpl(const MessageItemDefn* itemDefn, const MessageSetDefn* setDefn, InternalElement* parent,
                               int32_t index, SeparatorList* separators)
    : InternalElement(parent, index), itemDefn(itemDefn), separators(separators), setDefn(setDefn) {}

MessageSetImpl::~MessageSetImpl() = default;

// A set at the root of a parse has no item; hosts never see one, so its set's name will do.
const char* MessageSetImpl::getName() const {
  if (itemDefn) return itemDefn->getName().c_str();
  return setDefn ? setDefn->getName().c_str() : "";
}

int MessageSetImpl::getElementIndex() { return ItemListNode::visibleIndexOf(*this); }

MetaDataRecord* MessageSetImpl::getMetaData() { return nullptr; }

bool MessageSetImpl::getUserData(const std::u16string& key, std::u16string& value) {
  return itemDefn && ElementUserData::find(itemDefn->getUserData(), &itemDefn->getSet(), key, value);
}

// ----- the list

MessageElement* MessageSetImpl::appendElement(const char* messageType) {
  const std::string_view type = ElementPath::of(messageType);
  if (type.empty()) throw BadParameter(messages::kMessageTypeNullOrEmpty);
  const MessageDefn* found = nullptr;
  if (setDefn) {
    for (const auto& message : setDefn->getMessages()) {
      if (message->getName().view() == type) {
        found = message.get();
        break;
      }
    }
  }
  if (!found) throw BadParameter(formatMessage(messages::kMessageTypeNotFound, messageType));
  auto message = std::make_unique<MessageImpl>(*found, this, static_cast<int32_t>(messages.size()), separators);
  message->setCreated(true);
  messages.push_back(std::move(message));
  setChanged(true);
  return messages.back().get();
}

void MessageSetImpl::removeElementAt(int at) {
  checkIndex(at, getElementCount());
  messages.erase(messages.begin() + at);
  for (size_t i = static_cast<size_t>(at); i < messages.size(); ++i) messages[i]->index = static_cast<int32_t>(i);
  setChanged(true);
}

void MessageSetImpl::removeAllElements() {
  messages.clear();
  messages.shrink_to_fit();
  setChanged(true);
}

void MessageSetImpl::setEmpty() {
  removeAllElements();
  setChanged(true);
}

bool MessageSetImpl::isChildPresent(int at) { return at >= 0 && at < getElementCount(); }

bool MessageSetImpl::attachSegment(SegmentElement*, int) { return false; }

MessageElement* MessageSetImpl::getElementAt(int at) {
  checkIndex(at, getElementCount());
  return messages[static_cast<size_t>(at)].get();
}

MessageElement* MessageSetImpl::getElementAt(const char* path) {
  return ElementPath::walkIndexed(*this, path, ItemListNode::parentSeenFromBelow(*this));
}

ElementCollection MessageSetImpl::getElementCollection(const char* spec) {
  return ElementPath::collectIndexed(*this, spec);
}

// ----- copies

std::unique_ptr<MessageSetImpl> MessageSetImpl::copyWithParent(InternalElement* newParent, SeparatorList* list) const {
  auto copy = std::make_unique<MessageSetImpl>(itemDefn, setDefn, newParent, index, list);
  copy->messages.reserve(messages.size());
  for (const auto& message : messages) copy->messages.push_back(message->cloneWithParent(copy.get()));
  return copy;
}

std::unique_ptr<MessageElement> MessageSetImpl::clone() { return copyWithParent(parent, separators); }

std::unique_ptr<InternalElement> MessageSetImpl::cloneWithParent(InternalElement* newParent) {
  return copyWithParent(newParent, newParent ? newParent->getSeparatorList() : separators);
}

// ----- paths and text

void MessageSetImpl::appendPath(std::string& text) {
  if (parent) parent->appendPath(text);
  if (!text.empty()) text += '/';
  text += getName();
}

std::u16string_view MessageSetImpl::setEncodedValue(std::u16string_view text) {
  setChanged(true);
  setEmpty();
  if (text.empty()) return text;
  for (InternalElement* node = parent; node; node = node->parent) {
    if (auto* message = dynamic_cast<MessageImpl*>(node)) {
      message->getSeparatorList()->settleHeadersBefore(&message->getMessageDefn().getSet(), nullptr, -1);
      break;
    }
  }
  RecordedErrors errors;
  return parseEncodedValue(text, errors);
}

std::u16string_view MessageSetImpl::parseEncodedValue(std::u16string_view text, RecordedErrors&) {
  setEmpty();
  InternalElement* enclosing = parent;
  while (enclosing && !dynamic_cast<MessageImpl*>(enclosing)) enclosing = enclosing->parent;
  if (!enclosing || !setDefn->getWarehouse()) return text;
  auto source = std::make_shared<const std::u16string>(text);
  StringParserStream stream(source->data(), static_cast<int32_t>(source->size()));
  ParseContext context = ParseContext::buildContextFrom(*enclosing, source);
  const ParseFindingsScope findingsScope(context.errors);
  ValidationLocation location;
  LookAheadList lookAhead;
  LookAheadList::iterator iterator = lookAhead.end();
  // A set takes as many messages as the text holds.
  while (MessageParser::parseMessage(*this, context, lookAhead, iterator, stream, nullptr, location)) {
    if (iterator == lookAhead.end() && stream.atEnd()) break;
  }
  size_t remaining = static_cast<size_t>(stream.getRemaining());
  if (!lookAhead.empty() && lookAhead.front().remainingAtStart >= 0) {
    remaining = static_cast<size_t>(lookAhead.front().remainingAtStart);
  }
  for (SegmentMatch& entry : lookAhead) entry.dropElement();
  return text.substr(text.size() - remaining);
}

std::u16string MessageSetImpl::getEncodedValue() {
  if (!separators->getFromWire()) separators->finishWalk();
  separators->clearOutput();
  int32_t counter = -1;
  writeElement(*separators, false, counter);
  return separators->getOutput();
}

std::u16string MessageSetImpl::getEncodedValueNoTouch() {
  separators->clearOutput();
  int32_t counter = -1;
  writeElement(*separators, true, counter);
  return separators->getOutput();
}

bool MessageSetImpl::writeElement(SeparatorList& list, bool minimize, int32_t& counter) {
  // Each message writes with its own separators; only its finished text reaches this list.
  list.writeSeparator(SeparatorList::kWriteInitiator, qxSepMessage);
  for (size_t i = 0; i < messages.size(); ++i) {
    if (i > 0) list.writeSeparator(SeparatorList::kWriteInitiator | SeparatorList::kWriteSeparator |
                                       SeparatorList::kWriteTerminator,
                                   qxSepMessage);
    InternalElement& message = *messages[i];
    SeparatorList& own = *message.getSeparatorList();
    own.clearOutput();
    message.writeElement(own, minimize, counter);
    list.writeData(own.getOutput());
  }
  list.writeSeparator(SeparatorList::kWriteTerminator, qxSepMessage);
  return true;
}

// ----- parsing, counting and validation come with their walks

bool MessageSetImpl::canStartOnPath(std::vector<int32_t>::const_iterator, std::vector<int32_t>::const_iterator) {
  return false;
}

bool MessageSetImpl::parseElement(ParserStream&, RecordedErrors&, uint32_t&, ValidationLocation&) { return false; }

int MessageSetImpl::getCountForPath(std::string_view, int, bool) { return 0; }
int MessageSetImpl::countSegments(bool) { return 0; }
int MessageSetImpl::countGroups(bool) { return 0; }
int MessageSetImpl::countMessages(bool) { return 0; }

void MessageSetImpl::validateInto(SeparatorList&, ValidationErrorList&, bool, ValidationLocation&, bool) {}

void MessageSetImpl::validateTop(ValidationErrorList&, bool) {}

void MessageSetImpl::forgetParserPositions(RecordedErrors& errors) {
  errors.forget(this);
  for (const auto& message : messages) message->forgetParserPositions(errors);
}

}  // namespace vantrelia
