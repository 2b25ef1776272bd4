#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace vantrelia {

class SegmentElement;

// What a rule needs of a field: where it stands, by name and by child indexes, and which segment
// holds it.
class FieldLocation {
 public:
  virtual std::string getFieldPath() = 0;
  // Child indexes from the segment down to the field; a level below a repeating parent is left out.
  virtual const std::vector<int32_t>& getLocationValues() = 0;
  virtual SegmentElement* getOwnerSegment() = 0;
  virtual ~FieldLocation() = default;
};

}  // namespace vantrelia
