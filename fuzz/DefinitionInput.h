#pragma once
// One input of the definition loader's fuzz target, shared with the test that replays its corpus:
// the bytes are loaded as a definition file, and what loads is shown as the inspector shows it.

#include <cstddef>
#include <cstdint>
#include <string>

namespace vantrelia::fuzz {

// "" when the bytes loaded and showed cleanly or were refused with a named InvalidFile; otherwise
// what went wrong: an exception the loader had to wrap, or one from showing the loaded model.
std::string loadAndInspect(const uint8_t* data, size_t size);

}  // namespace vantrelia::fuzz
