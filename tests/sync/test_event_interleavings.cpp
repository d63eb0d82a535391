// The event's guarantees under the interleavings that break a naive
// implementation, each forced with the delay points of the test build: an
// auto-reset Set releases exactly one waiter, no waiter sleeps on while the
// event is set for it, Sets over shared multi-object waiters cannot
// deadlock, and a Pulse always collects its waiters.
#include <qxbase/qxunnamedevent.h>

#include "tests/sync/support/qxdelayhook.h"
#include "tests/sync/support/qxmultiwait.h"
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <set>
#include <thread>
#include <vector>

namespace {

using std::chrono::milliseconds;

bool IsRole(const char* in_pszRole)
{
    return tl_pszQxTestRole && std::strcmp(tl_pszQxTestRole, in_pszRole) == 0;
}

// Opens a gate the first time the waiter of role A, and of role B, is about
// to sleep (its Set then lands once it sleeps).
struct SSleepGates {
    CQxTestGate oA, oB;
    void Note(EQxSyncDelayPoint in_ePoint)
    {
        if (in_ePoint != keQxDelayWaitSleeping) return;
        if (IsRole("A")) oA.Open();
        if (IsRole("B")) oB.Open();
    }
};

// Runs a Wait of the event on a thread with a role; the result lands in
// *out_pbResult.
std::thread StartWaiter(const char* in_pszRole, CQxUnnamedEvent& in_oEvent, unsigned long in_ulMs,
                        std::atomic<int>* out_piResult)
{
    return std::thread([=, &in_oEvent] {
        tl_pszQxTestRole = in_pszRole;
        out_piResult->store(in_oEvent.Wait(in_ulMs) ? 1 : 0);
    });
}

TEST(EventInterleaving, AnAutoResetSetReleasesTheOldestSleepingWaiter)
{
    CQxUnnamedEvent oEvent(false);
    SSleepGates sAsleep;
    CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void*) { sAsleep.Note(ePoint); });
    std::atomic<int> iA{-1}, iB{-1};
    std::thread oA = StartWaiter("A", oEvent, 10000, &iA);
    ASSERT_TRUE(sAsleep.oA.WaitOpen(milliseconds(10000)));
    std::thread oB = StartWaiter("B", oEvent, 300, &iB);
    ASSERT_TRUE(sAsleep.oB.WaitOpen(milliseconds(10000)));
    oEvent.Set();
    qxJoinWithin(oA, 20, "oldest waiter");
    qxJoinWithin(oB, 20, "second waiter");
    EXPECT_EQ(1, iA.load());
    EXPECT_EQ(0, iB.load());
    EXPECT_FALSE(oEvent.IsSet());
}

// A is signalled; B registered before the Set but tests the state only
// afterwards. Both see the event set before either consumes it.
TEST(EventInterleaving, TwoWaitersThatBothSeeOneSetCannotBothTakeIt)
{
    CQxUnnamedEvent oEvent(false);
    SSleepGates sAsleep;
    CQxTestGate oBRegistered, oReleaseB;
    CQxTestRendezvous oBothSawIt(2);
    CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void*) {
        sAsleep.Note(ePoint);
        if (ePoint == keQxDelayWaitRegistered && IsRole("B")) {
            oBRegistered.Open();
            oReleaseB.WaitOpen(milliseconds(10000));
        }
        if (ePoint == keQxDelayWaitSignalSeen) oBothSawIt.Arrive(milliseconds(3000));
    });
    std::atomic<int> iA{-1}, iB{-1};
    std::thread oA = StartWaiter("A", oEvent, 600, &iA);
    ASSERT_TRUE(sAsleep.oA.WaitOpen(milliseconds(10000)));
    std::thread oB = StartWaiter("B", oEvent, 600, &iB);
    ASSERT_TRUE(oBRegistered.WaitOpen(milliseconds(10000)));
    oEvent.Set();
    oReleaseB.Open();
    qxJoinWithin(oA, 20, "waiter A");
    qxJoinWithin(oB, 20, "waiter B");
    ASSERT_EQ(2, oBothSawIt.Arrived()) << "the interleaving was not forced";
    EXPECT_EQ(1, iA.load() + iB.load()) << "A " << iA.load() << ", B " << iB.load();
    EXPECT_FALSE(oEvent.IsSet());
}

// The oldest waiter times out; before it unregisters, a Set signals it (and
// only it). The signal must not be lost while B sleeps on.
TEST(EventInterleaving, ATimedOutOldestWaiterDoesNotStrandASet)
{
    CQxUnnamedEvent oEvent(false);
    SSleepGates sAsleep;
    std::atomic<bool> bSetInWindow{false};
    CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void*) {
        sAsleep.Note(ePoint);
        if (ePoint == keQxDelayWaitTimedOut && IsRole("A") && !bSetInWindow.exchange(true)) oEvent.Set();
    });
    std::atomic<int> iA{-1}, iB{-1};
    std::thread oA = StartWaiter("A", oEvent, 150, &iA);
    ASSERT_TRUE(sAsleep.oA.WaitOpen(milliseconds(10000)));
    std::thread oB = StartWaiter("B", oEvent, 800, &iB);
    ASSERT_TRUE(sAsleep.oB.WaitOpen(milliseconds(10000)));
    qxJoinWithin(oA, 20, "timed-out waiter");
    qxJoinWithin(oB, 20, "second waiter");
    ASSERT_TRUE(bSetInWindow.load());
    EXPECT_EQ(1, iA.load() + iB.load()) << "A " << iA.load() << ", B " << iB.load();
    EXPECT_FALSE(oEvent.IsSet());
}

// A multi-object waiter satisfied by one event leaves another event whose
// Set signalled only it; the next waiter of that event must be woken.
TEST(EventInterleaving, AMultiObjectWaiterLeavingPassesAnUnusedSignalOn)
{
    CQxUnnamedEvent oFirst(false), oSecond(false);
    std::vector<CQxUnnamedEvent*> vecBoth = {&oFirst, &oSecond};
    CQxTestGate oWRegistered;
    SSleepGates sAsleep;
    std::atomic<bool> bBTimedOut{false};
    CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void*) {
        sAsleep.Note(ePoint);
        if (ePoint == keQxDelayWaitTimedOut && IsRole("B")) bBTimedOut = true;
    });
    int iW = -2;
    std::thread oW([&] {
        iW = qxWaitAny(vecBoth, 10000, [&] { oWRegistered.Open(); }, [&] { oSecond.Set(); });
    });
    ASSERT_TRUE(oWRegistered.WaitOpen(milliseconds(10000)));
    std::atomic<int> iB{-1};
    std::thread oB = StartWaiter("B", oSecond, 1000, &iB);
    ASSERT_TRUE(sAsleep.oB.WaitOpen(milliseconds(10000)));
    oFirst.Set();
    qxJoinWithin(oW, 20, "multi-object waiter");
    qxJoinWithin(oB, 20, "second waiter");
    EXPECT_EQ(0, iW);
    EXPECT_EQ(1, iB.load());
    // Woken for the signal, not rescued by its own time-out.
    EXPECT_FALSE(bBTimedOut.load());
    EXPECT_FALSE(oSecond.IsSet());
}

// Two events list the same two multi-object waiters in opposite orders and
// are set at once, each Set holding its first waiter's mutex until the other
// Set has taken one too (or a time-out passes).
TEST(EventInterleaving, SetsOverWaitersListedInOppositeOrdersDoNotDeadlock)
{
    for (bool bManual : {true, false}) {
        CQxUnnamedEvent oOne(bManual), oTwo(bManual);
        CQxTestMultiWaiter oW1, oW2;
        // oOne lists W1 then W2, oTwo lists W2 then W1.
        oW1.Register(&oOne);
        oW2.Register(&oTwo);
        oW1.Register(&oTwo);
        oW2.Register(&oOne);
        CQxTestRendezvous oBothHoldOne(2);
        CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void*) {
            if (ePoint == keQxDelaySetFirstWaiterLocked && (IsRole("S1") || IsRole("S2")))
                oBothHoldOne.Arrive(milliseconds(300));
        });
        int iW1 = -2, iW2 = -2;
        std::thread oT1([&] { iW1 = oW1.WaitAny(10000); });
        std::thread oT2([&] { iW2 = oW2.WaitAny(10000); });
        std::thread oS1([&] {
            tl_pszQxTestRole = "S1";
            oOne.Set();
        });
        std::thread oS2([&] {
            tl_pszQxTestRole = "S2";
            oTwo.Set();
        });
        qxJoinWithin(oS1, 20, "first Set");
        qxJoinWithin(oS2, 20, "second Set");
        qxJoinWithin(oT1, 20, "first multi-object waiter");
        qxJoinWithin(oT2, 20, "second multi-object waiter");
        EXPECT_GE(iW1, 0);
        EXPECT_GE(iW2, 0);
    }
}

// The first woken waiter resets the event before it tests the state again.
// The pulse must still release every waiter and return.
TEST(EventInterleaving, APulseCompletesWhenTheEventIsResetUnderIt)
{
    CQxUnnamedEvent oEvent(true);
    SSleepGates sAsleep;
    std::atomic<bool> bResetDone{false};
    CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void*) {
        sAsleep.Note(ePoint);
        if (ePoint == keQxDelayWaitWoken && (IsRole("A") || IsRole("B")) && !bResetDone.exchange(true))
            oEvent.Reset();
    });
    std::atomic<int> iA{-1}, iB{-1};
    std::thread oA = StartWaiter("A", oEvent, 3000, &iA);
    std::thread oB = StartWaiter("B", oEvent, 3000, &iB);
    ASSERT_TRUE(sAsleep.oA.WaitOpen(milliseconds(10000)));
    ASSERT_TRUE(sAsleep.oB.WaitOpen(milliseconds(10000)));
    std::atomic<int> iPulse{-1};
    std::thread oPulser([&] { iPulse = oEvent.Pulse() ? 1 : 0; });
    qxJoinWithin(oPulser, 20, "Pulse");
    qxJoinWithin(oA, 20, "waiter A");
    qxJoinWithin(oB, 20, "waiter B");
    ASSERT_TRUE(bResetDone.load());
    EXPECT_EQ(1, iPulse.load());
    EXPECT_EQ(1, iA.load());
    EXPECT_EQ(1, iB.load());
    EXPECT_FALSE(oEvent.IsSet());
}

// Pulse returns only once every waiter it released has left the event: the
// event is destroyed the moment Pulse returns (a waiter still inside would
// touch freed memory, which the sanitizer builds report).
TEST(EventInterleaving, PulseReturnsOnlyAfterItsWaitersHaveLeft)
{
    const int kiRounds = static_cast<int>(qxTestScale(40, 10));
    constexpr int kiWaiters = 4;
    for (int iRound = 0; iRound < kiRounds; ++iRound) {
        std::unique_ptr<CQxUnnamedEvent> pEvent(new CQxUnnamedEvent(true));
        CQxUnnamedEvent* pRaw = pEvent.get();
        std::mutex oMutex;
        std::set<std::thread::id> setSleeping;
        std::condition_variable oChanged;
        CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void* pObject) {
            if (ePoint != keQxDelayWaitSleeping || pObject != pRaw) return;
            std::lock_guard<std::mutex> oLock(oMutex);
            setSleeping.insert(std::this_thread::get_id());
            oChanged.notify_all();
        });
        std::atomic<int> iReleased{0};
        std::vector<std::thread> vecWaiters;
        for (int i = 0; i < kiWaiters; ++i)
            vecWaiters.emplace_back([&, pRaw] {
                if (pRaw->Wait(10000)) ++iReleased;
            });
        {
            std::unique_lock<std::mutex> oLock(oMutex);
            ASSERT_TRUE(oChanged.wait_for(oLock, milliseconds(10000),
                                          [&] { return setSleeping.size() == static_cast<size_t>(kiWaiters); }));
        }
        EXPECT_TRUE(pEvent->Pulse());
        EXPECT_FALSE(pEvent->IsSet());
        pEvent.reset();
        for (auto& oWaiter : vecWaiters) qxJoinWithin(oWaiter, 20, "pulsed waiter");
        ASSERT_EQ(kiWaiters, iReleased.load()) << "round " << iRound;
    }
}

}  // namespace
