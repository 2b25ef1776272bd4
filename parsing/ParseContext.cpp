#include "parsing/ParseContext.h"

#include "definitions/MessageSetDefn.h"
#include "elements/MessageImpl.h"
#include "parsing/SeparatorList.h"

namespace vantrelia {

ParseContext::ParseContext(const MessageWarehouseDefn& owner, std::shared_ptr<const std::u16string> parsedText,
                           std::shared_ptr<SeparatorList> fixed)
    : warehouse(owner), text(std::move(parsedText)), fixedSeparators(std::move(fixed)) {}

ParseContext ParseContext::buildContextFrom(InternalElement& element, std::shared_ptr<const std::u16string> text) {
  std::vector<MessageImpl*> enclosing;
  for (InternalElement* node = &element; node; node = node->parent) {
    if (auto* message = dynamic_cast<MessageImpl*>(node)) enclosing.push_back(message);
  }
  const MessageWarehouseDefn& warehouse = *element.getMessageSetDefn()->getWarehouse();
  std::shared_ptr<SeparatorList> own = enclosing.empty() ? nullptr : enclosing.front()->getSeparatorHandle();
  ParseContext context(warehouse, std::move(text), own);
  for (auto message = enclosing.rbegin(); message != enclosing.rend(); ++message) {
    context.separatorStack.push_back((*message)->getSeparatorHandle());
  }
  return context;
}

}  // namespace vantrelia
