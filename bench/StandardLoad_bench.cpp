// Loading the generated standard definitions, as a host does at start-up: the whole PCF read into
// a fresh factory, state tables built where the file doesn't carry them.

#include <benchmark/benchmark.h>

#include <filesystem>
#include <string>

#include "definitions/MessageWarehouseDefn.h"
#include "foundation/MessageFactory.h"

namespace vantrelia::bench {
namespace {

void loadPcf(benchmark::State& state, const std::string& file) {
  const std::string path = std::string(VANTRELIA_BUNDLED_DIR) + "/" + file;
  for (auto _ : state) {
    MessageFactory factory;
    factory.LoadDefinition(path);
    benchmark::DoNotOptimize(factory.getWarehouse().getMessageSetCount());
  }
  state.counters["bytes"] = static_cast<double>(std::filesystem::file_size(path));
}

void BM_LoadX12(benchmark::State& state) { loadPcf(state, "x12.pcf"); }
void BM_LoadEdifactD96A(benchmark::State& state) { loadPcf(state, "edifact_d96a.pcf"); }
BENCHMARK(BM_LoadX12)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LoadEdifactD96A)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace vantrelia::bench
