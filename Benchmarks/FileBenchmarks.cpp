#include "Benchmarks/FilterFloor.h"
#include "Benchmarks/Measure.h"
#include "Platform/Descriptor.h"
#include "Platform/PosixAtomicFile.h"
#include "Services/ProjectJson.h"
#include "Services/ProjectStore.h"
#include "Services/WAVExporter.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SongBuilder.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <fcntl.h>
#include <fstream>
#include <limits>
#include <spawn.h>
#include <stdexcept>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

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

struct Use {
    double processorSeconds;
    double peakMiB = 0;
};

/// One run of the converter. Its peak is read while it waits for the disk: what the system reports
/// about an ended process counts the memory of the one that started it.
Use runConverter(std::string in, std::string out) {
    std::string program = MOSSBIT_RENDER;
    char* arguments[] = {program.data(), in.data(), out.data(), nullptr};
    pid_t child = 0;
    if (posix_spawn(&child, program.c_str(), nullptr, nullptr, arguments, environ) != 0)
        throw std::runtime_error("the converter did not start");
    const std::string memory = "/proc/" + std::to_string(child) + "/status";
    Use use{};
    int status = 0;
    rusage usage{};
    while (wait4(child, &status, WNOHANG, &usage) == 0) {
        std::ifstream lines(memory);
        for (std::string word; lines >> word;) {
            if (word == "VmHWM:" && lines >> use.peakMiB)
                use.peakMiB /= 1024;
        }
        usleep(1000);
    }
    if (status != 0)
        throw std::runtime_error("the converter failed");
    use.processorSeconds = seconds(usage.ru_utime) + seconds(usage.ru_stime);
    return use;
}

/// The shortest time that something has taken so far, in milliseconds.
struct Best {
    double milliseconds = std::numeric_limits<double>::infinity();

    void take(double seconds) { milliseconds = std::min(milliseconds, seconds * 1e3); }
};

/// The longest song, 96 s with all channels busy, through the whole program. The floor is what no
/// program can undercut: the filter, and writing the same bytes plainly over an old file. All is
/// processor time, the best of all runs, but for the wait until the bytes are on the disk.
void ConvertLongestSong(benchmark::State& state) {
    const ScratchFolder folder;
    putBytes(folder / "in.mossbit", ProjectStore::encode(fullSong(40)));
    constexpr auto frames = std::size_t{96} * WAVExporter::exportSampleRate;
    const std::string bytes(frames * 4, '\1');
    FilterFloor filter(WAVExporter::exportSampleRate);
    Best converting, filtering, writing, syncing;
    double peak = 0;
    for (auto _ : state) {
        const Use use = runConverter(folder / "in.mossbit", folder / "out.wav");
        converting.take(use.processorSeconds);
        peak = std::max(peak, use.peakMiB);

        double start = threadSeconds();
        for (std::size_t i = 0; i < frames / FilterFloor::blockFrames; ++i)
            filter.renderBlock();
        filtering.take(threadSeconds() - start);

        start = threadSeconds();
        putBytes(folder / "plain.wav", bytes);
        writing.take(threadSeconds() - start);

        const Descriptor file(::open((folder / "plain.wav").c_str(), O_RDONLY));
        const auto before = std::chrono::steady_clock::now();
        fsync(file.number());
        syncing.take(
            std::chrono::duration<double>(std::chrono::steady_clock::now() - before).count());
    }
    state.counters["converter_ms"] = converting.milliseconds;
    state.counters["filter_ms"] = filtering.milliseconds;
    state.counters["writing_ms"] = writing.milliseconds;
    state.counters["sync_ms"] = syncing.milliseconds;
    state.counters["times_floor"] =
        converting.milliseconds / (filtering.milliseconds + writing.milliseconds);
    state.counters["times_real_time"] = 96e3 / converting.milliseconds;
    state.counters["peak_MiB"] = peak;
}
BENCHMARK(ConvertLongestSong)->Iterations(30)->Unit(benchmark::kMillisecond);

/// For how long an export keeps the window from answering, the wait for the disk included.
void ExportLongestSong(benchmark::State& state) {
    const ScratchFolder folder;
    const Project project = fullSong(40);
    PosixAtomicFile files;
    for (auto _ : state)
        WAVExporter::exportProject(project, folder / "out.wav", files);
}
BENCHMARK(ExportLongestSong)->UseRealTime()->Unit(benchmark::kMillisecond);

} // namespace
} // namespace mossbit
