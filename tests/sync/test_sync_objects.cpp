// The synchronisation objects: the throwing layer (kind tags, forwarding to
// the lower objects, the time-out rules, refusals with their exact messages,
// the scope guards) and the lower mutex and semaphores under it (counting
// under contention, named semaphores shared with a forked process, waits
// under signal storms). Named semaphores never outlive their test in
// /dev/shm.
#include <qxbase/qxsync.h>
#include <qxbase/qxsyncprimitives.h>

#include "tests/sync/support/qxsemnames.h"
#include "tests/sync/support/qxsignalstorm.h"
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <type_traits>

// Callers catch the kinds of the handle-style objects together, and the
// others apart.
static_assert(std::is_base_of<CQxHandleSyncObjectException, CQxMutexException>::value &&
                  std::is_base_of<CQxHandleSyncObjectException, CQxSemaphoreException>::value &&
                  std::is_base_of<CQxHandleSyncObjectException, CQxEventException>::value &&
                  std::is_base_of<CQxHandleSyncObjectException, CQxThreadException>::value &&
                  std::is_base_of<CQxBaseException, CQxAutoLockException>::value &&
                  std::is_base_of<CQxBaseException, CQxCriticalSectionException>::value &&
                  !std::is_base_of<CQxHandleSyncObjectException, CQxCriticalSectionException>::value,
              "the exception classes derive as callers catch them");

namespace {

using std::chrono::milliseconds;

// Elapsed-time lower bounds: the deadline is computed from a clock read
// just before the wait, so the wait cannot end earlier than this.
constexpr double kdClockGrain = 2e-6;

bool TryFromOtherThread(CQxSynchronizationObject& io_oObject)
{
    bool bResult = false;
    std::thread oOther([&] {
        bResult = io_oObject.Wait(0);
        if (bResult) io_oObject.Release();
    });
    oOther.join();
    return bResult;
}

// Tests that name semaphores: nothing of theirs may stay in /dev/shm.
class NamedSemaphore : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(0, qxTestUnlinkSemaphores()) << "named semaphores left in /dev/shm"; }
};

TEST_F(NamedSemaphore, EachKindCarriesItsTag)
{
    CQxCriticalSection oSection;
    CQxMutex oMutex, oNamed(qxTestSemaphoreName());
    CQxSemaphore oSemaphore(0, 1);
    CQxEvent oEvent(false);
    CQxHandleSyncObject oHandle;
    EXPECT_EQ((std::vector<int>{1, 2, 2, 3, 4, 0}),
              (std::vector<int>{oSection.GetObjectType(), oMutex.GetObjectType(), oNamed.GetObjectType(),
                                oSemaphore.GetObjectType(), oEvent.GetObjectType(), oHandle.GetObjectType()}));
}

TEST(CriticalSection, IsRecursiveAndAcceptsOnlyZeroOrInfinite)
{
    CQxCriticalSection oSection;
    // All ones in 64 bits is not INFINITE.
    for (unsigned long ulMs : {1UL, ~0UL})
        EXPECT_EQ("CQxCriticalSection::Wait -> 0 or INFINITE time-outs only",
                  qxMessageOf<CQxCriticalSectionException>([&] { oSection.Wait(ulMs); }));
    EXPECT_TRUE(oSection.Wait(kulQxInfinite));
    EXPECT_TRUE(oSection.Wait(0));
    EXPECT_FALSE(TryFromOtherThread(oSection));
    // 0 on success, unlike the handle-style objects.
    EXPECT_EQ(0, oSection.Release());
    EXPECT_FALSE(TryFromOtherThread(oSection));
    EXPECT_EQ(0, oSection.Release());
    EXPECT_TRUE(TryFromOtherThread(oSection));
    // Not held: pthread's refusal comes back unchanged.
    EXPECT_NE(0, oSection.Release());
}

TEST(HandleSyncObject, RefusesEverythingWithItsMessages)
{
    CQxHandleSyncObject oHandle;
    CQxEvent oEvent(true);
    const std::string kstrUnsupported =
        "CQxHandleSyncObject::CQxHandleSyncObject -> Constructor not supported in this version";
    const std::pair<std::string, std::function<void()>> kasCases[] = {
        {"CQxHandleSyncObject::Wait -> object not created yet", [&] { oHandle.Wait(0); }},
        {"CQxHandleSyncObject::Release -> this is not a valid call", [&] { oHandle.Release(); }},
        {kstrUnsupported, [&] { CQxHandleSyncObject oFromHandle(&oHandle); }},
        {kstrUnsupported, [&] { CQxHandleSyncObject oCopy(oHandle); }},
        {"CQxHandleSyncObject::CQxHandleSyncObject -> Operator not supported in this version",
         [&] {
             CQxHandleSyncObject oOther;
             oOther = oHandle;
         }},
        // An event keeps the refused Release.
        {"CQxHandleSyncObject::Release -> this is not a valid call", [&] { oEvent.Release(); }}};
    for (const auto& rsCase : kasCases)
        EXPECT_EQ(rsCase.first, qxMessageOf<CQxHandleSyncObjectException>(rsCase.second));
}

// The lower objects are missing only if a derived class dropped them; the
// forwarding then throws the class's own message.
template <class TObject>
struct TDropped : TObject {
    using TObject::TObject;
    void Drop()
    {
        delete this->m_pSyncObject;
        this->m_pSyncObject = nullptr;
    }
};
struct CDroppedEvent : CQxEvent {
    CDroppedEvent() : CQxEvent(true)
    {
        delete m_pEvent;
        m_pEvent = nullptr;
    }
    // The base destructor would Set a missing event, which ends the process.
    ~CDroppedEvent() override { m_pEvent = new CQxUnnamedEvent(true); }
};

TEST(HandleSyncObject, AMissingLowerObjectThrowsTheClassMessage)
{
    TDropped<CQxMutex> oMutex;
    TDropped<CQxSemaphore> oSemaphore(0, 1);
    CDroppedEvent oEvent;
    oMutex.Drop();
    oSemaphore.Drop();
    EXPECT_EQ("CQxMutex::Wait -> object is NULL", qxMessageOf<CQxMutexException>([&] { oMutex.Wait(0); }));
    EXPECT_EQ("CQxMutex::Release -> object is NULL", qxMessageOf<CQxMutexException>([&] { oMutex.Release(); }));
    EXPECT_EQ("CQxSemaphore::Wait -> object is NULL",
              qxMessageOf<CQxSemaphoreException>([&] { oSemaphore.Wait(0); }));
    EXPECT_EQ("CQxSemaphore::Release -> object is NULL",
              qxMessageOf<CQxSemaphoreException>([&] { oSemaphore.Release(); }));
    EXPECT_EQ("CQxEvent::Set() --> failed", qxMessageOf<CQxEventException>([&] { oEvent.Set(); }));
    EXPECT_EQ("CQxEvent::Reset() --> failed", qxMessageOf<CQxEventException>([&] { oEvent.Reset(); }));
    EXPECT_EQ("CQxEvent::Wait() --> Invalid object", qxMessageOf<CQxEventException>([&] { oEvent.Wait(0); }));
}

// A failed construction throws (the semaphore's message says "mutex" too);
// the lower objects report it through their error output and refuse every
// call.
TEST_F(NamedSemaphore, AFailedConstructionIsReportedAndRefusesEverything)
{
    EXPECT_EQ("CQxMutex::CQxMutex -> could not create mutex",
              qxMessageOf<CQxMutexException>([] { CQxMutex oBad(std::string("/qxtest/inner-slash")); }));
    EXPECT_EQ("CQxSemaphore::CQxSemaphore -> could not create mutex",
              qxMessageOf<CQxSemaphoreException>([] { CQxSemaphore oBad(-1, 1); }));
    int iError = 0;
    CQxUnnamedSemaphore oSemaphore(-1, iError);  // above SEM_VALUE_MAX once unsigned
    EXPECT_EQ(-1, iError);
    EXPECT_FALSE(oSemaphore.Release());
    iError = 0;
    CQxNamedSemaphore oNamed("/qxtest/inner-slash", 1, iError);
    EXPECT_EQ(-1, iError);
    EXPECT_FALSE(oNamed.IsOwner());
    for (unsigned long ulMs : {0UL, 10UL, kulQxInfinite}) EXPECT_FALSE(oNamed.Wait(ulMs)) << ulMs;
    EXPECT_FALSE(oNamed.Release());
}

// The unnamed mutex is recursive: another thread times out on it (not before
// its deadline), may not release it, and takes it only once the owner has let
// go of every level. An all-ones 64-bit time-out is a long finite wait that
// ends when the owner lets go.
TEST(Mutex, UnnamedIsRecursiveAndTimesOutForOthers)
{
    CQxMutex oMutex;
    ASSERT_TRUE(oMutex.Wait(kulQxInfinite));
    EXPECT_TRUE(oMutex.Wait(0));
    EXPECT_TRUE(oMutex.Wait(10));
    std::thread oOther([&] {
        double dStart = qxTestNow();
        EXPECT_FALSE(oMutex.Wait(50));
        EXPECT_GE(qxTestNow() - dStart, 0.050 - kdClockGrain);
        EXPECT_FALSE(oMutex.Wait(0));
        EXPECT_EQ(0, oMutex.Release()) << "not the owner";
    });
    qxJoinWithin(oOther, 20, "second thread");
    EXPECT_NE(0, oMutex.Release());
    EXPECT_NE(0, oMutex.Release());
    EXPECT_FALSE(TryFromOtherThread(oMutex));
    EXPECT_NE(0, oMutex.Release());
    EXPECT_TRUE(TryFromOtherThread(oMutex));

    ASSERT_TRUE(oMutex.Wait(0));
    std::atomic<bool> bReleased{false};
    std::thread oWaiter([&] {
        EXPECT_TRUE(oMutex.Wait(~0UL) && bReleased.load());
        oMutex.Release();
    });
    std::this_thread::sleep_for(milliseconds(30));
    bReleased = true;
    oMutex.Release();
    qxJoinWithin(oWaiter, 20, "all-ones waiter");
}

// The semaphore counts releases beyond its maximum, which it ignores, and
// refuses when empty; a timed wait lasts its time-out.
TEST(Semaphore, CountsAndIgnoresItsMaximum)
{
    CQxSemaphore oSemaphore(0, 1);
    EXPECT_FALSE(oSemaphore.Wait(0));
    for (int i = 0; i < 3; ++i) EXPECT_NE(0, oSemaphore.Release());
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(oSemaphore.Wait(i == 0 ? kulQxInfinite : 0));
    double dStart = qxTestNow();
    EXPECT_FALSE(oSemaphore.Wait(30));
    EXPECT_GE(qxTestNow() - dStart, 0.030 - kdClockGrain);
    CQxSemaphore oTwo(2, 0);
    EXPECT_TRUE(oTwo.Wait(0));
    EXPECT_TRUE(oTwo.Wait(10));
    EXPECT_FALSE(oTwo.Wait(0));
}

TEST(Semaphore, CountsExactlyUnderContention)
{
    const long klPerProducer = qxTestScale(50000, 5000);
    constexpr int kiProducers = 3, kiConsumers = 3;
    const long klTotal = klPerProducer * kiProducers;
    int iError = 1;
    CQxUnnamedSemaphore oSemaphore(0, iError);
    ASSERT_EQ(0, iError);
    std::atomic<long> lTaken{0}, lFailedReleases{0};
    std::atomic<bool> bStop{false};
    std::vector<std::thread> vecProducers, vecConsumers;
    for (int i = 0; i < kiProducers; ++i)
        vecProducers.emplace_back([&] {
            for (long l = 0; l < klPerProducer; ++l) lFailedReleases += !oSemaphore.Release();
        });
    for (int i = 0; i < kiConsumers; ++i)
        vecConsumers.emplace_back([&, i] {
            // Mixed waits: polls, finite and infinite.
            const unsigned long kulTimeout = i == 0 ? 0UL : (i == 1 ? 5UL : kulQxInfinite);
            while (!bStop.load()) lTaken += oSemaphore.Wait(kulTimeout);
        });
    for (auto& oThread : vecProducers) qxJoinWithin(oThread, 60, "semaphore producer");
    EXPECT_TRUE(qxWaitUntil([&] { return lTaken.load() >= klTotal; }, 60));
    EXPECT_EQ(klTotal, lTaken.load());
    // An infinite waiter only leaves with a count: one more per consumer
    // wakes every one of them, and whatever they leave is drained below.
    bStop = true;
    for (int i = 0; i < kiConsumers; ++i) EXPECT_TRUE(oSemaphore.Release());
    for (auto& oThread : vecConsumers) qxJoinWithin(oThread, 60, "semaphore consumer");
    long lLeft = 0;
    while (oSemaphore.Wait(0)) ++lLeft;
    EXPECT_EQ(0, lFailedReleases.load());
    EXPECT_EQ(klTotal + kiConsumers, lTaken.load() + lLeft);
}

TEST(Event, ForwardsToTheUnnamedEvent)
{
    CQxEvent oAuto(false), oManual(true);
    EXPECT_FALSE(oAuto.Wait(0));
    oAuto.Set();
    EXPECT_TRUE(oAuto.Wait(0));
    EXPECT_FALSE(oAuto.Wait(0));
    oManual.Set();
    EXPECT_TRUE(oManual.Wait(0));
    EXPECT_TRUE(oManual.Wait(0));
    oManual.Reset();
    EXPECT_FALSE(oManual.Wait(5));
}

TEST(AutoLock, LocksForTheScope)
{
    EXPECT_EQ("CQxAutoLock::CQxAutoLock -> NULL CQxSynchronizationObject pointer",
              qxMessageOf<CQxAutoLockException>([] { CQxAutoLock oLock(nullptr); }));
    CQxCriticalSection oSection;
    {
        CQxAutoLock oLock(&oSection);
        EXPECT_FALSE(TryFromOtherThread(oSection));
    }
    EXPECT_TRUE(TryFromOtherThread(oSection));
    CQxSemaphore oSemaphore(1, 1);
    {
        CQxAutoLock oLock(&oSemaphore);
        EXPECT_FALSE(oSemaphore.Wait(0));
    }
    EXPECT_TRUE(oSemaphore.Wait(0));
    // The plain-mutex guard, and one over nothing.
    pthread_mutex_t oMutex = PTHREAD_MUTEX_INITIALIZER;
    {
        CQxLocalAutoLock oLock(&oMutex);
        std::thread oOther([&] { EXPECT_NE(0, pthread_mutex_trylock(&oMutex)); });
        oOther.join();
    }
    EXPECT_EQ(0, pthread_mutex_trylock(&oMutex));
    pthread_mutex_unlock(&oMutex);
    { CQxLocalAutoLock oNothing(nullptr); }
    pthread_mutex_destroy(&oMutex);
}

// The event's refused Release throws from the guard's destructor.
TEST(AutoLockDeathTest, OverAnEventEndsTheProcessAtScopeExit)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_DEATH(
        {
            CQxEvent oEvent(true);
            oEvent.Set();
            CQxAutoLock oLock(&oEvent);
        },
        "");
}

// A named mutex creates a named semaphore of count 1 (so it is not
// recursive); a second object of the name opens the same semaphore, where
// its own initial count does not apply. Only the creator unlinks the name.
TEST_F(NamedSemaphore, TheCreatorOwnsTheNameAndUnlinksIt)
{
    std::string strName = qxTestSemaphoreName();
    std::unique_ptr<CQxMutex> pFirst(new CQxMutex(strName));
    EXPECT_TRUE(qxTestSemaphoreExists(strName));
    int iError = 1;
    std::unique_ptr<CQxNamedSemaphore> pSecond(new CQxNamedSemaphore(strName, 7, iError));
    ASSERT_EQ(0, iError);
    EXPECT_FALSE(pSecond->IsOwner());
    EXPECT_TRUE(pFirst->Wait(0));
    EXPECT_FALSE(pFirst->Wait(0));
    EXPECT_FALSE(pSecond->Wait(20));
    EXPECT_NE(0, pFirst->Release());
    EXPECT_TRUE(pSecond->Wait(0));
    EXPECT_FALSE(pFirst->Wait(0));
    EXPECT_TRUE(pSecond->Release());
    pSecond.reset();
    EXPECT_TRUE(qxTestSemaphoreExists(strName));
    EXPECT_TRUE(pFirst->Wait(0));
    pFirst.reset();
    EXPECT_FALSE(qxTestSemaphoreExists(strName));
}

// The parent creates two semaphores; a forked child opens them by name, the
// two hand a count back and forth, and the child's objects are destroyed
// normally. Only the creator unlinks the names.
TEST_F(NamedSemaphore, IsSharedWithAForkedProcess)
{
    std::string strPing = qxTestSemaphoreName(), strPong = qxTestSemaphoreName();
    int iError = 1, iPongError = 1;
    std::unique_ptr<CQxNamedSemaphore> pPing(new CQxNamedSemaphore(strPing, 0, iError));
    std::unique_ptr<CQxNamedSemaphore> pPong(new CQxNamedSemaphore(strPong, 0, iPongError));
    ASSERT_TRUE(iError == 0 && iPongError == 0 && pPing->IsOwner());
    constexpr int kiRounds = 200;
    pid_t iChild = fork();
    ASSERT_GE(iChild, 0);
    if (iChild == 0) {
        // Only async-signal-safe work is promised after fork in a threaded
        // process; semaphores qualify.
        int iStatus = 0;
        {
            int iChildError = 1;
            CQxNamedSemaphore oPing(strPing, 0, iChildError), oPong(strPong, 0, iChildError);
            if (iChildError != 0 || oPing.IsOwner() || oPong.IsOwner()) iStatus = 2;
            for (int i = 0; i < kiRounds && iStatus == 0; ++i)
                if (!oPing.Wait(10000) || !oPong.Release()) iStatus = 3;
        }
        _exit(iStatus);
    }
    bool bHandOffs = true;
    for (int i = 0; i < kiRounds && bHandOffs; ++i) bHandOffs = pPing->Release() && pPong->Wait(10000);
    int iStatus = 0;
    ASSERT_EQ(iChild, waitpid(iChild, &iStatus, 0));
    EXPECT_TRUE(bHandOffs);
    ASSERT_TRUE(WIFEXITED(iStatus));
    EXPECT_EQ(0, WEXITSTATUS(iStatus));
    EXPECT_TRUE(qxTestSemaphoreExists(strPing) && qxTestSemaphoreExists(strPong));
    pPing.reset();
    pPong.reset();
    EXPECT_FALSE(qxTestSemaphoreExists(strPing) || qxTestSemaphoreExists(strPong));
}

// Signal handlers with and without SA_RESTART interrupt the waits many
// times: the named semaphore keeps waiting to its deadline, or until it is
// released; the unnamed one does not retry, and a handler installed without
// SA_RESTART ends even its infinite wait with false.
TEST_F(NamedSemaphore, WaitsThroughASignalStormWhereTheUnnamedOneGivesUp)
{
    for (bool bRestart : {false, true}) {
        SCOPED_TRACE(bRestart ? "SA_RESTART" : "no SA_RESTART");
        int iError = 1;
        CQxNamedSemaphore oSemaphore(qxTestSemaphoreName(), 0, iError);
        ASSERT_EQ(0, iError);
        long lBefore = CQxSignalStorm::Handled();
        {
            CQxSignalStorm oStorm(pthread_self(), bRestart);
            double dStart = qxTestNow();
            EXPECT_FALSE(oSemaphore.Wait(200));
            EXPECT_GE(qxTestNow() - dStart, 0.200 - kdClockGrain);
            std::atomic<bool> bReleased{false};
            std::thread oReleaser([&] {
                std::this_thread::sleep_for(milliseconds(150));
                bReleased = true;
                oSemaphore.Release();
            });
            EXPECT_TRUE(oSemaphore.Wait(kulQxInfinite) && bReleased.load());
            oReleaser.join();
        }
        EXPECT_GT(CQxSignalStorm::Handled() - lBefore, 20) << "the storm did not reach the waits";
    }
    int iError = 1;
    CQxUnnamedSemaphore oUnnamed(0, iError);
    ASSERT_EQ(0, iError);
    bool bResult = true;
    {
        CQxSignalStorm oStorm(pthread_self(), false);
        bResult = oUnnamed.Wait(kulQxInfinite);
    }
    EXPECT_FALSE(bResult);
    EXPECT_FALSE(oUnnamed.Wait(0));
}

}  // namespace
