#include "definitions/CompositeFieldInstancesControl.h"

#include "definitions/CompositeDefn.h"
#include "definitions/FieldDefn.h"
#include "foundation/BadParameter.h"
#include "foundation/FoundationMessages.h"

namespace vantrelia {

CompositeFieldInstancesControl::CompositeFieldInstancesControl(const CompositeDefn& definition)
    : FieldInstancesControl(definition.getFieldCount()), composite(definition) {}

int32_t CompositeFieldInstancesControl::getFieldCount() const { return composite.getFieldCount(); }

const CompositeDefn& CompositeFieldInstancesControl::getComposite(int32_t index) const {
  const FieldDefn& field = composite.getField(index);
  if (!field.isComposite() || !field.getComposite()) throw BadParameter(messages::kInternalError);
  return *field.getComposite();
}

const FieldDefn& CompositeFieldInstancesControl::getFieldDefn(int32_t index) const { return composite.getField(index); }

}  // namespace vantrelia
