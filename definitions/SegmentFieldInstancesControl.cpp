#include "definitions/SegmentFieldInstancesControl.h"

#include "definitions/FieldDefn.h"
#include "definitions/SegmentDefn.h"
#include "foundation/BadParameter.h"
#include "foundation/FoundationMessages.h"

namespace vantrelia {

SegmentFieldInstancesControl::SegmentFieldInstancesControl(const SegmentDefn& definition)
    : FieldInstancesControl(definition.getFieldCount()), segment(definition) {}

int32_t SegmentFieldInstancesControl::getFieldCount() const { return segment.getFieldCount(); }

const CompositeDefn& SegmentFieldInstancesControl::getComposite(int32_t index) const {
  const FieldDefn& field = segment.getField(index);
  if (!field.isComposite() || !field.getComposite()) throw BadParameter(messages::kInternalError);
  return *field.getComposite();
}

const FieldDefn& SegmentFieldInstancesControl::getFieldDefn(int32_t index) const { return segment.getField(index); }

}  // namespace vantrelia
