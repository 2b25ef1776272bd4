#include "definitions/FieldInstances.h"

#include "definitions/CompositeDefn.h"
#include "definitions/FieldDefn.h"
#include "definitions/FieldInstance.h"
#include "definitions/FieldInstanceUpdate.h"
#include "foundation/BadParameter.h"
#include "foundation/FoundationMessages.h"

namespace vantrelia {

using namespace overrideflags;

namespace {

// The child that the first index of a path names, or null.
const FieldInstancesBase* childAt(const std::vector<std::unique_ptr<FieldInstancesBase>>& children, FieldPath path) {
  if (path.empty() || path.front() < 0 || static_cast<size_t>(path.front()) >= children.size()) return nullptr;
  return children[static_cast<size_t>(path.front())].get();
}

// Asks the child at the head of `path` with the rest of it; no child, no answer.
template <class Ask>
bool down(const std::vector<std::unique_ptr<FieldInstancesBase>>& children, FieldPath path, Ask ask) {
  const FieldInstancesBase* child = childAt(children, path);
  return child && ask(*child, path.subspan(1));
}

}  // namespace

FieldInstances::FieldInstances(const CompositeDefn& composite, const FieldOverrideValues& values,
                               std::shared_ptr<RuleOrList> rule)
    : FieldInstancesBase(values.flags),
      Required(values.Required),
      Hidden(values.Hidden),
      situationalRule(has(kSituationalRule) ? std::move(rule) : nullptr),
      children(static_cast<size_t>(composite.getFieldCount())),
      MinLength(values.MinLength),
      MaxLength(values.MaxLength) {}

FieldInstances::~FieldInstances() = default;

const FieldInstancesBase* FieldInstances::getChild(int32_t index) const {
  return index < 0 || static_cast<size_t>(index) >= children.size() ? nullptr : children[static_cast<size_t>(index)].get();
}

bool FieldInstances::getDefaultValue(FieldPath path, int32_t index, const WideText*& out) const {
  if (path.empty()) {
    const FieldInstancesBase* child = getChild(index);
    return child && child->getDefaultValue(out);
  }
  return down(children, path, [&](const FieldInstancesBase& c, FieldPath rest) { return c.getDefaultValue(rest, index, out); });
}

bool FieldInstances::getDefaultValue(const WideText*&) const { return false; }

bool FieldInstances::getDefaultValue(FieldPath path, const WideText*& out) const {
  return down(children, path, [&](const FieldInstancesBase& c, FieldPath rest) { return c.getDefaultValue(rest, out); });
}

bool FieldInstances::getFormatter(FieldPath path, Formatter*& out) const {
  return down(children, path, [&](const FieldInstancesBase& c, FieldPath rest) { return c.getFormatter(rest, out); });
}

bool FieldInstances::getValidationTable(FieldPath path, const ValidationTableDefn*& out) const {
  return down(children, path, [&](const FieldInstancesBase& c, FieldPath rest) { return c.getValidationTable(rest, out); });
}

bool FieldInstances::getCountKind(FieldPath path, int32_t& out) const {
  return down(children, path, [&](const FieldInstancesBase& c, FieldPath rest) { return c.getCountKind(rest, out); });
}

bool FieldInstances::isRequired(bool& out) const {
  if (!has(kRequired)) return false;
  out = Required != 0;
  return true;
}

bool FieldInstances::isRequired(FieldPath path, int32_t index, bool& out) const {
  if (path.empty()) {
    const FieldInstancesBase* child = getChild(index);
    return child && child->isRequired(out);
  }
  return down(children, path, [&](const FieldInstancesBase& c, FieldPath rest) { return c.isRequired(rest, index, out); });
}

bool FieldInstances::isRequired(FieldPath path, bool& out) const {
  if (path.empty()) return isRequired(out);
  return down(children, path, [&](const FieldInstancesBase& c, FieldPath rest) { return c.isRequired(rest, out); });
}

bool FieldInstances::isHidden(FieldPath path, bool& out) const {
  if (path.empty()) {
    if (!has(kHidden)) return false;
    out = Hidden != 0;
    return true;
  }
  return down(children, path, [&](const FieldInstancesBase& c, FieldPath rest) { return c.isHidden(rest, out); });
}

bool FieldInstances::getSituationalRule(RuleOrList*& out) const {
  if (!has(kSituationalRule)) return false;
  out = situationalRule.get();
  return true;
}

bool FieldInstances::getSituationalRule(FieldPath path, RuleOrList*& out) const {
  if (path.empty()) return getSituationalRule(out);
  return down(children, path, [&](const FieldInstancesBase& c, FieldPath rest) { return c.getSituationalRule(rest, out); });
}

bool FieldInstances::getAdvancedValidation(FieldPath path, AdvancedValidation*& out) const {
  return down(children, path, [&](const FieldInstancesBase& c, FieldPath rest) { return c.getAdvancedValidation(rest, out); });
}

bool FieldInstances::getMinLength(FieldPath path, int32_t& out) const {
  if (path.empty()) {
    if (!has(kMinLength)) return false;
    out = MinLength;
    return true;
  }
  return down(children, path, [&](const FieldInstancesBase& c, FieldPath rest) { return c.getMinLength(rest, out); });
}

bool FieldInstances::getMaxLength(FieldPath path, int32_t& out) const {
  if (path.empty()) {
    if (!has(kMaxLength)) return false;
    out = MaxLength;
    return true;
  }
  return down(children, path, [&](const FieldInstancesBase& c, FieldPath rest) { return c.getMaxLength(rest, out); });
}

void FieldInstances::addEntry(const CompositeDefn& composite, FieldPath path, const FieldOverrideValues& values,
                              std::shared_ptr<RuleOrList> rule, std::shared_ptr<AdvancedValidation> advancedValidation) {
  if (path.empty() || path.front() < 0 || static_cast<size_t>(path.front()) >= children.size())
    throw BadParameter(messages::kInternalError);
  addAt(children[static_cast<size_t>(path.front())], composite.getField(path.front()), path, values, std::move(rule),
        std::move(advancedValidation));
}

void FieldInstances::addAt(std::unique_ptr<FieldInstancesBase>& slot, const FieldDefn& field, FieldPath path,
                           const FieldOverrideValues& values, std::shared_ptr<RuleOrList> rule,
                           std::shared_ptr<AdvancedValidation> advancedValidation) {
  const CompositeDefn* nested = field.isComposite() ? field.getComposite() : nullptr;
  if (path.size() > 1) {
    if (!nested) throw BadParameter(messages::kInternalError);
    if (!slot) slot = std::make_unique<FieldInstances>(*nested, FieldOverrideValues{}, nullptr);
    slot->addEntry(*nested, path.subspan(1), values, std::move(rule), std::move(advancedValidation));
  } else if (field.isComposite()) {
    if (!nested) throw BadParameter(messages::kInternalError);
    // A composite field's entry has no advanced validation of its own; it is dropped here.
    slot = std::make_unique<FieldInstances>(*nested, values, std::move(rule));
  } else {
    slot = std::make_unique<FieldInstance>(field, values, std::move(rule), std::move(advancedValidation));
  }
}

}  // namespace vantrelia
