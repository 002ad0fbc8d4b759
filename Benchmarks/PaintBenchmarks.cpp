#include "Benchmarks/UnseenModel.h"
#include "Views/PianoRollView.h"

#include <QApplication>
#include <QImage>
#include <QScrollBar>
#include <benchmark/benchmark.h>

namespace mossbit {
namespace {

constexpr std::int64_t notesOnScreen = 2000;

/// The first benchmark that needs a window makes the application, which stays to the end.
void needApplication() {
    static int argc = 1;
    static char name[] = "mossbit-bench";
    static char* argv[] = {name, nullptr};
    qputenv("QT_QPA_PLATFORM", "offscreen");
    static const QApplication application(argc, argv);
}

/// Half of the notes are on the selected channel, the other half are ghosts.
Project crowd(std::int64_t notes) {
    Project project;
    project.bars = 16;
    for (std::int64_t i = 0; i < notes / 2; ++i)
        for (std::int64_t channel = 0; channel < 2; ++channel)
            project.channels[static_cast<std::size_t>(channel)].notes.push_back(
                {.pitch = 40 + (i * 7 + channel) % 50, .start = i * 5 % 253, .length = 1 + i % 4});
    return project;
}

/// A piano roll of 1100 × 500 points with 16 bars, shown off-screen.
struct Roll : UnseenModel {
    PianoRollView view{model};
    QImage image{1100, 500, QImage::Format_RGB32};

    Roll(std::int64_t notes, double zoom) : UnseenModel(crowd(notes)) {
        view.resize(image.size());
        view.setZoom(zoom);
        view.show();
        view.verticalScrollBar()->setValue(100);
        paint(view.viewport()->rect());
    }

    void paint(const QRegion& region) { view.viewport()->render(&image, {}, region, {}); }

    QRect strip(std::int64_t tick) const {
        const double x = view.visibleNoteRect({.start = tick}).x();
        return QRect(int(x) - 2, 0, 6, view.viewport()->height()) & view.viewport()->rect();
    }
};

/// Zoom in percent, number of notes.
void sizes(benchmark::internal::Benchmark* benchmark) {
    benchmark->Unit(benchmark::kMillisecond)
        ->Args({100, notesOnScreen})
        ->Args({400, notesOnScreen})
        ->Args({100, 10 * notesOnScreen})
        ->Args({400, 10 * notesOnScreen});
}

double zoomOf(const benchmark::State& state) {
    return static_cast<double>(state.range(0)) / 100;
}

void RepaintPianoRoll(benchmark::State& state) {
    needApplication();
    Roll roll(state.range(1), zoomOf(state));
    for (auto _ : state)
        roll.paint(roll.view.viewport()->rect());
}
BENCHMARK(RepaintPianoRoll)->Apply(sizes);

/// The strips of two neighbouring ticks.
void PlayheadStep(benchmark::State& state) {
    needApplication();
    Roll roll(state.range(1), zoomOf(state));
    std::int64_t tick = 0;
    for (auto _ : state) {
        tick = (tick + 1) % 24;
        roll.paint(QRegion(roll.strip(tick)) | roll.strip(tick + 1));
    }
}
BENCHMARK(PlayheadStep)->Apply(sizes);

/// One pointer movement of a drag: the edit, the compilation, and painting where the note was and
/// where it is.
void DragStepWithPaint(benchmark::State& state) {
    needApplication();
    Roll roll(state.range(1), zoomOf(state));
    const Uuid id = roll.model.selectedChannel().notes[100].id;
    std::int64_t step = 0;
    const auto rect = [&] {
        return roll.view.visibleNoteRect(*roll.model.note(id))
            .toAlignedRect()
            .adjusted(-2, -2, 2, 2);
    };
    for (auto _ : state) {
        QRegion changed = rect();
        ++step;
        roll.model.updateNote(id, {.pitch = 70 + step % 10, .start = 4 + step % 16});
        changed |= rect();
        roll.paint(changed);
    }
}
BENCHMARK(DragStepWithPaint)->Apply(sizes);

} // namespace
} // namespace mossbit
