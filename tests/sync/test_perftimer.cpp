// The performance timer: the calibration rules driven by simulated counters,
// the units of both clock sources, the busy wait, and qxnanosleep under
// signal storms.
#include <qxbase/qxperftimer.h>

#include "sync/qxcalibration.h"
#include "tests/sync/support/qxsignalstorm.h"
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

// A simulated clock and counter: the counter advances a million ticks a
// read, so a measurement sees ten million ticks, and the clock moves by the
// microseconds the test gives each measurement (the last value repeats).
// Every measurement starts a millisecond before a whole second, so its end
// lies in the next second: the nanoseconds differ negatively.
struct SFakeHardware {
    std::vector<uint64_t> vecMicros;
    size_t uiMeasurements = 0;
    uint64_t ui64Counter = 0;
    bool bAtStart = true;

    uint64_t Measure()
    {
        auto fnClock = [this](timespec* out_psNow) {
            if (bAtStart) ++uiMeasurements;
            const uint64_t ui64Nanos =
                1999000000ull + (bAtStart ? 0 : 1000 * vecMicros[std::min(uiMeasurements, vecMicros.size()) - 1]);
            bAtStart = !bAtStart;
            out_psNow->tv_sec = static_cast<time_t>(ui64Nanos / 1000000000);
            out_psNow->tv_nsec = static_cast<long>(ui64Nanos % 1000000000);
        };
        return qxMeasureTicksPerMicrosecond(fnClock, [this] { return ui64Counter += 1000000; });
    }
};

// A measurement reads the counter's frequency, and repeats when no
// microsecond passed or the counter runs below 1 MHz (20 s for its ten
// million ticks).
TEST(TimerCalibration, AMeasurementRepeatsWhenNoTimePassedOrTheCounterIsTooSlow)
{
    const struct {
        std::vector<uint64_t> vecMicros;
        uint64_t ui64Speed;
        size_t uiMeasurements;
    } kasCases[] = {{{4000}, 2500, 1}, {{0, 20000000, 3333}, 3000, 3}};
    for (const auto& rsCase : kasCases) {
        SFakeHardware oHardware;
        oHardware.vecMicros = rsCase.vecMicros;
        EXPECT_EQ(rsCase.ui64Speed, oHardware.Measure());
        EXPECT_EQ(rsCase.uiMeasurements, oHardware.uiMeasurements);
    }
}

// Up to eight pairs of measurements; the first of the first pair within 4 MHz
// gives the speed, and none gives 1.
TEST(TimerCalibration, PairsMustAgreeWithinFourMegahertz)
{
    const std::vector<uint64_t> kvecNeverAgree = {1000, 1005, 2000, 2005, 3000, 3005, 4000, 4005,
                                                  5000, 5005, 6000, 6005, 7000, 7005, 8000, 8005};
    std::vector<uint64_t> vecEighthAgrees = kvecNeverAgree;
    vecEighthAgrees.back() = 7996;
    const struct {
        std::vector<uint64_t> vecMeasurements;
        uint64_t ui64Speed;
        int iCalls;
    } kasCases[] = {{{3000, 3004}, 3000000, 2},
                    {{3000, 2900, 2800, 2700, 2990, 2993}, 2990000, 6},
                    {kvecNeverAgree, 1, 16},
                    {vecEighthAgrees, 8000000, 16}};
    for (const auto& rsCase : kasCases) {
        int iCalls = 0;
        EXPECT_EQ(rsCase.ui64Speed, qxCalibrateTicksPerMillisecond([&] {
                      return rsCase.vecMeasurements[std::min<size_t>(iCalls++, rsCase.vecMeasurements.size() - 1)];
                  }));
        EXPECT_EQ(rsCase.iCalls, iCalls);
    }
}

TEST(PerfTimer, WithAnInvariantCounterTimeIsInMilliseconds)
{
    CQxPerfTimer* pTimer = CQxPerfTimer::GetTimerClass();
    if (!g_bInvariantTSC) GTEST_SKIP() << "this processor does not report an invariant time-stamp counter";
    uint64_t ui64Speed = pTimer->GetProcessorSpeed();
    // A counter of at least 1 MHz: at least 1000 ticks per millisecond.
    ASSERT_GE(ui64Speed, 1000u);
    EXPECT_EQ(0u, ui64Speed % 1000);
    uint64_t ui64Before = pTimer->GetTime();
    double dStart = qxTestNow();
    EXPECT_EQ(0, qxnanosleep(0.2));
    double dSlept = qxTestNow() - dStart;
    uint64_t ui64Elapsed = pTimer->GetTime() - ui64Before;
    // Milliseconds, within the calibration's tolerance (a few MHz in GHz).
    EXPECT_GE(static_cast<double>(ui64Elapsed), dSlept * 1000 * 0.98 - 1);
    EXPECT_LE(static_cast<double>(ui64Elapsed), dSlept * 1000 * 1.02 + 1);
    uint64_t ui64Raw = pTimer->GetTickCount();
    EXPECT_GE(pTimer->GetTime(), ui64Raw / ui64Speed);
}

TEST(PerfTimer, WithoutAnInvariantCounterTheRealTimeClockIsUsed)
{
    CQxPerfTimer* pTimer = CQxPerfTimer::GetTimerClass();
    const bool bSaved = g_bInvariantTSC;
    g_bInvariantTSC = false;
    EXPECT_EQ(1000u, pTimer->GetProcessorSpeed());
    timespec sBefore, sAfter;
    clock_gettime(CLOCK_REALTIME, &sBefore);
    uint64_t ui64Raw = pTimer->GetTickCount();
    clock_gettime(CLOCK_REALTIME, &sAfter);
    g_bInvariantTSC = bSaved;
    EXPECT_GE(ui64Raw, static_cast<uint64_t>(sBefore.tv_sec) * 1000000000ull + static_cast<uint64_t>(sBefore.tv_nsec));
    EXPECT_LE(ui64Raw, static_cast<uint64_t>(sAfter.tv_sec) * 1000000000ull + static_cast<uint64_t>(sAfter.tv_nsec));
}

TEST(PerfTimer, BusyWaitSpinsForItsDurationAndZeroReadsTheTime)
{
    CQxPerfTimer* pTimer = CQxPerfTimer::GetTimerClass();
    uint64_t ui64Before = pTimer->GetTime();
    uint64_t ui64Now = pTimer->Wait(0);
    EXPECT_GE(ui64Now, ui64Before);
    EXPECT_LE(ui64Now, pTimer->GetTime());
    for (unsigned long ulDuration : {1UL, 3UL}) {
        uint64_t ui64Start = pTimer->GetTime();
        EXPECT_GE(pTimer->Wait(ulDuration), ulDuration);
        EXPECT_GE(pTimer->GetTime() - ui64Start, ulDuration);
    }
}

// Whole seconds and the fraction both count, and a storm of signals with or
// without SA_RESTART shortens neither; a negative time is refused by
// nanosleep and reported, not retried.
TEST(NanoSleep, SleepsTheWholeTimeThroughSignalStorms)
{
    for (double dSeconds : {0.25, 1.02}) {
        const bool bRestart = dSeconds > 1;
        long lBefore = CQxSignalStorm::Handled();
        double dStart = qxTestNow();
        int iResult;
        {
            CQxSignalStorm oStorm(pthread_self(), bRestart);
            iResult = qxnanosleep(dSeconds);
        }
        EXPECT_EQ(0, iResult);
        EXPECT_GE(qxTestNow() - dStart, dSeconds) << "SA_RESTART " << bRestart;
        EXPECT_GT(CQxSignalStorm::Handled() - lBefore, 20) << "the storm did not reach the sleep";
    }
    EXPECT_EQ(-1, qxnanosleep(-1.0));
}

}  // namespace
