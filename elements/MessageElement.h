#pragma once

namespace vantrelia {

// The contract every node of an element tree keeps. The operations come with the element tree;
// for now this is the type that the factory hands out for a message.
class MessageElement {
 public:
  virtual ~MessageElement() = default;
};

}  // namespace vantrelia
