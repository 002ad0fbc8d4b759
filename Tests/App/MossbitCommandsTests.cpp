#include "App/MossbitCommands.h"

#include "Tests/Support/ViewModelHarness.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QTest>

#include <string>
#include <vector>

namespace mossbit {
namespace {

struct MenuBar {
    ViewModelHarness harness;
    std::unique_ptr<ProjectViewModel> vm = harness.start();
    QMainWindow window;

    MenuBar() {
        new MossbitCommands(*vm, window);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    QAction& item(const QString& title) {
        for (QAction* action : window.findChildren<QAction*>())
            if (action->text() == title && action->menu() == nullptr)
                return *action;
        throw std::runtime_error("no item " + title.toStdString());
    }
};

/// "menu: title shortcut, …" with "-" for a separator.
std::string content(const QMenu& menu) {
    QString text = menu.title().remove('&') + ':';
    for (const QAction* action : menu.actions()) {
        const QString keys = QKeySequence::listToString(action->shortcuts());
        text += ' ' + (action->isSeparator() ? QString('-') : action->text());
        text += keys.isEmpty() ? QString() : QString(" [%1]").arg(keys);
    }
    return text.toStdString();
}

TEST(MossbitCommands, ListsItsItemsWithTheirKeys) {
    MenuBar bar;
    std::vector<std::string> menus;
    for (const QAction* action : bar.window.menuBar()->actions())
        menus.push_back(content(*action->menu()));
    EXPECT_EQ(menus,
              (std::vector<std::string>{
                  "File: New [Ctrl+N] Open… [Ctrl+O] - Save [Ctrl+S] Save As… [Ctrl+Shift+S] - "
                  "Export WAV… [Ctrl+E] - Close [Ctrl+W] Quit [Ctrl+Q]",
                  "Edit: Undo [Ctrl+Z] Redo [Ctrl+Shift+Z] - Delete Note [Backspace; Del] "
                  "Select All Notes [Ctrl+A]",
                  "Playback: Play [Space] Toggle Loop [Ctrl+L] - Select PULSE 1 [Ctrl+1] "
                  "Select PULSE 2 [Ctrl+2] Select WAVE [Ctrl+3] Select NOISE [Ctrl+4]",
                  "Help: About Mossbit"}));
}

TEST(MossbitCommands, DimsWhatCannotBeDone) {
    MenuBar bar;
    const auto enabled = [&] {
        std::string titles;
        for (const char* title : {"Undo", "Redo", "Delete Note", "Select All Notes", "Play"})
            titles += bar.item(title).isEnabled() ? std::string(title) + ", " : "";
        return titles;
    };
    EXPECT_EQ(enabled(), "Select All Notes, Play, ");
    bar.vm->addNote(60, 0);
    EXPECT_EQ(enabled(), "Undo, Delete Note, Select All Notes, Play, ");
    bar.vm->setEditingText(true);
    EXPECT_EQ(enabled(), "Undo, ");
    bar.vm->setEditingText(false);
    bar.vm->undo();
    EXPECT_EQ(enabled(), "Redo, Select All Notes, Play, ");
}

TEST(MossbitCommands, FileItemsReachTheViewModel) {
    MenuBar bar;
    bar.vm->addNote(60, 0);
    for (const char* title : {"Save", "Save As…", "Export WAV…", "New", "Open…"})
        bar.item(title).trigger();
    const std::string prompt = "alert Save changes to Untitled?";
    EXPECT_EQ(bar.harness.dialogs.takeShown(),
              (std::vector<std::string>{"save Untitled.mossbit", "save Untitled.mossbit",
                                        "save wav Untitled.wav", prompt, prompt}));
    EXPECT_TRUE(bar.window.isVisible());
    bar.item("Close").trigger();
    EXPECT_FALSE(bar.window.isVisible());
}

} // namespace
} // namespace mossbit
