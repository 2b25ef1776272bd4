#include "definitions/FieldInstancesControl.h"

#include "definitions/CompositeDefn.h"
#include "definitions/CompositeFieldInstancesControl.h"
#include "definitions/FieldDefn.h"
#include "definitions/FieldInstances.h"
#include "foundation/BadParameter.h"
#include "foundation/CheckIndex.h"
#include "foundation/FoundationMessages.h"

namespace vantrelia {

namespace {

// One level of a walk: the overrides in force there (null where a composite field has none) and
// the composite whose fields they are about (null at the holder itself).
struct Level {
  const FieldInstancesControl* control;
  const CompositeDefn* composite;

  const FieldInstancesBase* entry(int32_t index) const { return control ? control->getEntry(index) : nullptr; }
  const FieldDefn& field(int32_t index) const { return control ? control->getFieldDefn(index) : composite->getField(index); }
  // The level below a composite field, or a level with neither when the field has no composite.
  static Level below(const FieldDefn& field) { return {field.getInstancesControl(), field.getComposite()}; }
  bool exists() const { return control || composite; }
};

// The look-up of one attribute of the field that `path` reaches: at each level the entry answers
// first; where it has no answer, the field definition does when the path ends there, and the walk
// goes on into the composite field's own overrides otherwise.
template <class T, class AskEntry, class AskField>
T lookUp(const FieldInstancesControl& start, FieldPath path, AskEntry askEntry, AskField askField) {
  if (path.empty()) throw BadParameter(messages::kInternalError);
  Level level{&start, nullptr};
  while (true) {
    const int32_t index = path.front();
    const FieldPath rest = path.subspan(1);
    T answer{};
    if (const FieldInstancesBase* entry = level.entry(index); entry && askEntry(*entry, rest, answer)) return answer;
    const FieldDefn& field = level.field(index);
    const Level next = Level::below(field);
    if (rest.empty() || !field.isComposite() || !next.exists()) return askField(field);
    level = next;
    path = rest;
  }
}

// As lookUp, for field `index` of the composite that `path` reaches: at the end of the path the
// entry of that composite field is asked about its child, and then the composite field's own
// overrides or the composite's field definition.
template <class T, class AskEntry, class AskLast>
T lookUpChild(const FieldInstancesControl& start, FieldPath path, AskEntry askEntry, AskLast askLast) {
  if (path.empty()) throw BadParameter(messages::kInternalError);
  Level level{&start, nullptr};
  while (true) {
    const int32_t head = path.front();
    const FieldPath rest = path.subspan(1);
    T answer{};
    if (const FieldInstancesBase* entry = level.entry(head); entry && askEntry(*entry, rest, answer)) return answer;
    const FieldDefn& field = level.field(head);
    const Level next = Level::below(field);
    if (!field.isComposite() || !next.exists()) throw BadParameter(messages::kInternalError);
    if (rest.empty()) return askLast(next);
    level = next;
    path = rest;
  }
}

}  // namespace

FieldInstancesControl::FieldInstancesControl(int32_t fieldCount) : entries(static_cast<size_t>(fieldCount < 0 ? 0 : fieldCount)) {}

FieldInstancesControl::~FieldInstancesControl() = default;

const FieldInstancesBase* FieldInstancesControl::getEntry(int32_t index) const {
  return index < 0 || static_cast<size_t>(index) >= entries.size() ? nullptr : entries[static_cast<size_t>(index)].get();
}

const FieldInstancesControl::WideText& FieldInstancesControl::getDefaultValue(int32_t index) const {
  const WideText* answer = nullptr;
  if (const FieldInstancesBase* entry = getEntry(index); entry && entry->getDefaultValue(answer)) return *answer;
  return getFieldDefn(index).getDefaultValue();
}

bool FieldInstancesControl::isRequired(int32_t index) const {
  bool answer = false;
  if (const FieldInstancesBase* entry = getEntry(index); entry && entry->isRequired(answer)) return answer;
  return getFieldDefn(index).isRequired();
}

const FieldInstancesControl::WideText& FieldInstancesControl::getDefaultValue(FieldPath path) const {
  return *lookUp<const WideText*>(
      *this, path, [](const FieldInstancesBase& e, FieldPath rest, const WideText*& out) { return e.getDefaultValue(rest, out); },
      [](const FieldDefn& f) { return &f.getDefaultValue(); });
}

Formatter* FieldInstancesControl::getFormatter(FieldPath path) const {
  return lookUp<Formatter*>(
      *this, path, [](const FieldInstancesBase& e, FieldPath rest, Formatter*& out) { return e.getFormatter(rest, out); },
      [](const FieldDefn& f) { return f.getFormatter(); });
}

const ValidationTableDefn* FieldInstancesControl::getValidationTable(FieldPath path) const {
  return lookUp<const ValidationTableDefn*>(
      *this, path,
      [](const FieldInstancesBase& e, FieldPath rest, const ValidationTableDefn*& out) { return e.getValidationTable(rest, out); },
      [](const FieldDefn& f) { return f.getValidationTable(); });
}

int32_t FieldInstancesControl::getCountKind(FieldPath path) const {
  return lookUp<int32_t>(
      *this, path, [](const FieldInstancesBase& e, FieldPath rest, int32_t& out) { return e.getCountKind(rest, out); },
      [](const FieldDefn& f) { return f.getCountKind(); });
}

bool FieldInstancesControl::isRequired(FieldPath path) const {
  return lookUp<bool>(
      *this, path, [](const FieldInstancesBase& e, FieldPath rest, bool& out) { return e.isRequired(rest, out); },
      [](const FieldDefn& f) { return f.isRequired(); });
}

bool FieldInstancesControl::isHidden(FieldPath path) const {
  return lookUp<bool>(
      *this, path, [](const FieldInstancesBase& e, FieldPath rest, bool& out) { return e.isHidden(rest, out); },
      [](const FieldDefn& f) { return f.isHidden(); });
}

int32_t FieldInstancesControl::getMinLength(FieldPath path) const {
  return lookUp<int32_t>(
      *this, path, [](const FieldInstancesBase& e, FieldPath rest, int32_t& out) { return e.getMinLength(rest, out); },
      [](const FieldDefn& f) { return f.getMinLength(); });
}

int32_t FieldInstancesControl::getMaxLength(FieldPath path) const {
  return lookUp<int32_t>(
      *this, path, [](const FieldInstancesBase& e, FieldPath rest, int32_t& out) { return e.getMaxLength(rest, out); },
      [](const FieldDefn& f) { return f.getMaxLength(); });
}

RuleOrList* FieldInstancesControl::getSituationalRule(FieldPath path) const {
  return lookUp<RuleOrList*>(
      *this, path, [](const FieldInstancesBase& e, FieldPath rest, RuleOrList*& out) { return e.getSituationalRule(rest, out); },
      [](const FieldDefn&) -> RuleOrList* { return nullptr; });
}

AdvancedValidation* FieldInstancesControl::getAdvancedValidation(FieldPath path) const {
  return lookUp<AdvancedValidation*>(
      *this, path,
      [](const FieldInstancesBase& e, FieldPath rest, AdvancedValidation*& out) { return e.getAdvancedValidation(rest, out); },
      [](const FieldDefn&) -> AdvancedValidation* { return nullptr; });
}

const FieldInstancesControl::WideText& FieldInstancesControl::getDefaultValue(FieldPath path, int32_t index) const {
  return *lookUpChild<const WideText*>(
      *this, path,
      [index](const FieldInstancesBase& e, FieldPath rest, const WideText*& out) { return e.getDefaultValue(rest, index, out); },
      [index](const Level& last) {
        return last.control ? &last.control->getDefaultValue(index) : &last.composite->getField(index).getDefaultValue();
      });
}

bool FieldInstancesControl::isRequired(FieldPath path, int32_t index) const {
  return lookUpChild<bool>(
      *this, path,
      [index](const FieldInstancesBase& e, FieldPath rest, bool& out) { return e.isRequired(rest, index, out); },
      [index](const Level& last) {
        return last.control ? last.control->isRequired(index) : last.composite->getField(index).isRequired();
      });
}

bool FieldInstancesControl::hasVariableField(FieldPath path) const {
  Level level{this, nullptr};
  for (size_t i = 0; i < path.size(); ++i) {
    const FieldDefn& field = level.field(path[i]);
    if (field.getDataType() == FieldDefn::kVariable) return true;
    level = Level::below(field);
    if (!field.isComposite() || !level.exists()) return false;
  }
  return false;
}

void FieldInstancesControl::add(FieldPath path, const FieldOverrideValues& values, std::shared_ptr<RuleOrList> rule,
                                std::shared_ptr<AdvancedValidation> advancedValidation) {
  if (path.empty()) throw BadParameter(messages::kInternalError);
  const int32_t index = path.front();
  checkIndex(index, getCount());
  FieldInstances::addAt(entries[static_cast<size_t>(index)], getFieldDefn(index), path, values, std::move(rule),
                        std::move(advancedValidation));
}

}  // namespace vantrelia
