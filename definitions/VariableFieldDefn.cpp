#include "definitions/VariableFieldDefn.h"

#include "definitions/InputStream.h"

namespace vantrelia {

namespace {

void readTypeMap(InputStream& stream, std::map<std::u16string, int32_t>& into) {
  const int32_t count = stream.readInt();
  for (int32_t i = 0; i < count; ++i) {
    std::u16string key;
    stream.readWide(key);
    const int32_t value = stream.readInt();
    into.emplace(std::move(key), value);
  }
}

}  // namespace

void VariableFieldDefn::load(InputStream& stream, int) {
  stream.read(keyFieldIndex);
  readTypeMap(stream, basicTypes);
  readTypeMap(stream, typeIds);
}

}  // namespace vantrelia
