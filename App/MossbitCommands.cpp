#include "App/MossbitCommands.h"

#include "App/HelpMenu.h"
#include "ViewModels/ProjectViewModel.h"
#include "Views/DisplayNames.h"

#include <QAction>
#include <QCoreApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>

namespace mossbit {

MossbitCommands::MossbitCommands(ProjectViewModel& vm, QMainWindow& window)
    : QObject(&window), m_vm(vm), m_window(window) {
    addFileMenu();
    addEditMenu();
    addPlaybackMenu();
    fillHelpMenu(*m_window.menuBar()->addMenu(tr("&Help")), vm, window);
    for (const auto changed :
         {&ProjectViewModel::isPlayingChanged, &ProjectViewModel::isEditingTextChanged,
          &ProjectViewModel::selectionChanged, &ProjectViewModel::historyChanged})
        connect(&vm, changed, this, &MossbitCommands::followViewModel);
    followViewModel();
}

QAction* MossbitCommands::add(QMenu& menu, const QString& title, const QKeySequence& shortcut,
                              Operation operation) {
    QAction* const action = menu.addAction(title, &m_vm, operation);
    action->setShortcut(shortcut);
    // A key held down gives one command, not an undo step for each repetition.
    action->setAutoRepeat(false);
    // Otherwise macOS moves items about by the words in their titles.
    action->setMenuRole(QAction::NoRole);
    return action;
}

void MossbitCommands::addFileMenu() {
    QMenu& menu = *m_window.menuBar()->addMenu(tr("&File"));
    add(menu, tr("New"), Qt::CTRL | Qt::Key_N, &ProjectViewModel::newProject);
    // Chosen among the overloads of `open`.
    const Operation open = &ProjectViewModel::open;
    add(menu, tr("Open…"), Qt::CTRL | Qt::Key_O, open);
    menu.addSeparator();
    add(menu, tr("Save"), Qt::CTRL | Qt::Key_S, &ProjectViewModel::save);
    add(menu, tr("Save As…"), Qt::CTRL | Qt::SHIFT | Qt::Key_S, &ProjectViewModel::saveAs);
    menu.addSeparator();
    add(menu, tr("Export WAV…"), Qt::CTRL | Qt::Key_E, &ProjectViewModel::exportWAV);
    menu.addSeparator();
    QAction* const close = menu.addAction(tr("Close"), &m_window, &QWidget::close);
    close->setShortcut(Qt::CTRL | Qt::Key_W);
    QAction* const quit = menu.addAction(tr("Quit"), qApp, &QCoreApplication::quit);
    quit->setShortcut(Qt::CTRL | Qt::Key_Q);
    quit->setMenuRole(QAction::QuitRole);
}

void MossbitCommands::addEditMenu() {
    QMenu& menu = *m_window.menuBar()->addMenu(tr("&Edit"));
    m_undo = add(menu, tr("Undo"), Qt::CTRL | Qt::Key_Z, &ProjectViewModel::undo);
    m_redo = add(menu, tr("Redo"), Qt::CTRL | Qt::SHIFT | Qt::Key_Z, &ProjectViewModel::redo);
    for (QAction* const action : {m_undo, m_redo})
        action->setAutoRepeat(true);
    menu.addSeparator();
    m_deleteNote =
        add(menu, tr("Delete Note"), Qt::Key_Backspace, &ProjectViewModel::deleteSelection);
    m_deleteNote->setShortcuts({Qt::Key_Backspace, Qt::Key_Delete});
    m_selectAll =
        add(menu, tr("Select All Notes"), Qt::CTRL | Qt::Key_A, &ProjectViewModel::selectAll);
}

void MossbitCommands::addPlaybackMenu() {
    QMenu& menu = *m_window.menuBar()->addMenu(tr("&Playback"));
    m_play =
        menu.addAction(tr("Play"), this, [this] { m_vm.isPlaying() ? m_vm.stop() : m_vm.play(); });
    m_play->setShortcut(Qt::Key_Space);
    // A held space bar must not stutter between the two.
    m_play->setAutoRepeat(false);
    m_play->setMenuRole(QAction::NoRole);
    add(menu, tr("Toggle Loop"), Qt::CTRL | Qt::Key_L, &ProjectViewModel::toggleLoop);
    menu.addSeparator();
    for (const ChannelKind kind : allChannelKinds) {
        const int index = static_cast<int>(kind);
        QAction* const select =
            menu.addAction(tr("Select %1").arg(title(kind)), this,
                           [this, index] { m_vm.setSelectedChannelIndex(index); });
        select->setShortcut(QKeyCombination(Qt::CTRL, static_cast<Qt::Key>(Qt::Key_1 + index)));
        select->setMenuRole(QAction::NoRole);
    }
}

void MossbitCommands::followViewModel() {
    const bool editingText = m_vm.isEditingText();
    m_undo->setEnabled(m_vm.canUndo());
    m_redo->setEnabled(m_vm.canRedo());
    // While a text field is open, these keys are for the field.
    m_deleteNote->setEnabled(!editingText && !m_vm.selection().empty());
    m_selectAll->setEnabled(!editingText);
    m_play->setEnabled(!editingText);
    m_play->setText(m_vm.isPlaying() ? tr("Stop") : tr("Play"));
}

} // namespace mossbit
