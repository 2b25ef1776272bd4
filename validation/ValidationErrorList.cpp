#include "validation/ValidationErrorList.h"

#include "foundation/CheckIndex.h"

namespace vantrelia {

const ValidationError& ValidationErrorList::get(int index) const {
  checkIndex(index, count());
  return errors[static_cast<size_t>(index)];
}

}  // namespace vantrelia
