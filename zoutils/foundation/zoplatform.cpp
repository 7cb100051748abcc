#include "zoplatform.h"

#include <QDir>
#include <QFile>
#include <QFileDevice>
#include <QSettings>
#include <QStandardPaths>

#ifdef Q_OS_WIN
#include <io.h>
#include <windows.h>
#else
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysinfo.h>
#include <unistd.h>
#endif
#ifdef Q_OS_LINUX
#include <cerrno>
#include <sys/syscall.h>
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

bool exchangeFiles(const QString &a, const QString &b, bool *supported)
{
    *supported = false;
#if defined(Q_OS_LINUX) && defined(SYS_renameat2)
    constexpr unsigned kExchange = 1u << 1; // RENAME_EXCHANGE, not in every libc's headers
    const QByteArray from = QFile::encodeName(a);
    const QByteArray to = QFile::encodeName(b);
    if (::syscall(SYS_renameat2, AT_FDCWD, from.constData(), AT_FDCWD, to.constData(), kExchange) == 0) {
        *supported = true;
        return true;
    }
    *supported = errno != ENOSYS && errno != EINVAL && errno != EOPNOTSUPP;
#else
    Q_UNUSED(a)
    Q_UNUSED(b)
#endif
    return false;
}

bool isSameFile(const QFileDevice &file, const QString &path)
{
#ifdef Q_OS_WIN
    const HANDLE open = reinterpret_cast<HANDLE>(_get_osfhandle(file.handle()));
    const HANDLE named = CreateFileW(reinterpret_cast<const wchar_t *>(QDir::toNativeSeparators(path).utf16()), 0,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                     OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (open == INVALID_HANDLE_VALUE || named == INVALID_HANDLE_VALUE) {
        if (named != INVALID_HANDLE_VALUE)
            CloseHandle(named);
        return false;
    }
    BY_HANDLE_FILE_INFORMATION first, second;
    const bool ok = GetFileInformationByHandle(open, &first) && GetFileInformationByHandle(named, &second);
    CloseHandle(named);
    return ok && first.dwVolumeSerialNumber == second.dwVolumeSerialNumber
        && first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow;
#else
    struct stat open, named;
    return ::fstat(file.handle(), &open) == 0 && ::stat(QFile::encodeName(path).constData(), &named) == 0
        && open.st_dev == named.st_dev && open.st_ino == named.st_ino;
#endif
}

} // namespace ZOPlatform
