// Loaded definitions are shared by every tree: what code that walks them can reach is their
// getters, and the load-time setters are open to the loaders alone. These checks stop holding the
// day a setter is opened again or a getter hands out something changeable.

#include <memory>
#include <type_traits>
#include <utility>
#include <vector>

#include "definitions/CompositeDefn.h"
#include "definitions/InputStream.h"
#include "definitions/MessageSetDefn.h"
#include "definitions/MessageWarehouseDefn.h"
#include "definitions/PrimitiveTypeDefn.h"
#include "definitions/SegmentDefn.h"
#include "definitions/SeparatorDefn.h"

namespace vantrelia {
namespace {

template <class T>
concept SetsRequired = requires(T& field) { field.setRequired(true); };
template <class T>
concept SetsComposite = requires(T& field, CompositeDefn* composite) { field.setComposite(composite); };
template <class T>
concept AddsFlags = requires(T& record) { record.addFlags(1u); };
template <class T>
concept SetsFlags = requires(T& record) { record.setFlags(1u); };
template <class T>
concept MarksRequired = requires(T& list) { list.markRequiredByName("A"); };
template <class T>
concept WorksOutQuotedText = requires(T& composite) { composite.workOutQuotedText(); };
template <class T>
concept TakesSegments = requires(T& set, std::unique_ptr<SegmentDefn> segment, FieldUpdates& updates) {
  set.addSegment(std::move(segment), updates);
};
template <class T>
concept TakesSets = requires(T& warehouse, std::unique_ptr<MessageSetDefn> set) { warehouse.addMessageSet(std::move(set)); };
template <class T>
concept Renumbers = requires(T& set) { set.setId(1); };
template <class T>
concept CompilesExpression = requires(T& type) { type.compileExpression(); };
// The control: a public member is seen through the same kind of check.
template <class T>
concept Loads = requires(T& separator, InputStream& stream) { separator.load(stream, 0); };

static_assert(Loads<SeparatorDefn>);
static_assert(!SetsRequired<FieldDefn> && !SetsComposite<FieldDefn> && !AddsFlags<FieldDefn>);
static_assert(!AddsFlags<SegmentDefn> && !MarksRequired<SegmentDefn>);
static_assert(!MarksRequired<CompositeDefn> && !WorksOutQuotedText<CompositeDefn>);
static_assert(!SetsFlags<SeparatorDefn>);
static_assert(!TakesSegments<MessageSetDefn> && !Renumbers<MessageSetDefn>);
static_assert(!TakesSets<MessageWarehouseDefn>);
static_assert(!CompilesExpression<PrimitiveTypeDefn>);
// A set comes from a warehouse's load or the tests' set-up, never from nothing.
static_assert(!std::is_default_constructible_v<MessageSetDefn>);

// Getters called on a definition that isn't const still hand out const parts.
template <class Getter, class Expected>
constexpr bool gives = std::is_same_v<Getter, Expected>;
static_assert(gives<decltype(std::declval<FieldDefn&>().getComposite()), const CompositeDefn*>);
static_assert(gives<decltype(std::declval<CompositeDefn&>().getField(0)), const FieldDefn&>);
static_assert(gives<decltype(std::declval<MessageSetDefn&>().getSeparator(0)), const SeparatorDefn&>);
static_assert(gives<decltype(std::declval<MessageSetDefn&>().findSegmentById(0)), const SegmentDefn*>);
static_assert(gives<decltype(std::declval<MessageSetDefn&>().getValidationErrorSetting(1001)), const ValidationErrorSettingDefn&>);
static_assert(
    gives<decltype(std::declval<MessageSetDefn&>().getValidationErrorSettings()), const std::vector<ValidationErrorSettingDefn>&>);

}  // namespace
}  // namespace vantrelia
