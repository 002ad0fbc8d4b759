#include "Audio/ChipCore.h"
#include "Benchmarks/Measure.h"
#include "Platform/PosixAtomicFile.h"
#include "Services/ProjectJson.h"
#include "Services/ProjectStore.h"
#include "Services/WAVExporter.h"
#include "Tests/Support/FullSong.h"
#include "Tests/Support/ScratchFolder.h"

#include <benchmark/benchmark.h>

#include <spawn.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>

extern char** environ;

namespace mossbit {
namespace {

Project songOf(std::int64_t notes) {
    Project project = fullSong();
    while (std::ssize(project.channels[0].notes) + 768 < notes)
        project.channels[0].notes.push_back({.id = {}, .start = 255});
    return project;
}

void Encode(benchmark::State& state) {
    const Project project = songOf(state.range(0));
    std::size_t bytes = 0;
    for (auto _ : state)
        bytes += ProjectStore::encode(project).size();
    state.SetBytesProcessed(static_cast<std::int64_t>(bytes));
}
BENCHMARK(Encode)->Arg(1024)->Arg(100'000)->Unit(benchmark::kMillisecond);

void Decode(benchmark::State& state) {
    const std::string json = ProjectStore::encode(songOf(state.range(0)));
    for (auto _ : state)
        benchmark::DoNotOptimize(decodeProject(json));
    state.SetBytesProcessed(state.iterations() * std::ssize(json));
}
BENCHMARK(Decode)->Arg(1024)->Arg(100'000)->Unit(benchmark::kMillisecond);

double seconds(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/// Processor time and memory of one run of the converter.
rusage runConverter(std::string in, std::string out) {
    std::string program = MOSSBIT_RENDER;
    char* arguments[] = {program.data(), in.data(), out.data(), nullptr};
    pid_t child = 0;
    int status = 0;
    rusage usage{};
    if (posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ) != 0 ||
        wait4(child, &status, 0, &usage) != child || status != 0)
        throw std::runtime_error("the converter failed");
    return usage;
}

/// The longest song, 96 s with all channels busy, through the whole program, beside rendering it in
/// memory and writing the same bytes plainly. The counters compare processor time.
void ConvertLongestSong(benchmark::State& state) {
    const ScratchFolder folder;
    const Project project = fullSong(40);
    putBytes(folder / "in.mossbit", ProjectStore::encode(project));
    double converting = 0;
    double rendering = 0;
    long memory = 0;
    for (auto _ : state) {
        const rusage usage = runConverter(folder / "in.mossbit", folder / "out.wav");
        converting += seconds(usage.ru_utime) + seconds(usage.ru_stime);
        memory = std::max(memory, usage.ru_maxrss);
        const double start = threadSeconds();
        ChipCore core(std::make_shared<const RenderPattern>(project),
                      WAVExporter::exportSampleRate);
        std::vector<float> samples(96 * WAVExporter::exportSampleRate);
        core.render(samples);
        putBytes(folder / "plain.wav", WAVExporter::wavData(samples));
        rendering += threadSeconds() - start;
    }
    const auto runs = static_cast<double>(state.iterations());
    state.counters["converter_ms"] = converting / runs * 1e3;
    state.counters["in_memory_ms"] = rendering / runs * 1e3;
    state.counters["ratio"] = converting / rendering;
    state.counters["times_real_time"] = 96 / (converting / runs);
    state.counters["peak_MiB"] = static_cast<double>(memory) / 1024;
}
BENCHMARK(ConvertLongestSong)->Iterations(30)->Unit(benchmark::kMillisecond);

} // namespace
} // namespace mossbit
