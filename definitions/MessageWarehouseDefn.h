#pragma once
// The root of a loaded definition, and the holder of every run-time setting of the factory that
// owns it. Settings survive a reload; the definition doesn't.

#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "definitions/ArrayTypeDefn.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "foundation/TRVString.h"

namespace vantrelia {

class InputStream;

struct WarehouseSettings {
  bool validationCaching = false;
  bool createGenericMessages = false;
  uint32_t flags = 0;  // the only setting a load overwrites
  bool replaceCRLFWithSegmentSeparator = false;
  bool truncateFieldsToMaxLength = false;
  bool minimizeChanges = false;
  bool forceCountUpdate = false;
  bool ignoreGenericSegments = false;
  // Untouched parsed text is written back exactly as it was read.
  bool preserveParsedText = false;
  // Every segment is read in full when it is met: its fields are cut as it is read rather than
  // when first needed, and the header that opens the next message is read before the message
  // ends rather than known by its tag. The parse findings are complete when the parse ends; and
  // this is what the lazy reading is checked against.
  bool cutFieldsWhenRead = false;
  bool testBool = false;
  int32_t testInt = 0;
  double testDouble = 0.0;
  std::u16string testString;
};

class SeparatorList;

class MessageWarehouseDefn {
 public:
  using WideText = kestrel::TRVString<char16_t>;

  MessageWarehouseDefn();
  virtual ~MessageWarehouseDefn();
  MessageWarehouseDefn(const MessageWarehouseDefn&) = delete;
  MessageWarehouseDefn& operator=(const MessageWarehouseDefn&) = delete;

  // Opens the file and reads it. Every failure is an InvalidFile.
  void load(const std::string& path);
  // Clears the earlier definition, then fills this one from the stream. Anything thrown that
  // isn't an InvalidFile comes out as "Unexpected error occurred while loading parser control file".
  void read(InputStream& stream);
  // Frees the definition and keeps the settings.
  void clear();

  int getUserDataKeyIndex(std::u16string_view key) const;
  // The value stored under a key's text, if both the key and a value for it exist.
  std::optional<std::u16string> findUserData(std::u16string_view key) const;

  int getVersion() const { return version; }
  int getMessageSetCount() const { return static_cast<int>(messageSets.size()); }
  const std::vector<std::unique_ptr<MessageSetDefn>>& getMessageSets() const { return messageSets; }
  // The counts as the file gives them; a record whose id repeats an earlier one is counted but not kept.
  int getPrimitiveTypeCount() const { return primitiveTypeCount; }
  int getArrayTypeCount() const { return arrayTypeCount; }
  const std::map<int32_t, std::unique_ptr<PrimitiveTypeDefn>>& getPrimitiveTypes() const { return primitiveTypes; }
  const std::map<int32_t, std::unique_ptr<ArrayTypeDefn>>& getArrayTypes() const { return arrayTypes; }
  // Null for an id the warehouse doesn't know.
  const PrimitiveTypeDefn* findPrimitiveType(int32_t id) const;
  const ArrayTypeDefn* findArrayType(int32_t id) const;
  bool getHasVariableFields() const { return hasVariableFields; }
  const std::vector<WideText>& getUserDataKeys() const { return userDataKeys; }
  const std::map<int32_t, WideText>& getUserData() const { return userData; }

  WarehouseSettings& getSettings() { return settings; }
  const WarehouseSettings& getSettings() const { return settings; }

  // A separator list of the set as a message read from the wire starts with, kept for copying:
  // building one from the definition costs more than reading a short message. Null until kept.
  std::shared_ptr<const SeparatorList> findSeparatorPrototype(const MessageSetDefn& set) const;
  void keepSeparatorPrototype(const MessageSetDefn& set, std::shared_ptr<const SeparatorList> prototype) const;
  // After a change of the severities that the sets' lists start with.
  void forgetSeparatorPrototypes() const;

 private:
  friend class testing::DefinitionSetup;  // adds sets as if they had been read

  MessageSetDefn& addMessageSet(std::unique_ptr<MessageSetDefn> set);
  void readContents(InputStream& stream);
  void readTypeTables(InputStream& stream, int fileVersion);

  int version = 0;  // of the loaded file; 0 when nothing is loaded
  std::vector<std::unique_ptr<MessageSetDefn>> messageSets;
  int32_t primitiveTypeCount = 0;
  std::map<int32_t, std::unique_ptr<PrimitiveTypeDefn>> primitiveTypes;
  int32_t arrayTypeCount = 0;
  std::map<int32_t, std::unique_ptr<ArrayTypeDefn>> arrayTypes;
  bool hasVariableFields = false;
  std::vector<WideText> userDataKeys;
  std::map<int32_t, WideText> userData;
  WarehouseSettings settings;
  mutable std::mutex prototypeMutex;
  mutable std::map<const MessageSetDefn*, std::shared_ptr<const SeparatorList>> separatorPrototypes;
};

}  // namespace vantrelia
