#pragma once

#include <memory>
#include <span>

namespace vantrelia {

class InternalElement;

// A node that holds its children in slots by definition position, null where a child doesn't
// exist yet. The slots stay the node's own: they are for the engine's walks, never for hosts.
class ElementContainer {
 public:
  virtual int getChildCount() = 0;
  virtual std::span<const std::unique_ptr<InternalElement>> getChildArray() = 0;
  virtual ~ElementContainer() = default;
};

}  // namespace vantrelia
