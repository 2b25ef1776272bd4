#pragma once
// What the element tree tests share: one definition that has every kind of node (groups ordered,
// hidden, unordered and of choice, repeats, an embedded set, composites at two levels, repeating
// fields, defaults, fixed widths), loaded once per test into a factory, and short conversions.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "elements/InternalElement.h"
#include "foundation/MessageFactory.h"

namespace vantrelia::testing {

// Narrow test text to wide; the tests write only ASCII.
std::u16string wide(std::string_view text);
std::string narrow(std::u16string_view text);

// Reads `text` into a segment as its own text, expecting it to take all of it, and gives the
// findings the read recorded, as number and text.
std::vector<std::pair<int, std::string>> readSegmentText(InternalElement& segment, const std::string& text);

class ElementTreeTest : public ::testing::Test {
 protected:
  void SetUp() override;

  // A new message of that name; fails the test when the definition has none.
  std::unique_ptr<MessageElement> create(const std::string& name);
  // The node at the path of `root`, as the engine's own node class.
  static InternalElement* at(MessageElement& root, const std::string& path);

  MessageFactory factory;
};

// The definition behind ElementTreeTest, for tests that compile variants of it.
extern const char* const kElementTreeDefinition;

}  // namespace vantrelia::testing
