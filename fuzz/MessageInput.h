#pragma once
// One input of the message parser's fuzz target, shared with the test that replays its corpus: the
// bytes, one character each, are read as a text of messages against the bundled definition with the
// message reader, and each message is written back, once as the tree writes it and once preserved.

#include <cstddef>
#include <cstdint>
#include <string>

namespace vantrelia::fuzz {

// "" when the text was read and written without fault; otherwise what went wrong: an exception that
// reached the host, or a reader that lost or repeated some of the text.
std::string parseAndWrite(const uint8_t* data, size_t size);

}  // namespace vantrelia::fuzz
