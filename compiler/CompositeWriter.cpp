#include "compiler/CompositeWriter.h"

#include <algorithm>
#include <climits>

#include "compiler/CompileContext.h"
#include "compiler/FieldWriter.h"
#include "compiler/PcfWriter.h"
#include "compiler/SeparatorWriter.h"
#include "compiler/UserDataWriter.h"
#include "definitions/CompositeDefn.h"
#include "definitions/PcfVersion.h"
#include "foundation/Enumerations.h"

namespace vantrelia::compiler {

void CompositeWriter::declare(const std::vector<SourceNode>& composites, CompileContext& context) {
  const int version = context.version();
  std::vector<int32_t> taken = context.typeIds();
  for (const auto& composite : context.composites()) taken.push_back(composite.id);
  const auto isTaken = [&](int32_t id) { return std::find(taken.begin(), taken.end(), id) != taken.end(); };

  std::vector<std::string> names;
  for (const auto& composite : composites) {
    composite.allowOnly({"name", "id", "separator", "specialSeparator", "fixedWidth", "userData", "presenceIndicator", "fields"});
    const std::string name = composite.recordName("fields refer to it by name");
    if (context.findComposite(name) || std::find(names.begin(), names.end(), name) != names.end())
      composite.failAt("name", "composite name '" + name + "' is used twice in the set; fields refer to composites by name");
    names.push_back(name);
    composite.requireVersion("presenceIndicator", composite.has("presenceIndicator"), pcf::kSpecialRecords, version);
    UserDataWriter::declare(composite, context);
    for (const auto& field : FieldWriter::fieldsOf(composite)) FieldWriter::declare(field, context);
    if (!composite.has("id")) continue;
    const auto id = static_cast<int32_t>(composite.integer("id", 0, INT32_MIN, INT32_MAX));
    if (const auto* other = context.findCompositeById(id))
      composite.failAt("id", "id " + std::to_string(id) + " of " + composite.what() + " is already used by composite '" + other->name + "'");
    context.declareComposite(name, id, composite);
    taken.push_back(id);
  }
  // Ids the source doesn't give come from the lowest free ones, in source order.
  int32_t next = 1;
  for (const auto& composite : composites) {
    if (composite.has("id")) continue;
    while (isTaken(next)) ++next;
    taken.push_back(next);
    context.declareComposite(composite.recordName("fields refer to it by name"), next, composite);
  }
}

void CompositeWriter::write(const SourceNode& composite, const CompileContext& context, PcfWriter& out) {
  const int version = context.version();
  const std::string name = composite.recordName("fields refer to it by name");
  const auto* declared = context.findComposite(name);
  if (!declared) throw std::logic_error("composite '" + name + "' written without being declared");

  const int32_t separator = SeparatorWriter::kindOf(composite, "separator", qxSepAuto);
  const std::u16string special = composite.wideText("specialSeparator", u"");
  if (composite.has("specialSeparator") && separator != qxSepString)
    composite.failAt("specialSeparator", "'specialSeparator' of " + composite.what() + " is used only with 'separator: string'");
  if (!PcfWriter::fitsText8w(special) || special.size() > PcfWriter::kLongestText)
    composite.failAt("specialSeparator", "'specialSeparator' of " + composite.what() + " has a character that the file's "
                                         "byte texts can't carry; write it as an escape such as \\u00E9");
  out.text8(name).text8w(special).i32(separator).boolean(composite.flag("fixedWidth", false)).i32(declared->id);

  const std::vector<SourceNode> fields = FieldWriter::fieldsOf(composite);
  out.i32(static_cast<int32_t>(fields.size()));
  bool hasVariable = false;
  for (const auto& field : fields) {
    FieldWriter::write(field, fields, context, out);
    hasVariable = hasVariable || FieldWriter::isVariable(field, context);
  }

  if (version >= pcf::kSyntaxRules) out.boolean(false);        // syntax rules
  if (version >= pcf::kValidationEquations) out.count(0);      // validation equations
  if (version >= pcf::kUserData) UserDataWriter::write(composite, context, out);
  if (version >= pcf::kDefinitionFlagWords) out.i32(hasVariable ? static_cast<int32_t>(CompositeDefn::kHasVariableField) : 0);
  if (version >= pcf::kSpecialRecords) {
    out.boolean(composite.has("presenceIndicator"));
    if (composite.has("presenceIndicator")) {
      const SourceNode indicator(composite.yaml()["presenceIndicator"], "'presenceIndicator' of " + composite.what());
      indicator.allowOnly({"separator", "text"});
      const std::u16string text = indicator.wideText("text", u"");
      if (text.size() > PcfWriter::kLongestText) indicator.failAt("text", "'text' of " + indicator.what() + " is too long");
      out.i32(SeparatorWriter::kindOf(indicator, "separator", qxSepString)).text16(text);
    }
  }
}

}  // namespace vantrelia::compiler
