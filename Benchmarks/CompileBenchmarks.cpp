#include "Audio/RenderPattern.h"
#include "Tests/Support/SongBuilder.h"

#include <benchmark/benchmark.h>

#include <random>

namespace mossbit {
namespace {

void CompileFullSong(benchmark::State& state) {
    const Project project = fullSong();
    for (auto _ : state)
        benchmark::DoNotOptimize(RenderPattern(project));
}
BENCHMARK(CompileFullSong)->Unit(benchmark::kMicrosecond);

/// Notes on one channel in no order.
void CompileNotes(benchmark::State& state) {
    std::mt19937 random(1);
    Project project;
    project.bars = 16;
    for (std::int64_t i = 0; i < state.range(0); ++i)
        project.channels[0].notes.push_back(
            {.id = {}, .start = static_cast<std::int64_t>(random() % 256)});
    for (auto _ : state)
        benchmark::DoNotOptimize(RenderPattern(project));
    state.SetComplexityN(state.range(0));
}
BENCHMARK(CompileNotes)->RangeMultiplier(10)->Range(100, 100'000)->Complexity(benchmark::oNLogN);

} // namespace
} // namespace mossbit
