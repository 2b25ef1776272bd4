#include "parsing/SeparatorImpl.h"

#include "definitions/SeparatorDefn.h"

namespace vantrelia {

void SeparatorImpl::takeDefaultValue() {
  if (defn) setValue(defn->getValue().view());
}

}  // namespace vantrelia
