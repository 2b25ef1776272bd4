#pragma once
// The text of a primitive field: either a view into text that outlives the field (the source text
// its segment was parsed from) or text of its own. A parse leaves views, so that reading a
// message copies no field; anything that changes the value makes it the field's own.

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace vantrelia {

class FieldText {
 public:
  FieldText() = default;
  FieldText(const FieldText& other) { assign(other.view()); }
  FieldText& operator=(const FieldText& other) {
    if (this != &other) assign(other.view());
    return *this;
  }
  ~FieldText() { release(); }

  std::u16string_view view() const { return {data, length}; }
  std::u16string str() const { return std::u16string(view()); }
  size_t size() const { return length; }
  bool empty() const { return length == 0; }
  bool isView() const { return capacity == 0 && length != 0; }

  // Copies the text.
  void assign(std::u16string_view text) {
    if (text.empty()) {
      clear();
      return;
    }
    if (text.size() > capacity || isView() || capacity == 0) {
      // The source may lie inside the current buffer (a trim of itself), so copy before freeing.
      auto* fresh = new char16_t[text.size() + 1];
      std::memcpy(fresh, text.data(), text.size() * sizeof(char16_t));
      release();
      data = fresh;
      capacity = static_cast<uint32_t>(text.size()) + 1;
    } else {
      std::memmove(const_cast<char16_t*>(data), text.data(), text.size() * sizeof(char16_t));
    }
    length = static_cast<uint32_t>(text.size());
  }
  // Points at text the caller keeps alive for as long as this value stands.
  void assignView(std::u16string_view text) {
    release();
    data = text.data();
    length = static_cast<uint32_t>(text.size());
  }
  // Narrows the value to a part of itself without copying.
  void narrow(size_t offset, size_t count) {
    if (capacity != 0) {
      assign(view().substr(offset, count));
    } else {
      data += offset;
      length = static_cast<uint32_t>(count);
    }
  }
  void clear() {
    release();
    length = 0;
  }
  bool operator==(std::u16string_view text) const { return view() == text; }

 private:
  void release() {
    if (capacity != 0) delete[] data;
    data = nullptr;
    capacity = 0;
  }

  const char16_t* data = nullptr;
  uint32_t length = 0;
  uint32_t capacity = 0;  // 0: a view (or nothing), else the size of the owned buffer
};

}  // namespace vantrelia
