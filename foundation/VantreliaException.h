#pragma once
#include <exception>
#include <string>

namespace vantrelia {

// Root of the engine's exceptions for wrong use of its interface. The text is fixed English that a
// host may show as it stands.
class VantreliaException : public std::exception {
 public:
  explicit VantreliaException(std::string text) : message(std::move(text)) {}
  const char* what() const noexcept override { return message.c_str(); }

  std::string message;
};

}  // namespace vantrelia
