#pragma once
// What the caller of a parse may hand down to every message it finishes: a function that is
// offered each finished embedded message and answers true when it has taken what it needs, so
// that the message can leave the tree at once.

#include <cstdint>

namespace vantrelia {

class MessageElement;

struct ParseCallback {
  bool (*callback)(MessageElement* message) = nullptr;
  bool (*callbackWithData)(MessageElement* message, intptr_t data) = nullptr;
  intptr_t callbackData = 0;

  bool operator()(MessageElement* message) const {
    if (callback) return callback(message);
    if (callbackWithData) return callbackWithData(message, callbackData);
    return false;
  }
};

}  // namespace vantrelia
