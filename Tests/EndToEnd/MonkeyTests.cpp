#include "App/DocumentWindow.h"
#include "Tests/Support/ViewModelHarness.h"
#include "Tests/Support/WidgetProbes.h"
#include "UI/Theme.h"
#include "Views/MainView.h"
#include "Views/PianoRollView.h"

#include <QApplication>
#include <QMenuBar>
#include <QTest>
#include <QWindow>

#include <algorithm>
#include <optional>
#include <random>

namespace mossbit {
namespace {

/// Someone who knows nothing presses whatever there is, in the real window over the real view
/// model, beside a plain account of what that must do to the song. The window system's events go
/// the whole way through Qt.
class Monkey : public ViewModelTest {
protected:
    void SetUp() override {
        applyTheme(*qApp);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    void play(int gestures) {
        static constexpr double zooms[] = {0.6, 1, 1.7, 4};
        const std::function<void()> kinds[] = {
            [this] { drag(); },
            [this] { secondaryClick(); },
            [this] { command(); },
            [this] { wheel(somewhere()); },
            [this] { pressControl(); },
            [this] { letTimePass(); },
            [this] { window.resize(900 + below(600), 620 + below(400)); },
            [this] { window.findChild<MainView*>()->setZoom(zooms[below(4)]); },
            [this] { startAnew(); },
        };
        std::discrete_distribution<std::size_t> next{140, 40, 100, 32, 32, 44, 4, 4, 1};
        for (int gesture = 0; gesture < gestures; ++gesture) {
            SCOPED_TRACE("gesture " + std::to_string(gesture));
            ASSERT_NO_FATAL_FAILURE(kinds[next(random)]());
            ASSERT_NO_FATAL_FAILURE(check());
        }
    }

private:
    // What has to happen, told plainly.

    struct Drag {
        Note origin;
        QPointF from;
        bool resizes;
    };

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
            note.length = roll.grid().resizedLength(held->origin, roll.toGrid(point).x());
        } else {
            const auto to = roll.grid().moved(held->origin, roll.toGrid(point) - held->from);
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

    void check() {
        ASSERT_EQ(model->project(), song())
            << ProjectStore::encode(model->project()) << ProjectStore::encode(song());
        ASSERT_EQ(model->selection(), selection);
        ASSERT_EQ(model->selectedChannelIndex(), channel);
        ASSERT_EQ(model->canUndo(), now > 0);
        ASSERT_EQ(model->canRedo(), now + 1 < states.size());
    }

    // What the window system sends. Points are the canvas's.

    int below(int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); }
    bool oneIn(int bound) { return below(bound) == 0; }

    void mouse(QEvent::Type type, const QPointF& point, Qt::MouseButton button = Qt::NoButton,
               Qt::KeyboardModifiers modifiers = {}) {
        buttons.setFlag(button, type == QEvent::MouseButtonPress);
        // Some presses come within the time of a double click.
        milliseconds += 1 + below(300);
        const QPointF place = canvas.mapTo(&window, point);
        qt_handleMouseEvent(window.windowHandle(), place, window.mapToGlobal(place), buttons,
                            button, type, modifiers, milliseconds);
        QCoreApplication::processEvents();
    }

    /// Now and then a key is held down so long that it repeats. Returns how often it was sent.
    int key(int code, Qt::KeyboardModifiers modifiers = {}) {
        const int count = oneIn(8) ? 3 : 1;
        const QString text = code < 0x80 && !modifiers ? QString(QChar(code)) : QString();
        for (int i = 0; i < count; ++i)
            qt_handleKeyEvent(window.windowHandle(), QEvent::KeyPress, code, modifiers, text,
                              i > 0);
        qt_handleKeyEvent(window.windowHandle(), QEvent::KeyRelease, code, modifiers, text);
        return count;
    }

    /// Every second time on a note, if one is visible.
    QPointF somewhere() {
        if (!notes().empty() && oneIn(2)) {
            const int index = below(static_cast<int>(notes().size()));
            const QRect note = roll.visibleNoteRect(notes()[std::size_t(index)]).toRect();
            const QPoint inside = note.topLeft() + QPoint(below(note.width()), 7);
            if (canvas.rect().contains(inside))
                return inside;
        }
        return QPoint(below(canvas.width()), below(canvas.height()));
    }

    // Gestures.

    void drag() {
        QPointF point = somewhere();
        const PianoRollGeometry grid = roll.grid();
        const QPointF from = roll.toGrid(point);
        const Note* const hit = grid.noteAt(from, notes());
        Note note = hit ? *hit : Note();
        mouse(QEvent::MouseButtonPress, point, Qt::LeftButton);
        if (grid.contains(from)) {
            beginStep();
            if (!hit) {
                const auto cell = grid.cellAt(from);
                note.id = model->selectedChannel().notes.back().id;
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
        mouse(QEvent::MouseButtonRelease, point, Qt::LeftButton);
        held.reset();
    }

    void secondaryClick() {
        const QPointF point = somewhere();
        const auto [button, modifiers] = oneIn(2) ? std::pair(Qt::RightButton, Qt::NoModifier)
                                                  : std::pair(Qt::LeftButton, Qt::ControlModifier);
        if (const Note* note = roll.grid().noteAt(roll.toGrid(point), notes()))
            remove({note->id});
        mouse(QEvent::MouseButtonPress, point, button, modifiers);
        mouse(QEvent::MouseButtonRelease, point, button, modifiers);
    }

    void wheel(const QPointF& point) {
        static constexpr Qt::KeyboardModifier modifiers[] = {Qt::NoModifier, Qt::ShiftModifier,
                                                             Qt::ControlModifier};
        turnWheel(canvas, point, oneIn(2) ? 120 : -120, buttons, modifiers[below(3)]);
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
            {Qt::Key_Backspace, {}, [this] { remove(selection); }},
            {Qt::Key_A, Qt::ControlModifier, [this] { selectAll(); }},
            {Qt::Key_1 + other, Qt::ControlModifier, [&] { selectChannel(other); }},
            {Qt::Key_Space, {}, [] {}},
        };
        const Command& command = commands[below(std::size(commands))];
        const int count = key(command.key, command.modifiers);
        // A switch does not flicker while its key is held down.
        for (int i = 0; i < (command.key == Qt::Key_L ? 1 : count); ++i)
            command.effect();
    }

    /// Presses and drags on a control, or on nothing, and types.
    void pressControl() {
        static constexpr Qt::Key keys[] = {
            Qt::Key_Return, Qt::Key_Escape, Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Left, Qt::Key_Up,
            Qt::Key_Home,   Qt::Key_End,    Qt::Key_1,   Qt::Key_0,       Qt::Key_9};
        const int bar = window.menuBar()->height();
        QPoint point;
        do {
            point = canvas.mapFrom(
                &window, QPoint(below(window.width()), bar + below(window.height() - bar)));
        } while (canvas.rect().contains(point));
        mouse(QEvent::MouseButtonPress, point, Qt::LeftButton);
        adoptSettings();
        mouse(QEvent::MouseMove, point + QPointF(below(20) - 10, 0));
        adoptSettings();
        mouse(QEvent::MouseButtonRelease, point, Qt::LeftButton);
        for (int presses = below(4); presses > 0; --presses) {
            adoptSettings();
            key(keys[below(std::size(keys))]);
        }
        adoptSettings();
        if (model->isEditingText())
            key(oneIn(2) ? Qt::Key_Return : Qt::Key_Escape);
        adoptSettings();
    }

    /// A control may have changed anything but notes, each change with an undo step of its own.
    void adoptSettings() {
        std::vector<Project> steps;
        for (; model->project() != song(); model->undo()) {
            ASSERT_TRUE(model->canUndo()) << "back to what it was";
            steps.push_back(model->project());
        }
        for (; !steps.empty(); steps.pop_back()) {
            model->redo();
            beginStep();
            song() = steps.back();
        }
        selection = model->selection();
        channel = model->selectedChannelIndex();
    }

    void letTimePass() {
        if (model->isPlaying())
            harness.output.pull(static_cast<std::size_t>(below(9000)));
        harness.pass(oneIn(10) ? 1 : 0.02);
    }

    void startAnew() {
        harness.dialogs.alertAnswers = {1};
        key(Qt::Key_N, Qt::ControlModifier);
        harness.dialogs.alertAnswers.clear();
        ASSERT_FALSE(model->project().hasNotes());
        states = {model->project()};
        now = 0;
        channel = model->selectedChannelIndex();
        selection.clear();
        held.reset();
    }

    DocumentWindow window{*model};
    PianoRollView& roll = *window.findChild<PianoRollView*>();
    QWidget& canvas = *roll.viewport();
    std::mt19937 random{20261122};
    int milliseconds = 0;
    Qt::MouseButtons buttons;

    /// The song after every undo step, and which of them it is.
    std::vector<Project> states = {model->project()};
    std::size_t now = 0;
    ProjectViewModel::Selection selection;
    int channel = 0;
    std::optional<Drag> held;
};

TEST_F(Monkey, DoesWhatAPlainModelDoes) {
    play(1000);
}

// Takes half a minute.
TEST_F(Monkey, DISABLED_DoesWhatAPlainModelDoesForLong) {
    play(20'000);
}

} // namespace
} // namespace mossbit
