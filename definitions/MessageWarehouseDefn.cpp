#include "definitions/MessageWarehouseDefn.h"

#include "definitions/DefinitionFile.h"
#include "definitions/PcfMessages.h"
#include "definitions/PcfVersion.h"
#include "foundation/InvalidFile.h"

namespace vantrelia {

MessageWarehouseDefn::MessageWarehouseDefn() = default;
MessageWarehouseDefn::~MessageWarehouseDefn() = default;

void MessageWarehouseDefn::load(const std::string& path) {
  DefinitionFile stream(path);
  read(stream);
}

void MessageWarehouseDefn::clear() {
  forgetSeparatorPrototypes();
  version = 0;
  messageSets.clear();
  primitiveTypeCount = 0;
  primitiveTypes.clear();
  arrayTypeCount = 0;
  arrayTypes.clear();
  hasVariableFields = false;
  userDataKeys.clear();
  userData.clear();
}

void MessageWarehouseDefn::read(InputStream& stream) {
  try {
    readContents(stream);
  } catch (const InvalidFile&) {
    throw;
  } catch (...) {
    throw InvalidFile(messages::kUnexpectedLoadError);
  }
}

void MessageWarehouseDefn::readContents(InputStream& stream) {
  clear();

  const int fileVersion = stream.readInt();
  // Newness is checked first: a file from a later engine should say so, not look corrupt.
  if (fileVersion > pcf::kNewestVersion) throw InvalidFile(messages::kPcfTooNew);
  if (fileVersion < pcf::kOldestVersion) throw InvalidFile(messages::kInvalidVersion);

  if (fileVersion >= pcf::kFileHeader) {
    std::string header;
    stream.read(header);
    if (header != pcf::kHeaderText) throw InvalidFile(messages::kInvalidHeader);
  }

  if (fileVersion >= pcf::kTypeTables) readTypeTables(stream, fileVersion);

  if (fileVersion >= pcf::kHasVariableFields) stream.read(hasVariableFields);

  if (fileVersion >= pcf::kUserData) {
    const int keyCount = stream.readCount();
    for (int i = 0; i < keyCount; ++i) {
      WideText key;
      stream.readWide(key);
      userDataKeys.push_back(std::move(key));
    }
    const int valueCount = stream.readCount();
    for (int i = 0; i < valueCount; ++i) {
      const int keyIndex = stream.readCount();
      WideText value;
      stream.readWide(value);
      userData.emplace(keyIndex, std::move(value));  // the first value for a key stays
    }
  }

  settings.flags = fileVersion >= pcf::kInitialFlags ? static_cast<uint32_t>(stream.readInt()) : 0;

  const int setCount = stream.readInt();
  version = fileVersion;
  std::vector<MessageDefn*> deferredMessages;
  for (int i = 0; i < setCount; ++i) {
    // In the list before it is read, so that its items can find the sets read so far by id.
    MessageSetDefn& set = addMessageSet(std::make_unique<MessageSetDefn>(*this));
    set.load(*this, stream, fileVersion, deferredMessages);
  }

  // An item may embed a set that comes later in the file; now that all are in, those references
  // can be completed. With one set there is nothing later to find.
  if (messageSets.size() > 1)
    for (const auto& set : messageSets)
      for (const auto& message : set->getMessages()) message->completeEmbeddedReferences(*this);

  // Files without state tables get theirs built here, once embedded sets can be reached.
  for (MessageDefn* message : deferredMessages) message->buildStateTables();

  // From here on a set's id is its position; embedded references are complete and never looked up
  // by file id again.
  for (size_t i = 0; i < messageSets.size(); ++i) messageSets[i]->setId(static_cast<int32_t>(i));
}

void MessageWarehouseDefn::readTypeTables(InputStream& stream, int fileVersion) {
  // A record whose id is already taken is still read, to stay in step, and then dropped: the first
  // record under an id is the one that counts.
  primitiveTypeCount = stream.readInt();
  if (primitiveTypeCount < 0) throw InvalidFile(messages::kInvalidPrimitiveTypeCount);
  for (int32_t i = 0; i < primitiveTypeCount; ++i) {
    auto type = std::make_unique<PrimitiveTypeDefn>();
    type->load(stream, fileVersion);
    const int32_t id = type->getId();
    primitiveTypes.try_emplace(id, std::move(type));
  }

  // Array types come second so that their custom item types are already known.
  arrayTypeCount = stream.readInt();
  if (arrayTypeCount < 0) throw InvalidFile(messages::kInvalidArrayTypeCount);
  for (int32_t i = 0; i < arrayTypeCount; ++i) {
    auto type = std::make_unique<ArrayTypeDefn>();
    type->load(stream, *this);
    const int32_t id = type->getId();
    arrayTypes.try_emplace(id, std::move(type));
  }
}

const PrimitiveTypeDefn* MessageWarehouseDefn::findPrimitiveType(int32_t id) const {
  const auto found = primitiveTypes.find(id);
  return found == primitiveTypes.end() ? nullptr : found->second.get();
}

const ArrayTypeDefn* MessageWarehouseDefn::findArrayType(int32_t id) const {
  const auto found = arrayTypes.find(id);
  return found == arrayTypes.end() ? nullptr : found->second.get();
}

int MessageWarehouseDefn::getUserDataKeyIndex(std::u16string_view key) const {
  for (size_t i = 0; i < userDataKeys.size(); ++i)
    if (userDataKeys[i].view() == key) return static_cast<int>(i);
  return -1;
}

std::optional<std::u16string> MessageWarehouseDefn::findUserData(std::u16string_view key) const {
  const int index = getUserDataKeyIndex(key);
  if (index < 0) return std::nullopt;
  const auto found = userData.find(index);
  if (found == userData.end()) return std::nullopt;
  return found->second.str();
}

MessageSetDefn& MessageWarehouseDefn::addMessageSet(std::unique_ptr<MessageSetDefn> set) {
  messageSets.push_back(std::move(set));
  return *messageSets.back();
}

std::shared_ptr<const SeparatorList> MessageWarehouseDefn::findSeparatorPrototype(const MessageSetDefn& set) const {
  const std::lock_guard<std::mutex> lock(prototypeMutex);
  const auto found = separatorPrototypes.find(&set);
  return found == separatorPrototypes.end() ? nullptr : found->second;
}

void MessageWarehouseDefn::keepSeparatorPrototype(const MessageSetDefn& set,
                                                  std::shared_ptr<const SeparatorList> prototype) const {
  const std::lock_guard<std::mutex> lock(prototypeMutex);
  separatorPrototypes[&set] = std::move(prototype);
}

void MessageWarehouseDefn::forgetSeparatorPrototypes() const {
  const std::lock_guard<std::mutex> lock(prototypeMutex);
  separatorPrototypes.clear();
}

}  // namespace vantrelia
