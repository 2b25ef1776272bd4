#pragma once
// Test set-up of definitions piece by piece, for tests that read single records without a whole
// file around them. Loaded definitions are read-only to everyone else: these are the load steps
// that the warehouse and the set take, opened to tests and to nothing in the engine.

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "definitions/MessageSetDefn.h"
#include "foundation/Enumerations.h"

namespace vantrelia::testing {

class DefinitionSetup {
 public:
  DefinitionSetup() = delete;

  // A set as a file would name and number it, seeing `warehouse` (may be null) without being in
  // its list.
  static std::unique_ptr<MessageSetDefn> messageSet(std::string name, const MessageWarehouseDefn* warehouse = nullptr,
                                                    int32_t id = 0);
  // The set joins the warehouse's list as if it had been read.
  static MessageSetDefn& addMessageSet(MessageWarehouseDefn& warehouse, std::unique_ptr<MessageSetDefn> set);
  // A message type field as if read (dots become "/").
  static void addMessageTypeField(MessageSetDefn& set, std::string_view dottedPath);
  static void addValidationErrorSetting(MessageSetDefn& set, int32_t number, EVErrType severity);

  // The set's own load steps.
  static ValidationTableDefn& addValidationTable(MessageSetDefn& set, std::unique_ptr<ValidationTableDefn> table);
  static void addComposites(MessageSetDefn& set, std::vector<std::unique_ptr<CompositeDefn>> loaded, FieldUpdates& updates);
  static SegmentDefn& addSegment(MessageSetDefn& set, std::unique_ptr<SegmentDefn> segment, FieldUpdates& updates);
  static MessageDefn& addMessage(MessageSetDefn& set, std::unique_ptr<MessageDefn> message);

  // What the set does to its composites for message type fields, and when the views are bound.
  static void markRequiredPath(CompositeDefn& composite, std::span<const int32_t> indexes);
  static void markRequiredByName(CompositeDefn& composite, std::string_view path);
  static void workOutQuotedText(CompositeDefn& composite);
};

}  // namespace vantrelia::testing
