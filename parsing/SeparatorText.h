#pragma once
// The text of one separator slot: a value, a replacement or a terminator's replacement. Nearly all
// of them are a few units long, and every message parsed copies a whole list of slots at least
// twice, so texts of up to kInline units are held in place and copied without a call; longer ones
// live on the heap. The units behind an inline text are kept zero, so that two inline texts
// compare as two words.

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
    if (length > kInline) other.forget();
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
      if (length > kInline) other.forget();
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
    forget();
  }

  friend bool operator==(const SeparatorText& text, std::u16string_view other) { return text.view() == other; }
  friend bool operator==(const SeparatorText& text, const std::u16string& other) { return text.view() == other; }
  friend bool operator==(const SeparatorText& text, const char16_t* other) {
    return text.view() == std::u16string_view(other);
  }
  friend bool operator==(const SeparatorText& a, const SeparatorText& b) {
    if (a.length != b.length) return false;
    if (a.length <= kInline) return std::memcmp(a.small, b.small, sizeof a.small) == 0;
    return a.view() == b.view();
  }

 private:
  static char16_t* copyOf(std::u16string_view text) {
    auto* copy = new char16_t[text.size()];
    std::copy(text.begin(), text.end(), copy);
    return copy;
  }
  // Empty and inline, the heap text (if any) left to whoever took it.
  void forget() {
    std::memset(small, 0, sizeof small);
    length = 0;
  }
  void take(std::u16string_view text) {
    length = static_cast<uint32_t>(text.size());
    if (length <= kInline) {
      std::memset(small, 0, sizeof small);
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
      std::memset(small, 0, sizeof small);
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
