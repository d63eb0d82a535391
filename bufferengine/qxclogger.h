// The buffer engine's log lines go to the SDK's QxLogger, which the host
// process or another SDK module supplies; the library does not link against
// it. The symbol is looked up at run time and called only when present.
#ifndef QXBASE_BUFFERENGINE_QXCLOGGER_H
#define QXBASE_BUFFERENGINE_QXCLOGGER_H

#include <qxbase/qxcbufferengine.h>

namespace NQxcLogger {

// The engine's package number in the SDK's log.
constexpr int kiPackage = 6027;

// Looks the symbol up again (a module that supplies it may have been loaded
// since) and keeps the answer; returns it.
PFNQxLogger Refresh();
// The logger found by the last look-up (the first call looks it up).
PFNQxLogger Get();

// Log levels used by the engine.
constexpr int kiLevelError = 2;
constexpr int kiLevelInfo = 4;
constexpr int kiLevelDetail = 6;
constexpr int kiLevelTiming = 9;

template <class... TArguments>
inline void Log(int in_iArgument, int in_iLevel, const char* in_pszFormat, TArguments... in_tArguments)
{
    if (PFNQxLogger pfnLogger = Get()) pfnLogger(kiPackage, in_iArgument, in_iLevel, in_pszFormat, in_tArguments...);
}

}  // namespace NQxcLogger

#endif  // QXBASE_BUFFERENGINE_QXCLOGGER_H
