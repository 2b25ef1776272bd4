#pragma once
// The text of one separator slot: a value, a replacement or a terminator's replacement. Nearly all
// of them are a few units long, and every message parsed copies a whole list of slots at least
// twice, so texts of up to kInline units are held in place and copied without a call; longer ones
// live on the heap.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace vantrelia {

class SeparatorText {
 public:
  static constexpr uint32_t kInline = 8;

  SeparatorText() = default;
  SeparatorText(std::u16string_view text) { take(text); }  // NOLINT: stands where a string stood
  SeparatorText(const std::u16string& text) : SeparatorText(std::u16string_view(text)) {}
  SeparatorText(const char16_t* text) : SeparatorText(std::u16string_view(text)) {}
  SeparatorText(const SeparatorText& other) : length(other.length) {
    if (length <= kInline) {
      std::memcpy(small, other.small, sizeof small);
    } else {
      heap = copyOf(other.view());
    }
  }
  SeparatorText(SeparatorText&& other) noexcept : length(other.length) {
    std::memcpy(small, other.small, sizeof small);
    if (length > kInline) {
      heap = other.heap;
      other.length = 0;
    }
  }
  SeparatorText& operator=(const SeparatorText& other) {
    if (this != &other) {
      if (length <= kInline && other.length <= kInline) {
        std::memcpy(small, other.small, sizeof small);
        length = other.length;
      } else {
        assign(other.view());
      }
    }
    return *this;
  }
  SeparatorText& operator=(SeparatorText&& other) noexcept {
    if (this != &other) {
      release();
      length = other.length;
      std::memcpy(small, other.small, sizeof small);
      if (length > kInline) {
        heap = other.heap;
        other.length = 0;
      }
    }
    return *this;
  }
  SeparatorText& operator=(std::u16string_view text) {
    assign(text);
    return *this;
  }
  SeparatorText& operator=(const std::u16string& text) { return *this = std::u16string_view(text); }
  SeparatorText& operator=(const char16_t* text) { return *this = std::u16string_view(text); }
  ~SeparatorText() { release(); }

  const char16_t* data() const { return length <= kInline ? small : heap; }
  size_t size() const { return length; }
  bool empty() const { return length == 0; }
  char16_t front() const { return data()[0]; }
  std::u16string_view view() const { return {data(), length}; }
  operator std::u16string_view() const { return view(); }  // NOLINT: read wherever a view is
  std::u16string str() const { return std::u16string(view()); }
  void clear() {
    release();
    length = 0;
  }

  friend bool operator==(const SeparatorText& text, std::u16string_view other) { return text.view() == other; }

 private:
  static char16_t* copyOf(std::u16string_view text) {
    auto* copy = new char16_t[text.size()];
    std::copy(text.begin(), text.end(), copy);
    return copy;
  }
  void take(std::u16string_view text) {
    length = static_cast<uint32_t>(text.size());
    if (length <= kInline) {
      std::copy(text.begin(), text.end(), small);
    } else {
      heap = copyOf(text);
    }
  }
  void assign(std::u16string_view text) {
    // The text may lie in this one's own storage: copied out before that is released.
    if (text.size() <= kInline) {
      char16_t units[kInline];
      std::copy(text.begin(), text.end(), units);
      release();
      length = static_cast<uint32_t>(text.size());
      std::copy(units, units + length, small);
    } else {
      char16_t* copy = copyOf(text);
      release();
      length = static_cast<uint32_t>(text.size());
      heap = copy;
    }
  }
  void release() {
    if (length > kInline) delete[] heap;
  }

  union {
    char16_t small[kInline] = {};
    char16_t* heap;
  };
  uint32_t length = 0;
};

}  // namespace vantrelia
