#include "App/AppDelegate.h"

#include "App/FilePaths.h"
#include "ViewModels/ProjectViewModel.h"

#include <QFileOpenEvent>

#include <utility>

namespace mossbit {

AppDelegate::AppDelegate(std::function<void()> activate) : m_activate(std::move(activate)) {}

void AppDelegate::applicationDidFinishLaunching() {
    m_activate();
}

void AppDelegate::applicationWillTerminate() {
    if (ProjectViewModel* const viewModel = std::exchange(m_viewModel, nullptr))
        viewModel->flushAutosave();
}

void AppDelegate::open(const std::filesystem::path& url) {
    if (m_viewModel == nullptr) {
        m_heldURL = url;
        return;
    }
    // The window comes to the front first, because the prompt about unsaved work belongs to it.
    m_activate();
    m_viewModel->openHandedOver(url);
}

void AppDelegate::setViewModel(ProjectViewModel& viewModel) {
    m_viewModel = &viewModel;
    if (m_heldURL)
        open(*m_heldURL);
}

bool AppDelegate::eventFilter(QObject*, QEvent* event) {
    if (event->type() != QEvent::FileOpen)
        return false;
    open(toPath(static_cast<QFileOpenEvent*>(event)->url()));
    return true;
}

} // namespace mossbit
