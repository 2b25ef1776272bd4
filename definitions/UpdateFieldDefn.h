#pragma once
// A change to a field definition that has to wait until every composite of the set is known: the
// override block of a composite field names fields of composites that may come later in the file.

#include <map>
#include <memory>

namespace vantrelia {

class FieldDefn;

class UpdateFieldDefn {
 public:
  virtual ~UpdateFieldDefn() = default;
  virtual void apply(FieldDefn& field) = 0;
};

// The changes a message set's load collects, by the field they are for. A field holds at most one
// in a valid file; the set applies each when the field's composite is known, then drops it.
using FieldUpdates = std::multimap<FieldDefn*, std::unique_ptr<UpdateFieldDefn>>;

}  // namespace vantrelia
