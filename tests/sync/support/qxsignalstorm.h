// A storm of signals aimed at one thread, with a handler installed with or
// without SA_RESTART, to show that waits and sleeps survive interruption.
#ifndef QXBASE_TESTS_SYNC_QXSIGNALSTORM_H
#define QXBASE_TESTS_SYNC_QXSIGNALSTORM_H

#include <pthread.h>
#include <signal.h>
#include <time.h>

#include <atomic>
#include <thread>

class CQxSignalStorm {
public:
    // Sends SIGUSR1 to in_oTarget about every 200 microseconds until
    // destroyed. The target must outlive the storm.
    CQxSignalStorm(pthread_t in_oTarget, bool in_bRestart)
    {
        struct sigaction sAction = {};
        sAction.sa_handler = [](int) { ms_lHandled.fetch_add(1, std::memory_order_relaxed); };
        sAction.sa_flags = in_bRestart ? SA_RESTART : 0;
        sigaction(SIGUSR1, &sAction, nullptr);
        m_oSender = std::thread([this, in_oTarget] {
            for (timespec sPause = {0, 200000}; !m_bStop.load(); nanosleep(&sPause, nullptr))
                pthread_kill(in_oTarget, SIGUSR1);
        });
    }
    // The counting handler stays installed: a signal still pending for the
    // target must not meet the default action, which ends the process.
    ~CQxSignalStorm()
    {
        m_bStop = true;
        m_oSender.join();
    }
    // Signals handled so far (by any thread).
    static long Handled() { return ms_lHandled.load(); }

private:
    static inline std::atomic<long> ms_lHandled{0};
    std::atomic<bool> m_bStop{false};
    std::thread m_oSender;
};

#endif  // QXBASE_TESTS_SYNC_QXSIGNALSTORM_H
