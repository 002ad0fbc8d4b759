#include "Platform/QtDialogs.h"

#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>
#include <QStandardPaths>
#include <QStringList>

#include <algorithm>
#include <array>

namespace mossbit {

namespace {

QString folderToShow(const std::filesystem::path& lastFolder) {
    QString last = QFile::decodeName(lastFolder.c_str());
    if (!last.isEmpty() && QDir(last).exists())
        return last;
    const QString documents = QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation);
    return QDir(documents).exists() ? documents : QDir::homePath();
}

std::optional<std::filesystem::path> run(QFileDialog& panel, std::filesystem::path& lastFolder) {
    if (panel.exec() != QDialog::Accepted || panel.selectedFiles().isEmpty())
        return std::nullopt;
    const std::filesystem::path file =
        QFile::encodeName(panel.selectedFiles().first()).toStdString();
    lastFolder = file.parent_path();
    return file;
}

} // namespace

std::size_t QtDialogs::runAlert(const Alert& alert) {
    constexpr std::array roles = {QMessageBox::AcceptRole, QMessageBox::DestructiveRole,
                                  QMessageBox::RejectRole};
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
    std::array<QAbstractButton*, roles.size()> buttons;
    for (std::size_t index = 0; index < roles.size(); ++index)
        buttons[index] = box.addButton(QString::fromStdString(alert.buttons[index]), roles[index]);
    box.setDefaultButton(qobject_cast<QPushButton*>(buttons.front()));
    box.setEscapeButton(buttons.back());
    box.exec();
    const auto* pressed = std::find(buttons.begin(), buttons.end(), box.clickedButton());
    return pressed == buttons.end() ? buttons.size() - 1
                                    : static_cast<std::size_t>(pressed - buttons.begin());
}

std::optional<std::filesystem::path>
QtDialogs::runSavePanel(FileKind kind, const std::filesystem::path& proposal) {
    const bool isProject = kind == FileKind::project;
    QFileDialog panel(m_window, isProject ? QStringLiteral("Save") : QStringLiteral("Export WAV"));
    panel.setAcceptMode(QFileDialog::AcceptSave);
    panel.setFileMode(QFileDialog::AnyFile);
    panel.setNameFilter(isProject ? QStringLiteral("Mossbit project (*.mossbit)")
                                  : QStringLiteral("WAV audio (*.wav)"));
    panel.setDefaultSuffix(isProject ? QStringLiteral("mossbit") : QStringLiteral("wav"));
    // The folder before the name, which native panels otherwise look for in the working folder.
    panel.setDirectory(
        folderToShow(proposal.has_parent_path() ? proposal.parent_path() : m_folder));
    panel.selectFile(QFile::decodeName(proposal.filename().c_str()));
    while (const auto chosen = run(panel, m_folder)) {
        const std::filesystem::path file = withExtension(*chosen, kind);
        // What cannot even be looked up is for the write to report.
        std::error_code error;
        if (file == *chosen || !std::filesystem::exists(file, error))
            return file;
        // The panel asked about another name; it asks about this one when it is confirmed.
        panel.selectFile(QFile::decodeName(file.filename().c_str()));
    }
    return std::nullopt;
}

std::optional<std::filesystem::path> QtDialogs::runOpenPanel() {
    QFileDialog panel(m_window, QStringLiteral("Open"));
    panel.setAcceptMode(QFileDialog::AcceptOpen);
    panel.setFileMode(QFileDialog::ExistingFile);
    panel.setNameFilters({QStringLiteral("Mossbit project or JSON (*.mossbit *.json)"),
                          QStringLiteral("All files (*)")});
    panel.setDirectory(folderToShow(m_folder));
    return run(panel, m_folder);
}

} // namespace mossbit
