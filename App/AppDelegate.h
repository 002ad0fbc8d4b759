#pragma once

#include <QObject>

#include <filesystem>
#include <functional>
#include <optional>

namespace mossbit {

class ProjectViewModel;

/// Acts on what the system tells the application.
class AppDelegate : public QObject {
    Q_OBJECT

public:
    /// `activate` brings the window to the front.
    explicit AppDelegate(std::function<void()> activate);

    void applicationDidFinishLaunching();
    bool applicationShouldTerminateAfterLastWindowClosed() const { return true; }
    /// Saves everything. Does so once, however many ways of ending come together.
    void applicationWillTerminate();

    /// Opens a file that the system hands over; before there is a view model, as soon as there is
    /// one.
    void open(const std::filesystem::path& url);

    /// The window has appeared; from now on there is a document to act on.
    void setViewModel(ProjectViewModel& viewModel);

protected:
    /// Takes the files that the desktop hands to the application as events.
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    std::function<void()> m_activate;
    ProjectViewModel* m_viewModel = nullptr;
    std::optional<std::filesystem::path> m_heldURL;
};

} // namespace mossbit
