#include "zoplatform.h"

#include <QDir>
#include <QFile>
#include <QSettings>
#include <QStandardPaths>

#ifdef Q_OS_WIN
#include <windows.h>
#else
#include <sys/sysinfo.h>
#endif

namespace ZOPlatform {

bool memoryStatus(ZOMemoryStatus *status)
{
    if (!status)
        return false;
    *status = ZOMemoryStatus();
#ifdef Q_OS_WIN
    MEMORYSTATUSEX ms;
    ms.dwLength = sizeof(ms);
    if (!GlobalMemoryStatusEx(&ms))
        return false;
    status->loadPercent = int(ms.dwMemoryLoad);
    status->totalPhysical = ms.ullTotalPhys;
    status->availablePhysical = ms.ullAvailPhys;
    return true;
#else
    quint64 total = 0, available = 0;
    bool haveAvailable = false;
    QFile meminfo(QStringLiteral("/proc/meminfo"));
    if (meminfo.open(QIODevice::ReadOnly | QIODevice::Text)) {
        // Values are in kB: "MemTotal:  24576000 kB".
        const QList<QByteArray> lines = meminfo.readAll().split('\n');
        for (const QByteArray &line : lines) {
            const QList<QByteArray> parts = line.simplified().split(' ');
            if (parts.size() < 2)
                continue;
            if (parts[0] == "MemTotal:")
                total = parts[1].toULongLong() * 1024;
            else if (parts[0] == "MemAvailable:") {
                available = parts[1].toULongLong() * 1024;
                haveAvailable = true;
            }
        }
    }
    if (total == 0 || !haveAvailable) {
        struct sysinfo si;
        if (sysinfo(&si) != 0)
            return false;
        total = quint64(si.totalram) * si.mem_unit;
        available = quint64(si.freeram + si.bufferram) * si.mem_unit;
    }
    if (total == 0)
        return false;
    if (available > total)
        available = total;
    status->totalPhysical = total;
    status->availablePhysical = available;
    status->loadPercent = int((total - available) * 100 / total);
    return true;
#endif
}

QVariant machineSetting(const QString &organization, const QString &application,
                        const QString &group, const QString &name)
{
#ifdef Q_OS_WIN
    QSettings settings(QStringLiteral("HKEY_LOCAL_MACHINE\\SOFTWARE\\") + organization + QLatin1Char('\\')
                           + application + QLatin1Char('\\') + group,
                       QSettings::NativeFormat);
    return settings.value(name);
#else
    QSettings settings(QSettings::NativeFormat, QSettings::SystemScope, organization, application);
    settings.beginGroup(group);
    return settings.value(name);
#endif
}

QString environmentFolder(const char *variable)
{
    const QString value = QString::fromLocal8Bit(qgetenv(variable));
    if (!value.isEmpty())
        return QDir::fromNativeSeparators(value);
#ifdef Q_OS_WIN
    return QString();
#else
    const QByteArray name(variable);
    if (name == "ALLUSERSPROFILE")
        return QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    if (name == "APPDATA")
        return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
    return QDir::homePath();
#endif
}

} // namespace ZOPlatform
