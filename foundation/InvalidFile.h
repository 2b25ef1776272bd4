#pragma once
#include <exception>
#include <string>

namespace vantrelia {

// The definition file reader's failures only. Deliberately not a VantreliaException, and what() is
// left alone: handlers read `message`.
class InvalidFile : public std::exception {
 public:
  explicit InvalidFile(std::string text) : message(std::move(text)) {}

  std::string message;
};

}  // namespace vantrelia
