#pragma once
// The grammar of element paths, shared by every node kind: how a path is cut into the step this
// node answers and the rest that goes on to a child, and how an index in brackets is read.
// Names compare without regard to ASCII case; "." and "/" are interchangeable.

#include <string_view>

#include "elements/ElementCollection.h"

namespace vantrelia {

class InternalElement;
class MessageElement;

class ElementPath {
 public:
  struct Step {
    std::string_view head;
    std::string_view rest;
  };
  struct Index {
    std::string_view text;  // between "[" and the first "]"
    std::string_view rest;  // behind the first "." or "/" after the "]"
  };

  // The head runs to the first ".", "/" or (unless `bracketsSplit` is false, as in composites,
  // whose children don't repeat) "["; a "[" stays at the front of the rest, a "." or "/" is dropped.
  static Step split(std::string_view path, bool bracketsSplit = true);
  // Whether the head is the "(parent)" step.
  static bool isParent(std::string_view head);
  // Whether the path begins with the eight characters of "(parent)", in any case; what an indexed
  // node takes after its ninth character.
  static bool startsWithParent(std::string_view path);
  static constexpr size_t kParentStepLength = 9;

  // An index step of a repeating node. Throws BadParameter when the path doesn't begin with "["
  // or has no "]".
  static Index splitIndex(std::string_view path);
  // Only digits; an empty text counts as 0. Throws BadParameter "... is not a valid array index".
  static int parseIndex(std::string_view text);
  // A collection's index: read like atoi, without a digit check.
  static int parseIndexLoosely(std::string_view text);
  static bool isWildcard(std::string_view text) { return text == "*"; }

  // The whole path rule of a node whose children are numbered (message sets, repeats, arrays):
  // "(parent)" goes to `parentTarget`, else "[n]" picks child n and the rest goes on from it.
  static MessageElement* walkIndexed(InternalElement& node, const char* path, InternalElement* parentTarget);
  // The same for collections: "[*]" takes every child, and the index isn't checked for digits.
  static ElementCollection collectIndexed(InternalElement& node, const char* spec);

  // The path of a null argument is the empty path.
  static std::string_view of(const char* path) { return path ? std::string_view(path) : std::string_view(); }
};

}  // namespace vantrelia
