// Test main of the synchronisation tests: GoogleTest plus a watchdog that,
// when a test overruns its budget, prints every thread's stack (through gdb
// when it can attach, else through a signal and backtrace() in each thread)
// and aborts, so a deadlock fails loudly instead of hanging the run.
#include "tests/sync/support/qxtestsupport.h"

#include <gtest/gtest.h>

#include <dirent.h>
#include <execinfo.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <random>

namespace {

// The watchdog thread runs until the process ends, so its state is never
// destroyed (destroying a condition a thread still waits on blocks exit).
struct SWatchState {
    std::mutex m_oMutex;
    std::condition_variable m_oChanged;
    double m_dDeadline = 0;  // monotonic seconds; 0 = not armed
    double m_dDefaultBudget = 60;
    std::string m_strCurrentTest;
};
SWatchState& g_rWatch = *new SWatchState;

std::atomic<int> g_iDumpAcknowledged{0};

void DumpOneThread(int)
{
    void* apFrames[64];
    int iCount = backtrace(apFrames, 64);
    char szHeader[64];
    int iLength = snprintf(szHeader, sizeof(szHeader), "--- thread %ld ---\n", static_cast<long>(syscall(SYS_gettid)));
    (void)!write(STDERR_FILENO, szHeader, static_cast<size_t>(iLength));
    backtrace_symbols_fd(apFrames, iCount, STDERR_FILENO);
    g_iDumpAcknowledged.fetch_add(1);
}

// gdb prints symbolised stacks of every thread, including those blocked in
// the kernel; it runs as a child of this process.
bool DumpWithGdb()
{
    if (access("/usr/bin/gdb", X_OK) != 0) return false;
    prctl(PR_SET_PTRACER, PR_SET_PTRACER_ANY, 0, 0, 0);
    const std::string strPid = std::to_string(getpid());
    pid_t iChild = fork();
    if (iChild < 0) return false;
    if (iChild == 0) {
        dup2(STDERR_FILENO, STDOUT_FILENO);
        execl("/usr/bin/gdb", "gdb", "-batch", "-nx", "-p", strPid.c_str(), "-ex", "thread apply all bt",
              static_cast<char*>(nullptr));
        _exit(127);
    }
    int iStatus = 0;
    for (int i = 0; i < 600; ++i, usleep(100000))  // at most 60 s
        if (waitpid(iChild, &iStatus, WNOHANG) == iChild) return WIFEXITED(iStatus) && WEXITSTATUS(iStatus) == 0;
    kill(iChild, SIGKILL);
    waitpid(iChild, &iStatus, 0);
    return false;
}

// Fallback: each thread prints its own stack from a signal handler, one
// thread at a time.
void DumpWithSignals()
{
    struct sigaction sAction = {};
    sAction.sa_handler = DumpOneThread;
    sAction.sa_flags = SA_RESTART;
    sigaction(SIGRTMIN + 3, &sAction, nullptr);
    DIR* pDir = opendir("/proc/self/task");
    if (!pDir) return;
    while (dirent* pEntry = readdir(pDir)) {
        long lTid = atol(pEntry->d_name);
        int iBefore = g_iDumpAcknowledged.load();
        if (lTid <= 0 || syscall(SYS_tgkill, getpid(), lTid, SIGRTMIN + 3) != 0) continue;
        for (int i = 0; i < 100 && g_iDumpAcknowledged.load() == iBefore; ++i) usleep(10000);
    }
    closedir(pDir);
}

void WatchdogLoop()
{
    std::unique_lock<std::mutex> oLock(g_rWatch.m_oMutex);
    for (;;) {
        if (g_rWatch.m_dDeadline == 0) {
            g_rWatch.m_oChanged.wait(oLock);
        } else if (double dLeft = g_rWatch.m_dDeadline - qxTestNow(); dLeft > 0) {
            g_rWatch.m_oChanged.wait_for(oLock, std::chrono::duration<double>(dLeft));
        } else {
            std::string strReason = "test " + g_rWatch.m_strCurrentTest + " overran its time budget";
            oLock.unlock();
            qxWatchdogFire(strReason.c_str());
        }
    }
}

// Arms the watchdog for the current test (0 disarms it).
void Arm(double in_dSeconds)
{
    std::lock_guard<std::mutex> oLock(g_rWatch.m_oMutex);
    if (const testing::TestInfo* pTest = testing::UnitTest::GetInstance()->current_test_info())
        g_rWatch.m_strCurrentTest = std::string(pTest->test_suite_name()) + "." + pTest->name();
    g_rWatch.m_dDeadline = in_dSeconds > 0 ? qxTestNow() + in_dSeconds : 0;
    g_rWatch.m_oChanged.notify_all();
}

class CWatchdogListener : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { Arm(g_rWatch.m_dDefaultBudget); }
    void OnTestEnd(const testing::TestInfo&) override { Arm(0); }
};

}  // namespace

void qxWatchdogSetBudget(double in_dSeconds)
{
    Arm(in_dSeconds);
}

void qxWatchdogFire(const char* in_pszReason)
{
    fprintf(stderr, "\nwatchdog: %s; stacks of all threads follow\n", in_pszReason);
    fflush(stderr);
    if (!DumpWithGdb()) DumpWithSignals();
    fprintf(stderr, "watchdog: aborting\n");
    fflush(stderr);
    abort();
}

void qxJoinWithin(std::thread& io_oThread, double in_dSeconds, const char* in_pszWhat)
{
    // Joining happens on a helper so that the wait can be bounded.
    CQxTestGate oJoined;
    std::thread oJoiner([&] {
        io_oThread.join();
        oJoined.Open();
    });
    if (!oJoined.WaitOpen(std::chrono::milliseconds(static_cast<long>(in_dSeconds * 1000))))
        qxWatchdogFire((std::string(in_pszWhat) + " did not finish (deadlock?)").c_str());
    oJoiner.join();
}

uint32_t qxTestSeed()
{
    const char* pszSeed = getenv("QX_TEST_SEED");
    const uint32_t uiSeed = pszSeed ? static_cast<uint32_t>(strtoul(pszSeed, nullptr, 0)) : std::random_device()();
    const testing::TestInfo* pTest = testing::UnitTest::GetInstance()->current_test_info();
    printf("[  SEED    ] %s.%s: QX_TEST_SEED=%u\n", pTest ? pTest->test_suite_name() : "?", pTest ? pTest->name() : "?",
           uiSeed);
    fflush(stdout);
    testing::Test::RecordProperty("seed", std::to_string(uiSeed));
    return uiSeed;
}

int main(int argc, char** argv)
{
    int iStatus = 0;
    if (qxTestPreMain && qxTestPreMain(argc, argv, &iStatus)) return iStatus;
    testing::InitGoogleTest(&argc, argv);
    if (const char* pszBudget = getenv("QX_TEST_WATCHDOG_SECONDS")) g_rWatch.m_dDefaultBudget = atof(pszBudget);
    // backtrace() loads its unwinder on first use, which is not safe inside
    // a signal handler; load it now.
    void* pFrame;
    backtrace(&pFrame, 1);
    std::thread(WatchdogLoop).detach();
    testing::UnitTest::GetInstance()->listeners().Append(new CWatchdogListener);
    return RUN_ALL_TESTS();
}
