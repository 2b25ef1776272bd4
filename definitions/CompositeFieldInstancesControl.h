#pragma once
// The overrides that a composite field lays over the fields of its composite.

#include "definitions/FieldInstancesControl.h"

namespace vantrelia {

class CompositeFieldInstancesControl : public FieldInstancesControl {
 public:
  explicit CompositeFieldInstancesControl(const CompositeDefn& composite);

  const CompositeDefn& getCompositeDefn() const { return composite; }

  int32_t getFieldCount() const override;
  const CompositeDefn& getComposite(int32_t index) const override;
  const FieldDefn& getFieldDefn(int32_t index) const override;

 private:
  const CompositeDefn& composite;
};

}  // namespace vantrelia
