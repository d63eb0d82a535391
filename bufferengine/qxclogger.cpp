#include "bufferengine/qxclogger.h"

#include <dlfcn.h>

#include <atomic>

namespace NQxcLogger {

namespace {

std::atomic<bool> g_bLooked{false};
std::atomic<PFNQxLogger> g_pfnLogger{nullptr};

}  // namespace

PFNQxLogger Refresh()
{
    PFNQxLogger pfnLogger = reinterpret_cast<PFNQxLogger>(dlsym(RTLD_DEFAULT, "QxLogger"));
    g_pfnLogger.store(pfnLogger, std::memory_order_release);
    g_bLooked.store(true, std::memory_order_release);
    return pfnLogger;
}

PFNQxLogger Get()
{
    if (!g_bLooked.load(std::memory_order_acquire)) return Refresh();
    return g_pfnLogger.load(std::memory_order_acquire);
}

}  // namespace NQxcLogger
