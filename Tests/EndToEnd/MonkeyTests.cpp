#include "App/DocumentWindow.h"
#include "Tests/Support/ViewModelHarness.h"
#include "UI/Theme.h"
#include "Views/DisplayNames.h"
#include "Views/MainView.h"
#include "Views/PianoRollView.h"

#include <QApplication>
#include <QMenuBar>
#include <QTest>
#include <QWheelEvent>
#include <QWindow>

#include <algorithm>
#include <cmath>
#include <optional>
#include <random>

namespace mossbit {
namespace {

using Selection = ProjectViewModel::Selection;

/// What presses, movements and keys must do to the song, told plainly.
class PlainSong {
public:
    Project project;
    Selection selection;
    int channel = 0;
    std::vector<Project> undoable, redoable;

    /// Returns whether that adds a note, whose identifier is told to `addedNoteIs`.
    bool press(const PianoRollGeometry& grid, const QPointF& point) {
        m_drag.reset();
        if (!grid.contains(point))
            return false;
        const Note* hit = grid.noteAt(point, notes());
        m_drag = Drag{hit ? *hit : Note(), point, !hit || grid.isInResizeZone(*hit, point.x())};
        push();
        if (hit) {
            selection = {m_drag->origin.id};
            return false;
        }
        const auto cell = grid.cellAt(point);
        const std::int64_t start = cell.tick / grid.gridStep * grid.gridStep;
        m_drag->origin = {.pitch = cell.pitch,
                          .start = start,
                          .length = std::min(grid.gridStep, grid.totalTicks - start)};
        notes().push_back(m_drag->origin);
        return true;
    }

    void addedNoteIs(const Uuid& id) {
        m_drag->origin.id = notes().back().id = id;
        selection = {id};
    }

    void move(const PianoRollGeometry& grid, const QPointF& point) {
        if (!m_drag)
            return;
        Note& note = *find(m_drag->origin.id);
        if (m_drag->resizes) {
            note.length = grid.resizedLength(m_drag->origin, point.x());
        } else {
            const auto cell = grid.moved(m_drag->origin, point - m_drag->from);
            note.pitch = cell.pitch;
            note.start = cell.tick;
        }
    }

    void release() { m_drag.reset(); }

    void pressSecondary(const PianoRollGeometry& grid, const QPointF& point) {
        if (const Note* note = grid.noteAt(point, notes()))
            remove({note->id});
    }

    void deleteSelection() {
        if (!selection.empty())
            remove(selection);
    }

    void selectAll() {
        selection.clear();
        for (const Note& note : notes())
            selection.insert(note.id);
    }

    void selectChannel(int index) {
        if (std::exchange(channel, index) == index)
            return;
        selection.clear();
        m_drag.reset();
    }

    void toggleLoop() {
        push();
        project.loop = !project.loop;
    }

    void undo() { travel(undoable, redoable); }
    void redo() { travel(redoable, undoable); }

    void push() {
        undoable.push_back(project);
        if (undoable.size() > 200)
            undoable.erase(undoable.begin());
        redoable.clear();
    }

private:
    struct Drag {
        Note origin;
        QPointF from;
        bool resizes;
    };

    std::vector<Note>& notes() { return project.channels[static_cast<std::size_t>(channel)].notes; }
    std::vector<Note>::iterator find(const Uuid& id) {
        return std::find_if(notes().begin(), notes().end(),
                            [&](const Note& note) { return note.id == id; });
    }

    void remove(const Selection gone) {
        push();
        std::erase_if(notes(), [&](const Note& note) { return gone.contains(note.id); });
        forgetTheGone();
    }

    void travel(std::vector<Project>& from, std::vector<Project>& to) {
        if (from.empty())
            return;
        to.push_back(std::exchange(project, from.back()));
        from.pop_back();
        m_drag.reset();
        forgetTheGone();
    }

    void forgetTheGone() {
        std::erase_if(selection, [this](const Uuid& id) { return find(id) == notes().end(); });
        if (m_drag && find(m_drag->origin.id) == notes().end())
            m_drag.reset();
    }

    std::optional<Drag> m_drag;
};

std::string description(const Project& project) {
    std::string text = std::to_string(project.bars) + " bars";
    for (const Channel& channel : project.channels)
        for (const Note& note : channel.notes)
            text += ", " + title(channel.kind).toStdString() + ' ' + std::to_string(note.pitch) +
                    " at " + std::to_string(note.start) + " for " + std::to_string(note.length);
    return text;
}

/// Someone who knows nothing presses whatever there is, in the real window over the real view
/// model. The window system's events go the whole way through Qt.
class Monkey : public ViewModelTest {
protected:
    void SetUp() override {
        applyTheme(*qApp);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
        song.project = model->project();
    }

    void play(int gestures) {
        for (int gesture = 0; gesture < gestures; ++gesture) {
            SCOPED_TRACE("gesture " + std::to_string(gesture));
            ASSERT_NO_FATAL_FAILURE(closeTextField());
            ASSERT_NO_FATAL_FAILURE(doSomething());
            ASSERT_NO_FATAL_FAILURE(check());
        }
    }

private:
    int below(int bound) { return static_cast<int>(random() % static_cast<unsigned>(bound)); }
    bool oneIn(int bound) { return below(bound) == 0; }

    // What the window system sends.

    void mouse(QEvent::Type type, const QPointF& point, Qt::MouseButton button = Qt::NoButton,
               Qt::KeyboardModifiers modifiers = {}) {
        buttons.setFlag(button, type == QEvent::MouseButtonPress);
        // Some presses come within the time of a double click.
        milliseconds += 1 + below(300);
        qt_handleMouseEvent(window.windowHandle(), point, window.mapToGlobal(point), buttons,
                            button, type, modifiers, milliseconds);
        QCoreApplication::processEvents();
    }

    /// Now and then a key is held down so long that it repeats. Returns how often it was sent.
    int key(int code, Qt::KeyboardModifiers modifiers = {}, const QString& text = {}) {
        const int count = oneIn(8) ? 3 : 1;
        for (int i = 0; i < count; ++i)
            qt_handleKeyEvent(window.windowHandle(), QEvent::KeyPress, code, modifiers, text,
                              i > 0);
        qt_handleKeyEvent(window.windowHandle(), QEvent::KeyRelease, code, modifiers, text);
        return count;
    }

    // On the canvas, in its points.

    /// Every second time on a note, if one is visible.
    QPointF somewhere() {
        const auto& notes = model->selectedChannel().notes;
        if (!notes.empty() && oneIn(2)) {
            const auto index = static_cast<std::size_t>(below(static_cast<int>(notes.size())));
            const QRect note = roll.visibleNoteRect(notes[index]).toRect();
            const QPoint inside = note.topLeft() + QPoint(below(note.width()), 7);
            if (canvas.rect().contains(inside))
                return inside;
        }
        return QPoint(below(canvas.width()), below(canvas.height()));
    }

    QPointF inWindow(const QPointF& point) const { return canvas.mapTo(&window, point); }

    void drag() {
        QPointF point = somewhere();
        const bool adds = song.press(roll.grid(), roll.toGrid(point));
        mouse(QEvent::MouseButtonPress, inWindow(point), Qt::LeftButton);
        if (adds)
            song.addedNoteIs(model->selectedChannel().notes.back().id);
        for (int moves = below(4); moves > 0; --moves) {
            ASSERT_NO_FATAL_FAILURE(check());
            point += QPointF(below(300) - 150, below(120) - 60);
            mouse(QEvent::MouseMove, inWindow(point));
            song.move(roll.grid(), roll.toGrid(point));
            if (oneIn(8))
                command();
            if (oneIn(8))
                wheel(point);
        }
        mouse(QEvent::MouseButtonRelease, inWindow(point), Qt::LeftButton);
        song.release();
    }

    void secondaryClick() {
        const QPointF point = somewhere();
        const auto [button, modifiers] = oneIn(2) ? std::pair(Qt::RightButton, Qt::NoModifier)
                                                  : std::pair(Qt::LeftButton, Qt::ControlModifier);
        song.pressSecondary(roll.grid(), roll.toGrid(point));
        mouse(QEvent::MouseButtonPress, inWindow(point), button, modifiers);
        mouse(QEvent::MouseButtonRelease, inWindow(point), button, modifiers);
    }

    void pan() {
        mouse(QEvent::MouseButtonPress, inWindow(somewhere()), Qt::MiddleButton);
        mouse(QEvent::MouseMove, inWindow(somewhere()));
        mouse(QEvent::MouseButtonRelease, inWindow(somewhere()), Qt::MiddleButton);
    }

    void wheel(const QPointF& point) {
        static constexpr Qt::KeyboardModifier modifiers[] = {Qt::NoModifier, Qt::ShiftModifier,
                                                             Qt::ControlModifier};
        QWheelEvent event(point, canvas.mapToGlobal(point), {}, {0, oneIn(2) ? 120 : -120}, buttons,
                          modifiers[below(3)], Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&canvas, &event);
        song.move(roll.grid(), roll.toGrid(point));
    }

    // Elsewhere.

    void command() {
        const int channel = below(4);
        switch (below(9)) {
        case 0:
        case 1:
            for (int count = key(Qt::Key_Z, Qt::ControlModifier); count > 0; --count)
                song.undo();
            break;
        case 2:
            for (int count = key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier); count > 0;
                 --count)
                song.redo();
            break;
        case 3:
            key(Qt::Key_L, Qt::ControlModifier);
            song.toggleLoop();
            break;
        case 4:
        case 5:
            key(oneIn(2) ? Qt::Key_Delete : Qt::Key_Backspace);
            song.deleteSelection();
            break;
        case 6:
            key(Qt::Key_A, Qt::ControlModifier);
            song.selectAll();
            break;
        case 7:
            key(Qt::Key_1 + channel, Qt::ControlModifier);
            song.selectChannel(channel);
            break;
        default:
            key(Qt::Key_Space, {}, QStringLiteral(" "));
        }
    }

    /// Presses and drags on a control, or on nothing.
    void pressControl() {
        const int bar = window.menuBar()->height();
        QPointF point;
        do {
            point = QPoint(below(window.width()), bar + below(window.height() - bar));
        } while (canvas.rect().contains(canvas.mapFrom(&window, point).toPoint()));
        mouse(QEvent::MouseButtonPress, point, Qt::LeftButton);
        ASSERT_NO_FATAL_FAILURE(adoptSettings());
        mouse(QEvent::MouseMove, point + QPointF(below(20) - 10, 0));
        ASSERT_NO_FATAL_FAILURE(adoptSettings());
        mouse(QEvent::MouseButtonRelease, point, Qt::LeftButton);
        ASSERT_NO_FATAL_FAILURE(adoptSettings());
        for (int keys = below(4); keys > 0; --keys) {
            typeKey();
            ASSERT_NO_FATAL_FAILURE(adoptSettings());
        }
    }

    void typeKey() {
        static constexpr Qt::Key keys[] = {Qt::Key_Return,  Qt::Key_Escape, Qt::Key_Tab,
                                           Qt::Key_Backtab, Qt::Key_Left,   Qt::Key_Up,
                                           Qt::Key_Home,    Qt::Key_End};
        const QString text = QString::number(below(10));
        if (oneIn(2))
            key(Qt::Key_0 + text.toInt(), {}, text);
        else
            key(keys[below(std::size(keys))]);
    }

    void closeTextField() {
        if (model->isEditingText())
            key(oneIn(2) ? Qt::Key_Return : Qt::Key_Escape);
        adoptSettings();
    }

    /// A control may have changed anything but notes, each change with an undo step of its own.
    void adoptSettings() {
        std::vector<Project> states = {model->project()};
        for (; states.back() != song.project; states.push_back(model->project())) {
            ASSERT_LT(states.size(), 5U) << "steps of one event";
            model->undo();
        }
        for (std::size_t i = states.size() - 1; i > 0; --i) {
            song.push();
            song.project = states[i - 1];
            model->redo();
        }
        song.selection = model->selection();
        song.channel = model->selectedChannelIndex();
    }

    void startAnew() {
        harness.dialogs.alertAnswers = {1};
        key(Qt::Key_N, Qt::ControlModifier);
        harness.dialogs.alertAnswers.clear();
        ASSERT_FALSE(model->project().hasNotes());
        song = PlainSong();
        song.project = model->project();
        song.channel = model->selectedChannelIndex();
    }

    void save() {
        const std::filesystem::path file = harness.folder / "song.mossbit";
        harness.dialogs.saveAnswers = {file};
        key(Qt::Key_S, Qt::ControlModifier);
        harness.dialogs.saveAnswers.clear();
        ASSERT_EQ(saved(file), song.project);
    }

    /// All the way back and forth again.
    void travel() {
        for (const bool isBack : {true, false})
            while (isBack ? model->canUndo() : model->canRedo()) {
                isBack ? song.undo() : song.redo();
                isBack ? model->undo() : model->redo();
                ASSERT_NO_FATAL_FAILURE(check());
            }
    }

    void letTimePass() {
        if (model->isPlaying())
            harness.output.pull(static_cast<std::size_t>(below(9000)));
        harness.pass(oneIn(10) ? 1 : 0.02);
    }

    void doSomething() {
        static constexpr double zooms[] = {0.6, 1, 1.7, 4};
        const int choice = below(100);
        if (choice < 35)
            drag();
        else if (choice < 45)
            secondaryClick();
        else if (choice < 70)
            command();
        else if (choice < 75)
            wheel(somewhere());
        else if (choice < 78)
            pan();
        else if (choice < 86)
            pressControl();
        else if (choice < 96)
            letTimePass();
        else if (choice < 97)
            window.resize(900 + below(600), 620 + below(400));
        else if (choice < 98)
            window.findChild<MainView*>()->setZoom(zooms[below(4)]);
        else if (choice < 99)
            save();
        else
            oneIn(4) ? startAnew() : travel();
    }

    void check() {
        ASSERT_EQ(model->project(), song.project)
            << description(model->project()) << "\nexpected " << description(song.project);
        ASSERT_EQ(model->selection(), song.selection);
        ASSERT_EQ(model->selectedChannelIndex(), song.channel);
        ASSERT_EQ(model->canUndo(), !song.undoable.empty());
        ASSERT_EQ(model->canRedo(), !song.redoable.empty());
    }

    DocumentWindow window{*model};
    PianoRollView& roll = *window.findChild<PianoRollView*>();
    QWidget& canvas = *roll.viewport();
    PlainSong song;
    std::mt19937 random{20261122};
    int milliseconds = 0;
    Qt::MouseButtons buttons;
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
