#include "elements/MessageImpl.h"

#include "definitions/MessageDefn.h"
#include "definitions/MessageItemDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SegmentGroupDefn.h"
#include "elements/ElementMessages.h"
#include "elements/ElementUserData.h"
#include "elements/FactorySettings.h"
#include "elements/RepeatItemImpl.h"
#include "elements/SegmentImplBase.h"
#include "foundation/Format.h"
#include "foundation/IllegalOperation.h"
#include "parsing/ParseContext.h"
#include "parsing/ParseFindingsScope.h"
#include "parsing/SegmentReader.h"
#include "parsing/SeparatorList.h"
#include "parsing/StateWalk.h"
#include "parsing/StringParserStream.h"
#include "validation/ValidationLocation.h"
#include "validation/ValidationErrorList.h"

namespace vantrelia {

MessageImpl::MessageImpl(const MessageDefn& messageDefn, InternalElement* parent, int32_t index,
                         const SeparatorList* parentSeparators)
    : ItemListNode(messageDefn, messageDefn.getItems(), messageDefn.getVisibleChildren(), parent, index),
      separators(std::allocate_shared<SeparatorList>(NodePoolAllocator<SeparatorList>(), messageDefn.getSet(),
                                                     messageDefn.getSet().isFixedWidth(), parentSeparators)) {
  // Initiators, separators and severities as the definition gives them, as for a message written
  // from scratch; a parse resets the list for the wire.
  separators->reset(false, true, true);
}

MessageImpl::MessageImpl(const MessageDefn& messageDefn, InternalElement* parent, int32_t index,
                         std::shared_ptr<SeparatorList> sharedSeparators)
    : ItemListNode(messageDefn, messageDefn.getItems(), messageDefn.getVisibleChildren(), parent, index),
      separators(std::move(sharedSeparators)) {}

MessageImpl::~MessageImpl() {
  // The segments go before the separators: a list that outlives no segment read with it needn't
  // keep a copy of itself for them.
  prefetchEach(children);
  children.clear();
  unknownSegments.clear();
}

bool MessageImpl::isPreservingParsedText() {
  return !isCreated && FactorySettings::of(&messageDefn->getSet()).preserveParsedText;
}

void MessageImpl::setSourceText(std::shared_ptr<const std::u16string> text, int32_t start, int32_t end) {
  sourceText = std::move(text);
  sourceStart = start;
  sourceLength = sourceText && start >= 0 && end > start ? end - start : 0;
}

bool MessageImpl::parseSegments(ParseContext& context, LookAheadList& lookAhead, LookAheadList::iterator& iterator,
                                ParserStream& stream, const ParseCallback* callback, ValidationLocation& location) {
  return StateWalk(*this, context, lookAhead, iterator, stream, callback, location).parseSegments();
}

const char* MessageImpl::getName() const { return messageDefn->getName().c_str(); }

const MessageSetDefn* MessageImpl::getMessageSetDefn() { return &messageDefn->getSet(); }

MessageElement* MessageImpl::getParent() {
  if (!parent) throw IllegalOperation(messages::kMessageWithoutParent);
  return parent;
}

void MessageImpl::setValue(const unsigned char*, int) {
  throw IllegalOperation(messages::kSetBinaryPrimitiveValuesOnly);
}

bool MessageImpl::getUserData(const std::u16string& key, std::u16string& value) {
  return ElementUserData::find(messageDefn->getUserData(), &messageDefn->getSet(), key, value);
}

MetaDataRecord* MessageImpl::getMetaData() { return nullptr; }

// ----- copies

std::unique_ptr<MessageElement> MessageImpl::clone() {
  auto copy = std::make_unique<MessageImpl>(*messageDefn, parent, index);
  // The copy's separators start as the source's stand, and from then on are its own.
  copy->separators = std::make_shared<SeparatorList>(*separators);
  copy->isCreated = isCreated;
  copy->changed = changed;
  copy->treeChanged = treeChanged;
  cloneChildrenInto(*copy);
  return copy;
}

std::unique_ptr<InternalElement> MessageImpl::cloneWithParent(InternalElement* newParent) {
  std::unique_ptr<MessageElement> copy = clone();
  auto* message = static_cast<MessageImpl*>(copy.release());
  message->parent = newParent;
  return std::unique_ptr<InternalElement>(message);
}

// ----- paths

void MessageImpl::appendPath(std::string& text) {
  if (!parent) return;
  parent->appendPath(text);
  text += formatMessage("[%d]", index);
}

std::string_view MessageImpl::restAfterMatch(int matched, std::string_view rest) {
  const MessageItemDefn& item = getItem(matched);
  if (item.getMessageItemType() != MessageItemDefn::kGroupItem || !item.getGroup()->isUnorderedGroup()) return rest;
  if (rest.empty() || rest.front() != '[') return rest;
  // An unordered group is one node, whatever index the path gives it.
  const size_t close = rest.find(']');
  if (close == std::string_view::npos) return rest;
  return close + 2 <= rest.size() ? rest.substr(close + 2) : std::string_view();
}

const char* MessageImpl::childNotFoundText() const { return messages::kChildNotFoundInMessage; }

const char* MessageImpl::definitionName() const { return messageDefn->getName().c_str(); }

// ----- change tracking

bool MessageImpl::isTreeChanged() { return treeChanged; }

void MessageImpl::setTreeChanged(bool flag) {
  if (flag && parent) parent->setTreeChanged(true);
  treeChanged = flag;
}

bool MessageImpl::isChanged() {
  if (isCreated) return true;
  return parent ? parent->isChanged() : changed;
}

void MessageImpl::setChanged(bool flag) {
  if (flag) sourceLength = 0;
  if (parent) {
    parent->setChanged(true);
  } else {
    changed = flag;
  }
  if (flag) setTreeChanged(true);
}

bool MessageImpl::isMinimizeChanges() {
  return FactorySettings::of(&messageDefn->getSet()).minimizeChanges && !isCreated;
}

// ----- text

std::u16string_view MessageImpl::setEncodedValue(std::u16string_view text) {
  setEmpty();
  const MessageWarehouseDefn* warehouse = messageDefn->getSet().getWarehouse();
  if (!text.empty() && warehouse) {
    // The tree's separators stay in force; the fields may point into this one copy of the text.
    auto source = std::make_shared<const std::u16string>(text);
    ParseContext context(*warehouse, source, separators);
    const ParseFindingsScope findingsScope(context.errors);
    separators->reset(true, true, true);
    StringParserStream stream(source->data(), static_cast<int32_t>(source->size()));
    ValidationLocation location(true);
    LookAheadList lookAhead;
    lookAhead.push_back(SegmentReader::readNextSegment(context, stream, location, nullptr, nullptr, nullptr, false));
    LookAheadList::iterator iterator = lookAhead.begin();
    // A text that doesn't fit leaves what was placed.
    parseSegments(context, lookAhead, iterator, stream, nullptr, location);
    for (SegmentMatch& entry : lookAhead) entry.dropElement();
    const int32_t remaining = stream.getRemaining();
    separators->finishWalk();
    setChanged(true);
    return text.substr(text.size() - static_cast<size_t>(remaining));
  }
  setChanged(true);
  return text;
}

std::u16string MessageImpl::getEncodedValue() {
  // Asking for the text is no change of the text.
  const int32_t intact = sourceLength;
  setChanged(true);
  sourceLength = intact;
  int32_t counter = 0;
  writeElement(*separators, isMinimizeChanges(), counter);
  return separators->getOutput();
}

std::u16string MessageImpl::getEncodedValueNoTouch() {
  int32_t counter = 0;
  writeElement(*separators, true, counter);
  return separators->getOutput();
}

bool MessageImpl::writeElement(SeparatorList&, bool minimize, int32_t& counter) {
  // A message always writes into its own list, starting from the definition's separators as if a
  // wire text began.
  SeparatorList& list = *separators;
  // Fields still in the text stay there: a segment whose text is already what its fields would
  // give is written from it, and any other is cut when the write reaches its fields, with the
  // separators it was read with whatever the write does to the list.
  list.reset(true, true, false);
  if (isPreservingParsedText() && sourceLength > 0) {
    list.writeData(std::u16string_view(*sourceText).substr(static_cast<size_t>(sourceStart),
                                                           static_cast<size_t>(sourceLength)));
    return true;
  }
  const bool keepAbsent = isPreservingParsedText() ||
                          (FactorySettings::of(&messageDefn->getSet()).minimizeChanges ? !isCreated : minimize);
  bool written = false;
  for (int i = 0; i < getItemCount(); ++i) {
    const MessageItemDefn& item = getItem(i);
    InternalElement* child = children[static_cast<size_t>(i)].get();
    if (child && !child->isPlaceholderSegment()) {
      written |= child->writeElement(list, minimize, counter);
    } else if (item.isRequired() && !keepAbsent) {
      // A required item that isn't there is written as the definition makes it, then taken away.
      const bool wasAbsent = child == nullptr;
      written |= getChildCreating(i)->writeElement(list, false, counter);
      if (wasAbsent) children[static_cast<size_t>(i)].reset();
    } else if (item.getMessageItemType() == MessageItemDefn::kSegmentItem) {
      // A skipped segment settles the separators it would have carried.
      list.applyDefaultForPath(item.getSegment()->getName().view());
    }
  }
  list.finishWalk();
  return written;
}

// ----- parsing, counting and validation come with their walks

bool MessageImpl::parseElement(ParserStream&, RecordedErrors&, uint32_t&, ValidationLocation&) { return false; }

int MessageImpl::getCountForPath(std::string_view, int, bool) { return 0; }
int MessageImpl::countSegments(bool) { return 0; }
int MessageImpl::countGroups(bool) { return 0; }
int MessageImpl::countMessages(bool) { return 1; }

void MessageImpl::validateInto(SeparatorList&, ValidationErrorList&, bool, ValidationLocation&, bool) {}

namespace {

void cutFieldsBelow(InternalElement& node) {
  if (auto* segment = dynamic_cast<SegmentImplBase*>(&node)) {
    if (segment->hasUncutFields()) segment->cutFields();
    return;
  }
  if (auto* items = dynamic_cast<ItemListNode*>(&node)) {
    for (int i = 0; i < items->getUnknownSegmentCount(); ++i) {
      cutFieldsBelow(*static_cast<InternalElement*>(items->getUnknownSegment(i)));
    }
  }
  if (node.getNodeType() == qxMessageSet) {
    // The messages embedded here; asking by wildcard makes none that isn't there.
    const ElementCollection messages = node.getElementCollection("[*]");
    for (int i = 0; i < messages.getCount(); ++i) {
      if (MessageElement* message = messages.getItem(i)) cutFieldsBelow(*static_cast<InternalElement*>(message));
    }
    return;
  }
  if (auto* repeats = dynamic_cast<RepeatItemImpl*>(&node)) {
    // The repeats of a segment or group: each one there is an element.
    for (int i = 0; i < repeats->getElementCount(); ++i) {
      cutFieldsBelow(*static_cast<InternalElement*>(repeats->getElementAt(i)));
    }
    return;
  }
  if (auto* container = dynamic_cast<ElementContainer*>(&node)) {
    for (const auto& child : container->getChildArray()) {
      if (child) cutFieldsBelow(*child);
    }
  }
}

}  // namespace

void MessageImpl::cutAllFields() { cutFieldsBelow(*this); }

RecordedErrors& MessageImpl::getParseFindings() {
  cutAllFields();
  return recordedErrors;
}

void MessageImpl::validateTop(ValidationErrorList& out, bool includeWarnings) {
  cutAllFields();
  recordedErrors.replayInto(
      out, includeWarnings, [this](int32_t number) { return separators->getValidationErrorSetting(number); },
      [](MessageElement& element) { return element.getPath(); });
}

void MessageImpl::forgetParserPositions(RecordedErrors& errors) { errors.forget(this); }

}  // namespace vantrelia
