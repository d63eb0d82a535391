// Threads: creation (suspended or running), resume and suspend, waits and
// exit codes, destruction without resume, priority and affinity before and
// after the start, and many threads created and destroyed at once.
#include <qxbase/qxthread.h>

#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <errno.h>
#include <string.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <memory>

namespace {

using std::chrono::milliseconds;
using FProcedure = std::function<unsigned int()>;

// Procedures get a std::function through the argument.
unsigned int RunFunction(void* in_pFunction)
{
    return (*static_cast<FProcedure*>(in_pFunction))();
}

// Whether this process may give a thread a SCHED_RR priority, and if not why.
bool RealTimeAllowed(std::string* out_pstrWhy)
{
    bool bAllowed = false;
    std::thread oProbe([&] {
        sched_param sParameter = {};
        sParameter.sched_priority = 1;
        int iResult = pthread_setschedparam(pthread_self(), SCHED_RR, &sParameter);
        bAllowed = iResult == 0;
        if (!bAllowed) *out_pstrWhy = std::string("SCHED_RR refused: ") + strerror(iResult);
    });
    oProbe.join();
    return bAllowed;
}

cpu_set_t AffinityOf(pthread_t in_oThread)
{
    cpu_set_t sSet;
    CPU_ZERO(&sSet);
    pthread_getaffinity_np(in_oThread, sizeof(sSet), &sSet);
    return sSet;
}

TEST(ThreadCreation, RefusesANullProcedureASecondCreateAndRelease)
{
    CQxThread oThread;
    EXPECT_EQ(0, oThread.GetObjectType());
    EXPECT_EQ("CQxHandleSyncObject::Release -> this is not a valid call",
              qxMessageOf<CQxHandleSyncObjectException>([&] { oThread.Release(); }));
    EXPECT_EQ("CQxThread::Create -- parameter in_pfnThreadProc is NULL",
              qxMessageOf<CQxThreadException>([&] { oThread.Create(nullptr, nullptr, false, 0, false); }));
    // Nothing started: the object can still be created, once.
    EXPECT_EQ(0u, oThread.GetThreadId());
    EXPECT_FALSE(oThread.Wait(0));
    FProcedure fnProcedure = [] { return 7u; };
    oThread.Create(RunFunction, &fnProcedure, false, 0, false);
    EXPECT_EQ("CQxThread::Create -- m_uiThreadID is non-NULL",
              qxMessageOf<CQxThreadException>([&] { oThread.Create(RunFunction, &fnProcedure, false, 0, false); }));
    EXPECT_TRUE(oThread.Wait(10000));
    EXPECT_EQ(7u, oThread.GetExitCode());
}

// A thread created suspended runs only once resumed; a running thread that
// reaches its resume point after a Suspend holds there until the next
// Resume. The exit code reads 1 until the procedure has returned.
TEST(ThreadLifecycle, SuspendAndResumeGateTheProcedure)
{
    std::atomic<int> iStep{0};
    CQxTestGate oMaySuspend;
    CQxThread oThread;
    FProcedure fnProcedure = [&] {
        iStep = 1;
        oMaySuspend.WaitOpen();
        oThread.WaitOnResume();
        iStep = 2;
        return 42u;
    };
    oThread.Create(RunFunction, &fnProcedure, true, 0, false);
    std::this_thread::sleep_for(milliseconds(30));
    EXPECT_EQ(0, iStep.load());
    EXPECT_FALSE(oThread.Wait(0));
    oThread.Resume();
    ASSERT_TRUE(qxWaitUntil([&] { return iStep.load() == 1; }, 10));
    oThread.Suspend();
    oMaySuspend.Open();
    std::this_thread::sleep_for(milliseconds(30));
    EXPECT_EQ(1, iStep.load());
    EXPECT_EQ(1u, oThread.GetExitCode());
    EXPECT_FALSE(oThread.Wait(10));
    oThread.Resume();
    EXPECT_TRUE(oThread.Wait(kulQxInfinite));
    EXPECT_EQ(2, iStep.load());
    EXPECT_EQ(42u, oThread.GetExitCode());
}

TEST(ThreadLifecycle, DestroyingANeverResumedThreadRunsItsProcedureFirst)
{
    std::atomic<int> iRuns{0};
    FProcedure fnProcedure = [&] {
        std::this_thread::sleep_for(milliseconds(20));
        ++iRuns;
        return 0u;
    };
    {
        CQxThread oThread;
        oThread.Create(RunFunction, &fnProcedure, true, 0, false);
    }
    EXPECT_EQ(1, iRuns.load());
    // A thread that finished long before its object goes is joined too.
    {
        CQxCOMThread oThread;
        oThread.Create(RunFunction, &fnProcedure, false, 0, true);
        EXPECT_TRUE(oThread.Wait(10000));
        std::this_thread::sleep_for(milliseconds(10));
    }
    EXPECT_EQ(2, iRuns.load());
}

TEST(ThreadLifecycle, StackSizeDefaultsToHalfAMebibyte)
{
    for (unsigned int uiRequested : {0u, 1u << 20}) {
        size_t uiStackSize = 0;
        FProcedure fnProcedure = [&] {
            pthread_attr_t sAttributes;
            pthread_getattr_np(pthread_self(), &sAttributes);
            pthread_attr_getstacksize(&sAttributes, &uiStackSize);
            pthread_attr_destroy(&sAttributes);
            return 0u;
        };
        CQxThread oThread;
        oThread.Create(RunFunction, &fnProcedure, false, uiRequested, false);
        ASSERT_TRUE(oThread.Wait(10000));
        size_t uiExpected = uiRequested ? uiRequested : 524288;
        EXPECT_GE(uiStackSize, uiExpected);
        EXPECT_LT(uiStackSize, uiExpected + 65536) << "requested " << uiRequested;
    }
}

TEST(ThreadPriority, IsClampedAndScaled)
{
    CQxThread oThread;
    EXPECT_EQ(1, oThread.GetPriority());
    const int aaiCases[][2] = {{0, 31}, {100, 95}, {-20, 1}, {32, 95}, {-15, 1}, {5, 41}, {-1, 29}};
    for (const auto& aiCase : aaiCases) {
        oThread.SetPriority(aiCase[0]);  // not started: stored, nothing applied
        EXPECT_EQ(aiCase[1], oThread.GetPriority()) << aiCase[0];
    }
}

// A thread whose procedure runs an optional probe, says it has started,
// and holds until Finish().
class CHeldThread {
public:
    explicit CHeldThread(std::function<void()> in_fnAtStart = nullptr) : m_fnAtStart(std::move(in_fnAtStart)) {}
    ~CHeldThread() { m_oGoOn.Open(); }

    CQxThread oThread;

    bool Start()
    {
        oThread.Create(RunFunction, &m_fnProcedure, false, 0, false);
        return qxWaitUntil([this] { return m_bStarted.load(); }, 10);
    }
    bool Finish()
    {
        m_oGoOn.Open();
        return oThread.Wait(10000);
    }

private:
    std::function<void()> m_fnAtStart;
    std::atomic<bool> m_bStarted{false};
    CQxTestGate m_oGoOn;
    FProcedure m_fnProcedure = [this] {
        if (m_fnAtStart) m_fnAtStart();
        m_bStarted = true;
        m_oGoOn.WaitOpen();
        return 0u;
    };
};

TEST(ThreadPriority, AppliesRoundRobinBeforeAndAfterTheStart)
{
    std::string strWhy;
    if (!RealTimeAllowed(&strWhy)) GTEST_SKIP() << strWhy;
    auto fnScheduleOf = [](pthread_t in_oThread) {
        int iPolicy = -1;
        sched_param sParameter = {};
        pthread_getschedparam(in_oThread, &iPolicy, &sParameter);
        return std::make_pair(iPolicy, sParameter.sched_priority);
    };
    std::pair<int, int> sAtStart;
    CHeldThread oHeld([&] { sAtStart = fnScheduleOf(pthread_self()); });
    oHeld.oThread.SetPriority(5);
    ASSERT_TRUE(oHeld.Start());
    oHeld.oThread.SetPriority(10);
    const std::pair<int, int> sAfter = fnScheduleOf(oHeld.oThread.GetThreadId());
    ASSERT_TRUE(oHeld.Finish());
    EXPECT_EQ(std::make_pair(int(SCHED_RR), 41), sAtStart);
    EXPECT_EQ(std::make_pair(int(SCHED_RR), 51), sAfter);
}

// Where round-robin scheduling is allowed (as root), the refusal is provoked
// from a helper thread that gives up its own credentials first (the kernel
// keeps credentials per thread; the raw system call changes only the
// caller's, and the helper ends right after).
TEST(ThreadPriority, ARefusedPriorityOnARunningThreadThrows)
{
    std::string strWhy;
    const bool bAllowed = RealTimeAllowed(&strWhy);
    CHeldThread oHeld;
    ASSERT_TRUE(oHeld.Start());
    std::string strMessage, strSkip;
    std::thread oCaller([&] {
        if (bAllowed && syscall(SYS_setresuid, 65534, 65534, 65534) != 0) {
            strSkip = std::string("cannot drop this thread's credentials: ") + strerror(errno);
            return;
        }
        strMessage = qxMessageOf<CQxThreadException>([&] { oHeld.oThread.SetPriority(3); });
    });
    oCaller.join();
    EXPECT_TRUE(oHeld.Finish());
    if (!strSkip.empty()) GTEST_SKIP() << strSkip;
    EXPECT_EQ("CQxThread::SetPriority -> error occurred in pthread_setschedparam", strMessage);
    // The value was stored all the same.
    EXPECT_EQ(37, oHeld.oThread.GetPriority());
}

// Masks add up: a zero mask requests nothing (the thread keeps the inherited
// set), masks set before the start all apply at the start, a later smaller
// one removes nothing; the first mask of a running thread applies at once,
// and an impossible one is refused.
TEST(ThreadAffinity, MasksAddUpBeforeAndAfterTheStart)
{
    cpu_set_t sAllowed;
    CPU_ZERO(&sAllowed);
    sched_getaffinity(0, sizeof(sAllowed), &sAllowed);
    if (!CPU_ISSET(0, &sAllowed) || !CPU_ISSET(1, &sAllowed))
        GTEST_SKIP() << "needs processors 0 and 1, this process may use " << CPU_COUNT(&sAllowed);
    cpu_set_t sAtStart;
    {
        CHeldThread oHeld([&] { sAtStart = AffinityOf(pthread_self()); });
        oHeld.oThread.SetAffinityMask(0);
        ASSERT_TRUE(oHeld.Start());
        ASSERT_TRUE(oHeld.Finish());
        EXPECT_TRUE(CPU_EQUAL(&sAllowed, &sAtStart));
    }
    {
        CHeldThread oHeld([&] { sAtStart = AffinityOf(pthread_self()); });
        oHeld.oThread.SetAffinityMask(1u);
        oHeld.oThread.SetAffinityMask(2u);
        ASSERT_TRUE(oHeld.Start());
        EXPECT_TRUE(CPU_COUNT(&sAtStart) == 2 && CPU_ISSET(0, &sAtStart) && CPU_ISSET(1, &sAtStart));
        oHeld.oThread.SetAffinityMask(1u);
        cpu_set_t sLater = AffinityOf(oHeld.oThread.GetThreadId());
        EXPECT_EQ(2, CPU_COUNT(&sLater));
        EXPECT_TRUE(oHeld.Finish());
    }
    {
        CHeldThread oHeld;
        ASSERT_TRUE(oHeld.Start());
        oHeld.oThread.SetAffinityMask(1u);
        cpu_set_t sNow = AffinityOf(oHeld.oThread.GetThreadId());
        EXPECT_TRUE(CPU_COUNT(&sNow) == 1 && CPU_ISSET(0, &sNow));
        EXPECT_TRUE(oHeld.Finish());
    }
    if (CPU_ISSET(31, &sAllowed)) GTEST_SKIP() << "processor 31 exists here; no impossible mask to try";
    CHeldThread oHeld;
    ASSERT_TRUE(oHeld.Start());
    EXPECT_EQ("CQxThread::SetAffinityMask -> error occurred in pthread_setaffinity_np",
              qxMessageOf<CQxThreadException>([&] { oHeld.oThread.SetAffinityMask(1u << 31); }));
    EXPECT_TRUE(oHeld.Finish());
}

// Threads created, held, resumed, re-prioritised and destroyed from several
// threads at once; settings race with the starts.
TEST(ThreadStress, ManyThreadsComeAndGo)
{
    const long klRounds = qxTestScale(60, 15);
    constexpr int kiOwners = 4, kiPerOwner = 4;
    std::string strWhy;
    const bool bRealTime = RealTimeAllowed(&strWhy);
    std::atomic<long> lRan{0}, lBadExitCodes{0}, lRefusedWhileAlive{0};
    std::vector<std::thread> vecOwners;
    for (int o = 0; o < kiOwners; ++o)
        vecOwners.emplace_back([&, o] {
            FProcedure fnProcedure = [&] {
                ++lRan;
                return 5u;
            };
            for (long lRound = 0; lRound < klRounds; ++lRound) {
                std::vector<std::unique_ptr<CQxThread>> vecThreads;
                for (int i = 0; i < kiPerOwner; ++i) {
                    vecThreads.emplace_back(i % 2 ? new CQxCOMThread : new CQxThread);
                    vecThreads.back()->Create(RunFunction, &fnProcedure, (i + o) % 2 == 0, 0, false);
                    // A thread that already finished refuses its settings.
                    try {
                        if (bRealTime) vecThreads.back()->SetPriority(i);
                        vecThreads.back()->SetAffinityMask(1u);
                    } catch (const CQxThreadException&) {
                        lRefusedWhileAlive += !vecThreads.back()->Wait(0);
                    }
                }
                for (int i = 0; i < kiPerOwner; ++i) {
                    CQxThread& rThread = *vecThreads[static_cast<size_t>(i)];
                    if (i % 3 == 0) rThread.Resume();
                    if (i % 3 == 1 && rThread.Wait(0)) lBadExitCodes += rThread.GetExitCode() != 5u;
                }
                // Some never resumed: destruction runs them.
            }
        });
    for (auto& oOwner : vecOwners) qxJoinWithin(oOwner, 120, "thread owner");
    EXPECT_EQ(klRounds * kiOwners * kiPerOwner, lRan.load());
    EXPECT_EQ(0, lBadExitCodes.load());
    EXPECT_EQ(0, lRefusedWhileAlive.load());
}

}  // namespace
