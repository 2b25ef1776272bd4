#pragma once
// The result of a path with wildcards: the nodes it reached, in the order they were found.

#include <memory>
#include <vector>

namespace vantrelia {

class MessageElement;

// A value type over a shared list of nodes. Copies share one list, so that what is added through
// one copy is seen through all. The nodes stay owned by their tree: a collection must not outlive
// the tree it was taken from.
class ElementCollection {
 public:
  ElementCollection();

  void add(MessageElement* element);
  // Appends every node of `other` in its order; adding a collection to itself doubles it.
  void addAll(const ElementCollection& other);

  int getCount() const;
  // Throws BadParameter when index is outside 0..getCount()-1.
  MessageElement* getItem(int index) const;

 private:
  std::shared_ptr<std::vector<MessageElement*>> elements;
};

}  // namespace vantrelia
