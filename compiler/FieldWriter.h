#pragma once
// A field of a composite or segment, written field for field and gate for gate as FieldDefn::load
// reads it.
//
//   - {name: Identifier, dataType: string, maxLength: 20, table: Codes}
//   - {name: Amount, dataType: Money, format: "@#,##0.00"}     # a custom type by name
//   - {name: Count, dataType: long, count: {kind: segments, path: "12"}}
//   - {name: Data, dataType: binary, lengthField: DataLength}
//   - {name: Value, dataType: variable, variable: {keyField: Kind, types: {C: CE}, basicTypes: {N: long}}}
//   - {name: Coding, composite: CE, overrides: {Identifier: {required: true}}}
//
// Special defaults are written as the user means them: `count` (repeats, segments, groups,
// messages, with an optional path), `countedField` and `lengthField`; the raw text ("#12#S") in
// `default` works too and is checked as the engine will read it.

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "compiler/SourceNode.h"

namespace vantrelia::compiler {

class CompileContext;
class PcfWriter;

class FieldWriter {
 public:
  // The data type of a primitive field as the engine will see it: the code of the file, the id of
  // its custom or array type, and its base type (a custom type's base; arrays aren't followed).
  struct DataType {
    int32_t code;
    std::optional<int32_t> typeId;
    int32_t baseType;
  };

  // The field sources in the `fields` list of a composite or segment, in order.
  static std::vector<SourceNode> fieldsOf(const SourceNode& owner);

  // Declaration pass: checks the keys and declares the field's user-data keys, which the file
  // lists before any set.
  static void declare(const SourceNode& field, CompileContext& context);
  // One field record. `siblings` are the fields of the same composite or segment, among which a
  // variable field finds its key field by name.
  static void write(const SourceNode& field, const std::vector<SourceNode>& siblings, const CompileContext& context,
                    PcfWriter& out);

  // True for a field of data type variable, which marks the composite or segment holding it.
  static bool isVariable(const SourceNode& field, const CompileContext& context);

  // The data type a field's `dataType` names (default string). Refuses unknown names and
  // `custom`, `array` or `variable` standing for no type of the source.
  static DataType dataTypeOf(const SourceNode& field, const CompileContext& context);

  // The default text that a `count` key stands for ("#path", "#path#S", "#path#G", "#path#M"),
  // shared with overrides, which take the same key.
  static std::u16string countText(const SourceNode& owner);
  // Refuses, naming the line of `key`, a default that begins with "#" whose count item the engine
  // would refuse, on a field of a count base type (short, long, strictInteger).
  static void checkCountDefault(const SourceNode& owner, std::string_view key, std::u16string_view text);
  // Refuses, naming the line of `format`, a pattern format ("@...") that the engine would refuse
  // to build when it loads the file: a number picture with an empty section, or a regular
  // expression that doesn't compile. `baseType` is the field's base type.
  static void checkPattern(const SourceNode& owner, std::u16string_view format, int32_t baseType);
};

}  // namespace vantrelia::compiler
