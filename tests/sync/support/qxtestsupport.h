// Shared helpers of the synchronisation tests: iteration scaling for
// sanitizer builds, logged seeds, the watchdog that turns a hang into a
// failure with every thread's stack, and small thread choreography tools.
#ifndef QXBASE_TESTS_SYNC_QXTESTSUPPORT_H
#define QXBASE_TESTS_SYNC_QXTESTSUPPORT_H

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

#define QX_TEST_SANITIZED 0
#if defined(__has_feature)
#if __has_feature(thread_sanitizer) || __has_feature(address_sanitizer)
#undef QX_TEST_SANITIZED
#define QX_TEST_SANITIZED 1
#endif
#endif

// Iteration counts: the plain build runs the full count, sanitizer builds
// (several times slower) the reduced one.
constexpr long qxTestScale(long in_lPlain, long in_lSanitized)
{
    return QX_TEST_SANITIZED ? in_lSanitized : in_lPlain;
}

// A seed for the current test: QX_TEST_SEED when set, else a fresh one. It is
// printed and recorded with the test, so a failure can be replayed.
uint32_t qxTestSeed();

// The watchdog is armed for every test by the test main with a budget of
// QX_TEST_WATCHDOG_SECONDS (default 60). When a test overruns it, every
// thread's stack is printed and the process aborts.
void qxWatchdogSetBudget(double in_dSeconds);
[[noreturn]] void qxWatchdogFire(const char* in_pszReason);

// A program may define this to run itself elsewhere first (e.g. inside a
// private mount namespace): when it returns true, main returns *out_iStatus
// without running the tests here.
bool qxTestPreMain(int argc, char** argv, int* out_iStatus) __attribute__((weak));

// Joins the thread, or fires the watchdog when it has not finished in time
// (a deadlocked thread cannot be joined and must not hang the run).
void qxJoinWithin(std::thread& io_oThread, double in_dSeconds, const char* in_pszWhat);

// Monotonic seconds, for "not before its deadline" checks.
inline double qxTestNow()
{
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

// Polls the condition until it holds or the seconds have passed; true when it
// holds.
inline bool qxWaitUntil(const std::function<bool()>& in_fnHolds, double in_dSeconds)
{
    const double dDeadline = qxTestNow() + in_dSeconds;
    while (!in_fnHolds()) {
        if (qxTestNow() > dDeadline) return false;
        std::this_thread::yield();
    }
    return true;
}

// Threads that wait until a number of them have arrived, or a time-out.
class CQxTestRendezvous {
public:
    explicit CQxTestRendezvous(int in_iParties) : m_iParties(in_iParties) {}
    // true when all parties arrived within the time-out.
    bool Arrive(std::chrono::milliseconds in_oTimeout)
    {
        std::unique_lock<std::mutex> oLock(m_oMutex);
        ++m_iArrived;
        m_oChanged.notify_all();
        return m_oChanged.wait_for(oLock, in_oTimeout, [this] { return m_iArrived >= m_iParties; });
    }
    int Arrived()
    {
        std::lock_guard<std::mutex> oLock(m_oMutex);
        return m_iArrived;
    }

private:
    std::mutex m_oMutex;
    std::condition_variable m_oChanged;
    int m_iParties;
    int m_iArrived = 0;
};

// A one-shot gate: threads wait until it is opened (or a time-out).
class CQxTestGate {
public:
    void Open()
    {
        std::lock_guard<std::mutex> oLock(m_oMutex);
        m_bOpen = true;
        m_oOpened.notify_all();
    }
    bool WaitOpen(std::chrono::milliseconds in_oTimeout = std::chrono::milliseconds(10000))
    {
        std::unique_lock<std::mutex> oLock(m_oMutex);
        return m_oOpened.wait_for(oLock, in_oTimeout, [this] { return m_bOpen; });
    }

private:
    std::mutex m_oMutex;
    std::condition_variable m_oOpened;
    bool m_bOpen = false;
};

// Runs the call and returns the message of the TException it throws, or a
// note that it threw nothing (or something else).
template <class TException>
std::string qxMessageOf(const std::function<void()>& in_fnCall)
{
    try {
        in_fnCall();
    } catch (const TException& oException) {
        return oException.GetMessage();
    } catch (...) {
        return "<other exception>";
    }
    return "<no exception>";
}

#endif  // QXBASE_TESTS_SYNC_QXTESTSUPPORT_H
