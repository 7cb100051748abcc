#include "zopreferencehooks.h"

#include <QMutex>
#include <QMutexLocker>

namespace {
QMutex s_hooksMutex; // guards s_hooks
ZOPreferenceHooks s_hooks;
} // namespace

void zoSetPreferenceHooks(const ZOPreferenceHooks &hooks)
{
    QMutexLocker locker(&s_hooksMutex);
    s_hooks = hooks;
}

ZOPreferenceHooks zoPreferenceHooks()
{
    QMutexLocker locker(&s_hooksMutex);
    return s_hooks;
}
