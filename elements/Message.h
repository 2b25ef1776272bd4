#pragma once

namespace vantrelia {

// Marks the nodes that are whole messages, known or generic, so that a walk can tell a message
// apart from the other composite nodes without knowing its class.
class Message {
 public:
  virtual ~Message() = default;
};

}  // namespace vantrelia
