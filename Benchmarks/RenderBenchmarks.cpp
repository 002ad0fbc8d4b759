#include "Audio/ChipCore.h"
#include "Benchmarks/FilterFloor.h"
#include "Benchmarks/Measure.h"
#include "Tests/Support/SongBuilder.h"

#include <benchmark/benchmark.h>

#include <memory>
#include <vector>

namespace mossbit {
namespace {

constexpr std::size_t blockFrames = mossbit::FilterFloor::blockFrames;

void FilterFloor(benchmark::State& state) {
    mossbit::FilterFloor filter(static_cast<float>(state.range(0)));
    for (auto _ : state) {
        filter.renderBlock();
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(blockFrames));
}
BENCHMARK(FilterFloor)->Arg(44100)->Arg(48000);

void RenderFullSong(benchmark::State& state) {
    ChipCore core(std::make_shared<const RenderPattern>(fullSong()),
                  static_cast<double>(state.range(0)));
    std::vector<float> output(blockFrames);
    for (auto _ : state) {
        core.render(output);
        benchmark::DoNotOptimize(output.data());
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(blockFrames));
}
BENCHMARK(RenderFullSong)->Arg(44100)->Arg(48000);

/// One block as a device asks for it, each call by itself, in the thread's processor time.
void RenderBlockOf512(benchmark::State& state) {
    ChipCore core(std::make_shared<const RenderPattern>(fullSong()), 48000);
    std::vector<float> output(512);
    std::vector<double> microseconds;
    for (auto _ : state) {
        const double start = threadSeconds();
        core.render(output);
        microseconds.push_back((threadSeconds() - start) * 1e6);
    }
    reportPercentiles(state, std::move(microseconds), "us");
}
BENCHMARK(RenderBlockOf512)->Iterations(100'000);

} // namespace
} // namespace mossbit
