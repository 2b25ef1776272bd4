#include "compiler/WarehouseWriter.h"

#include <cstdint>

#include "compiler/CompileContext.h"
#include "compiler/MessageSetWriter.h"
#include "compiler/PcfWriter.h"
#include "compiler/UserDataWriter.h"
#include "definitions/PcfVersion.h"

namespace vantrelia::compiler {

WarehouseWriter::WarehouseWriter(const SourceNode& node, CompileContext& ctx)
    : source(node), context(ctx), typeTables(node, ctx) {}

void WarehouseWriter::declare() {
  source.allowOnly({"version", "hasVariableFields", "userDataKeys", "userData", "flags", "primitiveTypes",
                    "arrayTypes", "messageSets"});
  const int version = context.version();

  typeTables.declare();
  context.setTypes(typeTables, source);

  source.requireVersion("hasVariableFields", source.flag("hasVariableFields", false), pcf::kHasVariableFields, version);
  source.requireVersion("flags", source.integer("flags", 0, INT32_MIN, UINT32_MAX) != 0, pcf::kInitialFlags, version);

  // Keys listed on their own come first in the key list, in their order.
  const auto keys = source.wideTexts("userDataKeys");
  source.requireVersion("userDataKeys", !keys.empty(), pcf::kUserData, version);
  for (const auto& key : keys) context.declareUserDataKey(key);
  UserDataWriter::declare(source, context);
  MessageSetWriter::declareAll(source.records("messageSets", "message set"), context);
}

void WarehouseWriter::write(PcfWriter& out) const {
  const int version = context.version();
  out.i32(version);
  if (version >= pcf::kFileHeader) out.text8(pcf::kHeaderText);
  if (version >= pcf::kTypeTables) typeTables.write(out);
  if (version >= pcf::kHasVariableFields) out.boolean(source.flag("hasVariableFields", false));
  if (version >= pcf::kUserData) {
    out.count(static_cast<int32_t>(context.userDataKeys().size()));
    for (const auto& key : context.userDataKeys()) out.text16(key);
    UserDataWriter::write(source, context, out);
  }
  if (version >= pcf::kInitialFlags)
    out.i32(static_cast<int32_t>(static_cast<uint32_t>(source.integer("flags", 0, INT32_MIN, UINT32_MAX))));
  const auto sets = source.records("messageSets", "message set");
  out.i32(static_cast<int32_t>(sets.size()));
  for (size_t i = 0; i < sets.size(); ++i) MessageSetWriter::write(sets[i], i, context, out);
}

}  // namespace vantrelia::compiler
