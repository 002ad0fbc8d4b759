#include "App/FilePaths.h"
#include "App/KeyRepeatGuard.h"
#include "Tests/Support/WindowHarness.h"

#include <QAction>
#include <QDropEvent>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMimeData>
#include <QSignalSpy>
#include <QWindow>

#include <tuple>

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

/// The window and its menu bar.
struct ShownWindow : testing::Test, WindowHarness {
    QAction& item(const QString& title) const {
        for (QAction* action : window.menuBar()->findChildren<QAction*>())
            if (action->text() == title)
                return *action;
        throw std::out_of_range(title.toStdString());
    }
};

TEST_F(ShownWindow, IsTitledWithTheDocument) {
    const auto title = [&] { return window.windowHandle()->title().toStdString(); };
    for (const std::string name : {"[*] & <b>", "[*][*]"}) {
        system.dialogs.saveAnswers = {system.folder / (name + ".mossbit")};
        vm->saveAs();
        EXPECT_EQ(title(), name);
        vm->addNote(61, 0);
        EXPECT_EQ(title(), name + " •");
    }
}

TEST_F(ShownWindow, TakesTheFirstOfTheFilesDroppedOnIt) {
    QSignalSpy dropped(&window, &DocumentWindow::fileDropped);
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile("/a b.mossbit"), QUrl::fromLocalFile("/c.mossbit")});
    QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &files, Qt::LeftButton, {});
    enter.setAccepted(false);
    QApplication::sendEvent(&window, &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &files, Qt::LeftButton, {});
    QApplication::sendEvent(&window, &drop);
    ASSERT_EQ(dropped.size(), 1);
    EXPECT_EQ(dropped[0][0].toString(), "file:///a%20b.mossbit");
}

TEST_F(ShownWindow, ListsEveryCommandWithItsKeys) {
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

TEST_F(ShownWindow, DimsWhatCannotBeDone) {
    const auto enabled = [&] {
        std::string titles;
        for (const char* title : {"Undo", "Redo", "Delete Note", "Select All Notes", "Play"})
            titles += item(title).isEnabled() ? std::string(title) + ", " : "";
        return titles;
    };
    EXPECT_EQ(enabled(), "Select All Notes, Play, ");
    vm->addNote(60, 0);
    EXPECT_EQ(enabled(), "Undo, Delete Note, Select All Notes, Play, ");
    vm->setEditingText(true);
    EXPECT_EQ(enabled(), "Undo, ");
    vm->setEditingText(false);
    vm->undo();
    EXPECT_EQ(enabled(), "Redo, Select All Notes, Play, ");
}

TEST(KeyRepeatGuard, MarksARepetitionThatQtTookForANewPress) {
    const KeyRepeatGuard guard;
    struct Receiver : QWidget {
        bool isRepeated = false;
        void keyPressEvent(QKeyEvent* event) override { isRepeated = event->isAutoRepeat(); }
    } receiver;
    const auto send = [&](QEvent::Type type, quint32 scanCode, quint64 time) {
        QKeyEvent event(type, Qt::Key_F, {}, scanCode, 0, 0);
        event.setTimestamp(time);
        event.ignore();
        QApplication::sendEvent(&receiver, &event);
        return event.isAccepted();
    };
    for (const auto& [scanCode, time, isRepeated] :
         {std::tuple(52, 1000, true), {52, 1001, false}, {53, 1000, false}}) {
        send(QEvent::KeyRelease, 52, 1000);
        EXPECT_EQ(send(QEvent::ShortcutOverride, scanCode, time), isRepeated) << "no shortcut's";
        send(QEvent::KeyPress, scanCode, time);
        EXPECT_EQ(receiver.isRepeated, isRepeated);
    }
}

TEST_F(ShownWindow, OpensExamplesAsUntitledCopies) {
    QAction& first = *item("Open Example").menu()->actions().first();
    EXPECT_EQ(first.text(), "A Beginning");
    vm->addNote(60, 0);
    first.trigger();
    EXPECT_EQ(system.dialogs.takeShown().size(), 1U) << "the note is not lost";
    EXPECT_EQ(vm->selectedChannel().notes.size(), 1U);
    vm->deleteSelection();
    first.trigger();
    EXPECT_GT(vm->selectedChannel().notes.size(), 1U);
    EXPECT_FALSE(vm->fileURL());
    EXPECT_FALSE(vm->hasUnsavedChanges());
    EXPECT_EQ(ProjectStore::read(system.autosave), vm->project());
}

TEST_F(ShownWindow, ShowsTheMouseAndAllKeys) {
    item("Mouse and Keys").trigger();
    const auto* box = window.findChild<QMessageBox*>();
    ASSERT_NE(box, nullptr);
    for (const char* text : {"drag its right end", "<td>Ctrl+L</td>", "<td>Backspace, Del</td>"})
        EXPECT_TRUE(box->text().contains(text)) << box->text().toStdString();
}

TEST_F(ShownWindow, FileItemsReachTheViewModel) {
    vm->addNote(60, 0);
    for (const char* title : {"Save", "Save As…", "Export WAV…", "New", "Open…"})
        item(title).trigger();
    const std::string prompt = "alert Save changes to Untitled?";
    EXPECT_EQ(system.dialogs.takeShown(),
              (std::vector<std::string>{"save Untitled.mossbit", "save Untitled.mossbit",
                                        "save wav Untitled.wav", prompt, prompt}));
    system.failure = EROFS;
    item("Close").trigger();
    EXPECT_EQ(system.dialogs.takeShown().size(), 1U) << "no autosave has the note";
    EXPECT_TRUE(window.isVisible());
    system.failure = 0;
    item("Close").trigger();
    EXPECT_FALSE(window.isVisible());
}

} // namespace
} // namespace mossbit
