// Library start-up: Initialize opens the linked-in resource file (its cross-reference table
// only) and sweeps stale temp files; Terminate closes it. Every run of the tool pays this once.
#include <benchmark/benchmark.h>

#include "PDF/Ferrox.h"

namespace {

using namespace lum;

void BM_InitializeTerminate(benchmark::State& state) {
    for (auto _ : state) {
        PDF::Ferrox::Initialize();
        PDF::Ferrox::Terminate();
    }
}
BENCHMARK(BM_InitializeTerminate)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
