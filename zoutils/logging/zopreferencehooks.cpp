#include "zopreferencehooks.h"

#include <mutex>

namespace {
std::mutex s_hooksMutex; // guards s_hooks
ZOPreferenceHooks s_hooks;
} // namespace

void zoSetPreferenceHooks(const ZOPreferenceHooks &hooks)
{
    std::lock_guard<std::mutex> locker(s_hooksMutex);
    s_hooks = hooks;
}

ZOPreferenceHooks zoPreferenceHooks()
{
    std::lock_guard<std::mutex> locker(s_hooksMutex);
    return s_hooks;
}
