#include "App/DocumentWindow.h"
#include "App/KeyRepeatGuard.h"

#include "App/FilePaths.h"
#include "Tests/Support/ViewModelHarness.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDropEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>
#include <QWindow>

#include <stdexcept>
#include <string>
#include <vector>

namespace mossbit {
namespace {

TEST(HandedOverPath, TakesPathsAndAddressesOfFilesHere) {
    const std::string folder = std::filesystem::current_path().string() + '/';
    const std::pair<std::string, std::string> cases[] = {
        {"a b.mossbit", folder + "a b.mossbit"},
        {"file:caf%E9.mossbit", folder + "caf\xe9.mossbit"},
        {"file://localhost/a%20%23.mossbit", "/a #.mossbit"},
        {"file://elsewhere/a.mossbit", folder + "file://elsewhere/a.mossbit"},
        {"http://example.org/a.mossbit", folder + "http://example.org/a.mossbit"},
    };
    for (const auto& [text, file] : cases)
        EXPECT_EQ(handedOverPath(text), file);
}

struct ShownWindow : ViewModelTest {
    DocumentWindow window{*model};

    void SetUp() override {
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }
};

TEST_F(ShownWindow, IsTitledWithTheDocument) {
    const auto title = [&] { return window.windowHandle()->title().toStdString(); };
    for (const std::string name : {"[*] & <b>", "[*][*]"}) {
        harness.dialogs.saveAnswers = {harness.folder / (name + ".mossbit")};
        model->saveAs();
        EXPECT_EQ(title(), name);
        model->addNote(61, 0);
        EXPECT_EQ(title(), name + " •");
    }
}

TEST_F(ShownWindow, LeavesTheKeyboardToAnOpenDialog) {
    QDialog dialog(&window);
    dialog.open();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&dialog));
    window.bringToFront();
    QCoreApplication::processEvents();
    EXPECT_TRUE(dialog.isActiveWindow());
}

TEST_F(ShownWindow, AsksBeforeClosingOnlyWithoutAutosave) {
    model->addNote(60, 0);
    EXPECT_TRUE(window.close());
    harness.failure = EROFS;
    window.show();
    EXPECT_FALSE(window.close());
    EXPECT_EQ(harness.dialogs.shown.size(), 1U);
}

TEST_F(ShownWindow, TakesTheFirstOfTheFilesDroppedOnIt) {
    QSignalSpy dropped(&window, &DocumentWindow::fileDropped);
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile("/a b.mossbit"), QUrl::fromLocalFile("/c.mossbit")});
    QMimeData text;
    text.setText("words");
    for (const QMimeData* data : {&files, &text}) {
        QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, data, Qt::LeftButton, {});
        enter.setAccepted(false);
        QApplication::sendEvent(&window, &enter);
        EXPECT_EQ(enter.isAccepted(), data == &files);
    }
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &files, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &drop);
    ASSERT_EQ(dropped.size(), 1);
    EXPECT_EQ(dropped[0][0].toString(), "file:///a%20b.mossbit");
}

struct MenuBar : ShownWindow {
    QAction& item(const QString& title) const {
        for (const QAction* menu : window.menuBar()->actions())
            for (QAction* action : menu->menu()->actions())
                if (action->text() == title)
                    return *action;
        throw std::runtime_error("no item " + title.toStdString());
    }
};

TEST_F(MenuBar, ListsEveryCommandWithItsKeys) {
    QString list;
    for (const QAction* menu : window.menuBar()->actions()) {
        list += menu->text() + ':';
        for (const QAction* action : menu->menu()->actions())
            list += (action->isSeparator() ? " | " : " " + action->text() + ' ') +
                    QKeySequence::listToString(action->shortcuts()).replace("; ", "/") +
                    (action->autoRepeat() ? " repeated" : "");
        list += '\n';
    }
    EXPECT_EQ(list.simplified().replace(" &", "\n&").toStdString(),
              "&File: New Ctrl+N Open… Ctrl+O | Save Ctrl+S Save As… Ctrl+Shift+S | "
              "Export WAV… Ctrl+E | Close Ctrl+W Quit Ctrl+Q\n"
              "&Edit: Undo Ctrl+Z repeated Redo Ctrl+Shift+Z repeated | Delete Note Backspace/Del "
              "Select All Notes Ctrl+A\n"
              "&Playback: Play Space Toggle Loop Ctrl+L | Select PULSE 1 Ctrl+1 "
              "Select PULSE 2 Ctrl+2 Select WAVE Ctrl+3 Select NOISE Ctrl+4\n"
              "&Help: Mouse and Keys Open Example | About Mossbit");
}

TEST_F(MenuBar, DimsWhatCannotBeDone) {
    const auto enabled = [&] {
        std::string titles;
        for (const char* title : {"Undo", "Redo", "Delete Note", "Select All Notes", "Play"})
            titles += item(title).isEnabled() ? std::string(title) + ", " : "";
        return titles;
    };
    EXPECT_EQ(enabled(), "Select All Notes, Play, ");
    model->addNote(60, 0);
    EXPECT_EQ(enabled(), "Undo, Delete Note, Select All Notes, Play, ");
    model->setEditingText(true);
    EXPECT_EQ(enabled(), "Undo, ");
    model->setEditingText(false);
    model->undo();
    EXPECT_EQ(enabled(), "Redo, Select All Notes, Play, ");
}

TEST_F(MenuBar, LeavesTheKeysOfTextToTheTempoField) {
    model->addNote(60, 0);
    const auto typeTempo = [&](const QString& text) {
        for (auto* button : window.findChildren<QAbstractButton*>())
            if (button->accessibleName().startsWith("Tempo"))
                button->click();
        QCoreApplication::processEvents();
        QTest::keyClicks(QApplication::focusWidget(), text);
    };
    typeTempo("156 ");
    for (const Qt::Key key : {Qt::Key_Backspace, Qt::Key_Backspace, Qt::Key_Backspace})
        QTest::keyClick(QApplication::focusWidget(), key);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(model->project().tempo, 40) << "1 is below what there is";
    typeTempo("1");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(QApplication::focusWidget(), "90");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(model->project().tempo, 120) << "undo is for the song";
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    EXPECT_EQ(model->project().tempo, 90);
    EXPECT_FALSE(model->isPlaying());
    EXPECT_TRUE(model->project().hasNotes());

    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    EXPECT_TRUE(model->isPlaying());
    EXPECT_TRUE(item("Stop").isEnabled());
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Backspace);
    EXPECT_FALSE(model->project().hasNotes());
}

TEST(KeyRepeatGuard, MarksARepetitionThatQtTookForANewPress) {
    const KeyRepeatGuard guard;
    struct Receiver : QWidget {
        std::string presses;
        void keyPressEvent(QKeyEvent* event) override {
            presses += event->isAutoRepeat() ? "repeated " : "pressed ";
        }
    } receiver;
    /// Returns whether shortcuts may have the key.
    const auto send = [&](QEvent::Type type, quint32 scanCode, quint64 time) {
        QKeyEvent event(type, Qt::Key_F, {}, scanCode, 0, 0);
        event.setTimestamp(time);
        event.ignore();
        QApplication::sendEvent(&receiver, &event);
        return !event.isAccepted();
    };
    const auto isNew = [&](quint32 scanCode, quint64 time) {
        send(QEvent::KeyRelease, 52, 1000);
        const bool mayBeShortcut = send(QEvent::ShortcutOverride, scanCode, time);
        send(QEvent::KeyPress, scanCode, time);
        return mayBeShortcut;
    };
    EXPECT_FALSE(isNew(52, 1000));
    EXPECT_TRUE(isNew(52, 1001));
    EXPECT_TRUE(isNew(53, 1000));
    EXPECT_EQ(receiver.presses, "repeated pressed pressed ");
}

TEST_F(MenuBar, OpensExamplesAsUntitledCopies) {
    QAction& first = *item("Open Example").menu()->actions().first();
    EXPECT_EQ(first.text(), "A Beginning");
    model->addNote(60, 0);
    first.trigger();
    EXPECT_EQ(harness.dialogs.takeShown().size(), 1U) << "the note is not lost";
    EXPECT_EQ(model->selectedChannel().notes.size(), 1U);
    model->deleteSelection();
    first.trigger();
    EXPECT_GT(model->selectedChannel().notes.size(), 1U);
    EXPECT_FALSE(model->fileURL());
    EXPECT_FALSE(model->hasUnsavedChanges());
    EXPECT_EQ(saved(harness.autosave), model->project());
}

TEST_F(MenuBar, ShowsTheMouseAndAllKeys) {
    item("Mouse and Keys").trigger();
    const auto* box = window.findChild<QMessageBox*>();
    ASSERT_NE(box, nullptr);
    for (const char* text : {"drag its right end", "<td>Ctrl+L</td>", "<td>Backspace, Del</td>"})
        EXPECT_TRUE(box->text().contains(text)) << box->text().toStdString();
}

TEST_F(MenuBar, FileItemsReachTheViewModel) {
    model->addNote(60, 0);
    for (const char* title : {"Save", "Save As…", "Export WAV…", "New", "Open…"})
        item(title).trigger();
    const std::string prompt = "alert Save changes to Untitled?";
    EXPECT_EQ(harness.dialogs.takeShown(),
              (std::vector<std::string>{"save Untitled.mossbit", "save Untitled.mossbit",
                                        "save wav Untitled.wav", prompt, prompt}));
    item("Close").trigger();
    EXPECT_FALSE(window.isVisible());
}

} // namespace
} // namespace mossbit
