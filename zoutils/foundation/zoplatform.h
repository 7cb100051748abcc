#pragma once
// The one place for operating-system calls that differ between platforms:
// memory status, the machine-wide registry, the environment folders, and the
// file-system calls of the CSV editor. Everything else in the library is
// platform-neutral.

#include "zoutils_export.h"

#include <QString>
#include <QVariant>

class QFileDevice;

struct ZOMemoryStatus {
    int loadPercent = 0;        // physical memory in use, 0 to 100
    quint64 totalPhysical = 0;  // bytes
    quint64 availablePhysical = 0; // bytes
};

// One state of an open file, cheaply told apart from its others: its size
// and the times of its last write and change. Two equal stamps of one
// open file mean that nobody wrote to it in between, or wrote within one tick
// of the file system's clock and left the size as it was.
struct ZOFileStamp {
    qint64 size = -1; // -1: no stamp
    qint64 written = 0;
    qint64 changed = 0;
    bool operator==(const ZOFileStamp &o) const
    {
        return size == o.size && written == o.written && changed == o.changed;
    }
};

namespace ZOPlatform {

// Fills `status` from the operating system (Windows: GlobalMemoryStatusEx;
// Linux: /proc/meminfo, MemAvailable, falling back to sysinfo). False when
// nothing could be read; `status` then holds zeros.
ZOUTILS_EXPORT bool memoryStatus(ZOMemoryStatus *status);

// A value under the machine-wide key HKEY_LOCAL_MACHINE\SOFTWARE\<organization>\<application>\<group>
// on Windows; elsewhere the same path in the system-scope native settings file
// (for tests: QSettings::setPath(QSettings::NativeFormat, QSettings::SystemScope, dir)).
// An invalid QVariant when the value is missing.
ZOUTILS_EXPORT QVariant machineSetting(const QString &organization, const QString &application,
                                       const QString &group, const QString &name);

// The folder named by an environment variable such as ALLUSERSPROFILE or
// APPDATA. When the variable is unset or empty: on Windows an empty text; on
// other systems a per-user stand-in (ALLUSERSPROFILE: the generic data folder,
// APPDATA: the generic configuration folder, anything else: the home folder).
ZOUTILS_EXPORT QString environmentFolder(const char *variable);

// Swaps the two files named `a` and `b` (in one folder) with one atomic
// rename, so that each name holds the other's content (Linux renameat2 with
// RENAME_EXCHANGE). False when that failed or, with `*supported` set to false,
// when this system or file system has no such rename; nothing changed then.
bool exchangeFiles(const QString &a, const QString &b, bool *supported);

// Makes each of the two open files refer to what the other referred to, so
// that an open file follows its name across exchangeFiles() without being
// opened again. False when that failed; either may then refer to what `b`
// referred to: open both again.
bool swapOpenFiles(QFileDevice &a, QFileDevice &b);

// True when the open `file` is the file that `path` names now (same device
// and file number); false when it was replaced or removed since it was opened.
// Fills `stamp`, when given, with the open file's stamp.
bool isSameFile(const QFileDevice &file, const QString &path, ZOFileStamp *stamp = nullptr);

// The open file's stamp; no stamp when it cannot be read.
ZOFileStamp fileStamp(const QFileDevice &file);

} // namespace ZOPlatform
