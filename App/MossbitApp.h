#pragma once

#include "App/AppDelegate.h"
#include "App/KeyRepeatGuard.h"
#include "App/SessionBus.h"
#include "Platform/AudioOutput.h"
#include "Platform/PosixAtomicFile.h"
#include "Platform/QtDialogs.h"
#include "Platform/QtMainLoop.h"
#include "ViewModels/ProjectViewModel.h"

#include <filesystem>
#include <memory>
#include <vector>

namespace mossbit {

class DocumentWindow;

/// Puts the program together: one document, one window, and what stands behind them.
class MossbitApp {
public:
    MossbitApp();
    ~MossbitApp();

    /// Runs until the window is closed, or ends at once where another copy takes `files`, the
    /// paths or addresses that the program was started with. Returns the exit status.
    int run(const std::vector<std::filesystem::path>& files);

private:
    void makeDocument();
    void showWindow();
    void followTheSystem();
    void terminate();

    QtMainLoop m_mainLoop;
    QtDialogs m_dialogs;
    PosixAtomicFile m_files;
    SessionBus m_bus;
    AppDelegate m_delegate;
    KeyRepeatGuard m_keyRepeatGuard;
    std::shared_ptr<AudioOutput> m_audioOutput;
    std::unique_ptr<ProjectViewModel> m_viewModel;
    std::unique_ptr<DocumentWindow> m_window;
};

} // namespace mossbit
