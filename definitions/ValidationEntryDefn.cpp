#include "definitions/ValidationEntryDefn.h"

#include "definitions/InputStream.h"
#include "definitions/PcfVersion.h"

namespace vantrelia {

void ValidationEntryDefn::load(InputStream& stream, int version, bool hasDescriptions) {
  stream.readTextV(value, version);
  if (version >= pcf::kTableDescriptions && hasDescriptions) stream.readWide(description);
}

}  // namespace vantrelia
