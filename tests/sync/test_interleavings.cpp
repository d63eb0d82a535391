// The guarantees of the event and the work queue under the interleavings
// that break a naive implementation, each forced with the delay points of the
// test build: an auto-reset Set releases exactly one waiter, no waiter sleeps
// on while the event is set for it, Sets over shared multi-object waiters
// cannot deadlock, a Pulse always collects its waiters, and two producers
// racing for a queue's last place cannot both take it.
#include <qxbase/qxunnamedevent.h>
#include <qxbase/qxworkqueue.h>

#include "tests/sync/support/qxdelayhook.h"
#include "tests/sync/support/qxmultiwait.h"
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <set>

namespace {

using std::chrono::milliseconds;

bool IsRole(const char* in_pszRole)
{
    return tl_pszQxTestRole && std::strcmp(tl_pszQxTestRole, in_pszRole) == 0;
}

// Opens a gate the first time the waiter of role A, and of role B, is about
// to sleep (a Set issued then lands once it sleeps).
struct SSleepGates {
    CQxTestGate oA, oB;
    void Note(EQxSyncDelayPoint in_ePoint)
    {
        if (in_ePoint != keQxDelayWaitSleeping) return;
        if (IsRole("A")) oA.Open();
        if (IsRole("B")) oB.Open();
    }
};

// A thread that runs the call in the role given.
std::thread StartAs(const char* in_pszRole, std::function<void()> in_fnCall)
{
    return std::thread([=] {
        tl_pszQxTestRole = in_pszRole;
        in_fnCall();
    });
}

// A Wait of the event on a thread of its own with a role. Result(): 1
// released, 0 timed out.
class CRoleWaiter {
public:
    CRoleWaiter(const char* in_pszRole, CQxUnnamedEvent& io_oEvent, unsigned long in_ulMs)
        : m_pszRole(in_pszRole),
          m_oThread(StartAs(in_pszRole, [=, &io_oEvent] { m_iResult = io_oEvent.Wait(in_ulMs); }))
    {
    }
    ~CRoleWaiter() { Result(); }
    int Result()
    {
        if (m_oThread.joinable()) qxJoinWithin(m_oThread, 20, m_pszRole);
        return m_iResult.load();
    }

private:
    const char* m_pszRole;
    std::atomic<int> m_iResult{-1};
    std::thread m_oThread;
};

// Waiters are declared after the hook that they may reach, so they are
// joined before it goes.
TEST(EventInterleaving, AnAutoResetSetReleasesTheOldestSleepingWaiter)
{
    CQxUnnamedEvent oEvent(false);
    SSleepGates sAsleep;
    CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void*) { sAsleep.Note(ePoint); });
    CRoleWaiter oA("A", oEvent, 10000);
    ASSERT_TRUE(sAsleep.oA.WaitOpen());
    CRoleWaiter oB("B", oEvent, 300);
    ASSERT_TRUE(sAsleep.oB.WaitOpen());
    oEvent.Set();
    EXPECT_EQ(1, oA.Result());
    EXPECT_EQ(0, oB.Result());
    EXPECT_FALSE(oEvent.IsSet());
}

// A is signalled; B registered before the Set but tests the state only
// afterwards. Both see the event set before either consumes it.
TEST(EventInterleaving, TwoWaitersThatBothSeeOneSetCannotBothTakeIt)
{
    CQxUnnamedEvent oEvent(false);
    CQxTestGate oBRegistered, oReleaseB;
    CQxTestRendezvous oBothSawIt(2);
    SSleepGates sAsleep;
    CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void*) {
        sAsleep.Note(ePoint);
        if (ePoint == keQxDelayWaitRegistered && IsRole("B")) {
            oBRegistered.Open();
            oReleaseB.WaitOpen();
        }
        if (ePoint == keQxDelayWaitSignalSeen) oBothSawIt.Arrive(milliseconds(3000));
    });
    CRoleWaiter oA("A", oEvent, 600);
    ASSERT_TRUE(sAsleep.oA.WaitOpen());
    CRoleWaiter oB("B", oEvent, 600);
    ASSERT_TRUE(oBRegistered.WaitOpen());
    oEvent.Set();
    oReleaseB.Open();
    EXPECT_EQ(1, oA.Result() + oB.Result()) << "A " << oA.Result() << ", B " << oB.Result();
    ASSERT_EQ(2, oBothSawIt.Arrived()) << "the interleaving was not forced";
    EXPECT_FALSE(oEvent.IsSet());
}

// The oldest waiter times out; before it unregisters, a Set signals it (and
// only it). The signal must not be lost while B sleeps on.
TEST(EventInterleaving, ATimedOutOldestWaiterDoesNotStrandASet)
{
    CQxUnnamedEvent oEvent(false);
    std::atomic<bool> bSetInWindow{false};
    SSleepGates sAsleep;
    CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void*) {
        sAsleep.Note(ePoint);
        if (ePoint == keQxDelayWaitTimedOut && IsRole("A") && !bSetInWindow.exchange(true)) oEvent.Set();
    });
    CRoleWaiter oA("A", oEvent, 150);
    ASSERT_TRUE(sAsleep.oA.WaitOpen());
    CRoleWaiter oB("B", oEvent, 800);
    ASSERT_TRUE(sAsleep.oB.WaitOpen());
    EXPECT_EQ(1, oA.Result() + oB.Result()) << "A " << oA.Result() << ", B " << oB.Result();
    ASSERT_TRUE(bSetInWindow.load());
    EXPECT_FALSE(oEvent.IsSet());
}

// A multi-object waiter satisfied by one event leaves another event whose
// Set signalled only it; the next waiter of that event must be woken for the
// signal, not rescued by its own time-out.
TEST(EventInterleaving, AMultiObjectWaiterLeavingPassesAnUnusedSignalOn)
{
    CQxUnnamedEvent oFirst(false), oSecond(false);
    CQxTestGate oWRegistered;
    std::atomic<bool> bBTimedOut{false};
    SSleepGates sAsleep;
    CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void*) {
        sAsleep.Note(ePoint);
        if (ePoint == keQxDelayWaitTimedOut && IsRole("B")) bBTimedOut = true;
    });
    int iW = -2;
    std::thread oW([&] {
        iW = qxWaitAny({&oFirst, &oSecond}, 10000, [&] { oWRegistered.Open(); }, [&] { oSecond.Set(); });
    });
    ASSERT_TRUE(oWRegistered.WaitOpen());
    CRoleWaiter oB("B", oSecond, 1000);
    ASSERT_TRUE(sAsleep.oB.WaitOpen());
    oFirst.Set();
    qxJoinWithin(oW, 20, "multi-object waiter");
    EXPECT_EQ(0, iW);
    EXPECT_EQ(1, oB.Result());
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
            if (ePoint == keQxDelaySetFirstWaiterLocked && tl_pszQxTestRole) oBothHoldOne.Arrive(milliseconds(300));
        });
        int aiResults[2] = {-2, -2};
        std::thread aoThreads[4] = {std::thread([&] { aiResults[0] = oW1.WaitAny(10000); }),
                                    std::thread([&] { aiResults[1] = oW2.WaitAny(10000); }),
                                    StartAs("S1", [&] { oOne.Set(); }), StartAs("S2", [&] { oTwo.Set(); })};
        for (std::thread& rThread : aoThreads) qxJoinWithin(rThread, 20, "a Set or a multi-object waiter");
        EXPECT_GE(aiResults[0], 0) << bManual;
        EXPECT_GE(aiResults[1], 0) << bManual;
    }
}

// The first woken waiter resets the event before it tests the state again.
// The pulse must still release every waiter and return.
TEST(EventInterleaving, APulseCompletesWhenTheEventIsResetUnderIt)
{
    CQxUnnamedEvent oEvent(true);
    std::atomic<bool> bResetDone{false};
    SSleepGates sAsleep;
    CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void*) {
        sAsleep.Note(ePoint);
        if (ePoint == keQxDelayWaitWoken && (IsRole("A") || IsRole("B")) && !bResetDone.exchange(true))
            oEvent.Reset();
    });
    CRoleWaiter oA("A", oEvent, 3000), oB("B", oEvent, 3000);
    ASSERT_TRUE(sAsleep.oA.WaitOpen() && sAsleep.oB.WaitOpen());
    std::atomic<int> iPulse{-1};
    std::thread oPulser([&] { iPulse = oEvent.Pulse() ? 1 : 0; });
    qxJoinWithin(oPulser, 20, "Pulse");
    EXPECT_EQ(1, oA.Result());
    EXPECT_EQ(1, oB.Result());
    ASSERT_TRUE(bResetDone.load());
    EXPECT_EQ(1, iPulse.load());
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
        CQxTestGate oAllAsleep;
        CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void* pObject) {
            if (ePoint != keQxDelayWaitSleeping || pObject != pRaw) return;
            std::lock_guard<std::mutex> oLock(oMutex);
            setSleeping.insert(std::this_thread::get_id());
            if (setSleeping.size() == static_cast<size_t>(kiWaiters)) oAllAsleep.Open();
        });
        std::atomic<int> iReleased{0};
        std::vector<std::thread> vecWaiters;
        for (int i = 0; i < kiWaiters; ++i) vecWaiters.emplace_back([&, pRaw] { iReleased += pRaw->Wait(10000); });
        ASSERT_TRUE(oAllAsleep.WaitOpen());
        EXPECT_TRUE(pEvent->Pulse());
        EXPECT_FALSE(pEvent->IsSet());
        pEvent.reset();
        for (auto& oWaiter : vecWaiters) qxJoinWithin(oWaiter, 20, "pulsed waiter");
        ASSERT_EQ(kiWaiters, iReleased.load()) << "round " << iRound;
    }
}

class CCountedQueue : public CQxConcurrentWorkQueueLinux {
public:
    CCountedQueue(std::function<void(void*)> in_fnTask, int& io_iResult)
        : CQxConcurrentWorkQueueLinux(std::move(in_fnTask), io_iResult, "raced", 2)
    {
    }
    ~CCountedQueue() override { WaitForCompletion(0xFFFFFFFFu); }
    uint64_t Pending()
    {
        CQxAutoLock oLock(&m_oLock);
        return m_ui64Pending;
    }
};

// Two producers both see room for the last place, then take the lock one
// after the other. Exactly one is admitted.
TEST(WorkQueueInterleaving, TwoProducersRacingForTheLastPlaceAdmitOne)
{
    CQxTestGate oItemsMayFinish;
    std::atomic<int> iFinished{0};
    int iResult = 0;
    CCountedQueue oQueue(
        [&](void*) {
            oItemsMayFinish.WaitOpen(milliseconds(20000));
            ++iFinished;
        },
        iResult);
    ASSERT_EQ(S_OK, oQueue.QueueTask(nullptr, 0));  // one of two places taken

    CQxTestRendezvous oBothSawRoom(2);
    std::atomic<int> iSawRoom{0};
    CQxScopedDelayHook oHook([&](EQxSyncDelayPoint ePoint, const void* pObject) {
        // Only the first sighting of each producer waits for the other.
        if (ePoint == keQxDelayAddTaskRoomSeen && pObject == &oQueue && tl_pszQxTestRole && ++iSawRoom <= 2)
            oBothSawRoom.Arrive(milliseconds(5000));
    });
    int aiResults[2] = {-1, -1};
    std::thread aoProducers[2] = {StartAs("P1", [&] { aiResults[0] = oQueue.QueueTask(nullptr, 200); }),
                                  StartAs("P2", [&] { aiResults[1] = oQueue.QueueTask(nullptr, 200); })};
    for (auto& oProducer : aoProducers) qxJoinWithin(oProducer, 20, "producer");
    ASSERT_EQ(2, oBothSawRoom.Arrived()) << "the interleaving was not forced";
    EXPECT_EQ(1, (aiResults[0] == S_OK) + (aiResults[1] == S_OK));
    EXPECT_EQ(1, (aiResults[0] == QX_E_TIMEOUT) + (aiResults[1] == QX_E_TIMEOUT));
    EXPECT_EQ(2u, oQueue.Pending());
    oItemsMayFinish.Open();
    EXPECT_EQ(S_OK, oQueue.WaitForCompletion(20000));
    EXPECT_EQ(2, iFinished.load());
}

}  // namespace
