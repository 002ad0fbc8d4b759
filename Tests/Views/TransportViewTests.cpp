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
    struct Case {
        const char* typed;
        std::int64_t tempo;
    };
    for (const Case& c : {Case{" 128  ", 128},
                          {"12a", 100},
                          {"1.5", 100},
                          {"+", 100},
                          {"-", 100},
                          {" ", 100},
                          {"+90", 90},
                          {"+-90", 100},
                          {"20", 40},
                          {"999", 300},
                          {"-5", 40},
                          {"9223372036854775807", 300},
                          {"9223372036854775808", 100},
                          {"0x60", 100}}) {
        WindowHarness window(song({.tempo = 100}));
        TempoField& field = openField(window);
        EXPECT_EQ(field.text(), QStringLiteral("100"));
        EXPECT_TRUE(field.hasFocus());
        EXPECT_TRUE(window.vm->isEditingText());
        type(field, QString::fromLatin1(c.typed));
        QTest::keyClick(&field, Qt::Key_Return);
        EXPECT_EQ(window.vm->project().tempo, c.tempo) << c.typed;
        EXPECT_FALSE(field.isVisible());
        EXPECT_FALSE(window.vm->isEditingText());
        EXPECT_TRUE(window.roll().hasFocus()) << "Space plays again";
    }
}

TEST(TempoField, CommitsWhenAPressOnTheGridTakesTheKeyboard) {
    WindowHarness window;
    TempoField& field = openField(window);
    type(field, QStringLiteral("150"));
    QTest::mouseClick(&window.canvas(), Qt::RightButton);
    EXPECT_EQ(window.vm->project().tempo, 150);
    EXPECT_FALSE(field.isVisible());
    EXPECT_FALSE(window.vm->isEditingText());
}

TEST(TempoField, StaysOpenWhileTheKeyboardIsOnlyLent) {
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

TEST(TransportView, ZoomsInQuartersBetweenItsLimits) {
    WindowHarness window;
    for (const double zoom : {0.75, 0.6, 0.6}) {
        window.control(QStringLiteral("Zoom out")).click();
        EXPECT_DOUBLE_EQ(window.view.zoom(), zoom);
    }
    EXPECT_DOUBLE_EQ(window.roll().grid().cellWidth, window.canvas().width() / 64.0 * 0.6);
    window.view.setZoom(3.9);
    window.control(QStringLiteral("Zoom in")).click();
    EXPECT_DOUBLE_EQ(window.view.zoom(), 4);
}

TEST(TransportView, DrivesTheModelAndShowsIt) {
    WindowHarness window;
    const QImage stopped = render(window.control(QStringLiteral("Play")), 1);
    window.control(QStringLiteral("Play")).click();
    EXPECT_TRUE(window.vm->isPlaying());
    const QImage playing = render(window.control(QStringLiteral("Play")), 1);
    EXPECT_EQ(colorAt(stopped, {4, 4}), Palette::panel);
    EXPECT_EQ(colorAt(playing, {4, 4}), QColor(242, 212, 92));
    EXPECT_EQ(colorAt(stopped, {11, 12}), Palette::text);
    EXPECT_EQ(colorAt(playing, {11, 12}), Palette::background);
    window.control(QStringLiteral("Stop")).click();
    EXPECT_FALSE(window.vm->isPlaying());
    window.control(QStringLiteral("Decrease tempo")).click();
    EXPECT_EQ(window.vm->project().tempo, 119);
    window.control(QStringLiteral("Loop")).click();
    EXPECT_FALSE(window.vm->project().loop);
    EXPECT_FALSE(window.control(QStringLiteral("Loop")).isChecked());
    window.control(QStringLiteral("Bars 16")).click();
    window.control(QStringLiteral("Grid 1/8")).click();
    EXPECT_EQ(window.vm->project().bars, 16);
    EXPECT_EQ(window.vm->project().grid, GridDivision::eighth);
    EXPECT_TRUE(window.control(QStringLiteral("Bars 16")).isChecked());
    EXPECT_FALSE(window.control(QStringLiteral("Bars 4")).isChecked());
    window.vm->undo();
    EXPECT_TRUE(window.control(QStringLiteral("Grid 1/16")).isChecked());
}

TEST(TransportView, ShrinksItsGapsEvenlyAndNothingElse) {
    for (const int width : {900, 1100}) {
        WindowHarness window({}, {width, 600});
        std::vector<QRect> items;
        for (const QObject* child : window.view.transport().children())
            if (const auto* widget = qobject_cast<const QWidget*>(child)) {
                EXPECT_GE(widget->width(), widget->sizeHint().width());
                items.push_back(widget->geometry());
            }
        std::ranges::sort(items, {}, &QRect::left);
        ASSERT_EQ(items.size(), 11U);
        const int gap = items[1].left() - items[0].right() - 1;
        for (std::size_t i = 1; i + 1 < items.size(); ++i)
            EXPECT_NEAR(items[i].left() - items[i - 1].right() - 1, gap, 1) << i;
        EXPECT_LE(gap, 14);
        EXPECT_GE(items[10].left() - items[9].right() - 1, 2 * gap + 8 - 1);
        EXPECT_EQ(items.front().left(), 14);
        EXPECT_EQ(items.back().right() + 1, width - 14);
    }
}

} // namespace
} // namespace mossbit
