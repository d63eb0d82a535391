// Events under load: hand-offs around rings of threads, one release per
// auto-reset Set, every waiter released by a manual-reset Set, and
// multi-object waiters registering with shared events in random orders.
// Lost wake-ups show up as failed finite waits; deadlocks fire the watchdog.
#include <qxbase/qxunnamedevent.h>

#include "tests/sync/support/qxmultiwait.h"
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <random>

namespace {

std::vector<std::unique_ptr<CQxUnnamedEvent>> MakeEvents(int in_iCount, bool in_bManual)
{
    std::vector<std::unique_ptr<CQxUnnamedEvent>> vecEvents;
    for (int i = 0; i < in_iCount; ++i) vecEvents.emplace_back(new CQxUnnamedEvent(in_bManual));
    return vecEvents;
}

// One token travels around a ring: thread i waits on its own auto-reset
// event, then sets the next thread's. Every Wait must succeed; half of the
// threads wait with INFINITE (a lost wake-up there fires the watchdog), the
// others with a finite time-out (it shows up as a false).
TEST(EventStress, TokenRingsHandOffWithoutLosingAWakeUp)
{
    const long klPerRing = qxTestScale(1000000, 100000) / 4;
    for (int iSize : {2, 3, 5, 8}) {
        auto vecEvents = MakeEvents(iSize, false);
        std::atomic<long> lFailures{0};
        std::vector<std::thread> vecThreads;
        for (int i = 0; i < iSize; ++i)
            vecThreads.emplace_back([&, i] {
                CQxUnnamedEvent& rMine = *vecEvents[static_cast<size_t>(i)];
                CQxUnnamedEvent& rNext = *vecEvents[static_cast<size_t>((i + 1) % iSize)];
                for (long lLap = 0; lLap < klPerRing / iSize; ++lLap) {
                    if (!rMine.Wait(i % 2 ? 10000UL : kulQxInfinite)) return void(++lFailures);
                    rNext.Set();
                }
            });
        vecEvents[0]->Set();
        for (auto& oThread : vecThreads) qxJoinWithin(oThread, 120, "ring thread");
        EXPECT_EQ(0, lFailures.load()) << "ring of " << iSize;
        // The last thread's final Set gave the token back to thread 0.
        for (int i = 0; i < iSize; ++i) EXPECT_EQ(i == 0, vecEvents[static_cast<size_t>(i)]->IsSet()) << i;
    }
}

// Each Set must release exactly one of the waiters: the setter waits for one
// release before the next Set, and a waiter that succeeds checks that the
// releases never outnumber the Sets. Finite waits that fail must have lasted
// their whole time-out.
TEST(EventStress, EachAutoResetSetReleasesExactlyOneWaiter)
{
    const long klSets = qxTestScale(100000, 10000);
    CQxUnnamedEvent oEvent(false);
    std::atomic<long> lSetsIssued{0}, lReleased{0}, lOverReleases{0}, lEarlyTimeouts{0};
    std::atomic<bool> bStop{false};
    std::vector<std::thread> vecWaiters;
    for (int i = 0; i < 4; ++i)
        vecWaiters.emplace_back([&, i] {
            const unsigned long ulTimeout = 1 + static_cast<unsigned long>(i) * 3;
            while (!bStop.load()) {
                double dStart = qxTestNow();
                if (oEvent.Wait(ulTimeout))
                    lOverReleases += ++lReleased > lSetsIssued.load();
                else
                    lEarlyTimeouts += qxTestNow() - dStart < static_cast<double>(ulTimeout) * 1e-3 - 2e-6;
            }
        });
    long lStuckAt = -1;
    for (long lSet = 0; lSet < klSets && lStuckAt < 0; ++lSet) {
        ++lSetsIssued;
        oEvent.Set();
        if (!qxWaitUntil([&] { return lReleased.load() >= lSet + 1; }, 10)) lStuckAt = lSet;
    }
    bStop = true;
    for (auto& oWaiter : vecWaiters) qxJoinWithin(oWaiter, 30, "auto-reset waiter");
    EXPECT_EQ(-1, lStuckAt) << "a Set released nobody";
    EXPECT_EQ(0, lOverReleases.load());
    EXPECT_EQ(lSetsIssued.load(), lReleased.load());
    EXPECT_EQ(0, lEarlyTimeouts.load());
}

// Every round, all waiters are inside Wait before the Set; each must return
// released, and the event stays set until the Reset.
TEST(EventStress, EveryManualResetSetReleasesEveryWaiter)
{
    const long klRounds = qxTestScale(3000, 300);
    constexpr int kiWaiters = 5;
    CQxUnnamedEvent oEvent(true);
    std::mutex oMutex;
    std::condition_variable oChanged;
    long lRound = -1;
    int iEntered = 0;
    std::atomic<int> iReturned{0};
    std::atomic<long> lFailures{0};
    std::vector<std::thread> vecWaiters;
    for (int i = 0; i < kiWaiters; ++i)
        vecWaiters.emplace_back([&] {
            for (long lMine = 0; lMine < klRounds; ++lMine) {
                {
                    std::unique_lock<std::mutex> oLock(oMutex);
                    oChanged.wait(oLock, [&] { return lRound >= lMine; });
                    ++iEntered;
                    oChanged.notify_all();
                }
                lFailures += !oEvent.Wait(10000);
                ++iReturned;
            }
        });
    for (long lNext = 0; lNext < klRounds; ++lNext) {
        std::unique_lock<std::mutex> oLock(oMutex);
        iEntered = 0;
        iReturned = 0;
        lRound = lNext;
        oChanged.notify_all();
        oChanged.wait(oLock, [&] { return iEntered == kiWaiters; });
        oLock.unlock();
        oEvent.Set();
        ASSERT_TRUE(qxWaitUntil([&] { return iReturned.load() == kiWaiters; }, 20)) << "round " << lNext;
        ASSERT_TRUE(oEvent.IsSet()) << "round " << lNext;
        oEvent.Reset();
    }
    for (auto& oWaiter : vecWaiters) qxJoinWithin(oWaiter, 30, "manual-reset waiter");
    EXPECT_EQ(0, lFailures.load());
}

// Setter k sets only event k and waits for its release before setting again;
// every waiter waits on all events, registering in a fresh random order each
// time, so the events list the same waiters in every order.
TEST(EventStress, MultiObjectWaitersInRandomOrdersShareTheEvents)
{
    const long klSetsPerEvent = qxTestScale(20000, 2000);
    constexpr int kiEvents = 3;
    const uint32_t kuiSeed = qxTestSeed();
    auto vecEvents = MakeEvents(kiEvents, false);
    std::atomic<long> alSets[kiEvents] = {}, alReleased[kiEvents] = {};
    std::atomic<long> lOverReleases{0}, lStuck{0};
    std::atomic<bool> bStop{false};
    std::vector<std::thread> vecWaiters, vecSetters;
    for (int w = 0; w < 3; ++w)
        vecWaiters.emplace_back([&, w] {
            std::mt19937 oRandom(kuiSeed + static_cast<uint32_t>(w));
            std::vector<int> vecOrder = {0, 1, 2};
            while (!bStop.load()) {
                std::shuffle(vecOrder.begin(), vecOrder.end(), oRandom);
                std::vector<CQxUnnamedEvent*> vecWaitOn;
                for (int i : vecOrder) vecWaitOn.push_back(vecEvents[static_cast<size_t>(i)].get());
                const int iFired = qxWaitAny(vecWaitOn, 5);
                if (iFired < 0) continue;
                const int iEvent = vecOrder[static_cast<size_t>(iFired)];
                lOverReleases += ++alReleased[iEvent] > alSets[iEvent].load();
            }
        });
    for (int k = 0; k < kiEvents; ++k)
        vecSetters.emplace_back([&, k] {
            for (long lSet = 0; lSet < klSetsPerEvent; ++lSet) {
                ++alSets[k];
                vecEvents[static_cast<size_t>(k)]->Set();
                if (!qxWaitUntil([&] { return alReleased[k].load() >= lSet + 1; }, 10)) return void(++lStuck);
            }
        });
    for (auto& oSetter : vecSetters) qxJoinWithin(oSetter, 120, "setter");
    bStop = true;
    for (auto& oWaiter : vecWaiters) qxJoinWithin(oWaiter, 30, "multi-object waiter");
    EXPECT_EQ(0, lStuck.load());
    EXPECT_EQ(0, lOverReleases.load());
    for (int i = 0; i < kiEvents; ++i) EXPECT_EQ(alSets[i].load(), alReleased[i].load()) << "event " << i;
}

}  // namespace
