// libFuzzer entry point over the message reader, the parser and the writers of what it parses.
// Built by fuzz/run.sh; the test FuzzCorpusTest replays the corpus and the saved crashes.

#include <cstdio>
#include <cstdlib>

#include "fuzz/MessageInput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string fault = vantrelia::fuzz::parseAndWrite(data, size);
  if (!fault.empty()) {
    std::fprintf(stderr, "%s\n", fault.c_str());
    std::abort();
  }
  return 0;
}
