#include "Platform/QtDialogs.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileDialog>
#include <QHeaderView>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QStringList>
#include <QTreeView>

namespace mossbit {

namespace {

namespace fs = std::filesystem;

QString folderToShow(const fs::path& lastFolder) {
    QString last = QFile::decodeName(lastFolder.c_str());
    if (!last.isEmpty() && QDir(last).exists())
        return last;
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QDir(documents).exists() ? documents : QDir::homePath();
}

/// Whether the panel asks before a file with the name that it returns is replaced, whatever its
/// options say.
#ifdef Q_OS_MACOS
constexpr bool panelAsksAnyway = true;
#else
constexpr bool panelAsksAnyway = false;
#endif

/// Song files may also be called JSON, which the open panel offers as well.
bool endsInExtensionOf(FileKind kind, const QString& name) {
    const auto ends = [&](const char* extension) {
        return name.endsWith(QLatin1String(extension), Qt::CaseInsensitive);
    };
    return ends(extensionOf(kind)) || (kind == FileKind::project && ends(".json"));
}

/// Shows the panel until it is closed. Not `exec`, for which a desktop's own panel may run a main
/// loop of its toolkit, where nothing of Qt can end it.
std::optional<QString> run(QFileDialog& panel) {
    // Qt's own panel, where the desktop has none, would cut off dates and types.
    if (const auto* files = panel.findChild<QTreeView*>()) {
        files->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
        panel.resize(760, 480);
    }
    QEventLoop loop;
    QObject::connect(&panel, &QDialog::finished, &loop, &QEventLoop::quit);
    panel.open();
    loop.exec();
    if (panel.result() != QDialog::Accepted || panel.selectedFiles().isEmpty())
        return std::nullopt;
    return panel.selectedFiles().first();
}

fs::path toPath(const QString& file) {
    return QFile::encodeName(file).toStdString();
}

} // namespace

std::size_t QtDialogs::runAlert(const Alert& alert) {
    QMessageBox box(m_window);
    // The one arrangement that puts these three roles in this order, whatever the desktop's is.
    box.setStyleSheet(QStringLiteral("QDialogButtonBox { button-layout: 0 }"));
    box.setWindowTitle(QStringLiteral("Mossbit"));
    box.setIcon(QMessageBox::Warning);
    box.setTextFormat(Qt::PlainText);
    box.setText(QString::fromStdString(alert.message));
    box.setInformativeText(QString::fromStdString(alert.informativeText));
    for (QLabel* label : box.findChildren<QLabel*>())
        label->setTextFormat(Qt::PlainText);
    const auto add = [&](const std::string& title, QMessageBox::ButtonRole role) {
        return box.addButton(QString::fromStdString(title), role);
    };
    QPushButton* const first = add(alert.buttons[0], QMessageBox::AcceptRole);
    QPushButton* const second = add(alert.buttons[1], QMessageBox::DestructiveRole);
    QPushButton* const last = add(alert.buttons[2], QMessageBox::RejectRole);
    box.setDefaultButton(first);
    box.setEscapeButton(last);
    box.exec();
    return box.clickedButton() == first ? 0 : box.clickedButton() == second ? 1 : 2;
}

bool QtDialogs::mayReplace(const QString& file) const {
    if (!QFileInfo::exists(file))
        return true;
    QMessageBox box(
        QMessageBox::Warning, QStringLiteral("Mossbit"),
        QStringLiteral("“%1” already exists. Replace it?").arg(QFileInfo(file).fileName()),
        QMessageBox::Cancel, m_window);
    box.setTextFormat(Qt::PlainText);
    const auto* replace = box.addButton(QStringLiteral("Replace"), QMessageBox::AcceptRole);
    box.setDefaultButton(QMessageBox::Cancel);
    box.exec();
    return box.clickedButton() == replace;
}

std::optional<fs::path> QtDialogs::runSavePanel(FileKind kind, const fs::path& proposal) {
    const bool isProject = kind == FileKind::project;
    QFileDialog panel(m_window, isProject ? QStringLiteral("Save") : QStringLiteral("Export WAV"));
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
    panel.setNameFilter(isProject ? QStringLiteral("Mossbit song (*.mossbit)")
                                  : QStringLiteral("WAV audio (*.wav)"));
    // A panel would ask about the name as it was typed, without the extension.
    panel.setOption(QFileDialog::DontConfirmOverwrite);
    // The folder before the name, which native panels otherwise look for in the working folder.
    panel.setDirectory(
        folderToShow(proposal.has_parent_path() ? proposal.parent_path() : m_folder));
    panel.selectFile(QFile::decodeName(proposal.filename().c_str()));
    while (auto file = run(panel)) {
        const bool isComplete = endsInExtensionOf(kind, *file);
        if (!isComplete)
            *file += QLatin1String(extensionOf(kind));
        if ((panelAsksAnyway && isComplete) || mayReplace(*file)) {
            m_folder = toPath(*file).parent_path();
            return toPath(*file);
        }
        panel.selectFile(*file);
    }
    return std::nullopt;
}

std::optional<fs::path> QtDialogs::runOpenPanel() {
    QFileDialog panel(m_window, QStringLiteral("Open"));
    panel.setAcceptMode(QFileDialog::AcceptOpen);
    panel.setFileMode(QFileDialog::ExistingFile);
    panel.setNameFilters({QStringLiteral("Mossbit song or JSON (*.mossbit *.json)"),
                          QStringLiteral("All files (*)")});
    panel.setDirectory(folderToShow(m_folder));
    const auto file = run(panel);
    if (!file)
        return std::nullopt;
    m_folder = toPath(*file).parent_path();
    return toPath(*file);
}

} // namespace mossbit
