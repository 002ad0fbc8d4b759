#include "Tests/Support/WindowHarness.h"

#include <QHelpEvent>
#include <QTest>
#include <QToolTip>
#include <QWheelEvent>
#include <gtest/gtest.h>

#include <functional>

namespace mossbit {
namespace {

void turnWheel(QWidget& widget, const QPointF& point, int angle,
               Qt::MouseButtons buttons = Qt::NoButton, Qt::KeyboardModifiers modifiers = {}) {
    QWheelEvent event(point, widget.mapToGlobal(point), {}, {0, angle}, buttons, modifiers,
                      Qt::NoScrollPhase, false);
    QApplication::sendEvent(&widget, &event);
}

TEST(PianoRollPointer, EndsADragThatHasLostItsDocumentOrItsButton) {
    using Change = std::function<void(WindowHarness&)>;
    const Change changes[] = {
        [](auto& window) {
            window.system.dialogs.alertAnswers = {1};
            window.vm->newProject();
        },
        [](auto& window) {
            sendMouse(window.canvas(), QEvent::MouseMove, window.at(72, 20), Qt::NoButton);
        },
        [](auto& window) { turnWheel(window.canvas(), window.at(72, 5), 120); },
    };
    for (const Change& change : changes) {
        WindowHarness window(song().note(72, 4, 4));
        window.press(window.at(72, 5));
        window.drag(window.at(72, 9));
        change(window);
        const std::pair then(window.vm->project(), window.vm->hasUnsavedChanges());
        window.drag(window.at(72, 12));
        EXPECT_EQ(std::pair(window.vm->project(), window.vm->hasUnsavedChanges()), then)
            << &change - changes;
    }
}

TEST(PianoRollPointer, TellsWithTheCursorWhatAPressWillDo) {
    WindowHarness window(song().note(72, 4, 4));
    window.view.setZoom(0.6);
    const auto shapeAt = [&](double tick) {
        sendMouse(window.canvas(), QEvent::MouseMove, window.at(72, tick), Qt::NoButton);
        return window.canvas().cursor().shape();
    };
    EXPECT_EQ(shapeAt(5), Qt::SizeAllCursor);
    EXPECT_EQ(shapeAt(7.9), Qt::SizeHorCursor);
    EXPECT_EQ(shapeAt(63.5), Qt::CrossCursor);
    EXPECT_EQ(shapeAt(64.5), Qt::ArrowCursor);
    click(window.canvas(), window.at(72, 64.5));
    EXPECT_FALSE(window.vm->canUndo());
    click(window.canvas(), window.at(72, 63.5));
    EXPECT_EQ(window.notes()[1].start, 63);
}

TEST(PianoRollPointer, NamesWhatItRestsOn) {
    WindowHarness window(song({.grid = GridDivision::eighth}).note(61, 25, 4));
    QWidget& keys = *window.roll().findChild<QWidget*>("keys");
    const auto toolTip = [](QWidget& widget, const QPointF& point) {
        QHelpEvent event(QEvent::ToolTip, point.toPoint(), widget.mapToGlobal(point.toPoint()));
        QApplication::sendEvent(&widget, &event);
        return QToolTip::text().toStdString();
    };
    EXPECT_EQ(toolTip(window.canvas(), window.at(61, 27.5)),
              "C#4 · bar 2, beat 3, 2nd sixteenth · length 4");
    EXPECT_EQ(toolTip(window.canvas(), window.at(60, 7.5)), "C4 · bar 1, beat 2, 3rd sixteenth");
    EXPECT_EQ(toolTip(keys, {5, window.at(73, 0).y()}), "C#5");
    window.vm->setSelectedChannelIndex(3);
    EXPECT_EQ(toolTip(window.canvas(), window.at(1, 0.5)), "snare · bar 1, beat 1, 1st sixteenth");
    EXPECT_EQ(toolTip(keys, {5, window.at(0, 0).y()}), "kick");
    window.view.setZoom(0.6);
    toolTip(window.canvas(), window.at(0, 65));
    EXPECT_TRUE(QTest::qWaitFor([] { return !QToolTip::isVisible(); }));
}

TEST(PianoRollScrolling, CentresC5UntilThePersonDoesAnything) {
    WindowHarness window;
    QScrollBar& vertical = *window.roll().verticalScrollBar();
    const auto isCentred = [&] {
        return std::abs(window.at(72, 0).y() - window.canvas().height() / 2.0) < 1;
    };
    EXPECT_TRUE(isCentred());
    EXPECT_EQ(window.roll().horizontalScrollBar()->maximum(), 0) << "the last tick is not hidden";
    window.view.resize(1100, 650);
    QApplication::processEvents();
    EXPECT_TRUE(isCentred()) << "the window manager changed the size";
    click(window.view, {5, 5});
    const int place = vertical.value();
    window.view.resize(1100, 600);
    window.view.hide();
    window.view.show();
    QApplication::processEvents();
    EXPECT_EQ(vertical.value(), place);
}

TEST(PianoRollScrolling, ComesBackToThePlaceThatWasChosen) {
    WindowHarness window;
    QScrollBar& vertical = *window.roll().verticalScrollBar();
    QScrollBar& horizontal = *window.roll().horizontalScrollBar();
    window.view.setZoom(4);
    vertical.setValue(380);
    horizontal.setValue(500);
    const std::function<void()> detours[][2] = {
        {[&] { window.vm->setSelectedChannelIndex(3); },
         [&] { window.vm->setSelectedChannelIndex(2); }},
        {[&] { window.view.resize(1100, 1000); }, [&] { window.view.resize(1100, 700); }},
        {[&] { window.view.setZoom(1); }, [&] { window.view.setZoom(4); }}};
    for (const auto& [away, back] : detours) {
        away();
        QApplication::processEvents();
        EXPECT_NE(QPoint(horizontal.value(), vertical.value()), QPoint(500, 380));
        back();
        QApplication::processEvents();
        EXPECT_EQ(QPoint(horizontal.value(), vertical.value()), QPoint(500, 380));
    }
}

TEST(PianoRollScrolling, FollowsTheWheelAndTheMiddleButton) {
    WindowHarness window;
    window.view.setZoom(4);
    QScrollBar& vertical = *window.roll().verticalScrollBar();
    QScrollBar& horizontal = *window.roll().horizontalScrollBar();
    const int top = vertical.value();
    turnWheel(window.canvas(), {10, 10}, -120, Qt::NoButton, Qt::ShiftModifier);
    EXPECT_EQ(QPoint(horizontal.value(), vertical.value()), QPoint(60, top));
    turnWheel(*window.roll().findChild<QWidget*>("keys"), {10, 10}, -120);
    EXPECT_EQ(vertical.value(), top + 45);
    turnWheel(window.canvas(), {10, 10}, 120, Qt::NoButton, Qt::ControlModifier);
    EXPECT_EQ(vertical.value(), top);

    sendMouse(window.canvas(), QEvent::MouseButtonPress, {300, 100}, Qt::MiddleButton);
    for (const auto button : {Qt::MiddleButton, Qt::NoButton}) {
        const QPointF to = button == Qt::MiddleButton ? QPointF(250, 130) : QPointF(0, 0);
        sendMouse(window.canvas(), QEvent::MouseMove, to, button);
        EXPECT_EQ(QPoint(horizontal.value(), vertical.value()), QPoint(110, top - 30));
    }
    EXPECT_FALSE(window.vm->canUndo());
}

} // namespace
} // namespace mossbit
