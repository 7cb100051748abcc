#include "zopath.h"

#include <QDir>
#include <QStandardPaths>

namespace {

QString withSlash(const QString &path)
{
    return path.endsWith(QLatin1Char('/')) ? path : path + QLatin1Char('/');
}

QString applicationDataFolder()
{
    const QByteArray root = qgetenv("ZO_DATA_ROOT");
    if (!root.isEmpty())
        return withSlash(QDir::fromNativeSeparators(QString::fromLocal8Bit(root)));
    return withSlash(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation))
        + QStringLiteral("Norbeck Instruments/Zolvane/");
}

} // namespace

QString getZOPath(int tag, bool create, const CPLCameraInfo *)
{
    QString folder;
    switch (tag) {
    case ZO_PATH_APPDATA:
        folder = applicationDataFolder();
        break;
    case ZO_PATH_PROBES:
        folder = applicationDataFolder() + QStringLiteral("Probes/");
        break;
    default:
        return QString();
    }
    if (create && !QDir().mkpath(folder))
        return QString();
    return folder;
}
