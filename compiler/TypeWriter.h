#pragma once
// The warehouse's two type tables: custom (primitive) types and array types, written field for field
// and gate for gate as PrimitiveTypeDefn::load and ArrayTypeDefn::load read them.
//
// Types are referred to by name. declare() gives every type its id (the source's own `id`, or the
// lowest free one from 1 up; one id space for both tables, so that an id names one type only), and
// resolve() turns a name into what the file records: a data type code and, for a custom or array
// type, its id.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "compiler/SourceNode.h"

namespace vantrelia::compiler {

class CompileContext;
class PcfWriter;

class TypeWriter {
 public:
  struct DataType {
    int32_t code;
    std::optional<int32_t> typeId;  // set for a custom or an array type
  };

  // `definition` is the root of the source, holding `primitiveTypes` and `arrayTypes`.
  TypeWriter(const SourceNode& definition, CompileContext& context);

  // First pass: checks names and ids and assigns the missing ids. Refuses types below their version.
  void declare();
  // Second pass: both tables with their counts; the caller writes them only in versions that have them.
  void write(PcfWriter& out) const;

  // A type of this source by name first, then a data type by name (DataTypeCodes::nameOf) or code.
  std::optional<DataType> resolve(std::string_view name) const;

  // The data type code of a name or of a number written out, or -1.
  static int dataTypeCode(std::string_view nameOrNumber);
  // The names of the basic data types (DataTypeCodes::isBasic), joined by ", ", for messages.
  static std::string basicTypeNames();

 private:
  struct Declared {
    SourceNode source;
    std::string name;
    int32_t id;
  };

  void writePrimitiveType(const Declared& type, PcfWriter& out) const;
  void writeArrayType(const Declared& type, PcfWriter& out) const;
  const Declared* find(const std::vector<Declared>& types, std::string_view name) const;

  const SourceNode& definition;
  CompileContext& context;
  std::vector<Declared> primitiveTypes;
  std::vector<Declared> arrayTypes;
};

}  // namespace vantrelia::compiler
