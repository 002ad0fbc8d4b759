#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QUrl>

#include <filesystem>
#include <system_error>

namespace mossbit {

inline std::filesystem::path toPath(const QString& file) {
    return QFile::encodeName(file).toStdString();
}

/// The address of a file. Bytes that are no UTF-8 survive in it.
inline QString addressOf(const std::filesystem::path& file) {
    return QLatin1String("file://") + QByteArray(file.c_str()).toPercentEncoding("/");
}

/// The file that an address or a path means. An address elsewhere than on this machine stays as it
/// is and will not be found, which the user is told.
inline std::filesystem::path toPath(const QUrl& url) {
    if (!url.isLocalFile())
        return toPath(url.toString());
    // The bytes as they are: not every file name is UTF-8.
    return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
}

/// A path, relative to the working folder, or a `file:` address.
inline std::filesystem::path handedOverPath(const std::filesystem::path& path) {
    std::error_code error;
    if (path.native().starts_with("file:") && !std::filesystem::exists(path, error))
        return toPath(QUrl(QFile::decodeName(path.c_str())));
    return path.empty() ? path : std::filesystem::absolute(path, error);
}

/// What the system hands over as text: a path, relative to the working folder, or a `file:`
/// address.
inline std::filesystem::path handedOverPath(const QString& text) {
    return handedOverPath(toPath(text));
}

} // namespace mossbit
