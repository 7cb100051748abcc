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

bool swapOpenFiles(QFileDevice &a, QFileDevice &b)
{
#ifdef Q_OS_WIN
    const auto dup = ::_dup;
    const auto dup2 = ::_dup2;
    const auto close = ::_close;
#else
    const auto dup = ::dup;
    const auto dup2 = ::dup2;
    const auto close = ::close;
#endif
    const int first = a.handle();
    const int second = b.handle();
    const int kept = first < 0 || second < 0 ? -1 : dup(first);
    if (kept < 0)
        return false;
    bool ok = dup2(second, first) >= 0;
    ok = ok && dup2(kept, second) >= 0;
    close(kept);
    return ok;
}

#ifdef Q_OS_WIN
namespace {
bool fileInformation(HANDLE handle, BY_HANDLE_FILE_INFORMATION *info)
{
    return handle != INVALID_HANDLE_VALUE && GetFileInformationByHandle(handle, info);
}
ZOFileStamp stampOf(const BY_HANDLE_FILE_INFORMATION &info)
{
    const auto join = [](DWORD high, DWORD low) { return (qint64(high) << 32) | low; };
    ZOFileStamp stamp;
    stamp.size = join(info.nFileSizeHigh, info.nFileSizeLow);
    stamp.written = join(info.ftLastWriteTime.dwHighDateTime, info.ftLastWriteTime.dwLowDateTime);
    stamp.changed = stamp.written; // Windows keeps no separate change time here
    return stamp;
}
} // namespace

bool isSameFile(const QFileDevice &file, const QString &path, ZOFileStamp *stamp)
{
    const HANDLE open = reinterpret_cast<HANDLE>(_get_osfhandle(file.handle()));
    const HANDLE named = CreateFileW(reinterpret_cast<const wchar_t *>(QDir::toNativeSeparators(path).utf16()), 0,
                                     FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                     OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    BY_HANDLE_FILE_INFORMATION first, second;
    const bool ok = fileInformation(open, &first) && fileInformation(named, &second);
    if (named != INVALID_HANDLE_VALUE)
        CloseHandle(named);
    if (ok && stamp)
        *stamp = stampOf(first);
    return ok && first.dwVolumeSerialNumber == second.dwVolumeSerialNumber
        && first.nFileIndexHigh == second.nFileIndexHigh && first.nFileIndexLow == second.nFileIndexLow;
}

ZOFileStamp fileStamp(const QFileDevice &file)
{
    BY_HANDLE_FILE_INFORMATION info;
    return fileInformation(reinterpret_cast<HANDLE>(_get_osfhandle(file.handle())), &info) ? stampOf(info)
                                                                                          : ZOFileStamp();
}
#else
namespace {
ZOFileStamp stampOf(const struct stat &info)
{
    ZOFileStamp stamp;
    stamp.size = qint64(info.st_size);
    stamp.written = qint64(info.st_mtim.tv_sec) * 1000000000 + info.st_mtim.tv_nsec;
    stamp.changed = qint64(info.st_ctim.tv_sec) * 1000000000 + info.st_ctim.tv_nsec;
    return stamp;
}
} // namespace

bool isSameFile(const QFileDevice &file, const QString &path, ZOFileStamp *stamp)
{
    struct stat open, named;
    if (::fstat(file.handle(), &open) != 0)
        return false;
    if (stamp)
        *stamp = stampOf(open);
    return ::stat(QFile::encodeName(path).constData(), &named) == 0 && open.st_dev == named.st_dev
        && open.st_ino == named.st_ino;
}

ZOFileStamp fileStamp(const QFileDevice &file)
{
    struct stat info;
    return ::fstat(file.handle(), &info) == 0 ? stampOf(info) : ZOFileStamp();
}
#endif

} // namespace ZOPlatform
