// The unnamed event and the deadline functions: states, consumption, pulses,
// time-outs and multi-object waits, each with real threads.
#include <qxbase/qxunnamedevent.h>

#include "tests/sync/support/qxmultiwait.h"
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>

namespace {

double Seconds(const timespec& in_sTime)
{
    return static_cast<double>(in_sTime.tv_sec) + static_cast<double>(in_sTime.tv_nsec) * 1e-9;
}

// Both kinds through one script: an auto-reset signal is taken by exactly one
// wait (two Sets without a waiter in between are one signal), a manual-reset
// one stays until Reset; only a manual-reset event can be pulsed, and a pulse
// without waiters leaves the state as it was.
TEST(UnnamedEventState, OnlyAnAutoResetSignalIsConsumed)
{
    for (bool bManual : {false, true}) {
        SCOPED_TRACE(bManual ? "manual reset" : "auto reset");
        CQxUnnamedEvent oEvent(bManual);
        EXPECT_EQ(bManual, oEvent.IsManualReset());
        EXPECT_FALSE(oEvent.Wait(0));
        EXPECT_FALSE(oEvent.ConsumeSignal());
        EXPECT_EQ(bManual, oEvent.Pulse());
        EXPECT_FALSE(oEvent.IsSet());
        EXPECT_EQ(0, oEvent.Set());
        EXPECT_EQ(0, oEvent.Set());
        EXPECT_EQ(bManual, oEvent.Pulse());
        EXPECT_TRUE(oEvent.IsSet());
        EXPECT_TRUE(oEvent.Wait(0));
        EXPECT_EQ(bManual, oEvent.IsSet());
        EXPECT_EQ(bManual, oEvent.Wait(10));
        oEvent.Set();
        EXPECT_TRUE(oEvent.ConsumeSignal());
        EXPECT_EQ(bManual, oEvent.ConsumeSignal());
        EXPECT_EQ(0, oEvent.Reset());
        EXPECT_FALSE(oEvent.IsSet());
        for (unsigned long ulMs : {1UL, 20UL, 60UL}) {
            double dStart = qxTestNow();
            EXPECT_FALSE(oEvent.Wait(ulMs));
            // The deadline is taken from a microsecond clock: allow that grain.
            EXPECT_GE(qxTestNow() - dStart, static_cast<double>(ulMs) * 1e-3 - 2e-6) << ulMs << " ms";
        }
    }
}

// An event whose signalled test is its own: Wait asks IsSet through the
// virtual table, so a waiter is released as soon as the derived test says so,
// whatever the base state holds.
class CFlagEvent : public CQxUnnamedEvent {
public:
    explicit CFlagEvent(bool in_bManualReset) : CQxUnnamedEvent(in_bManualReset) {}
    bool IsSet() override { return m_bFlag.load() || CQxUnnamedEvent::IsSet(); }
    std::atomic<bool> m_bFlag{false};
};

TEST(UnnamedEventState, WaitTestsTheSignalThroughTheVirtualTable)
{
    for (bool bManual : {false, true}) {
        SCOPED_TRACE(bManual ? "manual reset" : "auto reset");
        CFlagEvent oEvent(bManual);
        EXPECT_FALSE(oEvent.Wait(0));
        oEvent.m_bFlag = true;
        EXPECT_TRUE(oEvent.Wait(0));
        EXPECT_TRUE(oEvent.Wait(20));
        oEvent.m_bFlag = false;
        EXPECT_FALSE(oEvent.Wait(0));
        // The base signal still counts, and an auto-reset wait consumes it.
        oEvent.Set();
        EXPECT_TRUE(oEvent.Wait(0));
        EXPECT_EQ(bManual, oEvent.Wait(0));
    }
}

// An all-ones 64-bit time-out is a very long finite wait: it neither expires
// at once nor fails as an invalid deadline.
TEST(UnnamedEventTimeouts, AllOnesTimeoutWaitsForTheSet)
{
    for (bool bManual : {false, true}) {
        CQxUnnamedEvent oEvent(bManual);
        std::atomic<bool> bSetDone{false};
        std::thread oSetter([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            bSetDone = true;
            oEvent.Set();
        });
        EXPECT_TRUE(oEvent.Wait(~0UL) && bSetDone.load()) << (bManual ? "manual reset" : "auto reset");
        oSetter.join();
    }
}

TEST(UnnamedEventTimeouts, DeadlinesCarryNanosecondsIntoSeconds)
{
    // 999 ms moves the nanoseconds past a second for any current time after
    // the first microsecond of a second, so the carry is exercised nearly
    // every time; the other values cover no carry and whole seconds.
    for (long lMs : {0L, 1L, 500L, 999L, 1000L, 1999L, 123456L}) {
        timespec sBefore, sByTimeOfDay, sByClock, sAfter;
        clock_gettime(CLOCK_REALTIME, &sBefore);
        GetClockTime(lMs, &sByTimeOfDay);
        g_get_timeout_value(static_cast<unsigned long>(lMs), sByClock);
        clock_gettime(CLOCK_REALTIME, &sAfter);
        const double dRelative = static_cast<double>(lMs) * 1e-3;
        for (const timespec& sDeadline : {sByTimeOfDay, sByClock}) {
            EXPECT_TRUE(sDeadline.tv_nsec >= 0 && sDeadline.tv_nsec <= 999999999) << lMs;
            EXPECT_GE(Seconds(sDeadline), Seconds(sBefore) + dRelative - 2e-6) << lMs;
            EXPECT_LE(Seconds(sDeadline), Seconds(sAfter) + dRelative + 2e-6) << lMs;
        }
    }
}

// A record registered twice is removed whole: a pulse afterwards finds no
// waiter and returns at once instead of waiting for a record that is gone,
// and it released nobody.
TEST(UnnamedEventWaiters, RemovingARecordRemovesEveryRegistration)
{
    CQxUnnamedEvent oEvent(true);
    SQxCondition sCondition;
    SQxSynchroObject sRecord = {nullptr, nullptr, &sCondition};
    const uint64_t ui64At = oEvent.RegisterWaiter(&sRecord);
    oEvent.AddSynchroObject(&sRecord);
    oEvent.RemoveSynchroObject(&sRecord);
    std::thread oPulser([&] { EXPECT_TRUE(oEvent.Pulse()); });
    qxJoinWithin(oPulser, 10, "Pulse after removal");
    EXPECT_FALSE(oEvent.IsSet());
    EXPECT_FALSE(oEvent.IsSignalledFor(ui64At));
}

// A waiter on three events is released by a Set of any of them (an auto-reset
// signal is consumed, a manual-reset one stays), and by a Pulse, which leaves
// nothing signalled.
TEST(UnnamedEventMultiWait, AnyOfSeveralEventsOrAPulseReleasesTheWaiter)
{
    for (bool bManual : {false, true}) {
        for (int iFire = 0; iFire < 4; ++iFire) {
            SCOPED_TRACE(std::string(bManual ? "manual" : "auto") + " reset, event " + std::to_string(iFire));
            const bool bPulse = iFire == 3;
            if (bPulse && !bManual) continue;
            std::vector<std::unique_ptr<CQxUnnamedEvent>> vecOwned;
            std::vector<CQxUnnamedEvent*> vecEvents;
            for (int i = 0; i < 3; ++i) {
                vecOwned.emplace_back(new CQxUnnamedEvent(bManual));
                vecEvents.push_back(vecOwned.back().get());
            }
            int iResult = -2;
            CQxTestGate oRegistered;
            std::thread oWaiter([&] { iResult = qxWaitAny(vecEvents, 10000, [&] { oRegistered.Open(); }); });
            ASSERT_TRUE(oRegistered.WaitOpen());
            CQxUnnamedEvent& rFired = *vecEvents[bPulse ? 1 : static_cast<size_t>(iFire)];
            std::thread oSignaller([&] { bPulse ? rFired.Pulse() : rFired.Set(); });
            qxJoinWithin(oWaiter, 20, "multi-object waiter");
            qxJoinWithin(oSignaller, 20, "Set or Pulse");
            EXPECT_EQ(bPulse ? 1 : iFire, iResult);
            EXPECT_EQ(bManual && !bPulse, rFired.IsSet());
        }
    }
}

}  // namespace
