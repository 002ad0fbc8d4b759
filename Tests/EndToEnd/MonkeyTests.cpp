#include "Tests/Support/WindowHarness.h"

#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <functional>
#include <optional>
#include <random>

namespace mossbit {
namespace {

/// Someone who knows nothing presses whatever there is, in the real window over the real view
/// model, beside a plain account of what that must do to the song. The window system's events go
/// the whole way through Qt.
struct Monkey : testing::Test, WindowHarness {
    // What has to happen, told plainly.

    struct Drag {
        Note origin;
        QPointF from;
        bool resizes;
    };

    /// The song after every undo step, and which of them it is.
    std::vector<Project> states = {vm->project()};
    std::size_t now = 0;
    ProjectViewModel::Selection selection;
    int channel = 0;
    std::optional<Drag> held;

    Project& song() { return states[now]; }
    std::vector<Note>& notes() { return song().channels[static_cast<std::size_t>(channel)].notes; }

    /// What follows changes the song by one undo step.
    void beginStep() {
        states.resize(now + 1);
        states.push_back(song());
        if (states.size() > 201)
            states.erase(states.begin());
        now = states.size() - 1;
    }

    /// What a movement to there does to the note that is held.
    void moveTo(const QPointF& point) {
        if (!held)
            return;
        Note& note = *std::ranges::find(notes(), held->origin.id, &Note::id);
        if (held->resizes) {
            note.length = roll().grid().resizedLength(held->origin, roll().toGrid(point).x());
        } else {
            const auto to = roll().grid().moved(held->origin, roll().toGrid(point) - held->from);
            note.pitch = to.pitch;
            note.start = to.tick;
        }
    }

    void remove(const ProjectViewModel::Selection gone) {
        if (gone.empty())
            return;
        beginStep();
        std::erase_if(notes(), [&](const Note& note) { return gone.contains(note.id); });
        forgetTheGone();
    }

    void forgetTheGone() {
        const auto isGone = [this](const Uuid& id) {
            return std::ranges::find(notes(), id, &Note::id) == notes().end();
        };
        std::erase_if(selection, isGone);
        if (held && isGone(held->origin.id))
            held.reset();
    }

    void travel(bool isBack) {
        if (isBack ? now == 0 : now + 1 == states.size())
            return;
        now += isBack ? -1 : 1;
        held.reset();
        forgetTheGone();
    }

    void selectAll() {
        for (const Note& note : notes())
            selection.insert(note.id);
    }

    void selectChannel(int index) {
        if (std::exchange(channel, index) == index)
            return;
        selection.clear();
        held.reset();
    }

    /// A control may have changed anything, by one undo step.
    void adoptSettings() {
        if (vm->project() != song()) {
            beginStep();
            song() = vm->project();
        }
        selection = vm->selection();
        channel = vm->selectedChannelIndex();
    }

    void check() {
        ASSERT_EQ(vm->project(), song())
            << ProjectStore::encode(vm->project()) << ProjectStore::encode(song());
        ASSERT_EQ(vm->selection(), selection);
        ASSERT_EQ(vm->selectedChannelIndex(), channel);
        ASSERT_EQ(vm->canUndo(), now > 0);
        ASSERT_EQ(vm->canRedo(), now + 1 < states.size());
        // What becomes visible is laid out first and painted in the second round.
        QApplication::processEvents();
        QApplication::processEvents();
        const QImage shown = window.screen()->grabWindow(window.winId()).toImage();
        ASSERT_EQ(shown.convertToFormat(QImage::Format_RGB32), render(window, 1)) << "stale";
    }

    // What the window system sends. Points are the canvas's.

    std::mt19937 random{20261122};
    int milliseconds = 0;
    Qt::MouseButtons buttons;

    int below(int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); }
    bool oneIn(int bound) { return below(bound) == 0; }

    void mouse(QEvent::Type type, const QPointF& point, Qt::MouseButton button = Qt::NoButton,
               Qt::KeyboardModifiers modifiers = {}) {
        buttons.setFlag(button, type == QEvent::MouseButtonPress);
        // Some presses come within the time of a double click.
        milliseconds += 1 + below(300);
        const QPointF place = canvas().mapTo(&window, point);
        qt_handleMouseEvent(window.windowHandle(), place, window.mapToGlobal(place), buttons,
                            button, type, modifiers, milliseconds);
        QApplication::processEvents();
    }

    void key(int code, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(window.windowHandle(), static_cast<Qt::Key>(code), modifiers);
    }

    /// Every second time on a note, if one is visible.
    QPointF somewhere() {
        if (!notes().empty() && oneIn(2)) {
            const int index = below(static_cast<int>(notes().size()));
            const QRect note = roll().visibleNoteRect(notes()[std::size_t(index)]).toRect();
            const QPoint inside = note.topLeft() + QPoint(below(note.width()), 7);
            if (canvas().rect().contains(inside))
                return inside;
        }
        return QPoint(below(canvas().width()), below(canvas().height()));
    }

    // Gestures.

    void drag() {
        QPointF point = somewhere();
        const PianoRollGeometry grid = roll().grid();
        const QPointF from = roll().toGrid(point);
        const Note* const hit = grid.noteAt(from, notes());
        Note note = hit ? *hit : Note();
        mouse(QEvent::MouseButtonPress, point, Qt::LeftButton);
        if (grid.contains(from)) {
            beginStep();
            if (!hit) {
                const auto cell = grid.cellAt(from);
                note.id = vm->selectedChannel().notes.back().id;
                note.pitch = cell.pitch;
                note.start = cell.tick / grid.gridStep * grid.gridStep;
                note.length = std::min(grid.gridStep, grid.totalTicks - note.start);
                notes().push_back(note);
            }
            held = Drag{note, from, !hit || grid.isInResizeZone(note, from.x())};
            selection = {note.id};
        }
        for (int moves = below(4); moves > 0; --moves) {
            ASSERT_NO_FATAL_FAILURE(check());
            point += QPointF(below(300) - 150, below(120) - 60);
            mouse(QEvent::MouseMove, point);
            moveTo(point);
            if (oneIn(8))
                command();
            if (oneIn(8))
                wheel(point);
            if (oneIn(100))
                startAnew();
        }
        // A release may get lost, to a dialog or to another program.
        if (oneIn(4))
            mouse(QEvent::MouseMove, somewhere(), Qt::LeftButton);
        else
            mouse(QEvent::MouseButtonRelease, point, Qt::LeftButton);
        held.reset();
    }

    void secondaryClick() {
        const QPointF point = somewhere();
        const auto [button, modifiers] = oneIn(2) ? std::pair(Qt::RightButton, Qt::NoModifier)
                                                  : std::pair(Qt::LeftButton, Qt::ControlModifier);
        if (const Note* note = roll().grid().noteAt(roll().toGrid(point), notes()))
            remove({note->id});
        mouse(QEvent::MouseButtonPress, point, button, modifiers);
        mouse(QEvent::MouseButtonRelease, point, button, modifiers);
    }

    void wheel(const QPointF& point) {
        turnWheel(canvas(), point, oneIn(2) ? 120 : -120, buttons,
                  oneIn(2) ? Qt::ShiftModifier : Qt::NoModifier);
        moveTo(point);
    }

    void command() {
        struct Command {
            int key;
            Qt::KeyboardModifiers modifiers;
            std::function<void()> effect;
        };
        const int other = below(4);
        const auto toggleLoop = [this] {
            beginStep();
            song().loop = !song().loop;
        };
        const Command commands[] = {
            {Qt::Key_Z, Qt::ControlModifier, [this] { travel(true); }},
            {Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier, [this] { travel(false); }},
            {Qt::Key_L, Qt::ControlModifier, toggleLoop},
            {Qt::Key_Delete, {}, [this] { remove(selection); }},
            {Qt::Key_A, Qt::ControlModifier, [this] { selectAll(); }},
            {Qt::Key_1 + other, Qt::ControlModifier, [&] { selectChannel(other); }},
            {Qt::Key_Space, {}, [] {}},
        };
        const Command& command = commands[below(std::size(commands))];
        key(command.key, command.modifiers);
        command.effect();
    }

    /// Clicks on a control, or on nothing, and types.
    void useControls() {
        static constexpr Qt::Key keys[] = {
            Qt::Key_Return, Qt::Key_Escape, Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Left, Qt::Key_Up,
            Qt::Key_Home,   Qt::Key_End,    Qt::Key_1,   Qt::Key_0,       Qt::Key_9};
        QPoint point;
        do {
            point = canvas().mapFrom(&view, QPoint(below(view.width()), below(view.height())));
        } while (canvas().rect().contains(point));
        mouse(QEvent::MouseButtonPress, point, Qt::LeftButton);
        mouse(QEvent::MouseButtonRelease, point, Qt::LeftButton);
        for (int presses = below(4); presses > 0; --presses) {
            adoptSettings();
            key(keys[below(std::size(keys))]);
        }
        adoptSettings();
        if (vm->isEditingText())
            key(oneIn(2) ? Qt::Key_Return : Qt::Key_Escape);
        adoptSettings();
    }

    void listen() {
        if (vm->isPlaying())
            system.output.pull(static_cast<std::size_t>(below(9000)));
        system.pass(oneIn(10) ? 1 : 0.02);
    }

    void startAnew() {
        system.dialogs.alertAnswers = {1};
        key(Qt::Key_N, Qt::ControlModifier);
        system.dialogs.alertAnswers.clear();
        ASSERT_FALSE(vm->project().hasNotes());
        states = {vm->project()};
        now = 0;
        selectChannel(vm->selectedChannelIndex());
        forgetTheGone();
    }
};

TEST_F(Monkey, DoesWhatAPlainModelDoes) {
    const std::function<void()> gestures[] = {
        [this] { drag(); },
        [this] { secondaryClick(); },
        [this] { command(); },
        [this] { wheel(somewhere()); },
        [this] { useControls(); },
        [this] { listen(); },
        [this] { resize(900 + below(600), 600 + below(400)); },
        [this] { view.setZoom(0.6 + below(4)); },
        [this] { startAnew(); },
    };
    std::discrete_distribution<std::size_t> next{140, 40, 100, 32, 32, 44, 4, 4, 1};
    const int longRun = qEnvironmentVariableIntValue("MOSSBIT_GESTURES");
    for (int gesture = 0; gesture < std::max(longRun, 1000); ++gesture) {
        SCOPED_TRACE("gesture " + std::to_string(gesture));
        ASSERT_NO_FATAL_FAILURE(gestures[next(random)]());
        ASSERT_NO_FATAL_FAILURE(check());
    }
}

} // namespace
} // namespace mossbit
