#include "Tests/Support/WindowHarness.h"

#include <QContextMenuEvent>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>

namespace mossbit {
namespace {

struct TempoField : testing::Test, WindowHarness {
    QLineEdit& field = control<QLineEdit>("Tempo in beats per minute");

    /// Opens the field and types over the number in it.
    void type(const QString& text) {
        control(QString("Tempo %1").arg(vm->project().tempo)).click();
        QTest::keyClicks(&field, text);
    }
};

TEST_F(TempoField, TakesWholeNumbersAndIgnoresTheRest) {
    using Case = std::pair<const char*, int>;
    for (const auto& [typed, tempo] :
         {Case{" 128  ", 128}, Case{"12a", 100}, Case{"1.5", 100}, Case{"-", 100}, Case{" ", 100},
          Case{"+90", 90}, Case{"+-90", 100}, Case{"9223372036854775808", 100}}) {
        vm->setTempo(100);
        type(typed);
        press(Qt::Key_Return);
        EXPECT_EQ(vm->project().tempo, tempo) << typed;
    }
}

TEST_F(TempoField, CommitsWhenTheFocusIsElsewhereInTheWindow) {
    type("150");
    window.menuBar()->setFocus(Qt::MenuBarFocusReason);
    EXPECT_TRUE(field.isVisible());
    roll().setFocus(Qt::MouseFocusReason);
    EXPECT_FALSE(field.isVisible());
    EXPECT_EQ(vm->project().tempo, 150);
}

TEST_F(TempoField, CommitsBeforeTheSongIsWrittenOrAskedAbout) {
    using Model = ProjectViewModel;
    int tempo = 150;
    for (void (*command)(Model&) :
         {+[](Model& model) { model.save(); }, +[](Model& model) { model.saveAs(); },
          +[](Model& model) { model.exportWAV(); }, +[](Model& model) { model.confirmClosing(); },
          +[](Model& model) { model.flushAutosave(); }}) {
        vm->addNote(60, 0);
        type(QString::number(++tempo));
        command(*vm);
        EXPECT_EQ(vm->project().tempo, tempo);
        EXPECT_FALSE(vm->isEditingText());
    }
}

TEST_F(TempoField, OffersNoUndoOfItsOwn) {
    type("150");
    QContextMenuEvent event(QContextMenuEvent::Keyboard, {}, {});
    QApplication::sendEvent(&field, &event);
    const auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_NE(menu, nullptr);
    EXPECT_TRUE(menu->actions().first()->text().startsWith("Cu&t"));
}

TEST_F(TempoField, HasTheKeysOfTextAndLeavesTheOthersToTheSong) {
    vm->addNote(60, 0);
    type("15 ");
    press(Qt::Key_Backspace);
    press(Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(&field, "90");
    EXPECT_FALSE(vm->isPlaying());
    EXPECT_TRUE(vm->project().hasNotes());
    press(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_FALSE(vm->project().hasNotes());
    press(Qt::Key_Return);
    EXPECT_EQ(vm->project().tempo, 90);
    press(Qt::Key_Space);
    EXPECT_TRUE(vm->isPlaying());
}

TEST_F(TempoField, FollowsOtherChangesUntilSomethingIsTyped) {
    type("");
    control("Increase tempo").click();
    EXPECT_EQ(field.text(), "121");
    QTest::keyClicks(&field, "90");
    control("Increase tempo").click();
    EXPECT_EQ(field.text(), "90");
}

TEST_F(TempoField, DoesNotCommitOnEscapeNorIntoANewDocument) {
    type("150");
    press(Qt::Key_Escape);
    EXPECT_FALSE(field.isVisible());
    type("150");
    // As while a dialog asks about unsaved work.
    QDialog dialog(&window);
    dialog.show();
    dialog.activateWindow();
    QApplication::processEvents();
    vm->newProject();
    EXPECT_FALSE(vm->isEditingText());
    EXPECT_EQ(window.focusWidget(), &roll());
    EXPECT_EQ(vm->project().tempo, 120);
    EXPECT_FALSE(vm->canUndo());
}

TEST_F(TempoField, GivesTheFocusBackToTheNumberThatReturnOpened) {
    auto& number = control("Tempo 120");
    number.setFocus(Qt::TabFocusReason);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_9, Qt::Key_0, Qt::Key_Return})
        press(key);
    EXPECT_EQ(vm->project().tempo, 90);
    EXPECT_TRUE(number.hasFocus());
    press(Qt::Key_Tab);
    EXPECT_TRUE(control("Increase tempo").hasFocus());
}

} // namespace
} // namespace mossbit
