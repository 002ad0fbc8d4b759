#include "App/DocumentWindow.h"

#include "App/MossbitCommands.h"
#include "ViewModels/ProjectViewModel.h"
#include "Views/MainView.h"

#include <QApplication>
#include <QCloseEvent>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMenuBar>
#include <QMimeData>
#include <QScreen>
#include <QUrl>

#include <utility>

#if QT_CONFIG(xcb)
#include <xcb/xcb.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string_view>
#endif

namespace mossbit {

namespace {

/// Opening leaves the file where it is: a move would let the sender delete it.
void acceptAsCopy(QDropEvent& event) {
    event.setDropAction(Qt::CopyAction);
    event.accept();
}

/// On X11, Qt's request carries the time of the last key or click in this program, and a window
/// manager may refuse it once another program has had a later one. Whoever starts the program again
/// wants it in front, so this request is one on the user's behalf, as a task bar makes it.
void activateLikeATaskBar([[maybe_unused]] const QWidget& window) {
#if QT_CONFIG(xcb)
    if (QApplication::platformName() != QLatin1String("xcb"))
        return;
    xcb_connection_t* const server =
        qApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    constexpr std::string_view name = "_NET_ACTIVE_WINDOW";
    const std::unique_ptr<xcb_intern_atom_reply_t, decltype(&std::free)> type(
        xcb_intern_atom_reply(server, xcb_intern_atom(server, 0, name.size(), name.data()),
                              nullptr),
        std::free);
    if (type == nullptr)
        return;
    constexpr std::uint32_t onTheUsersBehalf = 2;
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = static_cast<xcb_window_t>(window.winId());
    message.type = type->atom;
    message.data.data32[0] = onTheUsersBehalf;
    xcb_send_event(server, 0, xcb_setup_roots_iterator(xcb_get_setup(server)).data->root,
                   XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
                   reinterpret_cast<const char*>(&message));
    xcb_flush(server);
#endif
}

} // namespace

DocumentWindow::DocumentWindow(ProjectViewModel& vm) : m_vm(vm) {
    setCentralWidget(new MainView(vm, this));
    new MossbitCommands(vm, *this);
    setAcceptDrops(true);
    fitToContent();
    connect(&vm, &ProjectViewModel::fileURLChanged, this, &DocumentWindow::showTitle);
    connect(&vm, &ProjectViewModel::hasUnsavedChangesChanged, this, &DocumentWindow::showTitle);
    showTitle();
}

void DocumentWindow::fitToContent() {
    // Inside the window on most desktops, at the top of the screen on macOS.
    const int bar = menuBar()->isNativeMenuBar() ? 0 : menuBar()->sizeHint().height();
    const QSize above(0, bar);
    setMinimumSize(MainView::minimumExtent + above);
    resize((MainView::preferredExtent + above).boundedTo(screen()->availableSize()));
}

void DocumentWindow::fitToScreen() {
    const QSize frame = frameSize() - size();
    resize(size().boundedTo(screen()->availableSize() - frame));
}

void DocumentWindow::showTitle() {
    QString title = QString::fromStdString(m_vm.documentName());
    // In a name these are plain characters, not the place of Qt's own mark.
    title.replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
    setWindowTitle(m_vm.hasUnsavedChanges() ? title + QStringLiteral(" •") : title);
}

void DocumentWindow::bringToFront() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    // While a dialog waits, the keyboard is of no use to anyone else. A panel of the desktop's is
    // none of our windows; it comes along with the one that it belongs to.
    QWidget* const dialog = QApplication::activeModalWidget();
    const bool isOurs = dialog != nullptr && !dialog->testAttribute(Qt::WA_DontShowOnScreen);
    QWidget* const front = isOurs ? dialog : this;
    front->raise();
    front->activateWindow();
    activateLikeATaskBar(*front);
}

void DocumentWindow::closeEvent(QCloseEvent* event) {
    event->setAccepted(m_vm.confirmClosing());
}

void DocumentWindow::paintEvent(QPaintEvent* event) {
    QMainWindow::paintEvent(event);
    // Only now the window manager has told how wide its frame is.
    if (!std::exchange(m_hasAppeared, true))
        QMetaObject::invokeMethod(this, &DocumentWindow::fitToScreen, Qt::QueuedConnection);
}

void DocumentWindow::dragEnterEvent(QDragEnterEvent* event) {
    if (event->mimeData()->hasUrls())
        acceptAsCopy(*event);
}

void DocumentWindow::dropEvent(QDropEvent* event) {
    const QList<QUrl> urls = event->mimeData()->urls();
    if (urls.isEmpty())
        return;
    acceptAsCopy(*event);
    Q_EMIT fileDropped(urls.first().toString(QUrl::FullyEncoded));
}

} // namespace mossbit
