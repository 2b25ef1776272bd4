#pragma once
// A named, reusable list of fields with a separator of its own. The message set owns its
// composites; fields of other composites and segments point at them.

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "definitions/FieldDefn.h"
#include "definitions/FieldListDefn.h"
#include "foundation/Enumerations.h"
#include "foundation/TRVString.h"

namespace vantrelia {

class CompositeDefn : public FieldListDefn {
 public:
  using WideText = kestrel::TRVString<char16_t>;

  // Bits of `flags` besides kHasVariableField.
  static constexpr uint32_t kHoldsQuotedText = 0x02;  // read straight from the stream

  CompositeDefn();
  ~CompositeDefn() override;

  // Reads one composite record with its fields. Composite fields leave their override blocks in
  // `updates`. Throws InvalidFile, also for syntax rules and validation equations, which this
  // engine doesn't read yet.
  void load(const MessageSetDefn& set, InputStream& stream, int version, FieldUpdates& updates);

  const kestrel::TRVString<char>& getName() const { return Name; }
  const WideText& getSpecialSeparatorString() const { return SpecialSeparatorString; }
  int32_t getSeparatorType() const { return SeparatorType; }
  bool isFixedWidth() const { return FixedWidth != 0; }
  int32_t getId() const { return id; }
  ECompositeType getCompositeType() const { return CompositeType ? qxCompTypeFieldPresenceIndicator : qxCompTypeNormal; }
  int32_t getSpecialSeparatorType() const { return SpecialSeparatorType; }
  const WideText& getIndicatorSeparatorString() const { return indicatorSeparatorString; }
  // The separator between the children of a composite (null: of none) that stands below one cut
  // at `parentSeparator`: its own, or one level deeper than the parent's.
  static ESeparatorType childSeparatorOf(const CompositeDefn* defn, ESeparatorType parentSeparator);


 private:
  // Load steps of the set, which the trees sharing the composite never take.
  friend class MessageSetDefn;
  friend class testing::DefinitionSetup;

  // Marks required the field that a list of 1-based indexes reaches from this composite, as the
  // numeric message type fields of a set do. Throws InvalidFile "Invalid composite index in indexed
  // message type field" for an index outside the fields, "Expected a nested composite in indexed
  // message type field" for a path that goes on below a field that isn't composite.
  void markRequiredPath(std::span<const int32_t> indexes);

  // Works out flag 0x02 from the fields, nested composites first; done once, when the views are
  // bound. A composite that holds itself is taken as it stands when met again.
  void workOutQuotedText();

  kestrel::TRVString<char> Name;
  WideText SpecialSeparatorString;
  int32_t SeparatorType = qxSepAuto;
  uint8_t FixedWidth = 0;
  int32_t id = 0;
  uint8_t CompositeType = 0;
  int32_t SpecialSeparatorType = qxSepString;
  WideText indicatorSeparatorString;
  enum class QuotedText : uint8_t { NotWorkedOut, WorkingOut, WorkedOut } quotedText = QuotedText::NotWorkedOut;
};

}  // namespace vantrelia
