#pragma once
// The override block of one composite field, as read, waiting for the field's composite to be
// known. Records name fields by index; a nested composite opens a level that a record of index -2
// closes.

#include <vector>

#include "definitions/FieldInstanceUpdate.h"
#include "definitions/UpdateFieldDefn.h"

namespace vantrelia {

class InputStream;

class UpdateCompositeFieldInstances : public UpdateFieldDefn {
 public:
  // Reads the override block of a composite field's record (files from the version with field
  // overrides on). Throws InvalidFile for a situational rule or advanced validation in it.
  void load(InputStream& stream, int version);

  void add(FieldInstanceUpdate record) { records.push_back(std::move(record)); }
  const std::vector<FieldInstanceUpdate>& getRecords() const { return records; }

  // Gives the field a new control over its composite and adds one entry for each record. The
  // record of the field as a whole has no effect. Throws InvalidFile for a record that a valid file
  // can't hold (an index outside its composite, a level closed that isn't open) and what the
  // entries throw. The field's composite must be set.
  void apply(FieldDefn& field) override;

 private:
  void readWholeField(InputStream& stream, int version);
  void readRecord(InputStream& stream, int version, int32_t index);

  std::vector<FieldInstanceUpdate> records;
};

}  // namespace vantrelia
