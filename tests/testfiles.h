#pragma once

#include <QFile>
#include <QStandardPaths>

#include <unistd.h>

// Where a test's files go: the libraries' data root and, in test mode, Qt's
// standard locations, so that no test touches the user's own.
inline void useDataRoot(const QString &folder)
{
    QStandardPaths::setTestModeEnabled(true);
    qputenv("ZO_DATA_ROOT", QFile::encodeName(folder) + '/');
}

// Whole files as bytes, to set up and check exactly what the classes leave on disk.
inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Root ignores file permissions: when the test runs as root, `call` runs as nobody
// (still in root's group), so that a refused change is refused. False if the switch fails.
template <typename Call>
bool asNobodyIfRoot(Call call)
{
    const bool root = ::geteuid() == 0;
    if (root && ::seteuid(65534) != 0)
        return false;
    call();
    return !root || ::seteuid(0) == 0;
}

inline bool writeFile(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}
