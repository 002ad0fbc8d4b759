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

void AppDelegate::open(const std::vector<std::filesystem::path>& urls) {
    if (urls.empty())
        return;
    if (m_viewModel == nullptr) {
        m_heldURLs.push_back(urls.front());
        return;
    }
    // The window comes to the front first, because the prompt about unsaved work belongs to it.
    m_activate();
    m_viewModel->openHandedOver(urls.front());
}

void AppDelegate::setViewModel(ProjectViewModel& viewModel) {
    m_viewModel = &viewModel;
    for (const std::filesystem::path& url : std::exchange(m_heldURLs, {}))
        open({url});
}

bool AppDelegate::eventFilter(QObject*, QEvent* event) {
    if (event->type() != QEvent::FileOpen)
        return false;
    open({toPath(static_cast<QFileOpenEvent*>(event)->url())});
    return true;
}

} // namespace mossbit
