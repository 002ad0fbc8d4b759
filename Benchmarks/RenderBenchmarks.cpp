#include "Audio/ChipCore.h"
#include "Benchmarks/Measure.h"
#include "Tests/Support/FullSong.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace mossbit {
namespace {

constexpr std::size_t blockFrames = 1024;

std::int16_t converted(float sample) {
    return static_cast<std::int16_t>((sample < 1 ? std::max(sample, -1.0F) : 1.0F) * 32767);
}

/// What no renderer with the same samples can undercut: filter, clamp and convert a signal that is
/// already there. The filter is one chain of add, subtract and multiply per sample.
void FilterFloor(benchmark::State& state) {
    const float coefficient = HighPass::coefficientFor(static_cast<float>(state.range(0)));
    std::vector<float> input(blockFrames);
    for (std::size_t i = 0; i < input.size(); ++i)
        input[i] = static_cast<float>(i % 100) / 200;
    std::vector<std::int16_t> output(blockFrames);
    float x = 0;
    float y = 0;
    for (auto _ : state) {
        for (std::size_t i = 0; i < blockFrames; ++i) {
            y = coefficient * (y + input[i] - x);
            x = input[i];
            output[i] = converted(y);
        }
        benchmark::DoNotOptimize(output.data());
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
