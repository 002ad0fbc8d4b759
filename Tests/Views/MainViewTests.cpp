#include "Tests/Support/WindowHarness.h"

#include <QLabel>
#include <QMessageBox>
#include <QTest>
#include <gtest/gtest.h>

namespace mossbit {
namespace {

TEST(MainView, HintsWhileThereIsNoNote) {
    WindowHarness window;
    QWidget& hint = window.view.hint();
    EXPECT_TRUE(hint.isVisible());
    EXPECT_EQ(window.view.childAt(hint.geometry().center()), &window.canvas())
        << "presses reach the grid";
    window.vm->addNote(60, 0);
    window.vm->setSelectedChannelIndex(3);
    EXPECT_FALSE(hint.isVisible());
    window.vm->undo();
    EXPECT_TRUE(hint.isVisible());
}

TEST(MainView, ShowsMessagesAfterTheCommandThatFailed) {
    WindowHarness window;
    window.vm->open(window.system.folder / "<b>missing</b>.mossbit");
    EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "not inside the command";
    QApplication::processEvents();
    auto* alert = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
    ASSERT_NE(alert, nullptr);
    EXPECT_EQ(alert->text().toStdString(), window.vm->alertMessage());
    EXPECT_EQ(alert->textFormat(), Qt::PlainText);
    QTest::keyClick(alert, Qt::Key_Escape);
    EXPECT_FALSE(window.vm->alertMessage());
}

/// What is there to be pressed.
std::vector<QWidget*> shownControls(const WindowHarness& window) {
    std::vector<QWidget*> controls;
    for (QWidget* widget : window.view.findChildren<QWidget*>())
        if (widget->isVisible() && !qobject_cast<QScrollBar*>(widget) &&
            (qobject_cast<QAbstractButton*>(widget) || qobject_cast<QAbstractSlider*>(widget)))
            controls.push_back(widget);
    return controls;
}

TEST(MainView, LeavesTheKeyboardToTheGridWhenControlsAreClicked) {
    WindowHarness window;
    ASSERT_TRUE(window.roll().hasFocus());
    for (QWidget* control : shownControls(window))
        if (!control->accessibleName().startsWith("Tempo")) {
            QTest::mouseClick(control, Qt::LeftButton);
            EXPECT_TRUE(window.roll().hasFocus()) << control->accessibleName().toStdString();
        }
}

TEST(MainView, KeepsEveryControlInsideItsRowAtItsSmallest) {
    WindowHarness window({}, MainView::minimumExtent);
    std::vector<QWidget*> widgets = shownControls(window);
    for (QLabel* caption : window.view.findChildren<QLabel*>())
        if (caption->isVisible())
            widgets.push_back(caption);
    for (const QWidget* widget : widgets) {
        EXPECT_TRUE(widget->parentWidget()->rect().contains(widget->geometry()));
        EXPECT_GE(widget->width(), widget->minimumSizeHint().width());
        for (const QWidget* other : widgets)
            if (other != widget && other->parent() == widget->parent()) {
                const QRect shared = widget->geometry().intersected(other->geometry());
                EXPECT_LE(shared.width(), 1) << widget->accessibleName().toStdString() << " and "
                                             << other->accessibleName().toStdString();
            }
    }
}

/// What a widget's tooltip says; it shows its parent's if it has none.
QString toolTip(const QWidget* widget) {
    while (widget->toolTip().isEmpty() && widget->parentWidget())
        widget = widget->parentWidget();
    return widget->toolTip();
}

TEST(MainView, HasOneTabStopForAGroupAndExplainsEveryControl) {
    WindowHarness window;
    QStringList names;
    const auto tab = [] { QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab); };
    for (tab(); !window.roll().hasFocus() && names.size() < 60; tab())
        names.push_back(QApplication::focusWidget()->accessibleName());
    EXPECT_EQ(names.join(", ").toStdString(),
              "PULSE 1, PULSE 1 mute, PULSE 1 volume, PULSE 2 mute, PULSE 2 volume, "
              "WAVE mute, WAVE volume, NOISE mute, NOISE volume, Duty 50%, Play, Stop, "
              "Decrease tempo, Tempo 120, Increase tempo, Loop, Bars 4, Grid 1/16, "
              "Zoom out, Zoom in");
    for (const QWidget* control : shownControls(window))
        EXPECT_EQ(toolTip(control).isEmpty(), control->accessibleName() == "PULSE 1")
            << "only on what a click changes: " << control->accessibleName().toStdString();
}

TEST(MainView, MarksTheKeyboardFocusAndTakesKeys) {
    WindowHarness window;
    const auto expectMark = [&](const std::string& name) {
        const QWidget& control = window.control<QWidget>(name.c_str());
        EXPECT_TRUE(control.hasFocus()) << name;
        const QImage image = render(window.view, 1);
        for (const int x : {0, control.width() - 1})
            EXPECT_EQ(colorAt(image, control.mapTo(&window.view, QPoint(x, 5))), Palette::text)
                << name;
    };
    const auto press = [](Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); };
    window.control("Loop").setFocus(Qt::TabFocusReason);
    expectMark("Loop");
    press(Qt::Key_Return);
    EXPECT_FALSE(window.vm->project().loop);
    press(Qt::Key_Tab);
    for (const int bars : {8, 16, 8}) {
        press(bars > window.vm->project().bars ? Qt::Key_Right : Qt::Key_Left);
        EXPECT_EQ(window.vm->project().bars, bars);
        expectMark("Bars " + std::to_string(bars));
    }
    press(Qt::Key_Tab);
    expectMark("Grid 1/16");
    window.control("PULSE 1").setFocus();
    press(Qt::Key_Right);
    EXPECT_EQ(window.vm->selectedChannelIndex(), 1);
    expectMark("PULSE 2");
    window.control<QWidget>("WAVE volume").setFocus();
    press(Qt::Key_Left);
    EXPECT_EQ(window.vm->project().channels[2].volume, 10);
    expectMark("WAVE volume");
}

} // namespace
} // namespace mossbit
