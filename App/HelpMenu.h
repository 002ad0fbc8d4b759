#pragma once

class QMainWindow;
class QMenu;

namespace mossbit {

class ProjectViewModel;

/// Fills the Help menu of a window whose other menus are complete.
void fillHelpMenu(QMenu& menu, ProjectViewModel& vm, QMainWindow& window);

} // namespace mossbit
