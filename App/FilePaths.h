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
    const bool isHere = url.host().isEmpty() || url.host() == QLatin1String("localhost");
    if (!url.isLocalFile() || !isHere)
        return toPath(url.toString());
    // The bytes as they are: not every file name is UTF-8.
    return QByteArray::fromPercentEncoding(url.path(QUrl::FullyEncoded).toLatin1()).toStdString();
}

/// A path or a `file:` address, both perhaps relative to the working folder.
inline std::filesystem::path handedOverPath(const std::filesystem::path& path) {
    std::error_code error;
    const bool isAddress =
        path.native().starts_with("file:") && !std::filesystem::exists(path, error);
    const auto file = isAddress ? toPath(QUrl(QFile::decodeName(path.c_str()))) : path;
    return file.empty() ? file : std::filesystem::absolute(file, error);
}

} // namespace mossbit
