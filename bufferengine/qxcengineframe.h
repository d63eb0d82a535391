// Small pieces the two engines share. Private to the library.
#ifndef QXBASE_BUFFERENGINE_QXCENGINEFRAME_H
#define QXBASE_BUFFERENGINE_QXCENGINEFRAME_H

#include <qxbase/qxdescriptions.h>
#include <qxbase/qxsync.h>

#include "bufferengine/qxclogger.h"

#include <new>

namespace NQxcEngineFrame {

constexpr uint32_t kuiInfinite = 4294967295u;

// An engine whose services all opened, with the reference construction gave
// it, or null. Components never throw: a failed construction is a null.
template <class TEngine, class TFlexEngine>
TEngine* MakeEngine(TFlexEngine* in_pEngine)
{
    TEngine* pEngine = nullptr;
    try {
        pEngine = new (std::nothrow) TEngine(in_pEngine);
    } catch (...) {
        return nullptr;
    }
    if (pEngine && !pEngine->IsOpen()) {
        pEngine->NonDelegatingRelease();
        return nullptr;
    }
    return pEngine;
}

// The event calls of the admission, which cannot fail on a live event; a
// component must not let an exception out whatever happens.
inline void WaitQuietly(CQxEvent& in_roEvent)
{
    try {
        in_roEvent.Wait(kuiInfinite);
    } catch (...) {
    }
}

inline void SetQuietly(CQxEvent& in_roEvent)
{
    try {
        in_roEvent.Set();
    } catch (...) {
    }
}

// The chroma handling of a copy: the caller's when it names one, else the
// options' default, else the nearest sample.
inline EQxFilterMode FilterOf(EQxFilterMode in_eFilter, const SQxConversionOptions* in_psOptions)
{
    auto fnValid = [](EQxFilterMode e) { return e == keQxFilterModeNearest || e == keQxFilterModeFiltered; };
    if (fnValid(in_eFilter)) return in_eFilter;
    if (in_psOptions && fnValid(in_psOptions->eDefaultFilterMode)) return in_psOptions->eDefaultFilterMode;
    return keQxFilterModeNearest;
}

// The line an operation ends with: "        qxcBufferEngine:<operation>
// Successful" at the info level, or "... Failed. Error = 0x..." at the error
// level.
inline void LogResult(int in_iArgument, const char* in_pszOperation, HRESULT in_hrResult)
{
    if (SUCCEEDED(in_hrResult))
        NQxcLogger::Log(in_iArgument, NQxcLogger::kiLevelInfo, "        qxcBufferEngine:%s Successful", in_pszOperation);
    else
        NQxcLogger::Log(in_iArgument, NQxcLogger::kiLevelError, "        qxcBufferEngine:%s Failed. Error = 0x%x",
                        in_pszOperation, unsigned(in_hrResult));
}

}  // namespace NQxcEngineFrame

#endif  // QXBASE_BUFFERENGINE_QXCENGINEFRAME_H
