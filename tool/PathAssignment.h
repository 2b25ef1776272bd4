#pragma once
// A PATH=VALUE argument of `set` and `new`, and putting it into a message.

#include <optional>
#include <string>
#include <vector>

namespace vantrelia {
class MessageElement;
}

namespace vantrelia::tool {

class PathAssignment {
 public:
  // Empty when the text has no "=" or nothing before it.
  static std::optional<PathAssignment> parse(const std::string& text);
  // Every argument, or the first that isn't an assignment in `bad`.
  static std::optional<std::vector<PathAssignment>> parseAll(const std::vector<std::string>& texts, std::string& bad);

  // Sets the value (UTF-8 on the command line) at the path, creating what the path needs. Throws
  // what the engine throws for a path the message doesn't have.
  void applyTo(MessageElement& message) const;
  const std::string& getPath() const { return path; }
  // The node at the path, created with what it needs, repeats up to the index a step names
  // included. Throws the engine's BadParameter for a path the message doesn't have.
  static MessageElement* reach(MessageElement& message, const std::string& path);

 private:
  PathAssignment(std::string path, std::string value) : path(std::move(path)), value(std::move(value)) {}
  std::string path;
  std::string value;
};

}  // namespace vantrelia::tool
