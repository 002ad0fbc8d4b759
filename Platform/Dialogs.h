#pragma once

#include <array>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace mossbit {

/// The kinds of file that a panel offers.
enum class FileKind { project, wav };

inline const char* extensionOf(FileKind kind) {
    return kind == FileKind::project ? ".mossbit" : ".wav";
}

/// Modal dialogs of the main window. Each call returns when the user has answered.
class Dialogs {
public:
    virtual ~Dialogs() = default;

    struct Alert {
        std::string message;
        std::string informativeText;
        /// In this order on every desktop; the first is the default, the last is what Escape and
        /// the close box mean.
        std::array<std::string, 3> buttons;
    };

    /// Returns the index of the button that was pressed.
    virtual std::size_t runAlert(const Alert& alert) = 0;

    /// Asks where to save and, where a file exists, whether to replace it. `proposal` is a file
    /// name with its extension, in the folder to begin in if it names one. The answer is complete:
    /// it ends in an extension of `kind`. Nothing if the user cancelled.
    virtual std::optional<std::filesystem::path>
    runSavePanel(FileKind kind, const std::filesystem::path& proposal) = 0;

    /// Asks for one existing project, plain JSON or other file. Nothing if the user cancelled.
    virtual std::optional<std::filesystem::path> runOpenPanel() = 0;
};

} // namespace mossbit
