#include "Benchmarks/Measure.h"
#include "Benchmarks/UnseenModel.h"
#include "Tests/Support/SongBuilder.h"

#include <benchmark/benchmark.h>

#include <atomic>
#include <thread>
#include <vector>

namespace mossbit {
namespace {

constexpr std::size_t samplesTaken = 10000;
constexpr std::size_t blockFrames = 512;
constexpr double sampleRate = 48000;

struct Editor : UnseenModel {
    using UnseenModel::UnseenModel;

    std::int64_t steps = 0;

    /// One pointer movement of a drag, of another note each time.
    void drag() {
        const auto& notes = model.selectedChannel().notes;
        const Uuid id = notes[static_cast<std::size_t>(steps) % notes.size()].id;
        ++steps;
        model.updateNote(id, {.pitch = 60 + steps % 12, .start = steps % 250});
    }
};

/// As many notes as asked for, evenly on all channels and ticks.
Project crowdedSong(std::int64_t notes) {
    Project project;
    project.bars = 16;
    for (std::int64_t i = 0; i < notes; ++i) {
        const auto channel = static_cast<std::size_t>(i % 4);
        project.channels[channel].notes.push_back(
            {.pitch = channel == 3 ? i % 3 : 40 + i % 50, .start = i / 4 % 256});
    }
    return project;
}

/// In processor time, which other programs do not prolong.
void DragStep(benchmark::State& state) {
    Editor editor(state.range(0) == 1024 ? fullSong() : crowdedSong(state.range(0)));
    std::vector<double> microseconds;
    microseconds.reserve(samplesTaken);
    for (auto _ : state) {
        const double start = threadSeconds();
        editor.drag();
        microseconds.push_back((threadSeconds() - start) * 1e6);
    }
    reportPercentiles(state, std::move(microseconds), "us");
}
BENCHMARK(DragStep)->Arg(1024)->Arg(10000)->Iterations(samplesTaken);

/// What the device's callback costs of its thread's processor time while the main thread edits as
/// fast as it can, in percent of the time that the block lasts.
void CallbackWhileEditing(benchmark::State& state) {
    Editor editor(fullSong());
    editor.output.rate = sampleRate;
    editor.model.play();
    std::vector<double> percent(samplesTaken);
    for (auto _ : state) {
        std::atomic<bool> done = false;
        std::thread audio([&] {
            std::vector<float> block(blockFrames);
            for (double& share : percent) {
                const double start = threadSeconds();
                editor.output.pullInto(block);
                share = (threadSeconds() - start) * sampleRate / blockFrames * 100;
            }
            done = true;
        });
        while (!done)
            editor.drag();
        audio.join();
    }
    reportPercentiles(state, percent, "percent");
    state.counters["edits"] = static_cast<double>(editor.steps);
}
BENCHMARK(CallbackWhileEditing)->Iterations(1)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace mossbit
