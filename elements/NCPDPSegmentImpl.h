#pragma once
// A tagged pharmacy segment: each field opens with its short tag and may stand anywhere in the
// segment. A count field is followed by the run of repeating fields it counts; the fields of one
// repeat stand together, in definition order, before those of the next repeat.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "elements/SegmentImplBase.h"

namespace vantrelia {

class NCPDPSegmentImpl : public SegmentImplBase {
 public:
  using SegmentImplBase::SegmentImplBase;

  bool parseSegmentFields(ParserStream& stream, RecordedErrors& errors, uint32_t& status,
                          ValidationLocation& location) override;
  bool writeElement(SeparatorList& list, bool minimize, int32_t& counter) override;

  // The value a count field stands for: the most repeats that a field of its run holds. `index` is
  // the count field's; `repeat` is its own place in its repeats when it repeats itself, else 0.
  int32_t countRunRepeats(int32_t repeat, int32_t index);

 private:
  // The field whose tag opens `text`, with the tag cut from `text`; -1 for none.
  int findFieldByTag(std::u16string_view& text) const;
  // Whether the field at `index` belongs to a run: it repeats.
  bool repeats(int index) const;
  // The first field behind the run that follows `countField`: the next one that doesn't repeat or,
  // for a run inside another, the next count field.
  int runEnd(int countField, bool nested) const;
  // The value of a count field as read; a text that isn't a number is reported and counts as many
  // repeats as the text holds.
  int32_t readCount(int index, std::u16string_view text, RecordedErrors& errors, ValidationLocation& location);

  // Reading. Each stores one value: in the field itself, or as a new repeat of it.
  void storeValue(int index, std::u16string_view text, RecordedErrors& errors, ValidationLocation& location);
  // Into the repeat of the enclosing run's item `outer` (-1 at top level).
  void storeRunValue(int index, std::u16string_view text, int outer, RecordedErrors& errors,
                     ValidationLocation& location);
  // Empty repeats for fields `from` up to, not including, `to`, so that the fields of a run stay in
  // step; stops at a field that doesn't repeat and, inside another run, at a count field.
  void fillRun(int from, int to, int outer);
  void reportUnknownTag(std::u16string_view text, RecordedErrors& errors, ValidationLocation& location);
  // Reads the run behind count field `countField`, `count` repeats at most. `lastField` gets the
  // last field read.
  void parseCountedFields(ParserStream& stream, int32_t count, bool useGeneric, int outer, int countField,
                          int& lastField, RecordedErrors& errors, ValidationLocation& location);

  // Writing. `repeat` is the item written of a repeating field, -1 for a field that doesn't repeat.
  bool writeTaggedField(int index, FieldBase* slot, SeparatorList& list, bool minimize, bool& first,
                        int32_t& counter, int repeat);
  // Writes `count` repeats of the run behind `index`, all fields of one repeat before the next;
  // returns the first field behind the run.
  int writeCountedFields(int index, int32_t count, SeparatorList& list, bool minimize, bool& first,
                         int32_t& counter, int outer);
  // The count a count field writes, when its value is a number.
  static bool countOf(FieldBase& field, int32_t& count);
};

}  // namespace vantrelia
