#pragma once
// The overrides that a message item lays over the fields of its segment.

#include "definitions/FieldInstancesControl.h"

namespace vantrelia {

class SegmentDefn;

class SegmentFieldInstancesControl : public FieldInstancesControl {
 public:
  explicit SegmentFieldInstancesControl(const SegmentDefn& segment);

  const SegmentDefn& getSegmentDefn() const { return segment; }

  int32_t getFieldCount() const override;
  const CompositeDefn& getComposite(int32_t index) const override;
  const FieldDefn& getFieldDefn(int32_t index) const override;

 private:
  const SegmentDefn& segment;
};

}  // namespace vantrelia
