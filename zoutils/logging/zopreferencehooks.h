#pragma once
// The narrow window through which the log and the utility class read the
// preference store, which is built on top of them. The store fills the hooks
// in once, on the GUI thread, when it is set up; until then every hook is null
// and the callers fall back: no logout line, no user in sequence names, no
// preference signal object.

#include "zoutils_export.h"

#include <QString>

class CZOPreferenceSignal;

struct ZOPreferenceHooks {
    // The active user's name and current session text; false when no user is
    // logged in or the name cannot be read.
    bool (*activeUserSession)(QString *userName, QString *sessionText) = nullptr;
    // The active user's name; empty when none.
    QString (*activeUserName)() = nullptr;
    // Asks the person to choose a user.
    void (*selectUser)() = nullptr;
    // The process-wide broadcaster of preference and user changes.
    CZOPreferenceSignal *(*preferenceSignal)() = nullptr;
};

// Replaces all hooks at once; pass a default-constructed set to clear them.
ZOUTILS_EXPORT void zoSetPreferenceHooks(const ZOPreferenceHooks &hooks);
ZOUTILS_EXPORT ZOPreferenceHooks zoPreferenceHooks();
