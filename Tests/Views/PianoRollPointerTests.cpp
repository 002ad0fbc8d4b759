#include "Tests/Support/WindowHarness.h"

#include <gtest/gtest.h>

namespace mossbit {
namespace {

/// Undoes once and tells whether that led back to `before`, with nothing left to undo.
bool wasOneStep(ProjectViewModel& vm, const Project& before) {
    vm.undo();
    return vm.project() == before && !vm.canUndo();
}

TEST(PianoRollPointer, DrawsANoteOutOfAnEmptyCell) {
    WindowHarness window;
    const Project before = window.vm->project();
    window.press(window.at(72, 4.5));
    ASSERT_EQ(window.notes().size(), 1U);
    EXPECT_EQ(window.notes()[0].length, 1);
    window.drag(window.at(70, 7.2));
    window.drag(window.at(72, 7.9));
    window.release(window.at(72, 7.9));
    window.drag(window.at(72, 12));
    const Note& note = window.notes()[0];
    EXPECT_EQ(note, (Note{.id = note.id, .pitch = 72, .start = 4, .length = 4}));
    EXPECT_EQ(window.vm->selection(), ProjectViewModel::Selection{note.id});
    EXPECT_TRUE(wasOneStep(*window.vm, before));
}

TEST(PianoRollPointer, MovesANoteAndBack) {
    const Project before = song().note(72, 4, 4).note(60, 0, 1);
    WindowHarness window(before);
    const Uuid id = before.channels[0].notes[0].id;
    window.press(window.at(72, 5));
    window.drag(window.at(74, 8.2));
    EXPECT_EQ(window.vm->note(id)->start, 7);
    EXPECT_EQ(window.vm->note(id)->pitch, 74);
    window.drag(window.at(72, 5));
    EXPECT_EQ(window.vm->project(), before);
    window.drag(window.at(70, 5));
    window.release(window.at(70, 5));
    EXPECT_TRUE(wasOneStep(*window.vm, before));
}

TEST(PianoRollPointer, ResizesAtTheRightEndOnTheGrid) {
    const Project before = song({.grid = GridDivision::quarter}).note(72, 8, 3);
    WindowHarness window(before);
    window.press(window.at(72, 10.9));
    window.drag(window.at(60, 15.3));
    EXPECT_EQ(window.notes()[0].length, 8);
    EXPECT_EQ(window.notes()[0].pitch, 72);
    window.drag(window.at(72, 0));
    EXPECT_EQ(window.notes()[0].length, 4);
    window.release(window.at(72, 0));
    EXPECT_TRUE(wasOneStep(*window.vm, before));
}

TEST(PianoRollPointer, EditsTheNoteOnTop) {
    const Project before = song().note(72, 0, 8).note(72, 4, 8);
    for (const auto& [button, modifiers] :
         {std::pair(Qt::RightButton, Qt::NoModifier), {Qt::LeftButton, Qt::ControlModifier}}) {
        WindowHarness window(before);
        window.press(window.at(72, 6));
        window.drag(window.at(71, 6));
        EXPECT_EQ(window.notes()[0].pitch, 72);
        EXPECT_EQ(window.notes()[1].pitch, 71);
        window.drag(window.at(72, 6));
        window.release(window.at(72, 6));
        EXPECT_TRUE(wasOneStep(*window.vm, before));
        click(window.canvas(), window.at(71, 1), button, modifiers);
        EXPECT_FALSE(window.vm->canUndo()) << "an empty cell";
        click(window.canvas(), window.at(72, 6), button, modifiers);
        EXPECT_EQ(window.notes(), std::vector{before.channels[0].notes[0]});
        EXPECT_TRUE(wasOneStep(*window.vm, before));
    }
}

TEST(PianoRollPointer, TakesTwoFastClicksForTwoPresses) {
    WindowHarness window;
    click(window.canvas(), window.at(72, 4.5));
    sendMouse(window.canvas(), QEvent::MouseButtonDblClick, window.at(71, 4.5));
    window.drag(window.at(71, 6));
    ASSERT_EQ(window.notes().size(), 2U);
    EXPECT_EQ(window.notes()[1].length, 2);
}

TEST(PianoRollPointer, EndsADragWhoseReleaseGotLost) {
    WindowHarness window;
    window.press(window.at(72, 4.5));
    sendMouse(window.canvas(), QEvent::MouseMove, window.at(72, 20), Qt::NoButton);
    window.drag(window.at(72, 30));
    EXPECT_EQ(window.notes()[0].length, 1);
}

TEST(PianoRollPointer, EndsADragThatHasLostItsStepOrItsNote) {
    struct Case {
        const char* name;
        bool isMoved;
        void (*change)(ProjectViewModel& vm);
        bool goesOn;
    };
    for (const Case& c : {Case{"undo", true, [](auto& vm) { vm.undo(); }, false},
                          {"undo of a mere press", false, [](auto& vm) { vm.undo(); }, false},
                          {"channel", true, [](auto& vm) { vm.setSelectedChannelIndex(1); }, false},
                          {"deletion", true, [](auto& vm) { vm.deleteSelection(); }, false},
                          {"mute", true, [](auto& vm) { vm.toggleMute(2); }, true},
                          {"loop", false, [](auto& vm) { vm.toggleLoop(); }, true}}) {
        WindowHarness window(song().note(72, 4, 4));
        window.press(window.at(72, 5));
        if (c.isMoved)
            window.drag(window.at(72, 9));
        c.change(*window.vm);
        const Project then = window.vm->project();
        window.drag(window.at(72, 12));
        EXPECT_EQ(window.vm->project() != then, c.goesOn) << c.name;
    }
}

TEST(PianoRollPointer, EndsADragWhenTheDocumentIsReplaced) {
    WindowHarness window(song().note(72, 4, 4));
    window.press(window.at(72, 5));
    window.system.dialogs.alertAnswers = {1};
    window.vm->newProject();
    window.drag(window.at(72, 9));
    EXPECT_FALSE(window.vm->hasUnsavedChanges());
}

TEST(PianoRollPointer, IgnoresPressesBesideTheGrid) {
    WindowHarness window;
    window.view.setZoom(0.6);
    click(window.canvas(), window.at(72, 64.5));
    EXPECT_FALSE(window.vm->canUndo());
    click(window.canvas(), window.at(72, 63.5));
    EXPECT_EQ(window.notes()[0].start, 63);
}

TEST(PianoRollPointer, TellsWithTheCursorWhatAPressWillDo) {
    WindowHarness window(song().note(72, 4, 4));
    const auto shapeAt = [&](const QPointF& point) {
        sendMouse(window.canvas(), QEvent::MouseMove, point, Qt::NoButton);
        return window.canvas().cursor().shape();
    };
    EXPECT_EQ(shapeAt(window.at(72, 5)), Qt::SizeAllCursor);
    EXPECT_EQ(shapeAt(window.at(72, 7.9)), Qt::SizeHorCursor);
    EXPECT_EQ(shapeAt(window.at(72, 9)), Qt::CrossCursor);
    window.view.setZoom(0.6);
    EXPECT_EQ(shapeAt(window.at(72, 70)), Qt::ArrowCursor);
}

TEST(PianoRollScrolling, CentresC5OnceAndIsOnlyClampedThen) {
    WindowHarness window;
    QScrollBar& vertical = *window.roll().verticalScrollBar();
    QScrollBar& horizontal = *window.roll().horizontalScrollBar();
    EXPECT_NEAR(window.at(72, 0).y(), window.canvas().height() / 2.0, 0.51);
    EXPECT_EQ(horizontal.maximum(), 0) << "the last tick is not hidden";
    vertical.setValue(100);
    window.view.setZoom(4);
    horizontal.setValue(500);
    window.vm->setTempo(140);
    window.vm->setSelectedChannelIndex(1);
    window.view.hide();
    window.view.show();
    EXPECT_EQ(vertical.value(), 100);
    EXPECT_EQ(horizontal.value(), 500);
    window.vm->setSelectedChannelIndex(3);
    EXPECT_EQ(vertical.value(), 0);
    EXPECT_EQ(horizontal.value(), 500);
    window.view.setZoom(1);
    EXPECT_EQ(horizontal.value(), 0);
}

TEST(PianoRollScrolling, TurnsTheWheelSidewaysWithShift) {
    WindowHarness window;
    window.view.setZoom(4);
    const int top = window.roll().verticalScrollBar()->value();
    const auto turn = [&](QWidget& widget, Qt::KeyboardModifiers modifiers) {
        QWheelEvent event({10, 10}, widget.mapToGlobal(QPointF(10, 10)), {}, {0, -120},
                          Qt::NoButton, modifiers, Qt::NoScrollPhase, false);
        QApplication::sendEvent(&widget, &event);
    };
    turn(window.canvas(), Qt::ShiftModifier);
    EXPECT_EQ(window.roll().horizontalScrollBar()->value(), 60);
    EXPECT_EQ(window.roll().verticalScrollBar()->value(), top);
    turn(*window.roll().findChild<QWidget*>(QStringLiteral("keys")), Qt::NoModifier);
    EXPECT_EQ(window.roll().verticalScrollBar()->value(), top + 45);
}

} // namespace
} // namespace mossbit
