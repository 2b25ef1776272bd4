#pragma once
// One self-contained dialect of a definition file. So far it carries what the factory's settings
// reach (its name, its id and its error severities) and what fields and composites need: its
// warehouse, its validation tables and its composites. The record reader comes with the rest of it.

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <array>

#include "definitions/CompositeDefn.h"
#include "definitions/FieldPathDefn.h"
#include "definitions/MessageDefn.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SegmentTagMap.h"
#include "definitions/SeparatorDefn.h"
#include "definitions/UpdateFieldDefn.h"
#include "definitions/ValidationErrorSettingDefn.h"
#include "definitions/ValidationTableDefn.h"
#include "foundation/TRVString.h"

namespace vantrelia {

class FieldDefn;
class InputStream;
class MessageWarehouseDefn;
namespace testing {
class DefinitionSetup;
}

class MessageSetDefn {
 public:
  // A set comes from its warehouse's load; `load` fills it.
  explicit MessageSetDefn(const MessageWarehouseDefn& owner) : warehouse(&owner) {}
  virtual ~MessageSetDefn();
  MessageSetDefn(const MessageSetDefn&) = delete;
  MessageSetDefn& operator=(const MessageSetDefn&) = delete;

  // Reads the set's record and everything in it. Messages whose state tables the file doesn't
  // carry go on `deferredMessages`: their tables are built once every set is in.
  void load(MessageWarehouseDefn& warehouse, InputStream& stream, int version, std::vector<MessageDefn*>& deferredMessages);

  int32_t getId() const { return id; }
  const kestrel::TRVString<char>& getName() const { return name; }

  bool isFixedWidth() const { return FixedWidth; }
  bool getInitializeSeparatorsFromParent() const { return InitializeSeparatorsFromParent; }
  bool getTrimSegments() const { return TrimSegments; }
  bool getGenericParsing() const { return genericParsing; }
  bool getCountEncodedLength() const { return countEncodedLength; }
  bool getInitializeValidationErrSettingsFromParent() const { return InitializeValidationErrSettingsFromParent; }
  int32_t getHeaderItemCount() const { return headerItemCount; }
  const UserDataMap& getUserData() const { return userData; }

  // Indexed by ESeparatorType; a separator the file doesn't give keeps its defaults.
  const SeparatorDefn& getSeparator(int type) const { return separators.at(static_cast<size_t>(type)); }
  int32_t getMessageTypeFieldCount() const { return static_cast<int32_t>(messageTypeFields.size()); }
  const std::vector<FieldPathDefn>& getMessageTypeFields() const { return messageTypeFields; }

  // The warehouse that owns the set; null for a set made on its own.
  const MessageWarehouseDefn* getWarehouse() const { return warehouse; }

  const std::vector<ValidationErrorSettingDefn>& getValidationErrorSettings() const { return validationErrorSettings; }
  // The first setting with that number. Throws BadParameter "Couldn't find the error number N".
  const ValidationErrorSettingDefn& getValidationErrorSetting(int number) const;

  int getValidationTableCount() const { return static_cast<int>(validationTables.size()); }
  const std::vector<std::unique_ptr<ValidationTableDefn>>& getValidationTables() const { return validationTables; }
  // By name, case counting; null when absent.
  const ValidationTableDefn* findValidationTable(const std::string& tableName) const;

  int getCompositeCount() const { return static_cast<int>(composites.size()); }
  const std::vector<std::unique_ptr<CompositeDefn>>& getComposites() const { return composites; }
  // The first composite with that id, or with that name (exact comparison); null when absent.
  const CompositeDefn* findCompositeById(int32_t compositeId) const;
  const CompositeDefn* findCompositeByName(std::string_view compositeName) const;

  // Segments, in file order, and the two look-ups that parsing and message items use.
  int getSegmentCount() const { return static_cast<int>(segments.size()); }
  const std::vector<std::unique_ptr<SegmentDefn>>& getSegments() const { return segments; }
  // The first segment of that id; null when absent.
  const SegmentDefn* findSegmentById(int32_t segmentId) const;
  const SegmentTagMap& getTagMap() const { return tagMap; }

  // Messages, in file order, and by their first type (the empty text for a message without one).
  int getMessageCount() const { return static_cast<int>(messageDefns.size()); }
  const std::vector<std::unique_ptr<MessageDefn>>& getMessages() const { return messageDefns; }
  // The first message entered under that type; null when absent.
  const MessageDefn* findMessageByType(std::u16string_view type) const;
  const std::multimap<std::u16string, MessageDefn*, std::less<>>& getMessagesByType() const { return messagesByType; }

 private:
  // The loaders: the warehouse numbers its sets, an item marks the segment it overrides, the
  // factory changes severities on a host's request, and tests set sets up piecewise.
  friend class MessageWarehouseDefn;
  friend class MessageItemDefn;
  friend class MessageFactory;
  friend class testing::DefinitionSetup;

  MessageSetDefn() = default;
  void setId(int32_t value) { id = value; }

  // The load steps. Takes a loaded table and enters it under its name; of two tables with one
  // name the first is found.
  ValidationTableDefn& addValidationTable(std::unique_ptr<ValidationTableDefn> table);
  // After the composites: takes them in file order, points every composite field of every
  // composite at its composite by id (composites may refer to later ones), then applies the
  // overrides collected in `updates` to the fields of every composite, in order. Throws
  // InvalidFile for an id that names no composite and for bad overrides.
  void addComposites(std::vector<std::unique_ptr<CompositeDefn>> loaded, FieldUpdates& updates);
  // The same for one field of a segment, once the composites are in: its composite, then the
  // overrides collected for it. A primitive field is left as it is.
  void resolveCompositeField(FieldDefn& field, FieldUpdates& updates) const;
  // After each segment, once the composites are in: takes it, enters it under its id and its tag,
  // then resolves each of its composite fields with the overrides collected for it. Throws
  // InvalidFile for an id that names no composite and for bad overrides.
  SegmentDefn& addSegment(std::unique_ptr<SegmentDefn> segment, FieldUpdates& updates);
  // After each message: takes it and enters it under its first type.
  MessageDefn& addMessage(std::unique_ptr<MessageDefn> message);
  SegmentDefn* segmentWithId(int32_t segmentId) const;
  // The setting a host changes through the factory; throws as getValidationErrorSetting.
  ValidationErrorSettingDefn& settingWithNumber(int number);

  static void applyUpdates(FieldDefn& field, FieldUpdates& updates);
  void fillUpValidationErrorSettings();
  void markMessageTypeFields();
  static void markByIndex(SegmentDefn& segment, const std::vector<int32_t>& indexes);
  CompositeDefn* compositeWithId(int32_t compositeId) const;

  int32_t id = 0;
  kestrel::TRVString<char> name;
  bool FixedWidth = false;
  bool reserved = false;  // read from the file, used by nothing
  bool InitializeSeparatorsFromParent = false;
  bool TrimSegments = false;
  bool genericParsing = false;
  bool countEncodedLength = true;
  std::array<SeparatorDefn, kSeparatorCount> separators;
  std::vector<FieldPathDefn> messageTypeFields;
  int32_t headerItemCount = 1;
  UserDataMap userData;
  bool InitializeValidationErrSettingsFromParent = false;
  const MessageWarehouseDefn* warehouse = nullptr;
  std::vector<std::unique_ptr<CompositeDefn>> composites;
  std::vector<std::unique_ptr<ValidationTableDefn>> validationTables;
  // Not owning; comparison by character code, case counting.
  std::map<std::string, ValidationTableDefn*, std::less<>> validationTablesByName;
  // Not owning; the first composite of an id, for the fix-up of composite fields.
  std::map<int32_t, CompositeDefn*> compositesById;
  std::vector<std::unique_ptr<SegmentDefn>> segments;
  // Not owning; the first segment of an id.
  std::map<int32_t, SegmentDefn*> segmentsById;
  SegmentTagMap tagMap;
  // Owned, file order (the name keeps clear of the namespace of failure texts).
  std::vector<std::unique_ptr<MessageDefn>> messageDefns;
  // Not owning; compared by code unit, messages of one key in file order.
  std::multimap<std::u16string, MessageDefn*, std::less<>> messagesByType;
  std::vector<ValidationErrorSettingDefn> validationErrorSettings;
};

}  // namespace vantrelia
