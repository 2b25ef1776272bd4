#include "compiler/MatchWriter.h"

#include "compiler/CompileContext.h"
#include "compiler/PcfWriter.h"
#include "definitions/MatchDefn.h"
#include "foundation/InvalidFile.h"
#include "definitions/PcfVersion.h"

namespace vantrelia::compiler {

std::vector<SourceNode> MatchWriter::matchesOf(const SourceNode& owner) {
  return owner.records("matches", owner.what() + " match");
}

void MatchWriter::write(const SourceNode& match, const CompileContext& context, PcfWriter& out) {
  const int version = context.version();
  match.allowOnly({"path", "value"});
  const std::string path = match.text("path", "");
  if (path.empty()) match.fail(match.what() + " needs a 'path': the field whose value it tests");
  if (path.size() > PcfWriter::kLongestText) match.failAt("path", "the path of " + match.what() + " is longer than 65535 bytes");
  if (path.find('\0') != std::string::npos) match.failAt("path", "the path of " + match.what() + " can't hold a zero character");
  const std::u16string value = match.wideText("value", u"");
  if (value.size() > PcfWriter::kLongestText) match.failAt("value", "the value of " + match.what() + " is too long");
  if (version < pcf::kWideValueTexts && !PcfWriter::fitsText8w(value))
    match.failAt("value", "the value of " + match.what() + " has a character that a byte can't carry; files before "
                          "version 832 hold match values as bytes");
  // The engine builds the value into a regular expression when it loads the file.
  if (!value.empty()) {
    try {
      buildMatchPattern(value);
    } catch (const InvalidFile&) {
      match.failAt("value", "the value of " + match.what() + " is a regular expression that doesn't compile");
    }
  }
  out.text8(path).textv(value, version);
}

void MatchWriter::writeList(const SourceNode& owner, const CompileContext& context, PcfWriter& out) {
  const std::vector<SourceNode> matches = matchesOf(owner);
  out.i32(static_cast<int32_t>(matches.size()));
  for (const auto& match : matches) write(match, context, out);
}

}  // namespace vantrelia::compiler
