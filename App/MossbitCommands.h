#pragma once

#include <QObject>

class QAction;
class QMainWindow;
class QMenu;

namespace mossbit {

class ProjectViewModel;

/// The menu bar. Its items carry all of the program's keyboard shortcuts.
class MossbitCommands : public QObject {
    Q_OBJECT

public:
    /// Fills the window's menu bar; belongs to the window.
    MossbitCommands(ProjectViewModel& vm, QMainWindow& window);

private:
    void addFileMenu(QMenu& menu);
    void addEditMenu(QMenu& menu);
    void addPlaybackMenu(QMenu& menu);
    void followViewModel();

    ProjectViewModel& m_vm;
    QMainWindow& m_window;
    QAction* m_undo = nullptr;
    QAction* m_redo = nullptr;
    QAction* m_deleteNote = nullptr;
    QAction* m_selectAll = nullptr;
    QAction* m_play = nullptr;
};

} // namespace mossbit
