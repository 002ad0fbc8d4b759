#pragma once

#include <QObject>

class QAction;
class QKeySequence;
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
    using Operation = void (ProjectViewModel::*)();

    void addFileMenu();
    void addEditMenu();
    void addPlaybackMenu();
    QAction* add(QMenu& menu, const QString& title, const QKeySequence& shortcut,
                 Operation operation);
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
