// Loading the definitions of whole standards as a host does: a new factory reads the PCF that the
// build compiled from standards/. A host loads once, but a large definition must not make it wait.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "foundation/MessageFactory.h"

namespace vantrelia::bench {
namespace {

void loadStandard(benchmark::State& state, const char* pcf) {
  const std::string path = std::string(VANTRELIA_BUNDLED_DIR) + "/" + pcf;
  if (!std::filesystem::exists(path)) {
    state.SkipWithError(("build the target standard_definitions first: " + path + " is missing").c_str());
    return;
  }
  for (auto _ : state) {
    MessageFactory factory;
    factory.LoadDefinition(path);
    benchmark::DoNotOptimize(factory.IsDefinitionLoaded());
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(std::filesystem::file_size(path)));
}

void BM_LoadBundledDefault(benchmark::State& state) { loadStandard(state, "default.pcf"); }
void BM_LoadStandardHl7v25(benchmark::State& state) { loadStandard(state, "hl7-v2.5.pcf"); }
void BM_LoadStandardX12(benchmark::State& state) { loadStandard(state, "x12.pcf"); }
void BM_LoadStandardEdifactD96A(benchmark::State& state) { loadStandard(state, "edifact_d96a.pcf"); }
void BM_LoadStandardNcpdpD0(benchmark::State& state) { loadStandard(state, "ncpdp-d0.pcf"); }

BENCHMARK(BM_LoadBundledDefault)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadStandardHl7v25)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadStandardX12)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadStandardEdifactD96A)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadStandardNcpdpD0)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vantrelia::bench
