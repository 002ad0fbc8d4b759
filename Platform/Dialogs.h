#pragma once

#include <algorithm>
#include <array>
#include <cctype>
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

/// `path` with the extension of `kind`, unless it has one: at least one letter and no space after
/// the last dot, which "Song v1.2" has not.
inline std::filesystem::path withExtension(std::filesystem::path path, FileKind kind) {
    const std::string extension = path.extension().string();
    const auto isLetter = [](unsigned char c) { return std::isalpha(c) != 0; };
    if (std::ranges::none_of(extension, isLetter) || extension.find(' ') != std::string::npos)
        path += extensionOf(kind);
    return path;
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
    /// name with its extension, in the folder to begin in if it names one. The answer has an
    /// extension, that of `kind` if the user typed none. Nothing if the user cancelled.
    virtual std::optional<std::filesystem::path>
    runSavePanel(FileKind kind, const std::filesystem::path& proposal) = 0;

    /// Asks for one existing project, plain JSON or other file. Nothing if the user cancelled.
    virtual std::optional<std::filesystem::path> runOpenPanel() = 0;
};

} // namespace mossbit
