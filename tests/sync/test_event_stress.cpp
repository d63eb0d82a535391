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
#include <thread>
#include <vector>

namespace {

using std::chrono::milliseconds;

// One token travels around a ring: thread i waits on its own auto-reset
// event, then sets the next thread's. Every Wait must succeed; half of the
// threads wait with INFINITE (a lost wake-up there fires the watchdog), the
// others with a finite time-out (it shows up as a false).
TEST(EventStress, TokenRingsHandOffWithoutLosingAWakeUp)
{
    const long klHandOffs = qxTestScale(1000000, 100000);
    const int aiRingSizes[] = {2, 3, 5, 8};
    const long klPerRing = klHandOffs / 4;
    for (int iSize : aiRingSizes) {
        std::vector<std::unique_ptr<CQxUnnamedEvent>> vecEvents;
        for (int i = 0; i < iSize; ++i) vecEvents.emplace_back(new CQxUnnamedEvent(false));
        std::atomic<long> lFailures{0};
        const long klLaps = klPerRing / iSize;
        std::vector<std::thread> vecThreads;
        for (int i = 0; i < iSize; ++i)
            vecThreads.emplace_back([&, i] {
                CQxUnnamedEvent& rMine = *vecEvents[static_cast<size_t>(i)];
                CQxUnnamedEvent& rNext = *vecEvents[static_cast<size_t>((i + 1) % iSize)];
                unsigned long ulTimeout = (i % 2) ? 10000UL : kulQxInfinite;
                for (long lLap = 0; lLap < klLaps; ++lLap) {
                    if (!rMine.Wait(ulTimeout)) {
                        ++lFailures;
                        return;
                    }
                    rNext.Set();
                }
            });
        vecEvents[0]->Set();
        for (auto& oThread : vecThreads) qxJoinWithin(oThread, 120, "ring thread");
        EXPECT_EQ(0, lFailures.load()) << "ring of " << iSize;
        // The last thread's final Set gave the token back to thread 0.
        EXPECT_TRUE(vecEvents[0]->IsSet());
        for (int i = 1; i < iSize; ++i) EXPECT_FALSE(vecEvents[static_cast<size_t>(i)]->IsSet());
    }
}

// Each Set must release exactly one of the waiters: the setter waits for one
// release before the next Set, and a waiter that succeeds checks that the
// releases never outnumber the Sets. Finite waits that fail must have lasted
// their whole time-out.
TEST(EventStress, EachAutoResetSetReleasesExactlyOneWaiter)
{
    const long klSets = qxTestScale(100000, 10000);
    constexpr int kiWaiters = 4;
    CQxUnnamedEvent oEvent(false);
    std::atomic<long> lSetsIssued{0}, lReleased{0}, lOverReleases{0}, lEarlyTimeouts{0};
    std::atomic<bool> bStop{false};
    std::vector<std::thread> vecWaiters;
    for (int i = 0; i < kiWaiters; ++i)
        vecWaiters.emplace_back([&, i] {
            const unsigned long ulTimeout = 1 + static_cast<unsigned long>(i) * 3;
            while (!bStop.load()) {
                double dStart = qxTestNow();
                if (oEvent.Wait(ulTimeout)) {
                    if (++lReleased > lSetsIssued.load()) ++lOverReleases;
                } else if (qxTestNow() - dStart < static_cast<double>(ulTimeout) * 1e-3 - 2e-6) {
                    ++lEarlyTimeouts;
                }
            }
        });
    long lStuckAt = -1;
    for (long lSet = 0; lSet < klSets && lStuckAt < 0; ++lSet) {
        ++lSetsIssued;
        oEvent.Set();
        double dDeadline = qxTestNow() + 10;
        while (lReleased.load() < lSet + 1) {
            if (qxTestNow() > dDeadline) {
                lStuckAt = lSet;
                break;
            }
            std::this_thread::yield();
        }
    }
    bStop = true;
    for (auto& oWaiter : vecWaiters) qxJoinWithin(oWaiter, 30, "auto-reset waiter");
    EXPECT_EQ(-1, lStuckAt) << "a Set released nobody";
    EXPECT_EQ(0, lOverReleases.load());
    EXPECT_EQ(lSetsIssued.load(), lReleased.load());
    EXPECT_EQ(0, lEarlyTimeouts.load());
}

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
                if (!oEvent.Wait(10000)) ++lFailures;
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
        double dDeadline = qxTestNow() + 20;
        while (iReturned.load() < kiWaiters && qxTestNow() < dDeadline) std::this_thread::yield();
        ASSERT_EQ(kiWaiters, iReturned.load()) << "round " << lNext;
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
    constexpr int kiEvents = 3, kiWaiters = 3;
    const uint32_t kuiSeed = qxTestSeed();
    std::vector<std::unique_ptr<CQxUnnamedEvent>> vecEvents;
    for (int i = 0; i < kiEvents; ++i) vecEvents.emplace_back(new CQxUnnamedEvent(false));
    std::atomic<long> alSets[kiEvents], alReleased[kiEvents];
    for (int i = 0; i < kiEvents; ++i) alSets[i] = alReleased[i] = 0;
    std::atomic<long> lOverReleases{0};
    std::atomic<bool> bStop{false};
    std::vector<std::thread> vecWaiters;
    for (int w = 0; w < kiWaiters; ++w)
        vecWaiters.emplace_back([&, w] {
            std::mt19937 oRandom(kuiSeed + static_cast<uint32_t>(w));
            std::vector<int> vecOrder = {0, 1, 2};
            while (!bStop.load()) {
                std::shuffle(vecOrder.begin(), vecOrder.end(), oRandom);
                std::vector<CQxUnnamedEvent*> vecWaitOn;
                for (int i : vecOrder) vecWaitOn.push_back(vecEvents[static_cast<size_t>(i)].get());
                int iFired = qxWaitAny(vecWaitOn, 5);
                if (iFired < 0) continue;
                int iEvent = vecOrder[static_cast<size_t>(iFired)];
                if (++alReleased[iEvent] > alSets[iEvent].load()) ++lOverReleases;
            }
        });
    std::atomic<long> lStuck{0};
    std::vector<std::thread> vecSetters;
    for (int k = 0; k < kiEvents; ++k)
        vecSetters.emplace_back([&, k] {
            for (long lSet = 0; lSet < klSetsPerEvent; ++lSet) {
                ++alSets[k];
                vecEvents[static_cast<size_t>(k)]->Set();
                double dDeadline = qxTestNow() + 10;
                while (alReleased[k].load() < lSet + 1) {
                    if (qxTestNow() > dDeadline) {
                        ++lStuck;
                        return;
                    }
                    std::this_thread::yield();
                }
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
