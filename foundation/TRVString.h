#pragma once
// The string class of the definition model: a deep-copying, never-null text in two widths.

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <string_view>

namespace kestrel {

class TRVBase {};

template <class T>
class TRVStringBase : public TRVBase {
 public:
  virtual ~TRVStringBase() = default;

 protected:
  // Always an array with a terminator behind the text; the empty string is a one-element array.
  std::unique_ptr<T[]> data;
  int32_t length = 0;
};

template <class T>
class TRVString : public TRVStringBase<T> {
 using Base = TRVStringBase<T>;

 public:
  using size_type = uint32_t;
  static constexpr size_type npos = 0xFFFFFFFFu;

  TRVString() { assign(nullptr, 0); }
  TRVString(const T* text) { assign(text, text ? std::char_traits<T>::length(text) : 0); }
  TRVString(const std::basic_string<T>& text) { assign(text.data(), text.size()); }
  TRVString(std::basic_string_view<T> text) { assign(text.data(), text.size()); }
  TRVString(const TRVString& other) { assign(other.c_str(), other.length()); }
  TRVString(TRVString&& other) noexcept : TRVString() { swap(other); }

  TRVString& operator=(const TRVString& other) {
    if (this != &other) assign(other.c_str(), other.length());
    return *this;
  }
  TRVString& operator=(TRVString&& other) noexcept {
    swap(other);
    return *this;
  }
  TRVString& operator=(const std::basic_string<T>& text) {
    assign(text.data(), text.size());
    return *this;
  }
  TRVString& operator=(const T* text) {
    assign(text, text ? std::char_traits<T>::length(text) : 0);
    return *this;
  }

  // Frees the old array and copies; a length of 0 leaves the one-element empty form.
  void assign(const T* text, size_t count) {
    auto fresh = std::make_unique<T[]>(count + 1);
    if (count) std::char_traits<T>::copy(fresh.get(), text, count);
    fresh[count] = T();
    Base::data = std::move(fresh);
    Base::length = static_cast<int32_t>(count);
  }

  void swap(TRVString& other) noexcept {
    std::swap(Base::data, other.Base::data);
    std::swap(Base::length, other.Base::length);
  }

  const T* c_str() const { return Base::data.get(); }
  size_type length() const { return static_cast<size_type>(Base::length); }
  bool empty() const { return Base::length == 0; }
  std::basic_string_view<T> view() const { return {c_str(), length()}; }
  std::basic_string<T> str() const { return std::basic_string<T>(view()); }

  // A count past the end (npos included) is cut to the end. A position past the end gives the
  // empty string rather than reading outside the array.
  TRVString substr(size_type position, size_type count = npos) const {
    if (position >= length()) return TRVString();
    const size_type available = length() - position;
    if (count > available) count = available;
    TRVString result;
    result.assign(c_str() + position, count);
    return result;
  }

  // Narrow text against wide text: each narrow byte against the low byte of the wide unit, both
  // read as signed 8-bit numbers; on a common prefix the shorter string is the lesser.
  int compare(const char16_t* text, size_type count) const
    requires std::same_as<T, char>
  {
    if (count == 0) return length() == 0 ? 0 : 1;
    const size_type shorter = length() < count ? length() : count;
    for (size_type i = 0; i < shorter; ++i) {
      const auto mine = static_cast<int8_t>(c_str()[i]);
      const auto theirs = static_cast<int8_t>(text[i] & 0xFF);
      if (mine != theirs) return mine < theirs ? -1 : 1;
    }
    if (length() == count) return 0;
    return length() < count ? -1 : 1;
  }

  // Equal only if every unit and the length agree.
  bool operator==(const T* text) const {
    if (!text) return Base::length == 0;
    const size_t count = std::char_traits<T>::length(text);
    return count == length() && std::char_traits<T>::compare(c_str(), text, count) == 0;
  }
  bool operator==(const TRVString& other) const { return view() == other.view(); }
  auto operator<=>(const TRVString& other) const { return view() <=> other.view(); }
};

}  // namespace kestrel
