#pragma once

#include <QFile>
#include <QFileInfo>
#include <QString>
#include <QUrl>

#include <filesystem>

namespace mossbit {

inline std::filesystem::path toPath(const QString& file) {
    return QFile::encodeName(file).toStdString();
}

inline QString toQString(const std::filesystem::path& file) {
    return QFile::decodeName(file.c_str());
}

/// The file that an address or a path means. An address elsewhere than on this machine stays as it
/// is and will not be found, which the user is told.
inline std::filesystem::path toPath(const QUrl& url) {
    return toPath(url.isLocalFile() ? url.toLocalFile() : url.toString());
}

/// What the system hands over as text: a path, relative to the working folder, or a `file:`
/// address.
inline std::filesystem::path handedOverPath(const QString& text) {
    const QFileInfo file(text);
    if (text.startsWith(QLatin1String("file:")) && !file.exists())
        return toPath(QUrl(text));
    return toPath(file.absoluteFilePath());
}

} // namespace mossbit
