#include "parsing/SeparatorList.h"

#include <algorithm>
#include <atomic>

#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/SeparatorDefn.h"
#include "foundation/BadParameter.h"
#include "foundation/NodePool.h"
#include "parsing/ParsingMessages.h"
#include "parsing/SeparatorCut.h"
#include "parsing/SeparatorSlotIndex.h"

namespace vantrelia {

namespace {

// The three levels a message starts with.
constexpr ESeparatorType kBaseLevels[] = {qxSepMessage, qxSepGroup, qxSepSegment};

}  // namespace

SeparatorList::SeparatorList(const MessageSetDefn& messageSet, bool fixedWidth, const SeparatorList* parent)
    : messageSet(&messageSet),
      trimSegments(messageSet.getTrimSegments()),
      fixedWidth(fixedWidth),
      parent(parent),
      slotIndex(std::make_shared<SeparatorSlotIndex>()) {
  for (int32_t i = 0; i < kSeparatorSlots; ++i) {
    const SeparatorImpl& slot = slots.edit(static_cast<size_t>(i)) = SeparatorImpl(messageSet.getSeparator(i));
    if (slot.defn->getPosition() >= 0 && slot.defn->getFieldPath().getName().length() != 0) fieldSlots |= 1u << i;
  }
  if (messageSet.getGenericParsing()) genericTrie = std::make_unique<SeparatorTrieNode>();
}

SeparatorList::SeparatorList(const SeparatorList& other)
    : messageSet(other.messageSet),
      variablePending(other.variablePending),
      trimSegments(other.trimSegments),
      fromWire(other.fromWire),
      fixedWidth(other.fixedWidth),
      checkOutputTail(other.checkOutputTail),
      parent(other.parent),
      parentHold(other.parentHold),
      slots(other.slots),
      savedSlots(other.savedSlots ? std::make_unique<Slots>(*other.savedSlots) : nullptr),
      currentSeparator(other.currentSeparator),
      levels(other.levels),
      levelMask(other.levelMask),
      specialStrings(other.specialStrings),
      levelFixedWidth(other.levelFixedWidth),
      crlfEquivalent(other.crlfEquivalent),
      errorSettings(other.errorSettings),
      slotIndex(other.slotIndex),
      fieldSlots(other.fieldSlots) {
  if (other.genericTrie) genericTrie = std::make_unique<SeparatorTrieNode>();
  rebuildReplaceOrder();
  rebuildCharacterSets();
  takeCutStops(other);
}

SeparatorList::SeparatorList(const SeparatorList& prototype, const SeparatorList* parent)
    : messageSet(prototype.messageSet),
      variablePending(prototype.variablePending),
      trimSegments(prototype.trimSegments),
      fromWire(prototype.fromWire),
      fixedWidth(prototype.fixedWidth),
      parent(parent),
      slots(prototype.slots),
      currentSeparator(prototype.currentSeparator),
      replaceOrder(prototype.replaceOrder),
      replaceOrderKey(prototype.replaceOrderKey),
      replaceOrderKeyed(prototype.replaceOrderKeyed),
      levels(prototype.levels),
      levelMask(prototype.levelMask),
      levelFixedWidth(prototype.levelFixedWidth),
      mustQuoteCharacters(prototype.mustQuoteCharacters),
      mustEncodeCharacters(prototype.mustEncodeCharacters),
      errorSettings(prototype.errorSettings),
      slotIndex(prototype.slotIndex),
      fieldSlots(prototype.fieldSlots) {
  if (prototype.genericTrie) genericTrie = std::make_unique<SeparatorTrieNode>();
  // The one thing a reset takes from the warehouse's settings, which may have changed since.
  takeCrlfEquivalent();
  // The same slots as the prototype's, and the same version while that holds.
  if (crlfEquivalent == prototype.crlfEquivalent) copiedVersion = slotsVersion = prototype.slotsVersion;
  takeCutStops(prototype);
}

void SeparatorList::takeSettled(const SeparatorList& settled) {
  beforeSlotsChange();
  slots = settled.slots;
  savedSlots = settled.savedSlots ? std::make_unique<Slots>(*settled.savedSlots) : nullptr;
  variablePending = settled.variablePending;
  crlfEquivalent = settled.crlfEquivalent;
  replaceOrder = settled.replaceOrder;
  replaceOrderKey = settled.replaceOrderKey;
  replaceOrderKeyed = settled.replaceOrderKeyed;
  mustQuoteCharacters = settled.mustQuoteCharacters;
  mustEncodeCharacters = settled.mustEncodeCharacters;
  currentSeparator = settled.currentSeparator;
  levels = settled.levels;
  levelMask = settled.levelMask;
  specialStrings = settled.specialStrings;
  levelFixedWidth = settled.levelFixedWidth;
  poppedOutOfForce.clear();
  trieDirty = true;
  slotsVersion = settled.slotsVersion;
  keptTrieKey = settled.keptTrieKey;
  keptTrieKeyVersion = settled.keptTrieKeyVersion;
  takeCutStops(settled);
}

std::shared_ptr<SeparatorList> SeparatorList::startOfWire(const MessageSetDefn& set, const SeparatorList* parent) {
  const MessageWarehouseDefn* warehouse = set.getWarehouse();
  const bool inherits =
      parent && (set.getInitializeSeparatorsFromParent() || set.getInitializeValidationErrSettingsFromParent());
  if (!warehouse || inherits) {
    auto list = std::allocate_shared<SeparatorList>(NodePoolAllocator<SeparatorList>(), set, set.isFixedWidth(), parent);
    list->reset(true, true, true);
    return list;
  }
  std::shared_ptr<const SeparatorList> prototype = warehouse->findSeparatorPrototype(set);
  if (!prototype) {
    auto made = std::make_shared<SeparatorList>(set, set.isFixedWidth(), nullptr);
    made->reset(true, true, true);
    made->workOutCutStops();
    warehouse->keepSeparatorPrototype(set, made);
    prototype = std::move(made);
  }
  return std::allocate_shared<SeparatorList>(NodePoolAllocator<SeparatorList>(), *prototype, parent);
}

SeparatorList::~SeparatorList() { beforeSlotsChange(); }

std::shared_ptr<SeparatorCut> SeparatorList::shareCut() {
  if (!cut) {
    workOutCutStops();
    cut = std::make_shared<SeparatorCut>(*this, cutStops);
  }
  return cut;
}

void SeparatorList::workOutCutStops() {
  if (cutStops && cutStopsVersion == slotsVersion && cutStopsCrlf == crlfEquivalent) return;
  cutStops = SeparatorCut::stopsOf(*this);
  cutStopsVersion = slotsVersion;
  cutStopsCrlf = crlfEquivalent;
}

void SeparatorList::takeCutStops(const SeparatorList& other) {
  if (!other.cutStops || other.cutStopsVersion != other.slotsVersion || other.cutStopsCrlf != other.crlfEquivalent ||
      crlfEquivalent != other.crlfEquivalent) {
    return;
  }
  cutStops = other.cutStops;
  cutStopsVersion = slotsVersion;
  cutStopsCrlf = crlfEquivalent;
}

void SeparatorList::keepCut() {
  // Nobody else holding it means no segment waits for its fields.
  if (cut.use_count() > 1) cut->freeze();
  cut.reset();
}

uint64_t SeparatorList::nextVersion() {
  static std::atomic<uint64_t> last{0};
  return last.fetch_add(1, std::memory_order_relaxed) + 1;
}

bool SeparatorList::sameSlotsAs(const SeparatorList& other) const {
  if (&other == this) return true;
  if (lastSame.other == &other && lastSame.mine == slotsVersion && lastSame.theirs == other.slotsVersion) {
    return lastSame.same;
  }
  bool same = crlfEquivalent == other.crlfEquivalent;
  for (size_t i = 0; same && i < slots.size(); ++i) {
    const SeparatorImpl& mine = slots[i];
    const SeparatorImpl& theirs = other.slots[i];
    same = mine.active == theirs.active && mine.value == theirs.value &&
           mine.replacementValue == theirs.replacementValue &&
           mine.terminatorReplacementText() == theirs.terminatorReplacementText();
  }
  lastSame = {&other, slotsVersion, other.slotsVersion, same};
  return same;
}

void SeparatorList::rebuildClasses() const {
  // The separators that cut text or stand for something in it.
  static constexpr ESeparatorType kMarked[] = {qxSepSegment, qxSepRepeat, qxSepNull,  qxSepField1, qxSepField2,
                                               qxSepField3,  qxSepField4, qxSepField5, qxSepUser1,  qxSepUser2,
                                               qxSepUser3,   qxSepUser4,  qxSepUser5,  qxSepMessage, qxSepGroup,
                                               qxSepLength,  qxSepCrlf};
  classes.fill(kDataCharacter);
  otherClassed.clear();
  const auto mark = [this](char16_t c, uint8_t what) {
    if (c >= classes.size()) {
      otherClassed += c;
      return;
    }
    // Two separators with the same character make it stand for neither; a separator keeps its
    // class when its character also asks for encoding.
    uint8_t& at = classes[c];
    if (at == kDataCharacter) {
      at = what;
    } else if (at != what && what != kOtherCharacter) {
      at = kOtherCharacter;
    }
  };
  for (const ESeparatorType index : kMarked) {
    const SeparatorImpl& slot = slots[static_cast<size_t>(index)];
    if (!slot.active || slot.value.empty()) continue;
    mark(slot.value.front(), slot.value.size() == 1 ? static_cast<uint8_t>(index + 1) : kOtherCharacter);
  }
  for (const char16_t c : mustEncodeCharacters) mark(c, kOtherCharacter);
  for (const char16_t c : mustQuoteCharacters) mark(c, kOtherCharacter);
  classesVersion = slotsVersion;
}

SeparatorList::Slots SeparatorList::savedOrDefinedSlots() const {
  if (savedSlots) return *savedSlots;
  Slots defined;
  for (int32_t i = 0; i < kSeparatorSlots; ++i) defined[static_cast<size_t>(i)] = SeparatorImpl(messageSet->getSeparator(i));
  return defined;
}

void SeparatorList::refuseSeparatorIndex() { throw BadParameter(messages::kInvalidSeparator); }

// ----- reset and recompute

void SeparatorList::reset(bool fromWireArg, bool initSeparators, bool initErrorSettings) {
  beforeSlotsChange();
  // translateValue looks at fromWire, so it takes its new value first.
  fromWire = fromWireArg;
  if (initSeparators) {
    if (!messageSet->getInitializeSeparatorsFromParent() || !parent) {
      for (SeparatorImpl& slot : slots.edit()) {
        const bool preset = slot.flags() & SeparatorDefn::kPreset;
        slot.known = preset;
        // A value read earlier survives a reset until something replaces it; a host's value of a
        // preset separator survives for good.
        if (preset ? slot.useDefault : slot.value.empty()) slot.takeDefaultValue();
      }
      takeReplacements();
    } else {
      // The texts come from the parent; the definitions stay this set's own.
      Slots& own = slots.edit();
      for (size_t i = 0; i < own.size(); ++i) {
        const SeparatorDefn* defn = own[i].defn;
        own[i] = parent->slots[i];
        own[i].defn = defn;
        own[i].known = !own[i].value.empty();
      }
    }
  }
  rebuildReplaceOrder();

  takeCrlfEquivalent();

  if (initErrorSettings) {
    errorSettings.reload(*messageSet, parent ? &parent->errorSettings : nullptr);
  }

  resetLevels();
  checkOutputTail = false;
  clearOutput();
  updateActive();
}

void SeparatorList::resetLevels() {
  releaseTrie();
  levels.assign(std::begin(kBaseLevels), std::end(kBaseLevels));
  noteLevels();
  currentSeparator = qxSepSegment;
  specialStrings.clear();
  levelFixedWidth.assign(levels.size(), fixedWidth ? 1 : 0);
  stackSaver.clear();
  poppedOutOfForce.clear();
  savedLevels.clear();
  trieDirty = true;
  if (genericTrie) genericTrie = std::make_unique<SeparatorTrieNode>();
}

void SeparatorList::workOutPlainSegments() const {
  const auto inUse = [this](ESeparatorType index) { return slots[index].active && !slots[index].value.empty(); };
  const SeparatorDefn* segment = slots[qxSepSegment].defn;
  plainSegments = !variablePending && crlfEquivalent < 0 && !inUse(qxSepMessage) && !inUse(qxSepGroup) &&
                  inUse(qxSepSegment) && !(segment && (segment->getFlags() & SeparatorDefn::kInitiator));
  plainSegmentsVersion = slotsVersion;
}

bool SeparatorList::atBaseLevels() const {
  return std::equal(levels.begin(), levels.end(), std::begin(kBaseLevels), std::end(kBaseLevels)) &&
         specialStrings.empty() && stackSaver.empty();
}

void SeparatorList::takeCrlfEquivalent() {
  const MessageWarehouseDefn* warehouse = messageSet->getWarehouse();
  crlfEquivalent = warehouse && warehouse->getSettings().replaceCRLFWithSegmentSeparator ? qxSepSegment : -1;
  const SeparatorImpl& crlf = slots[qxSepCrlf];
  if (crlf.known && !crlf.value.empty()) {
    for (int32_t i = 0; i < qxSepCrlf; ++i) {
      if (slots[static_cast<size_t>(i)].value == crlf.value) {
        crlfEquivalent = i;
        break;
      }
    }
  }
}

void SeparatorList::flipActive(uint32_t flipped) {
  Slots& own = slots.edit();
  for (; flipped != 0; flipped &= flipped - 1) {
    SeparatorImpl& slot = own[static_cast<size_t>(__builtin_ctz(flipped))];
    slot.active = !slot.active;
  }
}

void SeparatorList::updateActive() {
  slotsVersion = nextVersion();
  variablePending = false;
  // Most calls change nothing: slots shared with another list stay shared.
  uint32_t flipped = 0;
  const Slots& current = slots.all();
  for (size_t i = 0; i < current.size(); ++i) {
    const SeparatorImpl& slot = current[i];
    const bool active = !slot.value.empty() && (slot.known || !fromWire);
    flipped |= static_cast<uint32_t>(slot.active != active) << i;
    if (!slot.known && !(slot.flags() & SeparatorDefn::kFixed)) variablePending = true;
  }
  if (flipped) flipActive(flipped);
  if (!variablePending) rebuildReplaceOrder();
  rebuildCharacterSets();
}

// ----- queries and changes


const FieldPathDefn& SeparatorList::getFieldLocation(int32_t index) const {
  checkSeparatorIndex(index);
  return defnOf(index).getFieldPath();
}

int32_t SeparatorList::getPosition(int32_t index) const {
  checkSeparatorIndex(index);
  return defnOf(index).getPosition();
}

void SeparatorList::setSeparatorValue(int32_t index, std::u16string_view text) {
  checkSeparatorIndex(index);
  beforeSlotsChange();
  SeparatorImpl& slot = slots.edit(static_cast<size_t>(index));
  slot.setValue(std::u16string(text));
  slot.useDefault = false;
  trieDirty = true;
  updateActive();
}

void SeparatorList::setKnown(int32_t index, bool known) {
  checkSeparatorIndex(index);
  beforeSlotsChange();
  slots.edit(static_cast<size_t>(index)).known = known;
  updateActive();
}

// ----- error severities

EVErrType SeparatorList::getValidationErrorSetting(int32_t errorNumber) const { return errorSettings.get(errorNumber); }

void SeparatorList::setValidationErrorSetting(int32_t errorNumber, EVErrType setting) {
  beforeSlotsChange();
  errorSettings.set(errorNumber, setting);
}

}  // namespace vantrelia
