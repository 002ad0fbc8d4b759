#include "Tests/Support/WindowHarness.h"

#include <QContextMenuEvent>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QTest>
#include <gtest/gtest.h>

namespace mossbit {
namespace {

struct TempoField : testing::Test, WindowHarness {
    QLineEdit& field = control<QLineEdit>("Tempo in beats per minute");

    /// Opens the field and types over the number in it.
    void type(const QString& text) {
        control(QString("Tempo %1").arg(vm->project().tempo)).click();
        QApplication::processEvents();
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
        QTest::keyClick(&field, Qt::Key_Return);
        EXPECT_EQ(vm->project().tempo, tempo) << typed;
    }
}

TEST_F(TempoField, CommitsWhenTheFocusIsElsewhereInTheWindow) {
    type("150");
    QMenuBar menuBar(&view);
    menuBar.setFocus(Qt::MenuBarFocusReason);
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

TEST_F(TempoField, FollowsOtherChangesUntilSomethingIsTyped) {
    type("");
    control("Increase tempo").click();
    EXPECT_EQ(field.text(), "121");
    QTest::keyClicks(&field, "90");
    control("Increase tempo").click();
    EXPECT_EQ(field.text(), "90");
}

TEST_F(TempoField, DoesNotCommitIntoANewDocumentNorOnEscape) {
    type("150");
    // As while a dialog asks about unsaved work.
    QDialog dialog(&view);
    dialog.show();
    dialog.activateWindow();
    QApplication::processEvents();
    vm->newProject();
    EXPECT_FALSE(vm->isEditingText());
    EXPECT_EQ(view.focusWidget(), &roll());
    dialog.close();

    type("150");
    QTest::keyClick(&field, Qt::Key_Escape);
    EXPECT_FALSE(field.isVisible());
    EXPECT_EQ(vm->project().tempo, 120);
    EXPECT_FALSE(vm->canUndo());
}

TEST_F(TempoField, GivesTheFocusBackToTheNumberThatReturnOpened) {
    auto& number = control("Tempo 120");
    number.setFocus(Qt::TabFocusReason);
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_9, Qt::Key_0, Qt::Key_Return})
        QTest::keyClick(QApplication::focusWidget(), key);
    EXPECT_EQ(vm->project().tempo, 90);
    EXPECT_TRUE(number.hasFocus());
    QTest::keyClick(&number, Qt::Key_Tab);
    EXPECT_TRUE(control("Increase tempo").hasFocus());
}

} // namespace
} // namespace mossbit
