#include "Services/ProjectStore.h"
#include "Tests/Support/ScratchFolder.h"
#include "Tests/Support/SongBuilder.h"
#include "Tests/Support/WaitUntil.h"

#include <QProcess>
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <stdexcept>
#include <string>

#include <arpa/inet.h>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace mossbit {
namespace {

/// A screen and a session bus. No window manager: the window appears at the top left corner as
/// fast as it can be painted.
class Screen {
public:
    Screen() {
        for (const char* variable : {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"})
            setenv(variable, home.path().c_str(), 1);
        setenv("QT_QPA_PLATFORM", "xcb", 1);
        setenv("SDL_AUDIODRIVER", "dummy", 1);
        const auto number = m_folder / "display";
        m_server.setStandardOutputFile(QString::fromStdString(number));
        m_server.start("Xvfb",
                       {"-displayfd", "1", "-screen", "0", "1280x800x24", "-fbdir",
                        QString::fromStdString(m_folder.path()), "-nolisten", "tcp", "-noreset"});
        const std::string socket = m_folder / "bus";
        setenv("DBUS_SESSION_BUS_ADDRESS", ("unix:path=" + socket).c_str(), 1);
        m_bus.start("dbus-daemon", {"--session", "--nofork", "--nopidfile",
                                    "--address=unix:path=" + QString::fromStdString(socket)});
        if (!waitUntil(
                [&] { return bytesOf(number).ends_with('\n') && std::filesystem::exists(socket); }))
            throw std::runtime_error("no screen or no bus");
        std::string display = bytesOf(number);
        display.pop_back();
        setenv("DISPLAY", display.insert(0, 1, ':').c_str(), 1);
        map(m_folder / "Xvfb_screen0");
    }

    ~Screen() {
        for (QProcess* process : {&m_bus, &m_server}) {
            process->kill();
            process->waitForFinished();
        }
    }

    /// Whether the window's last corner is painted. The screen is black without it, and so is a
    /// window before its first frame, which comes as a whole.
    bool isPainted() const {
        constexpr std::size_t x = 1095;
        constexpr std::size_t y = 710;
        return (m_rows[y * m_rowWords + x] & 0xffffff) != 0;
    }

    const ScratchFolder home;

private:
    /// Of an XWD file: a header of big-endian words, colours of 12 bytes each, then the rows.
    void map(const std::filesystem::path& picture) {
        const int file = open(picture.c_str(), O_RDONLY);
        void* const bytes =
            mmap(nullptr, std::filesystem::file_size(picture), PROT_READ, MAP_SHARED, file, 0);
        close(file);
        if (bytes == MAP_FAILED)
            throw std::runtime_error("no picture of the screen");
        const auto* const header = static_cast<const std::uint32_t*>(bytes);
        m_rowWords = ntohl(header[12]) / 4;
        m_rows = header + ntohl(header[0]) / 4 + std::size_t{3} * ntohl(header[19]);
    }

    const ScratchFolder m_folder;
    QProcess m_server;
    QProcess m_bus;
    const volatile std::uint32_t* m_rows = nullptr;
    std::size_t m_rowWords = 0;
};

/// Processor time of a program so far, in seconds.
double processorSeconds(qint64 process) {
    clockid_t clock = 0;
    timespec time{};
    clock_getcpuclockid(static_cast<pid_t>(process), &clock);
    clock_gettime(clock, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// Memory of a program that is in use now, in MiB.
double residentMiB(qint64 process) {
    std::size_t all = 0;
    std::size_t resident = 0;
    std::ifstream("/proc/" + std::to_string(process) + "/statm") >> all >> resident;
    return static_cast<double>(resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) /
           1048576;
}

/// From the start of the program to its window on the screen, looked for every 2 ms.
void FirstPaintedFrame(benchmark::State& state, const QStringList& command,
                       const Project& autosave) {
    using Clock = std::chrono::steady_clock;
    const Screen screen;
    std::filesystem::create_directory(screen.home / "Mossbit");
    putBytes(screen.home / "Mossbit/Autosave.mossbit", ProjectStore::encode(autosave));
    double best = 1e9;
    double bestProcessor = 1e9;
    double resident = 0;
    for (auto _ : state) {
        const auto start = Clock::now();
        QProcess program;
        program.start(command.first(), command.mid(1));
        if (!waitUntil([&] { return screen.isPainted(); }))
            throw std::runtime_error("the window did not appear");
        const std::chrono::duration<double> taken = Clock::now() - start;
        state.SetIterationTime(taken.count());
        best = std::min(best, taken.count());
        bestProcessor = std::min(bestProcessor, processorSeconds(program.processId()));
        resident = residentMiB(program.processId());
        program.terminate();
        program.waitForFinished();
        if (!waitUntil([&] { return !screen.isPainted(); }))
            throw std::runtime_error("the window stays");
    }
    state.counters["best_ms"] = best * 1e3;
    state.counters["best_processor_ms"] = bestProcessor * 1e3;
    state.counters["resident_MiB"] = resident;
}

BENCHMARK_CAPTURE(FirstPaintedFrame, EmptyWindow, {MOSSBIT_EMPTY_WINDOW}, Project())
    ->Iterations(10)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FirstPaintedFrame, OneWord, {MOSSBIT_EMPTY_WINDOW, "word"}, Project())
    ->Iterations(10)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FirstPaintedFrame, EmptyAutosave, {MOSSBIT_PROGRAM}, Project())
    ->Iterations(10)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(FirstPaintedFrame, FullSong, {MOSSBIT_PROGRAM}, fullSong())
    ->Iterations(10)
    ->UseManualTime()
    ->Unit(benchmark::kMillisecond);

} // namespace
} // namespace mossbit
