#include "Tests/Support/WindowHarness.h"

#include <QContextMenuEvent>
#include <QDialog>
#include <QLineEdit>
#include <QMenuBar>
#include <QTest>
#include <gtest/gtest.h>

namespace mossbit {
namespace {

/// Opens the tempo field and types over the number in it.
QLineEdit& typeTempo(WindowHarness& window, const QString& text) {
    window.control(QString("Tempo %1").arg(window.vm->project().tempo)).click();
    QApplication::processEvents();
    auto& field = window.control<QLineEdit>("Tempo in beats per minute");
    QTest::keyClicks(&field, text);
    return field;
}

TEST(TempoField, TakesWholeNumbersAndIgnoresTheRest) {
    using Case = std::pair<const char*, int>;
    for (const auto& [typed, tempo] :
         {Case{" 128  ", 128}, Case{"12a", 100}, Case{"1.5", 100}, Case{"-", 100}, Case{" ", 100},
          Case{"+90", 90}, Case{"+-90", 100}, Case{"9223372036854775808", 100}}) {
        WindowHarness window(song({.tempo = 100}));
        QTest::keyClick(&typeTempo(window, typed), Qt::Key_Return);
        EXPECT_EQ(window.vm->project().tempo, tempo) << typed;
    }
}

TEST(TempoField, CommitsWhenAMenuPassesTheFocusOn) {
    WindowHarness window;
    QLineEdit& field = typeTempo(window, "150");
    QMenuBar menuBar(&window.view);
    menuBar.setFocus(Qt::MenuBarFocusReason);
    EXPECT_TRUE(field.isVisible());
    window.roll().setFocus(Qt::MouseFocusReason);
    EXPECT_FALSE(field.isVisible());
    EXPECT_EQ(window.vm->project().tempo, 150);
}

TEST(TempoField, CommitsBeforeTheSongIsWrittenOrAskedAbout) {
    using Model = ProjectViewModel;
    for (void (*command)(Model&) :
         {+[](Model& vm) { vm.save(); }, +[](Model& vm) { vm.saveAs(); },
          +[](Model& vm) { vm.exportWAV(); }, +[](Model& vm) { vm.confirmClosing(); },
          +[](Model& vm) { vm.flushAutosave(); }}) {
        WindowHarness window(song().note(60, 0, 1));
        typeTempo(window, "150");
        command(*window.vm);
        EXPECT_EQ(window.vm->project().tempo, 150);
        EXPECT_FALSE(window.vm->isEditingText());
    }
}

TEST(TempoField, OffersNoUndoOfItsOwn) {
    WindowHarness window;
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
    QApplication::sendEvent(&typeTempo(window, "150"), &event);
    const auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(menu->actions().first()->text().startsWith("Cu&t"));
}

TEST(TempoField, FollowsOtherChangesUntilSomethingIsTyped) {
    WindowHarness window;
    QLineEdit& field = typeTempo(window, "");
    window.control("Increase tempo").click();
    EXPECT_EQ(field.text(), "121");
    QTest::keyClicks(&field, "90");
    window.control("Increase tempo").click();
    EXPECT_EQ(field.text(), "90");
}

TEST(TempoField, DoesNotCommitIntoANewDocumentNorOnEscape) {
    WindowHarness window;
    typeTempo(window, "150");
    // As while a dialog asks about unsaved work.
    QDialog dialog(&window.view);
    dialog.show();
    dialog.activateWindow();
    QApplication::processEvents();
    window.vm->newProject();
    EXPECT_FALSE(window.vm->isEditingText());
    EXPECT_EQ(window.view.focusWidget(), &window.roll());
    dialog.close();

    QLineEdit& field = typeTempo(window, "150");
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_FALSE(field.isVisible());
    EXPECT_EQ(window.vm->project().tempo, 120);
    EXPECT_FALSE(window.vm->canUndo());
}

TEST(TempoField, GivesTheFocusBackToTheNumberThatReturnOpened) {
    WindowHarness window;
    auto& number = window.control("Tempo 120");
    number.setFocus(Qt::TabFocusReason);
    const auto press = [](Qt::Key key) { QTest::keyClick(QApplication::focusWidget(), key); };
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_9, Qt::Key_0, Qt::Key_Return})
        press(key);
    EXPECT_EQ(window.vm->project().tempo, 90);
    EXPECT_TRUE(number.hasFocus());
    press(Qt::Key_Tab);
    EXPECT_TRUE(window.control("Increase tempo").hasFocus());
}

TEST(TransportView, DrivesTheModelAndShowsIt) {
    WindowHarness window;
    for (const char* name : {"Play", "Decrease tempo", "Loop", "Bars 16", "Grid 1/8"})
        window.control(name).click();
    EXPECT_TRUE(window.control("Play").isChecked());
    window.control("Play").click();
    EXPECT_TRUE(window.vm->isPlaying()) << "a click starts anew";
    EXPECT_EQ(window.vm->project(),
              (Project{.tempo = 119, .bars = 16, .grid = GridDivision::eighth, .loop = false}));
    EXPECT_TRUE(window.control("Bars 16").isChecked());
    EXPECT_FALSE(window.control("Bars 4").isChecked());
    for (const double zoom : {0.75, 0.6, 0.6}) {
        window.control("Zoom out").click();
        EXPECT_DOUBLE_EQ(window.view.zoom(), zoom);
    }
}

TEST(TransportView, ShowsWhatThePointerIsOver) {
    WindowHarness window;
    for (const char* name : {"Stop", "Bars 1", "Zoom in"}) {
        QWidget& button = window.control(name);
        const auto face = [&] {
            QTest::qWait(0);
            return colorAt(render(window.view, 1), button.mapTo(&window.view, QPoint(3, 3)));
        };
        EXPECT_EQ(face(), Palette::panel) << name;
        QTest::mouseMove(&button, {3, 3});
        EXPECT_EQ(face(), Palette::line) << name;
        QTest::mouseMove(&window.roll());
    }
}

} // namespace
} // namespace mossbit
