#include "compiler/SourceNode.h"

#include <algorithm>

#include "compiler/CompileError.h"
#include "compiler/PcfWriter.h"
#include "foundation/Utf8.h"

namespace vantrelia::compiler {

int lineOfNode(const YAML::Node& node) { return node.IsDefined() && node.Mark().line >= 0 ? node.Mark().line + 1 : 0; }

SourceNode::SourceNode(YAML::Node yamlNode, std::string what) : node(std::move(yamlNode)), description(std::move(what)) {
  if (node.IsDefined() && !node.IsNull() && !node.IsMap()) fail(description + " must be a mapping of keys to values");
}

int SourceNode::line() const { return lineOfNode(node); }

bool SourceNode::has(std::string_view key) const {
  const YAML::Node value = valueOf(key);
  return value.IsDefined() && !value.IsNull();
}

YAML::Node SourceNode::valueOf(std::string_view key) const {
  if (!node.IsMap()) return YAML::Node(YAML::NodeType::Undefined);
  for (const auto& entry : node)
    if (entry.first.Scalar() == key) return entry.second;
  return YAML::Node(YAML::NodeType::Undefined);
}

int SourceNode::lineOf(std::string_view key) const {
  if (node.IsMap())
    for (const auto& entry : node)
      if (entry.first.Scalar() == key) return lineOfNode(entry.first);
  return line();
}

void SourceNode::fail(const std::string& message) const { throw CompileError(line(), message); }

void SourceNode::failAt(std::string_view key, const std::string& message) const {
  throw CompileError(lineOf(key), message);
}

void SourceNode::allowOnly(std::initializer_list<std::string_view> keys) const {
  if (!node.IsMap()) return;
  for (const auto& entry : node) {
    const std::string& key = entry.first.Scalar();
    if (std::find(keys.begin(), keys.end(), key) == keys.end()) {
      std::string known;
      for (std::string_view k : keys) known += (known.empty() ? "" : ", ") + std::string(k);
      throw CompileError(lineOfNode(entry.first), "unknown key '" + key + "' in " + description + " (known keys: " + known + ")");
    }
  }
}

int64_t SourceNode::integer(std::string_view key, int64_t fallback, int64_t min, int64_t max) const {
  const YAML::Node value = valueOf(key);
  if (!value.IsDefined() || value.IsNull()) return fallback;
  int64_t result = 0;
  if (!value.IsScalar() || !YAML::convert<int64_t>::decode(value, result))
    throw CompileError(lineOfNode(value), "'" + std::string(key) + "' of " + description + " must be a whole number");
  if (result < min || result > max)
    throw CompileError(lineOfNode(value), "'" + std::string(key) + "' of " + description + " must lie between " +
                                              std::to_string(min) + " and " + std::to_string(max));
  return result;
}

bool SourceNode::flag(std::string_view key, bool fallback) const {
  const YAML::Node value = valueOf(key);
  if (!value.IsDefined() || value.IsNull()) return fallback;
  bool result = false;
  if (!value.IsScalar() || !YAML::convert<bool>::decode(value, result))
    throw CompileError(lineOfNode(value), "'" + std::string(key) + "' of " + description + " must be true or false");
  return result;
}

std::string SourceNode::text(std::string_view key, const std::string& fallback) const {
  const YAML::Node value = valueOf(key);
  if (!value.IsDefined() || value.IsNull()) return fallback;
  if (!value.IsScalar()) throw CompileError(lineOfNode(value), "'" + std::string(key) + "' of " + description + " must be a text");
  return value.Scalar();
}

namespace {
std::u16string wideScalar(const YAML::Node& value, const std::string& context) {
  if (!value.IsScalar()) throw CompileError(lineOfNode(value), context + " must be a text");
  auto wide = utf8ToWide(value.Scalar());
  if (!wide) throw CompileError(lineOfNode(value), context + " is not valid UTF-8");
  return *wide;
}
}  // namespace

std::u16string SourceNode::wideText(std::string_view key, const std::u16string& fallback) const {
  const YAML::Node value = valueOf(key);
  if (!value.IsDefined() || value.IsNull()) return fallback;
  return wideScalar(value, "'" + std::string(key) + "' of " + description);
}

std::vector<SourceNode> SourceNode::records(std::string_view key, const std::string& kind) const {
  const YAML::Node value = valueOf(key);
  std::vector<SourceNode> result;
  if (!value.IsDefined() || value.IsNull()) return result;
  if (!value.IsSequence()) throw CompileError(lineOfNode(value), "'" + std::string(key) + "' of " + description + " must be a list");
  for (size_t i = 0; i < value.size(); ++i) {
    const YAML::Node item = value[i];
    std::string name = item.IsMap() && item["name"] && item["name"].IsScalar() ? " '" + item["name"].Scalar() + "'" : " " + std::to_string(i);
    result.emplace_back(item, kind + name);
    if (!item.IsMap()) throw CompileError(lineOfNode(item), kind + name + " must be a mapping of keys to values");
  }
  return result;
}

std::vector<std::u16string> SourceNode::wideTexts(std::string_view key) const {
  const YAML::Node value = valueOf(key);
  std::vector<std::u16string> result;
  if (!value.IsDefined() || value.IsNull()) return result;
  if (!value.IsSequence()) throw CompileError(lineOfNode(value), "'" + std::string(key) + "' of " + description + " must be a list");
  for (const auto& item : value) result.push_back(wideScalar(item, "an entry of '" + std::string(key) + "'"));
  return result;
}

std::vector<std::pair<std::string, std::u16string>> SourceNode::wideTextMap(std::string_view key) const {
  const YAML::Node value = valueOf(key);
  std::vector<std::pair<std::string, std::u16string>> result;
  if (!value.IsDefined() || value.IsNull()) return result;
  if (!value.IsMap()) throw CompileError(lineOfNode(value), "'" + std::string(key) + "' of " + description + " must be a mapping");
  for (const auto& entry : value)
    result.emplace_back(entry.first.Scalar(), wideScalar(entry.second, "the value of '" + entry.first.Scalar() + "'"));
  return result;
}

std::string SourceNode::recordName(std::string_view referredBy) const {
  const std::string name = text("name", "");
  if (name.empty()) fail(description + " needs a name: " + std::string(referredBy));
  if (name.size() > PcfWriter::kLongestText) failAt("name", "the name of " + description + " is longer than 65535 bytes");
  if (name.find('\0') != std::string::npos) failAt("name", "the name of " + description + " can't hold a zero character");
  return name;
}

void SourceNode::requireVersion(std::string_view key, bool differs, int gate, int version) const {
  if (differs && version < gate)
    failAt(key, "'" + std::string(key) + "' of " + description + " needs format version " + std::to_string(gate) +
                    " or later; this file is compiled for version " + std::to_string(version));
}

}  // namespace vantrelia::compiler
