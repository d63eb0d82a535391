// The lower mutex and semaphore wrappers: counting, recursion, time-outs,
// named semaphores shared with a forked process, and waits under signal
// storms. Named semaphores never outlive their test in /dev/shm.
#include <qxbase/qxsyncprimitives.h>

#include "tests/sync/support/qxsemnames.h"
#include "tests/sync/support/qxsignalstorm.h"
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

using std::chrono::milliseconds;

// Elapsed-time lower bounds: the deadline is computed from a clock read
// just before the wait, so the wait cannot end earlier than this.
constexpr double kdClockGrain = 2e-6;

TEST(UnnamedSemaphore, CountsReleasesAndRefusesWhenEmpty)
{
    int iError = 1;
    CQxUnnamedSemaphore oSemaphore(0, iError);
    ASSERT_EQ(0, iError);
    EXPECT_FALSE(oSemaphore.Wait(0));
    EXPECT_TRUE(oSemaphore.Release());
    EXPECT_TRUE(oSemaphore.Wait(0));
    EXPECT_FALSE(oSemaphore.Wait(0));

    CQxUnnamedSemaphore oThree(3, iError);
    ASSERT_EQ(0, iError);
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(oThree.Wait(kulQxInfinite));
    double dStart = qxTestNow();
    EXPECT_FALSE(oThree.Wait(30));
    EXPECT_GE(qxTestNow() - dStart, 0.030 - kdClockGrain);
}

TEST(UnnamedSemaphore, AnImpossibleCountIsReportedThroughTheErrorOutput)
{
    int iError = 0;
    CQxUnnamedSemaphore oSemaphore(-1, iError);  // above SEM_VALUE_MAX once unsigned
    EXPECT_EQ(-1, iError);
    EXPECT_FALSE(oSemaphore.Release());
}

TEST(UnnamedSemaphore, CountsExactlyUnderContention)
{
    const long klPerProducer = qxTestScale(50000, 5000);
    constexpr int kiProducers = 3, kiConsumers = 3;
    int iError = 1;
    CQxUnnamedSemaphore oSemaphore(0, iError);
    ASSERT_EQ(0, iError);
    std::atomic<long> lTaken{0}, lFailedReleases{0};
    std::atomic<bool> bStop{false};
    const long klTotal = klPerProducer * kiProducers;
    std::vector<std::thread> vecProducers, vecConsumers;
    for (int i = 0; i < kiProducers; ++i)
        vecProducers.emplace_back([&] {
            for (long l = 0; l < klPerProducer; ++l)
                if (!oSemaphore.Release()) ++lFailedReleases;
        });
    for (int i = 0; i < kiConsumers; ++i)
        vecConsumers.emplace_back([&, i] {
            // Mixed waits: polls, finite and infinite.
            const unsigned long kulTimeout = i == 0 ? 0UL : (i == 1 ? 5UL : kulQxInfinite);
            while (!bStop.load())
                if (oSemaphore.Wait(kulTimeout)) ++lTaken;
        });
    for (auto& oThread : vecProducers) qxJoinWithin(oThread, 60, "semaphore producer");
    const double kdGiveUp = qxTestNow() + 60;
    while (lTaken.load() < klTotal && qxTestNow() < kdGiveUp) std::this_thread::sleep_for(milliseconds(1));
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

TEST(UnnamedMutex, IsRecursiveAndTimesOutForOthers)
{
    int iError = 1;
    CQxUnnamedMutex oMutex(iError);
    ASSERT_EQ(0, iError);
    ASSERT_TRUE(oMutex.Wait(kulQxInfinite));
    EXPECT_TRUE(oMutex.Wait(0));
    EXPECT_TRUE(oMutex.Wait(10));
    std::thread oOther([&] {
        double dStart = qxTestNow();
        EXPECT_FALSE(oMutex.Wait(50));
        EXPECT_GE(qxTestNow() - dStart, 0.050 - kdClockGrain);
        EXPECT_FALSE(oMutex.Wait(0));
        // Not the owner: the unlock is refused.
        EXPECT_FALSE(oMutex.Release());
    });
    qxJoinWithin(oOther, 20, "second thread");
    for (int i = 0; i < 3; ++i) EXPECT_TRUE(oMutex.Release());
    std::thread oAfter([&] {
        EXPECT_TRUE(oMutex.Wait(0));
        EXPECT_TRUE(oMutex.Release());
    });
    qxJoinWithin(oAfter, 20, "third thread");
}

// An all-ones 64-bit time-out is a long finite wait, not INFINITE: it still
// acquires the mutex once the owner lets go.
TEST(UnnamedMutex, AllOnesTimeoutWaitsForTheOwner)
{
    int iError = 1;
    CQxUnnamedMutex oMutex(iError);
    ASSERT_EQ(0, iError);
    EXPECT_TRUE(qxAllOnesWaitEndsWithTheRelease(oMutex));
}

class NamedSemaphore : public testing::Test {
protected:
    void TearDown() override { EXPECT_EQ(0, qxTestUnlinkSemaphores()) << "named semaphores left in /dev/shm"; }
};

TEST_F(NamedSemaphore, TheCreatorOwnsTheNameAndUnlinksIt)
{
    std::string strName = qxTestSemaphoreName();
    int iError = 1;
    std::unique_ptr<CQxNamedSemaphore> pFirst(new CQxNamedSemaphore(strName, 2, iError));
    ASSERT_EQ(0, iError);
    EXPECT_TRUE(pFirst->IsOwner());
    EXPECT_TRUE(qxTestSemaphoreExists(strName));
    iError = 1;
    std::unique_ptr<CQxNamedSemaphore> pSecond(new CQxNamedSemaphore(strName, 7, iError));
    ASSERT_EQ(0, iError);
    EXPECT_FALSE(pSecond->IsOwner());
    // One semaphore: the second object's initial count did not apply.
    EXPECT_TRUE(pSecond->Wait(0));
    EXPECT_TRUE(pFirst->Wait(0));
    EXPECT_FALSE(pSecond->Wait(0));
    EXPECT_TRUE(pFirst->Release());
    EXPECT_TRUE(pSecond->Wait(0));
    pSecond.reset();
    EXPECT_TRUE(qxTestSemaphoreExists(strName));
    pFirst.reset();
    EXPECT_FALSE(qxTestSemaphoreExists(strName));
}

TEST_F(NamedSemaphore, AnInvalidNameFailsEverything)
{
    int iError = 0;
    CQxNamedSemaphore oBad("/qxtest/inner-slash", 1, iError);
    EXPECT_EQ(-1, iError);
    EXPECT_FALSE(oBad.IsOwner());
    EXPECT_FALSE(oBad.Wait(0));
    EXPECT_FALSE(oBad.Wait(10));
    EXPECT_FALSE(oBad.Wait(kulQxInfinite));
    EXPECT_FALSE(oBad.Release());
}

// The parent creates the semaphore; a forked child opens it by name, and the
// two hand a count back and forth. Only the creator unlinks the name.
TEST_F(NamedSemaphore, IsSharedWithAForkedProcess)
{
    std::string strPing = qxTestSemaphoreName(), strPong = qxTestSemaphoreName();
    int iError = 1;
    std::unique_ptr<CQxNamedSemaphore> pPing(new CQxNamedSemaphore(strPing, 0, iError));
    ASSERT_EQ(0, iError);
    std::unique_ptr<CQxNamedSemaphore> pPong(new CQxNamedSemaphore(strPong, 0, iError));
    ASSERT_EQ(0, iError);
    constexpr int kiRounds = 200;
    pid_t iChild = fork();
    ASSERT_GE(iChild, 0);
    if (iChild == 0) {
        // Only async-signal-safe work is promised after fork in a threaded
        // process; semaphores qualify. The child's objects open the names.
        int iChildError = 1;
        CQxNamedSemaphore oPing(strPing, 0, iChildError);
        CQxNamedSemaphore oPong(strPong, 0, iChildError);
        int iStatus = (iChildError == 0 && !oPing.IsOwner() && !oPong.IsOwner()) ? 0 : 2;
        for (int i = 0; i < kiRounds && iStatus == 0; ++i) {
            if (!oPing.Wait(10000)) iStatus = 3;
            else if (!oPong.Release()) iStatus = 4;
        }
        _exit(iStatus);  // the child's objects are not destroyed: nothing to unlink anyway
    }
    bool bHandOffs = true;
    for (int i = 0; i < kiRounds && bHandOffs; ++i) bHandOffs = pPing->Release() && pPong->Wait(10000);
    int iStatus = 0;
    ASSERT_EQ(iChild, waitpid(iChild, &iStatus, 0));
    EXPECT_TRUE(bHandOffs);
    ASSERT_TRUE(WIFEXITED(iStatus));
    EXPECT_EQ(0, WEXITSTATUS(iStatus));
    EXPECT_TRUE(qxTestSemaphoreExists(strPing));
    pPing.reset();
    pPong.reset();
    EXPECT_FALSE(qxTestSemaphoreExists(strPing));
    EXPECT_FALSE(qxTestSemaphoreExists(strPong));
}

// A child that only opened the name and is destroyed normally leaves it to
// the creator.
TEST_F(NamedSemaphore, AnOpenerInAnotherProcessNeverUnlinks)
{
    std::string strName = qxTestSemaphoreName();
    int iError = 1;
    std::unique_ptr<CQxNamedSemaphore> pCreator(new CQxNamedSemaphore(strName, 0, iError));
    ASSERT_EQ(0, iError);
    pid_t iChild = fork();
    ASSERT_GE(iChild, 0);
    if (iChild == 0) {
        int iStatus;
        {
            int iChildError = 1;
            CQxNamedSemaphore oOpener(strName, 0, iChildError);
            iStatus = (iChildError == 0 && !oOpener.IsOwner() && oOpener.Release()) ? 0 : 2;
        }
        _exit(iStatus);
    }
    int iStatus = 0;
    ASSERT_EQ(iChild, waitpid(iChild, &iStatus, 0));
    ASSERT_TRUE(WIFEXITED(iStatus));
    EXPECT_EQ(0, WEXITSTATUS(iStatus));
    EXPECT_TRUE(qxTestSemaphoreExists(strName));
    EXPECT_TRUE(pCreator->Wait(0));
    pCreator.reset();
    EXPECT_FALSE(qxTestSemaphoreExists(strName));
}

// Signal handlers with and without SA_RESTART interrupt the waits many
// times; the named semaphore keeps waiting to its deadline, or until it is
// released.
TEST_F(NamedSemaphore, WaitsThroughASignalStorm)
{
    for (bool bRestart : {false, true}) {
        std::string strName = qxTestSemaphoreName();
        int iError = 1;
        CQxNamedSemaphore oSemaphore(strName, 0, iError);
        ASSERT_EQ(0, iError);
        long lBefore = CQxSignalStorm::Handled();
        {
            CQxSignalStorm oStorm(pthread_self(), bRestart);
            double dStart = qxTestNow();
            EXPECT_FALSE(oSemaphore.Wait(200));
            EXPECT_GE(qxTestNow() - dStart, 0.200 - kdClockGrain) << "SA_RESTART " << bRestart;

            std::atomic<bool> bReleased{false};
            std::thread oReleaser([&] {
                std::this_thread::sleep_for(milliseconds(150));
                bReleased = true;
                oSemaphore.Release();
            });
            EXPECT_TRUE(oSemaphore.Wait(kulQxInfinite));
            EXPECT_TRUE(bReleased.load());
            oReleaser.join();
        }
        EXPECT_GT(CQxSignalStorm::Handled() - lBefore, 20) << "the storm did not reach the waits";
    }
}

// The unnamed semaphore does not retry: a handler installed without
// SA_RESTART ends an infinite wait with false.
TEST(UnnamedSemaphore, ASignalEndsAWaitWithoutRestart)
{
    int iError = 1;
    CQxUnnamedSemaphore oSemaphore(0, iError);
    ASSERT_EQ(0, iError);
    bool bResult = true;
    {
        CQxSignalStorm oStorm(pthread_self(), false);
        bResult = oSemaphore.Wait(kulQxInfinite);
    }
    EXPECT_FALSE(bResult);
    EXPECT_FALSE(oSemaphore.Wait(0));
}

}  // namespace
