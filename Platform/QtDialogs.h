#pragma once

#include "Platform/Dialogs.h"

#include <filesystem>

class QString;
class QWidget;

namespace mossbit {

/// Qt's message box and file panels, in front of one window.
class QtDialogs final : public Dialogs {
public:
    /// The window that the dialogs belong to; it must outlive their use. None before this.
    void setParentWindow(QWidget* window) { m_window = window; }

    std::size_t runAlert(const Alert& alert) override;
    std::optional<std::filesystem::path>
    runSavePanel(FileKind kind, const std::filesystem::path& proposal) override;
    std::optional<std::filesystem::path> runOpenPanel() override;

private:
    /// Asks about a file that exists.
    bool mayReplace(const QString& file) const;

    QWidget* m_window = nullptr;
    /// Where the last panel was closed with a file; empty before.
    std::filesystem::path m_folder;
};

} // namespace mossbit
