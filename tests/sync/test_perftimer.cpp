// The performance timer: the calibration rules driven by simulated counters,
// the units of both clock sources, the busy wait, and qxnanosleep under
// signal storms.
#include <qxbase/qxperftimer.h>

#include "sync/qxcalibration.h"
#include "tests/sync/support/qxsignalstorm.h"
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

namespace {

// A simulated counter and clock: each counter read advances the counter by
// a million ticks and the clock by what the current phase prescribes.
struct SFakeHardware {
    struct SPhase {
        uint64_t ui64TicksPerMicro;  // 0: the clock does not move
        uint64_t ui64MicrosPerRead;  // for a counter slower than 1 MHz
    };
    std::vector<SPhase> vecPhases;  // one per measurement, the last one repeats
    size_t uiMeasurement = 0;
    uint64_t ui64Counter = 0;
    uint64_t ui64Nanos = 1500000000;  // starts mid-second: exercises the negative nanosecond delta
    bool bStarted = false;

    const SPhase& Phase() const { return vecPhases[std::min(uiMeasurement, vecPhases.size() - 1)]; }
    bool bSameInstant = false;

    void Clock(timespec* out_psNow)
    {
        // The clock is read twice per measurement: start, then end. The
        // counter read right after the start is taken at the same instant.
        if (bStarted) ++uiMeasurement;
        bStarted = !bStarted;
        bSameInstant = bStarted;
        out_psNow->tv_sec = static_cast<time_t>(ui64Nanos / 1000000000);
        out_psNow->tv_nsec = static_cast<long>(ui64Nanos % 1000000000);
    }
    uint64_t Counter()
    {
        const SPhase& sPhase = Phase();
        uint64_t ui64Step = 1000000;
        ui64Counter += ui64Step;
        if (bSameInstant) {
            bSameInstant = false;
            return ui64Counter;
        }
        if (sPhase.ui64TicksPerMicro) ui64Nanos += ui64Step * 1000 / sPhase.ui64TicksPerMicro;
        ui64Nanos += sPhase.ui64MicrosPerRead * 1000;
        return ui64Counter;
    }
    uint64_t Measure()
    {
        return qxMeasureTicksPerMicrosecond([this](timespec* p) { Clock(p); }, [this] { return Counter(); });
    }
};

TEST(TimerCalibration, AMeasurementReadsTheCounterFrequency)
{
    SFakeHardware oHardware;
    oHardware.vecPhases = {{2500, 0}};
    EXPECT_EQ(2500u, oHardware.Measure());
    EXPECT_EQ(1u, oHardware.uiMeasurement);
}

TEST(TimerCalibration, AMeasurementRepeatsWhenNoTimePassedOrTheCounterIsTooSlow)
{
    SFakeHardware oHardware;
    // No microsecond passes, then a counter below 1 MHz (1 tick per 2 us),
    // then a good one.
    oHardware.vecPhases = {{0, 0}, {0, 2000000}, {3000, 0}};
    EXPECT_EQ(3000u, oHardware.Measure());
    EXPECT_EQ(3u, oHardware.uiMeasurement);
}

TEST(TimerCalibration, PairsMustAgreeWithinFourMegahertz)
{
    auto fnCalibrate = [](std::vector<uint64_t> in_vecMeasurements, int* out_piCalls) {
        size_t uiNext = 0;
        uint64_t ui64Speed = qxCalibrateTicksPerMillisecond([&] {
            ++*out_piCalls;
            return in_vecMeasurements[std::min(uiNext++, in_vecMeasurements.size() - 1)];
        });
        return ui64Speed;
    };
    int iCalls = 0;
    EXPECT_EQ(3000000u, fnCalibrate({3000, 3004}, &iCalls));
    EXPECT_EQ(2, iCalls);
    iCalls = 0;
    // Agreement only in the third attempt: its first value is used.
    EXPECT_EQ(2990000u, fnCalibrate({3000, 2900, 2800, 2700, 2990, 2993}, &iCalls));
    EXPECT_EQ(6, iCalls);
    iCalls = 0;
    // Never within 4 MHz in 8 attempts: speed 1.
    EXPECT_EQ(1u, fnCalibrate({1000, 1005, 2000, 2005, 3000, 3005, 4000, 4005, 5000, 5005, 6000, 6005, 7000, 7005,
                                8000, 8005},
                               &iCalls));
    EXPECT_EQ(16, iCalls);
    iCalls = 0;
    // The eighth attempt agrees.
    EXPECT_EQ(8000000u, fnCalibrate({1000, 1005, 2000, 2005, 3000, 3005, 4000, 4005, 5000, 5005, 6000, 6005, 7000,
                                     7005, 8000, 7996},
                                    &iCalls));
    EXPECT_EQ(16, iCalls);
}

TEST(PerfTimer, IsOneInstanceCreatedOnceAcrossThreads)
{
    std::vector<CQxPerfTimer*> vecSeen(4, nullptr);
    std::vector<std::thread> vecThreads;
    for (size_t i = 0; i < vecSeen.size(); ++i)
        vecThreads.emplace_back([&, i] { vecSeen[i] = CQxPerfTimer::GetTimerClass(); });
    for (auto& oThread : vecThreads) oThread.join();
    for (CQxPerfTimer* pTimer : vecSeen) EXPECT_EQ(CQxPerfTimer::GetTimerClass(), pTimer);
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
    uint64_t ui64Time = pTimer->GetTime();
    EXPECT_GE(ui64Time, ui64Raw / ui64Speed);
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
        uint64_t ui64Elapsed = pTimer->Wait(ulDuration);
        EXPECT_GE(ui64Elapsed, ulDuration);
        EXPECT_GE(pTimer->GetTime() - ui64Start, ulDuration);
    }
}

TEST(NanoSleep, SleepsTheWholeTimeThroughSignalStorms)
{
    for (bool bRestart : {false, true}) {
        long lBefore = CQxSignalStorm::Handled();
        double dStart = qxTestNow();
        int iResult;
        {
            CQxSignalStorm oStorm(pthread_self(), bRestart);
            iResult = qxnanosleep(0.25);
        }
        double dSlept = qxTestNow() - dStart;
        EXPECT_EQ(0, iResult);
        EXPECT_GE(dSlept, 0.25) << "SA_RESTART " << bRestart;
        EXPECT_GT(CQxSignalStorm::Handled() - lBefore, 20) << "the storm did not reach the sleep";
    }
}

TEST(NanoSleep, SplitsWholeSecondsFromTheFraction)
{
    double dStart = qxTestNow();
    EXPECT_EQ(0, qxnanosleep(1.02));
    EXPECT_GE(qxTestNow() - dStart, 1.02);
    // A negative time is refused by nanosleep and reported, not retried.
    EXPECT_EQ(-1, qxnanosleep(-1.0));
}

}  // namespace
