#include "Platform/AppPaths.h"

#include <QFile>
#include <QStandardPaths>

namespace mossbit {

std::filesystem::path applicationSupportFolder() {
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return QFile::encodeName(folder).toStdString();
}

} // namespace mossbit
