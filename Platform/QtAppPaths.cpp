#include "Platform/QtAppPaths.h"

#include <QFile>
#include <QStandardPaths>

namespace mossbit {

std::filesystem::path QtAppPaths::applicationSupportFolder() const {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return QFile::encodeName(folder).toStdString();
}

} // namespace mossbit
