#include "Tests/Support/WindowHarness.h"

#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <gtest/gtest.h>

namespace mossbit {
namespace {

TEST(MainView, HintsWhileThereIsNoNote) {
    WindowHarness window;
    QWidget& hint = window.view.hint();
    EXPECT_TRUE(hint.isVisible());
    EXPECT_LE((hint.geometry().center() - window.roll().geometry().center()).manhattanLength(), 1);
    const QPoint point = hint.geometry().center();
    EXPECT_EQ(window.view.childAt(point), &window.canvas()) << "presses reach the grid";
    QTest::mouseClick(&window.canvas(), Qt::LeftButton, {},
                      window.canvas().mapFrom(&window.view, point));
    EXPECT_FALSE(hint.isVisible());
    window.vm->undo();
    EXPECT_TRUE(hint.isVisible());
    window.vm->setSelectedChannelIndex(3);
    window.vm->addNote(0, 0);
    window.vm->setSelectedChannelIndex(0);
    EXPECT_FALSE(hint.isVisible());
}

TEST(MainView, ShowsMessagesAfterTheCommandThatFailed) {
    WindowHarness window;
    for (int round = 0; round < 2; ++round) {
        window.vm->open(window.system.folder / "<b>missing</b>.mossbit");
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr) << "not inside the command";
        QApplication::processEvents();
        auto* alert = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_NE(alert, nullptr);
        EXPECT_EQ(alert->windowTitle(), QStringLiteral("Mossbit"));
        EXPECT_EQ(alert->text().toStdString(), window.vm->alertMessage());
        EXPECT_EQ(alert->textFormat(), Qt::PlainText);
        ASSERT_EQ(alert->buttons().size(), 1);
        EXPECT_EQ(alert->buttons()[0]->text(), QStringLiteral("OK"));
        if (round == 0)
            alert->buttons()[0]->click();
        else
            QTest::keyClick(alert, Qt::Key_Escape);
        EXPECT_FALSE(window.vm->alertMessage());
        QApplication::processEvents();
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    }
}

} // namespace
} // namespace mossbit
