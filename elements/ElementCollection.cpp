#include "elements/ElementCollection.h"

#include "foundation/CheckIndex.h"

namespace vantrelia {

ElementCollection::ElementCollection() : elements(std::make_shared<std::vector<MessageElement*>>()) {}

void ElementCollection::add(MessageElement* element) { elements->push_back(element); }

void ElementCollection::addAll(const ElementCollection& other) {
  // Copy by position up to the size seen at the start: when other shares this list, inserting
  // its own range would read from storage that the insertion reallocates.
  const size_t count = other.elements->size();
  elements->reserve(elements->size() + count);
  for (size_t i = 0; i < count; ++i) elements->push_back((*other.elements)[i]);
}

int ElementCollection::getCount() const { return static_cast<int>(elements->size()); }

MessageElement* ElementCollection::getItem(int index) const {
  checkIndex(index, getCount());
  return (*elements)[static_cast<size_t>(index)];
}

}  // namespace vantrelia
