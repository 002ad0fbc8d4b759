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
    QMenuBar& bar = *m_window.menuBar();
    addFileMenu(*bar.addMenu(tr("&File")));
    addEditMenu(*bar.addMenu(tr("&Edit")));
    addPlaybackMenu(*bar.addMenu(tr("&Playback")));
    fillHelpMenu(*bar.addMenu(tr("&Help")), vm, window);
    for (QAction* const action : bar.findChildren<QAction*>()) {
        // A key held down gives one command; the space bar must not stutter between play and stop.
        action->setAutoRepeat(action == m_undo || action == m_redo);
        // Otherwise macOS moves items about by the words in their titles.
        if (action->menuRole() == QAction::TextHeuristicRole)
            action->setMenuRole(QAction::NoRole);
    }
    for (const auto changed :
         {&ProjectViewModel::isPlayingChanged, &ProjectViewModel::isEditingTextChanged,
          &ProjectViewModel::selectionChanged, &ProjectViewModel::historyChanged})
        connect(&vm, changed, this, &MossbitCommands::followViewModel);
    followViewModel();
}

void MossbitCommands::addFileMenu(QMenu& menu) {
    using Model = ProjectViewModel;
    menu.addAction(tr("New"), Qt::CTRL | Qt::Key_N, &m_vm, &Model::newProject);
    menu.addAction(tr("Open…"), Qt::CTRL | Qt::Key_O, &m_vm, qOverload<>(&Model::open));
    menu.addSeparator();
    menu.addAction(tr("Save"), Qt::CTRL | Qt::Key_S, &m_vm, &Model::save);
    menu.addAction(tr("Save As…"), Qt::CTRL | Qt::SHIFT | Qt::Key_S, &m_vm, &Model::saveAs);
    menu.addSeparator();
    menu.addAction(tr("Export WAV…"), Qt::CTRL | Qt::Key_E, &m_vm, &Model::exportWAV);
    menu.addSeparator();
    menu.addAction(tr("Close"), Qt::CTRL | Qt::Key_W, &m_window, &QWidget::close);
    menu.addAction(tr("Quit"), Qt::CTRL | Qt::Key_Q, qApp, &QCoreApplication::quit)
        ->setMenuRole(QAction::QuitRole);
}

void MossbitCommands::addEditMenu(QMenu& menu) {
    using Model = ProjectViewModel;
    m_undo = menu.addAction(tr("Undo"), Qt::CTRL | Qt::Key_Z, &m_vm, &Model::undo);
    m_redo = menu.addAction(tr("Redo"), Qt::CTRL | Qt::SHIFT | Qt::Key_Z, &m_vm, &Model::redo);
    menu.addSeparator();
    m_deleteNote = menu.addAction(tr("Delete Note"), &m_vm, &Model::deleteSelection);
    m_deleteNote->setShortcuts({Qt::Key_Backspace, Qt::Key_Delete});
    m_selectAll =
        menu.addAction(tr("Select All Notes"), Qt::CTRL | Qt::Key_A, &m_vm, &Model::selectAll);
}

void MossbitCommands::addPlaybackMenu(QMenu& menu) {
    m_play = menu.addAction(tr("Play"), Qt::Key_Space, this,
                            [this] { m_vm.isPlaying() ? m_vm.stop() : m_vm.play(); });
    menu.addAction(tr("Toggle Loop"), Qt::CTRL | Qt::Key_L, &m_vm, &ProjectViewModel::toggleLoop);
    menu.addSeparator();
    for (const ChannelKind kind : allChannelKinds) {
        const int index = static_cast<int>(kind);
        menu.addAction(tr("Select %1").arg(title(kind)),
                       QKeyCombination(Qt::CTRL, static_cast<Qt::Key>(Qt::Key_1 + index)), this,
                       [this, index] { m_vm.setSelectedChannelIndex(index); });
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
