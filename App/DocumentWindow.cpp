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

namespace mossbit {

namespace {

/// Opening leaves the file where it is: a move would let the sender delete it.
void acceptAsCopy(QDropEvent& event) {
    event.setDropAction(Qt::CopyAction);
    event.accept();
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

void DocumentWindow::showTitle() {
    QString title = QString::fromStdString(m_vm.documentName());
    // In a name these are plain characters, not the place of Qt's own mark.
    title.replace(QLatin1String("[*]"), QLatin1String("[*][*]"));
    setWindowTitle(m_vm.hasUnsavedChanges() ? title + QStringLiteral(" •") : title);
}

void DocumentWindow::bringToFront() {
    setWindowState(windowState() & ~Qt::WindowMinimized);
    show();
    // While a dialog waits, the keyboard is of no use to anyone else.
    QWidget* const dialog = QApplication::activeModalWidget();
    QWidget* const front = dialog != nullptr ? dialog : this;
    front->raise();
    front->activateWindow();
}

void DocumentWindow::closeEvent(QCloseEvent* event) {
    event->setAccepted(m_vm.confirmClosing());
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
