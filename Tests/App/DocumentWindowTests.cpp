#include "App/DocumentWindow.h"

#include "Tests/Support/ViewModelHarness.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QDropEvent>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>
#include <QWindow>

namespace mossbit {
namespace {

struct Window {
    ViewModelHarness harness;
    std::unique_ptr<ProjectViewModel> vm = harness.start();
    DocumentWindow window{*vm};

    Window() {
        window.show();
        EXPECT_TRUE(QTest::qWaitForWindowExposed(&window));
    }
};

TEST(DocumentWindow, IsTitledWithTheDocument) {
    Window shown;
    const auto title = [&] { return shown.window.windowHandle()->title().toStdString(); };
    for (const char* name : {"my.song", "[*] & <b>", "[*][*]"}) {
        shown.harness.dialogs.saveAnswers = {shown.harness.folder /
                                             (std::string(name) + ".mossbit")};
        shown.vm->saveAs();
        EXPECT_EQ(title(), name);
        shown.vm->addNote(61, 0);
        EXPECT_EQ(title(), std::string(name) + " •");
    }
}

TEST(DocumentWindow, LeavesTheKeyboardToAnOpenDialog) {
    Window shown;
    QDialog dialog(&shown.window);
    dialog.open();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    shown.window.bringToFront();
    QCoreApplication::processEvents();
    EXPECT_TRUE(dialog.isActiveWindow());
}

TEST(DocumentWindow, AsksBeforeClosingOnlyWhereNothingBringsTheWorkBack) {
    for (const bool asks : {false, true}) {
        Window shown;
        shown.window.setAsksBeforeClosing(asks);
        shown.vm->addNote(60, 0);
        EXPECT_EQ(shown.window.close(), !asks);
        EXPECT_EQ(shown.harness.dialogs.takeShown().size(), asks ? 1 : 0);
        shown.harness.dialogs.alertAnswers = {1};
        EXPECT_TRUE(shown.window.close());
    }
}

TEST(DocumentWindow, TakesTheFirstOfTheFilesDroppedOnIt) {
    Window shown;
    QSignalSpy dropped(&shown.window, &DocumentWindow::fileDropped);
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile("/a b.mossbit"), QUrl::fromLocalFile("/c.mossbit")});
    QMimeData text;
    text.setText("words");
    for (const QMimeData* data : {&files, &text}) {
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, data, Qt::LeftButton, {});
        enter.setAccepted(false);
        QApplication::sendEvent(&shown.window, &enter);
        EXPECT_EQ(enter.isAccepted(), data == &files);
    }
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &files, Qt::LeftButton, {});
    QApplication::sendEvent(&shown.window, &drop);
    ASSERT_EQ(dropped.size(), 1);
    EXPECT_EQ(dropped[0][0].toString(), "file:///a%20b.mossbit");
}

} // namespace
} // namespace mossbit
