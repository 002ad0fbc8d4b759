#include "App/MossbitApp.h"

#include "App/DocumentWindow.h"
#include "App/EndSignals.h"
#include "App/FilePaths.h"
#include "Platform/FileLock.h"
#include "Platform/SdlAudioOutput.h"
#include "Platform/SystemLog.h"
#include "Services/ProjectStore.h"
#include "Services/RecoveryFiles.h"

#include <QApplication>
#include <QSessionManager>
#include <QStandardPaths>

#include <cstdlib>

namespace mossbit {

MossbitApp::MossbitApp() : m_delegate([this] { m_window->bringToFront(); }) {}

MossbitApp::~MossbitApp() = default;

int MossbitApp::run(const std::vector<std::filesystem::path>& files) {
    QString address;
    if (!files.empty()) {
        // The delegate opens it once the window has appeared.
        const std::filesystem::path file = handedOverPath(files.front());
        m_delegate.open(file);
        address = addressOf(file);
    }
    followTheSystem();
    if (m_bus.handOverOrJoin(address))
        return 0;
    makeDocument();
    showWindow();
    return QApplication::exec();
}

void MossbitApp::followTheSystem() {
    QApplication::setQuitOnLastWindowClosed(
        m_delegate.applicationShouldTerminateAfterLastWindowClosed());
    qApp->installEventFilter(&m_delegate);
    QObject::connect(qApp, &QCoreApplication::aboutToQuit, &m_delegate, [this] { terminate(); });
    // The session may end the process without another word.
    QObject::connect(
        qApp, &QGuiApplication::commitDataRequest, &m_delegate,
        [this](QSessionManager&) {
            if (m_viewModel)
                m_viewModel->flushAutosave();
        },
        Qt::DirectConnection);
    atEndSignal([this] {
        terminate();
        // Not through the main loop: a native dialog may run a nested one that never ends, and a
        // sound server that hangs would be waited for.
        std::_Exit(EXIT_SUCCESS);
    });
    QObject::connect(
        &m_bus, &SessionBus::requested, &m_delegate,
        [this](const QStringList& uris) {
            if (!uris.isEmpty())
                m_delegate.open(handedOverPath(toPath(uris.first())));
            else if (m_window)
                m_window->bringToFront();
        },
        Qt::QueuedConnection);
}

void MossbitApp::terminate() {
    // From here on, a double-click on a song starts a new process.
    m_bus.leave();
    m_delegate.applicationWillTerminate();
}

void MossbitApp::makeDocument() {
    // First: its worker asks for the device's rate while the song is read.
    m_audioOutput = sdlAudioOutput();
    const std::filesystem::path autosave = ProjectStore::autosaveURL(
        toPath(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)));
    // Waits for a process that has just been closed and is still saving. One that goes on running
    // keeps the autosave; the view model takes it over when that process ends.
    FileLock(RecoveryFiles::lockFile(autosave)).claim(std::chrono::seconds(2));
    const ViewModelServices services = {m_mainLoop, m_dialogs, m_files, *m_audioOutput,
                                        writeSystemLog};
    m_viewModel = std::make_unique<ProjectViewModel>(services, std::nullopt, autosave);
}

void MossbitApp::showWindow() {
    m_window = std::make_unique<DocumentWindow>(*m_viewModel);
    m_dialogs.setParentWindow(m_window.get());
    // The connection is queued, because a prompt must not keep the drop's sender waiting.
    QObject::connect(
        m_window.get(), &DocumentWindow::fileDropped, &m_delegate,
        [this](const QString& address) { m_delegate.open(handedOverPath(toPath(address))); },
        Qt::QueuedConnection);
    m_delegate.applicationDidFinishLaunching();
    // Once the loop runs, the window has appeared and may show a message.
    QMetaObject::invokeMethod(
        &m_delegate, [this] { m_delegate.setViewModel(*m_viewModel); }, Qt::QueuedConnection);
}

} // namespace mossbit
