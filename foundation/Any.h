#pragma once
// The typed value that carries option values between a host and the engine.

#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <utility>

namespace Any {

class any {
 public:
  class placeholder {
   public:
    virtual ~placeholder() = default;
    virtual const std::type_info& type() const = 0;
    virtual std::unique_ptr<placeholder> clone() const = 0;
  };

  template <class T>
  class holder final : public placeholder {
   public:
    explicit holder(T value) : held(std::move(value)) {}
    const std::type_info& type() const override { return typeid(T); }
    std::unique_ptr<placeholder> clone() const override { return std::make_unique<holder>(held); }

    T held;
  };

  any() = default;
  any(const any& other) : content(other.content ? other.content->clone() : nullptr) {}
  any(any&& other) noexcept = default;
  template <class T, class = std::enable_if_t<!std::is_same_v<std::decay_t<T>, any>>>
  any(T&& value) : content(std::make_unique<holder<std::decay_t<T>>>(std::forward<T>(value))) {}

  any& operator=(const any& other) {
    any(other).swap(*this);
    return *this;
  }
  any& operator=(any&& other) noexcept = default;

  void swap(any& other) noexcept { content.swap(other.content); }
  bool empty() const { return !content; }
  // The type of an empty value reads as void.
  const std::type_info& type() const { return content ? content->type() : typeid(void); }

 private:
  template <class T>
  friend const T* any_cast(const any* value) noexcept;

  std::unique_ptr<placeholder> content;
};

class bad_any_cast : public std::bad_cast {
 public:
  explicit bad_any_cast(const std::type_info& wantedType) : wanted(&wantedType) {}
  const char* what() const noexcept override {
    return "boost::bad_any_cast: failed conversion using boost::any_cast";
  }
  // The type the caller asked for; the option handler names it in its message.
  const std::type_info& wantedType() const { return *wanted; }

 private:
  const std::type_info* wanted;
};

// typeid ignores const, so a const-qualified request must look for the holder of the plain type.
template <class T>
const T* any_cast(const any* value) noexcept {
  using Held = std::remove_cv_t<T>;
  if (!value || value->type() != typeid(Held)) return nullptr;
  return &static_cast<const any::holder<Held>*>(value->content.get())->held;
}

template <class T>
T any_cast(const any& value) {
  const T* held = any_cast<T>(&value);
  if (!held) throw bad_any_cast(typeid(T));
  return *held;
}

// A fixed, readable spelling of a type for messages: "bool", "int", "double", "void",
// "std::u16string"; other types as the compiler's demangled name.
std::string printableTypeName(const std::type_info& type);

}  // namespace Any
