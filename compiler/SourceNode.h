#pragma once
// A record of a definition source: a YAML mapping read with defaults, type checks, a check for
// unknown keys, and errors that name the line.

#include <yaml-cpp/yaml.h>

#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vantrelia::compiler {

// The 1-based source line of a node, for messages; 0 when the node has no place in the source.
int lineOfNode(const YAML::Node& node);

class SourceNode {
 public:
  // `what` names the record in messages, e.g. "message set 'ADT'".
  SourceNode(YAML::Node node, std::string what);

  int line() const;
  const std::string& what() const { return description; }
  const YAML::Node& yaml() const { return node; }
  bool has(std::string_view key) const;

  // Refuses any key outside the list, naming the first unknown one and its line.
  void allowOnly(std::initializer_list<std::string_view> keys) const;

  int64_t integer(std::string_view key, int64_t fallback, int64_t min, int64_t max) const;
  bool flag(std::string_view key, bool fallback) const;
  std::string text(std::string_view key, const std::string& fallback) const;
  // YAML text is UTF-8; the engine's values are 16-bit units.
  std::u16string wideText(std::string_view key, const std::u16string& fallback) const;

  // A list of records, each checked to be a mapping; absent gives an empty list.
  std::vector<SourceNode> records(std::string_view key, const std::string& kind) const;
  // A list of texts; absent gives an empty list.
  std::vector<std::u16string> wideTexts(std::string_view key) const;
  // A mapping of texts to texts, in source order; absent gives an empty list.
  std::vector<std::pair<std::string, std::u16string>> wideTextMap(std::string_view key) const;

  // Fails when the source gives the key a value other than `neutral` while the file version is
  // below the version that can carry it.
  void requireVersion(std::string_view key, bool differs, int gate, int version) const;

  // The record's `name`, as a byte text of the file: present (`referredBy` says who needs it, e.g.
  // "fields refer to it by name"), at most 65535 bytes, without a zero byte.
  std::string recordName(std::string_view referredBy) const;

  int lineOf(std::string_view key) const;
  [[noreturn]] void fail(const std::string& message) const;
  [[noreturn]] void failAt(std::string_view key, const std::string& message) const;

 private:
  YAML::Node valueOf(std::string_view key) const;

  YAML::Node node;
  std::string description;
};

}  // namespace vantrelia::compiler
