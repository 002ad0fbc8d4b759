#include "Tests/Support/WindowHarness.h"
#include "UI/FlatButton.h"
#include "UI/VolumeBar.h"

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

TEST(MainView, LeavesTheKeyboardToTheGridWhenControlsAreClicked) {
    WindowHarness window;
    ASSERT_TRUE(window.roll().hasFocus());
    for (QWidget* control : window.view.findChildren<QWidget*>())
        if ((qobject_cast<FlatButton*>(control) || qobject_cast<VolumeBar*>(control)) &&
            control->isVisible() && !control->accessibleName().startsWith("Tempo")) {
            QTest::mouseClick(control, Qt::LeftButton);
            EXPECT_TRUE(window.roll().hasFocus()) << control->accessibleName().toStdString();
        }
}

/// What a widget's tooltip says; it shows its parent's if it has none.
QString toolTip(const QWidget* widget) {
    while (widget->toolTip().isEmpty() && widget->parentWidget())
        widget = widget->parentWidget();
    return widget->toolTip();
}

TEST(MainView, WalksItsControlsInReadingOrderAndExplainsThem) {
    WindowHarness window;
    QStringList names;
    do {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        const QWidget* control = QApplication::focusWidget();
        names.push_back(control->accessibleName());
        EXPECT_EQ(toolTip(control).isEmpty(), control == &window.roll())
            << names.back().toStdString();
    } while (names.back() != "Piano roll" && names.size() < 60);
    EXPECT_EQ(names.join(", ").toStdString(),
              "PULSE 1, PULSE 1 mute, PULSE 1 volume, PULSE 2, PULSE 2 mute, PULSE 2 volume, "
              "WAVE, WAVE mute, WAVE volume, NOISE, NOISE mute, NOISE volume, "
              "Duty 12.5%, Duty 25%, Duty 50%, Duty 75%, Play, Stop, "
              "Decrease tempo, Tempo 120, Increase tempo, Loop, "
              "Bars 1, Bars 2, Bars 4, Bars 8, Bars 16, Grid 1/4, Grid 1/8, Grid 1/16, "
              "Zoom out, Zoom in, Piano roll");
}

TEST(MainView, MarksTheKeyboardFocusAndTakesKeys) {
    WindowHarness window;
    auto& loop = window.control("Loop");
    loop.setFocus(Qt::TabFocusReason);
    EXPECT_EQ(colorAt(render(loop, 1), {0, 12}), Palette::text);
    QTest::keyClick(&loop, Qt::Key_Return);
    EXPECT_FALSE(window.vm->project().loop);
    QTest::keyClick(&window.control<VolumeBar>("WAVE volume"), Qt::Key_Left);
    EXPECT_EQ(window.vm->project().channels[2].volume, 10);
}

} // namespace
} // namespace mossbit
