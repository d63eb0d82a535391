// The unnamed event and the deadline functions: states, consumption, pulses,
// time-outs and multi-object waits, each with real threads.
#include <qxbase/qxunnamedevent.h>

#include "tests/sync/support/qxmultiwait.h"
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <sys/time.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

double RealNow()
{
    timespec sNow;
    clock_gettime(CLOCK_REALTIME, &sNow);
    return static_cast<double>(sNow.tv_sec) + static_cast<double>(sNow.tv_nsec) * 1e-9;
}

double Seconds(const timespec& in_sTime)
{
    return static_cast<double>(in_sTime.tv_sec) + static_cast<double>(in_sTime.tv_nsec) * 1e-9;
}

TEST(UnnamedEventState, AutoResetSignalIsConsumedByExactlyOneWait)
{
    CQxUnnamedEvent oEvent(false);
    EXPECT_FALSE(oEvent.IsManualReset());
    EXPECT_FALSE(oEvent.IsSet());
    EXPECT_FALSE(oEvent.Wait(0));
    EXPECT_EQ(0, oEvent.Set());
    EXPECT_TRUE(oEvent.IsSet());
    EXPECT_TRUE(oEvent.Wait(0));
    EXPECT_FALSE(oEvent.IsSet());
    EXPECT_FALSE(oEvent.Wait(0));
    // Two Sets without a waiter in between are one signal.
    oEvent.Set();
    oEvent.Set();
    EXPECT_TRUE(oEvent.Wait(0));
    EXPECT_FALSE(oEvent.Wait(0));
}

TEST(UnnamedEventState, ManualResetStaysSignalledUntilReset)
{
    CQxUnnamedEvent oEvent(true);
    EXPECT_TRUE(oEvent.IsManualReset());
    oEvent.Set();
    EXPECT_TRUE(oEvent.Wait(0));
    EXPECT_TRUE(oEvent.Wait(10));
    EXPECT_TRUE(oEvent.IsSet());
    EXPECT_EQ(0, oEvent.Reset());
    EXPECT_FALSE(oEvent.IsSet());
    EXPECT_FALSE(oEvent.Wait(0));
}

TEST(UnnamedEventState, PulseWithoutWaitersLeavesTheStateAlone)
{
    for (bool bInitiallySet : {false, true}) {
        CQxUnnamedEvent oAuto(false);
        CQxUnnamedEvent oManual(true);
        if (bInitiallySet) {
            oAuto.Set();
            oManual.Set();
        }
        // Only a manual-reset event can be pulsed.
        EXPECT_FALSE(oAuto.Pulse());
        EXPECT_EQ(bInitiallySet, oAuto.IsSet());
        EXPECT_TRUE(oManual.Pulse());
        EXPECT_EQ(bInitiallySet, oManual.IsSet());
    }
}

TEST(UnnamedEventState, ConsumeSignalTakesAnAutoResetSignalOnce)
{
    CQxUnnamedEvent oAuto(false);
    CQxUnnamedEvent oManual(true);
    EXPECT_FALSE(oAuto.ConsumeSignal());
    oAuto.Set();
    oManual.Set();
    EXPECT_TRUE(oAuto.ConsumeSignal());
    EXPECT_FALSE(oAuto.ConsumeSignal());
    EXPECT_TRUE(oManual.ConsumeSignal());
    EXPECT_TRUE(oManual.ConsumeSignal());
}

// An event whose signalled test is its own: Wait asks IsSet through the
// virtual table, so a waiter on an auto-reset event is released as soon as
// the derived test says so, whatever the base state holds.
class CFlagEvent : public CQxUnnamedEvent {
public:
    explicit CFlagEvent(bool in_bManualReset) : CQxUnnamedEvent(in_bManualReset) {}
    bool IsSet() override { return m_bFlag.load() || CQxUnnamedEvent::IsSet(); }
    std::atomic<bool> m_bFlag{false};
};

TEST(UnnamedEventState, WaitTestsTheSignalThroughTheVirtualTable)
{
    for (bool bManualReset : {false, true}) {
        CFlagEvent oEvent(bManualReset);
        EXPECT_FALSE(oEvent.Wait(0)) << bManualReset;
        oEvent.m_bFlag = true;
        EXPECT_TRUE(oEvent.Wait(0)) << bManualReset;
        EXPECT_TRUE(oEvent.Wait(20)) << bManualReset;
        oEvent.m_bFlag = false;
        EXPECT_FALSE(oEvent.Wait(0)) << bManualReset;
        // The base signal still counts, and an auto-reset wait consumes it.
        oEvent.Set();
        EXPECT_TRUE(oEvent.Wait(0)) << bManualReset;
        EXPECT_EQ(bManualReset, oEvent.Wait(0)) << bManualReset;
    }
}

TEST(UnnamedEventTimeouts, TimedWaitNeverGivesUpBeforeItsDeadline)
{
    CQxUnnamedEvent oEvent(false);
    for (unsigned long ulMs : {1UL, 20UL, 60UL}) {
        double dStart = qxTestNow();
        EXPECT_FALSE(oEvent.Wait(ulMs));
        // The deadline is taken from a microsecond clock: allow that grain.
        EXPECT_GE(qxTestNow() - dStart, static_cast<double>(ulMs) * 1e-3 - 2e-6) << ulMs << " ms";
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
        EXPECT_TRUE(oEvent.Wait(~0UL));
        EXPECT_TRUE(bSetDone.load());
        oSetter.join();
    }
}

TEST(UnnamedEventTimeouts, DeadlinesCarryNanosecondsIntoSeconds)
{
    // 999 ms moves the nanoseconds past a second for any current time after
    // the first microsecond of a second, so the carry is exercised nearly
    // every time; the other values cover no carry and whole seconds.
    for (long lMs : {0L, 1L, 500L, 999L, 1000L, 1999L, 123456L}) {
        double dBefore = RealNow();
        timespec sByTimeOfDay;
        GetClockTime(lMs, &sByTimeOfDay);
        timespec sByClock;
        g_get_timeout_value(static_cast<unsigned long>(lMs), sByClock);
        double dAfter = RealNow();
        for (const timespec& sDeadline : {sByTimeOfDay, sByClock}) {
            EXPECT_GE(sDeadline.tv_nsec, 0) << lMs;
            EXPECT_LE(sDeadline.tv_nsec, 999999999) << lMs;
            double dRelative = static_cast<double>(lMs) * 1e-3;
            EXPECT_GE(Seconds(sDeadline), dBefore + dRelative - 2e-6) << lMs;
            EXPECT_LE(Seconds(sDeadline), dAfter + dRelative + 2e-6) << lMs;
        }
    }
}

TEST(UnnamedEventWaiters, ManualSetReleasesEveryWaiterAndStaysSet)
{
    CQxUnnamedEvent oEvent(true);
    constexpr int kiWaiters = 6;
    std::atomic<int> iReleased{0};
    std::vector<std::thread> vecWaiters;
    for (int i = 0; i < kiWaiters; ++i)
        vecWaiters.emplace_back([&] {
            if (oEvent.Wait(10000)) ++iReleased;
        });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    oEvent.Set();
    for (auto& oWaiter : vecWaiters) qxJoinWithin(oWaiter, 20, "manual-reset waiter");
    EXPECT_EQ(kiWaiters, iReleased.load());
    EXPECT_TRUE(oEvent.IsSet());
}

// A record registered twice is removed whole: a pulse afterwards finds no
// waiter and returns at once instead of waiting for a record that is gone.
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
    // The pulse found no waiter, so it released nobody.
    EXPECT_FALSE(oEvent.IsSignalledFor(ui64At));
}

TEST(UnnamedEventMultiWait, AnyOfSeveralEventsReleasesTheWaiter)
{
    for (bool bManual : {false, true}) {
        for (int iFire = 0; iFire < 3; ++iFire) {
            std::vector<std::unique_ptr<CQxUnnamedEvent>> vecOwned;
            std::vector<CQxUnnamedEvent*> vecEvents;
            for (int i = 0; i < 3; ++i) {
                vecOwned.emplace_back(new CQxUnnamedEvent(bManual));
                vecEvents.push_back(vecOwned.back().get());
            }
            int iResult = -2;
            std::thread oWaiter([&] { iResult = qxWaitAny(vecEvents, 10000); });
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
            vecEvents[static_cast<size_t>(iFire)]->Set();
            qxJoinWithin(oWaiter, 20, "multi-object waiter");
            EXPECT_EQ(iFire, iResult) << (bManual ? "manual" : "auto");
            // The auto-reset signal was consumed by the waiter; the
            // manual-reset one stays.
            EXPECT_EQ(bManual, vecEvents[static_cast<size_t>(iFire)]->IsSet());
        }
    }
}

TEST(UnnamedEventMultiWait, APulseReleasesAMultiObjectWaiter)
{
    CQxUnnamedEvent oManual(true);
    CQxUnnamedEvent oOther(false);
    std::vector<CQxUnnamedEvent*> vecEvents = {&oOther, &oManual};
    int iResult = -2;
    CQxTestGate oRegistered;
    std::thread oWaiter([&] { iResult = qxWaitAny(vecEvents, 10000, [&] { oRegistered.Open(); }); });
    ASSERT_TRUE(oRegistered.WaitOpen(std::chrono::seconds(10)));
    std::thread oPulser([&] { oManual.Pulse(); });
    qxJoinWithin(oWaiter, 20, "pulsed multi-object waiter");
    qxJoinWithin(oPulser, 20, "Pulse");
    EXPECT_EQ(1, iResult);
    EXPECT_FALSE(oManual.IsSet());
    EXPECT_EQ(-1, qxWaitAny(vecEvents, 0));
}

}  // namespace
