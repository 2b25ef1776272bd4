#include "support/DefinitionRecords.h"

namespace vantrelia::testing {

compiler::PcfWriter FieldRecord::write(int version) const {
  compiler::PcfWriter w;
  w.text8(name).boolean(required).i32(minLength).i32(maxLength).i32(minRepeats).i32(1).textv(defaultValue, version);
  if (version >= 516) w.boolean(hidden);
  if (version >= 802) w.boolean(hasOverrides);
  if (compositeId >= 0) {
    w.i32(1).i32(compositeId).raw(overrides);
    if (overrides.empty() && version >= 871) w.u16(0);
    else if (overrides.empty() && version >= 801) w.byte(0);
    if (overrides.empty() && version >= 800) w.i32(-1);
  } else {
    w.i32(0).i32(dataType);
    if (version >= 853 && (dataType == 9 || dataType == 10)) w.i32(typeId);
    if (version >= 853 && dataType == 11) w.raw(variable);
    w.i32(alignment).textv(format, version);
    if (version >= 515) w.text8(table);
  }
  if (version >= 855) {
    w.count(static_cast<int32_t>(userData.size()));
    for (const auto& [key, value] : userData) w.count(key).text16(value);
  }
  if (version >= 865) w.boolean(presenceIndicator);
  return w;
}

}  // namespace vantrelia::testing
