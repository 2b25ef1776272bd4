#pragma once
// One entry of a tree of field overrides: what a place in a message, or a composite field, says
// about one field below it instead of what the field's definition says.
//
// Every answering operation returns whether this entry has an answer and writes it to its last
// argument only then. `path` is the rest of the list of field indexes below this entry: an entry of
// a composite field goes down to its children with it, an entry of a primitive field ignores it.

#include <cstdint>
#include <memory>
#include <span>

#include "foundation/TRVString.h"

namespace vantrelia {

class AdvancedValidation;
class CompositeDefn;
class Formatter;
class RuleOrList;
class ValidationTableDefn;
struct FieldOverrideValues;

// Field indexes from one holder down to a field, 0-based.
using FieldPath = std::span<const int32_t>;

// Bits of the `flags` of an entry and of an override record: which attributes it gives.
namespace overrideflags {
inline constexpr uint16_t kDefaultValue = 0x0001;
inline constexpr uint16_t kFormatter = 0x0002;
inline constexpr uint16_t kValidationTable = 0x0004;
inline constexpr uint16_t kRequired = 0x0008;
inline constexpr uint16_t kHidden = 0x0010;
inline constexpr uint16_t kSituationalRule = 0x0020;
inline constexpr uint16_t kAdvancedValidation = 0x0040;
inline constexpr uint16_t kMinLength = 0x0080;
inline constexpr uint16_t kMaxLength = 0x0100;
// Never in a file: added when an overriding default text makes the field a count.
inline constexpr uint16_t kCountKind = 0x0200;
}  // namespace overrideflags

class FieldInstancesBase {
 public:
  using WideText = kestrel::TRVString<char16_t>;

  explicit FieldInstancesBase(uint16_t entryFlags) : flags(entryFlags) {}
  virtual ~FieldInstancesBase() = default;
  FieldInstancesBase(const FieldInstancesBase&) = delete;
  FieldInstancesBase& operator=(const FieldInstancesBase&) = delete;

  uint16_t getFlags() const { return flags; }
  bool has(uint16_t flag) const { return (flags & flag) != 0; }

  // The default of child `index` of the composite that `path` reaches.
  virtual bool getDefaultValue(FieldPath path, int32_t index, const WideText*& out) const = 0;
  // This entry's own default; an entry of a composite field has none.
  virtual bool getDefaultValue(const WideText*& out) const = 0;
  virtual bool getDefaultValue(FieldPath path, const WideText*& out) const = 0;
  virtual bool getFormatter(FieldPath path, Formatter*& out) const = 0;
  virtual bool getValidationTable(FieldPath path, const ValidationTableDefn*& out) const = 0;
  virtual bool getCountKind(FieldPath path, int32_t& out) const = 0;
  virtual bool isRequired(bool& out) const = 0;
  virtual bool isRequired(FieldPath path, int32_t index, bool& out) const = 0;
  virtual bool isRequired(FieldPath path, bool& out) const = 0;
  virtual bool isHidden(FieldPath path, bool& out) const = 0;
  virtual bool getSituationalRule(RuleOrList*& out) const = 0;
  virtual bool getSituationalRule(FieldPath path, RuleOrList*& out) const = 0;
  virtual bool getAdvancedValidation(FieldPath path, AdvancedValidation*& out) const = 0;
  virtual bool getMinLength(FieldPath path, int32_t& out) const = 0;
  virtual bool getMaxLength(FieldPath path, int32_t& out) const = 0;

  // Builds the entry at `path` below this one, whose fields are those of `composite`. Only an
  // entry of a composite field has children; any other raises IllegalOperation "Internal error".
  virtual void addEntry(const CompositeDefn& composite, FieldPath path, const FieldOverrideValues& values,
                        std::shared_ptr<RuleOrList> rule, std::shared_ptr<AdvancedValidation> advancedValidation) = 0;

 protected:
  uint16_t flags;
};

}  // namespace vantrelia
