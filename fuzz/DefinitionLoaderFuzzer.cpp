// libFuzzer entry point over the definition loader and the inspector's views of what it loads.
// Built by fuzz/run.sh; the test FuzzCorpusTest replays the corpus and the saved crashes.

#include <cstdio>
#include <cstdlib>

#include "fuzz/DefinitionInput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string fault = vantrelia::fuzz::loadAndInspect(data, size);
  if (!fault.empty()) {
    std::fprintf(stderr, "%s\n", fault.c_str());
    std::abort();
  }
  return 0;
}
