#include "Tests/Support/WindowHarness.h"
#include "UI/PixelButton.h"
#include "Views/TempoControl.h"
#include "Views/TransportView.h"

#include <QDialog>
#include <QMenuBar>
#include <QTest>
#include <gtest/gtest.h>

namespace mossbit {
namespace {

TempoField& openField(WindowHarness& window) {
    window.control(QStringLiteral("Tempo %1").arg(window.vm->project().tempo)).click();
    QApplication::processEvents();
    return window.control<TempoField>(QStringLiteral("Tempo in beats per minute"));
}

void type(TempoField& field, const QString& text) {
    field.selectAll();
    QTest::keyClicks(&field, text);
}

TEST(TempoField, TakesWholeNumbersAndIgnoresTheRest) {
    using Case = std::pair<const char*, int>;
    for (const auto& [typed, tempo] :
         {Case{" 128  ", 128}, Case{"12a", 100}, Case{"1.5", 100}, Case{"-", 100}, Case{" ", 100},
          Case{"+90", 90}, Case{"+-90", 100}, Case{"20", 40}, Case{"999", 300}, Case{"-5", 40},
          Case{"9223372036854775807", 300}, Case{"9223372036854775808", 100}, Case{"0x60", 100}}) {
        WindowHarness window(song({.tempo = 100}));
        TempoField& field = openField(window);
        EXPECT_EQ(field.text(), QStringLiteral("100"));
        EXPECT_TRUE(field.hasFocus());
        EXPECT_TRUE(window.vm->isEditingText());
        type(field, QString::fromLatin1(typed));
        QTest::keyClick(&field, Qt::Key_Return);
        EXPECT_EQ(window.vm->project().tempo, tempo) << typed;
        EXPECT_FALSE(field.isVisible());
        EXPECT_FALSE(window.vm->isEditingText());
        EXPECT_TRUE(window.roll().hasFocus()) << "Space plays again";
    }
}

TEST(TempoField, CommitsWhenTheKeyboardIsTakenButNotWhileItIsOnlyLent) {
    WindowHarness window;
    TempoField& field = openField(window);
    type(field, QStringLiteral("150"));
    for (const Qt::FocusReason reason :
         {Qt::PopupFocusReason, Qt::MenuBarFocusReason, Qt::ActiveWindowFocusReason}) {
        QFocusEvent out(QEvent::FocusOut, reason);
        QApplication::sendEvent(&field, &out);
        EXPECT_TRUE(field.isVisible());
        EXPECT_TRUE(window.vm->isEditingText());
    }
    window.control(QStringLiteral("Increase tempo")).click();
    EXPECT_EQ(window.vm->project().tempo, 121);
    EXPECT_TRUE(field.isVisible());
    QMenuBar menuBar(&window.view);
    menuBar.setFocus(Qt::MenuBarFocusReason);
    EXPECT_TRUE(field.isVisible());
    window.roll().setFocus(Qt::MouseFocusReason);
    EXPECT_FALSE(field.isVisible()) << "passed on";
    EXPECT_EQ(window.vm->project().tempo, 150);
}

TEST(TempoField, CommitsBeforeItsWindowCloses) {
    WindowHarness window;
    type(openField(window), QStringLiteral("150"));
    window.view.close();
    EXPECT_EQ(window.vm->project().tempo, 150);
    EXPECT_FALSE(window.vm->isEditingText());
}

TEST(TempoField, GivesTheKeyboardToTheGridAlsoBehindADialog) {
    WindowHarness window;
    const TempoField& field = openField(window);
    QDialog dialog(&window.view);
    dialog.show();
    dialog.activateWindow();
    QApplication::processEvents();
    ASSERT_FALSE(field.hasFocus());
    EXPECT_TRUE(field.isVisible());
    window.vm->newProject();
    EXPECT_FALSE(field.isVisible());
    EXPECT_EQ(window.view.focusWidget(), &window.roll());
}

TEST(TempoField, DoesNotCommitIntoANewDocumentNorOnEscape) {
    WindowHarness window;
    type(openField(window), QStringLiteral("150"));
    window.vm->newProject();
    EXPECT_EQ(window.vm->project().tempo, 120);
    EXPECT_FALSE(window.vm->isEditingText());
    EXPECT_TRUE(window.roll().hasFocus());
    TempoField& field = openField(window);
    type(field, QStringLiteral("150"));
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_EQ(window.vm->project().tempo, 120);
    EXPECT_FALSE(field.isVisible());
    EXPECT_FALSE(window.vm->canUndo());
}

TEST(TempoField, LeavesCommandsToTheMenus) {
    WindowHarness window;
    TempoField& field = openField(window);
    const auto isTaken = [&](Qt::Key key, Qt::KeyboardModifiers modifiers) {
        QKeyEvent event(QEvent::ShortcutOverride, key, modifiers);
        event.ignore();
        QApplication::sendEvent(&field, &event);
        return event.isAccepted();
    };
    for (const Qt::Key key : {Qt::Key_Z, Qt::Key_E, Qt::Key_S, Qt::Key_1})
        EXPECT_FALSE(isTaken(key, Qt::ControlModifier)) << key;
    for (const Qt::Key key : {Qt::Key_A, Qt::Key_C, Qt::Key_V})
        EXPECT_TRUE(isTaken(key, Qt::ControlModifier)) << key;
    EXPECT_TRUE(isTaken(Qt::Key_1, Qt::NoModifier));
}

TEST(TransportView, DrivesTheModelAndShowsIt) {
    WindowHarness window;
    const QImage stopped = render(window.control(QStringLiteral("Play")), 1);
    window.control(QStringLiteral("Play")).click();
    EXPECT_TRUE(window.vm->isPlaying());
    const QImage playing = render(window.control(QStringLiteral("Play")), 1);
    EXPECT_EQ(colorAt(stopped, {4, 4}), Palette::panel);
    EXPECT_EQ(colorAt(playing, {4, 4}), QColor(242, 212, 92));
    window.control(QStringLiteral("Decrease tempo")).click();
    EXPECT_EQ(window.vm->project().tempo, 119);
    window.control(QStringLiteral("Loop")).click();
    EXPECT_FALSE(window.vm->project().loop);
    window.control(QStringLiteral("Bars 16")).click();
    window.control(QStringLiteral("Grid 1/8")).click();
    EXPECT_EQ(window.vm->project().bars, 16);
    EXPECT_EQ(window.vm->project().grid, GridDivision::eighth);
    EXPECT_TRUE(window.control(QStringLiteral("Bars 16")).isChecked());
    EXPECT_FALSE(window.control(QStringLiteral("Bars 4")).isChecked());
    for (const double zoom : {0.75, 0.6, 0.6}) {
        window.control(QStringLiteral("Zoom out")).click();
        EXPECT_DOUBLE_EQ(window.view.zoom(), zoom);
    }
}

} // namespace
} // namespace mossbit
