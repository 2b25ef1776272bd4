#include "definitions/ArrayTypeDefn.h"

#include "definitions/InputStream.h"
#include "definitions/MessageWarehouseDefn.h"

namespace vantrelia {

void ArrayTypeDefn::load(InputStream& stream, const MessageWarehouseDefn& warehouse) {
  stream.read(Name).read(id).read(DataType);
  if (DataType == DataTypeCodes::kCustom) CustomType = warehouse.findPrimitiveType(stream.readInt());
  stream.read(ArraySeparator);
  if (ArraySeparator == kOwnSeparator) stream.read(ownSeparator);  // text8w in every version
}

}  // namespace vantrelia
