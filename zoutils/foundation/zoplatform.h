#pragma once
// The one place for operating-system calls that differ between platforms:
// memory status, the machine-wide registry, and the environment folders.
// Everything else in the library is platform-neutral.

#include "zoutils_export.h"

#include <QString>
#include <QVariant>

struct ZOMemoryStatus {
    int loadPercent = 0;        // physical memory in use, 0 to 100
    quint64 totalPhysical = 0;  // bytes
    quint64 availablePhysical = 0; // bytes
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

} // namespace ZOPlatform
