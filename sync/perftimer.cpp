// The time-stamp-counter clock and the interrupt-proof sleep.
#include <qxbase/qxperftimer.h>

#include "sync/qxcalibration.h"

#include <cpuid.h>
#include <errno.h>
#include <time.h>
#include <x86intrin.h>

bool g_bInvariantTSC = false;

uint64_t linux_rdtsc()
{
    return __rdtsc();
}

namespace {

// Leaf 0x80000007 EDX bit 8: the counter runs at a constant rate in every
// power state. The highest extended leaf is read twice, as it always was.
bool DetectInvariantCounter()
{
    unsigned int uiEax, uiEbx, uiEcx, uiEdx;
    __cpuid(0x80000000u, uiEax, uiEbx, uiEcx, uiEdx);
    if (uiEax <= 0x80000006u) return false;
    __cpuid(0x80000000u, uiEax, uiEbx, uiEcx, uiEdx);
    if (uiEax <= 0x80000006u) return false;
    __cpuid(0x80000007u, uiEax, uiEbx, uiEcx, uiEdx);
    return (uiEdx >> 8) & 1u;
}

uint64_t RealTimeNanoseconds()
{
    timespec sNow;
    clock_gettime(CLOCK_REALTIME, &sNow);
    return static_cast<uint64_t>(sNow.tv_sec) * 1000000000ull + static_cast<uint64_t>(sNow.tv_nsec);
}

inline uint64_t RawCount()
{
    return g_bInvariantTSC ? __rdtsc() : RealTimeNanoseconds();
}

}  // namespace

CQxPerfTimer::CQxPerfTimer() : m_ui64Speed(1)
{
    g_bInvariantTSC = DetectInvariantCounter();
    m_ui64Speed.store(GetProcessorSpeed(), std::memory_order_relaxed);
}

CQxPerfTimer* CQxPerfTimer::GetTimerClass()
{
    static CQxPerfTimer s_oTimer;
    return &s_oTimer;
}

uint64_t CQxPerfTimer::InitializeProcessorSpeed()
{
    return qxMeasureTicksPerMicrosecond([](timespec* out_psNow) { clock_gettime(CLOCK_REALTIME, out_psNow); },
                                        [] { return static_cast<uint64_t>(__rdtsc()); });
}

uint64_t CQxPerfTimer::GetProcessorSpeed()
{
    if (!g_bInvariantTSC) return 1000;
    uint64_t ui64Speed = m_ui64Speed.load(std::memory_order_relaxed);
    if (ui64Speed > 1) return ui64Speed;
    ui64Speed = qxCalibrateTicksPerMillisecond([this] { return InitializeProcessorSpeed(); });
    m_ui64Speed.store(ui64Speed, std::memory_order_relaxed);
    return ui64Speed;
}

uint64_t CQxPerfTimer::GetTickCount()
{
    return RawCount();
}

uint64_t CQxPerfTimer::GetTime()
{
    return RawCount() / m_ui64Speed.load(std::memory_order_relaxed);
}

uint64_t CQxPerfTimer::GetTimeNano()
{
    return RawCount() * 1000000ull / m_ui64Speed.load(std::memory_order_relaxed);
}

uint64_t CQxPerfTimer::Wait(unsigned long in_ulDuration)
{
    const uint64_t ui64Speed = m_ui64Speed.load(std::memory_order_relaxed);
    const uint64_t ui64Start = RawCount() / ui64Speed;
    if (in_ulDuration == 0) return ui64Start;
    uint64_t ui64Elapsed;
    do {
        ui64Elapsed = RawCount() / ui64Speed - ui64Start;
    } while (ui64Elapsed < in_ulDuration);
    return ui64Elapsed;
}

int qxnanosleep(double in_dSeconds)
{
    timespec sRequest, sRemaining;
    sRequest.tv_sec = static_cast<time_t>(in_dSeconds);
    sRequest.tv_nsec = static_cast<long>((in_dSeconds - static_cast<double>(sRequest.tv_sec)) * 1000000000.0);
    int iResult;
    while ((iResult = nanosleep(&sRequest, &sRemaining)) == -1 && errno == EINTR) sRequest = sRemaining;
    return iResult;
}
