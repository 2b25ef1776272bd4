#pragma once

#include <memory>
#include <vector>

namespace vantrelia {

class FieldDefn;

// What a rule needs of the owner of a field: the field definitions, created fields or not.
class FieldContainer {
 public:
  virtual int getFieldCount() = 0;
  virtual const std::vector<std::unique_ptr<FieldDefn>>& getFieldDefns() = 0;
  virtual ~FieldContainer() = default;
};

}  // namespace vantrelia
