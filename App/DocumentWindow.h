#pragma once

#include <QMainWindow>

namespace mossbit {

class ProjectViewModel;

/// The one window. It shows the menu bar above the content and is titled with the document's name.
class DocumentWindow : public QMainWindow {
    Q_OBJECT

public:
    explicit DocumentWindow(ProjectViewModel& vm);

    /// Brings the window to the front, out of the task bar if need be.
    void bringToFront();

Q_SIGNALS:
    /// Something was dropped on the window; `text` is the first path or address of it.
    void fileDropped(const QString& text);

protected:
    void closeEvent(QCloseEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void dragEnterEvent(QDragEnterEvent* event) override;
    void dropEvent(QDropEvent* event) override;

private:
    void fitToContent();
    void fitToScreen();
    void showTitle();

    ProjectViewModel& m_vm;
    bool m_hasAppeared = false;
};

} // namespace mossbit
