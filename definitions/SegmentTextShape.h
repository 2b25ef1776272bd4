#pragma once
// A segment definition reduced to what decides whether the text a segment was read from is the
// text the writer would give it again: for each field and component, whether it must show,
// whether it repeats, and the separator between its children. Fields that the writer gives
// anything but their values as they stand (defaults, formats, fills, counts, calculations, binary,
// quoted text, separators allowed in data) leave no shape, and a segment with one of them has none. A message item
// that overrides its segment's fields has a shape of its own, with its overrides. A header whose
// fields carry separators has a shape only where they stand in whole fields of their own, or are
// the field separator right behind the tag or the segment separator at its end.

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "foundation/Enumerations.h"

namespace vantrelia {

class FieldDefn;
class FieldInstancesControl;
class MessageSetDefn;
class SegmentDefn;

class SegmentTextShape {
 public:
  struct Item {
    bool required = false;
    // More than one repetition allowed: the value is cut at the repeat separator first.
    bool repeats = false;
    int32_t maxLength = 0;   // 0 for no limit
    // A value shorter than fillTo is filled up with the filler, at its end (fillAtEnd) or its
    // start, and read without the filler there; 0 for none. blank: what an empty required value
    // is written as before the fill, its default.
    int32_t fillTo = 0;
    bool fillAtEnd = true;
    std::u16string blank;
    // A composite's children are cut at childSeparator; a primitive has none.
    ESeparatorType childSeparator = qxSepNone;
    std::vector<Item> children;
    // In a header that carries separators, the slots this field holds and where in it each stands:
    // the writer gives the field as the separators themselves.
    std::vector<std::pair<ESeparatorType, int32_t>> carried;
  };

  // `overrides`: those of the message item the segment stands at, or null.
  SegmentTextShape(const SegmentDefn& segment, const FieldInstancesControl* overrides);

  // False when some field of the segment is written otherwise than as it was read.
  bool isUsable() const { return usable; }
  // The separator between the fields.
  ESeparatorType getFieldSeparator() const { return fieldSeparator; }
  const std::vector<Item>& getFields() const { return fields; }
  // The fields up to and including the last required one: the writer shows that many at least.
  int32_t getShownFields() const { return shownFields; }
  // A header whose fields or tag carry separators of the text: its text stands as the writer's
  // only while those are still to be settled by it.
  bool carriesSeparators() const { return carrying; }
  // A set that keeps empty fields at the end of its segments: the writer shows every field the
  // definition has.
  bool showsEveryField() const { return everyField; }

 private:
  // The shape of the field or component at `path` (its indexes from the segment down), whose
  // owner is cut at `parentSeparator`; false when it has none.
  bool shapeOf(const FieldDefn& field, std::vector<int32_t>& path, ESeparatorType parentSeparator, Item& item) const;

  // Marks the fields of a header that hold separators; false when the header carries them
  // otherwise than in whole fields, behind its tag as a plain field separator, or at its end.
  bool takeCarried(const SegmentDefn& segment, const MessageSetDefn& set);

  const FieldInstancesControl* overrides;

  bool usable = false;
  // Some message type is read from a field of the segment.
  bool typeFields = false;
  bool carrying = false;
  bool everyField = false;
  ESeparatorType fieldSeparator = qxSepField1;
  std::vector<Item> fields;
  int32_t shownFields = 0;
};

}  // namespace vantrelia
