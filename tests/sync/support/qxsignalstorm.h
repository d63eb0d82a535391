// A storm of signals aimed at one thread, with a handler installed with or
// without SA_RESTART, to show that waits and sleeps survive interruption.
#ifndef QXBASE_TESTS_SYNC_QXSIGNALSTORM_H
#define QXBASE_TESTS_SYNC_QXSIGNALSTORM_H

#include <pthread.h>
#include <signal.h>

#include <atomic>
#include <thread>

class CQxSignalStorm {
public:
    // Starts sending SIGUSR1 to in_oTarget about every 200 microseconds.
    CQxSignalStorm(pthread_t in_oTarget, bool in_bRestart);
    // Stops the storm. The target must outlive the storm.
    ~CQxSignalStorm();
    // Signals handled so far (by any thread).
    static long Handled();

private:
    std::atomic<bool> m_bStop{false};
    std::thread m_oSender;
};

#endif  // QXBASE_TESTS_SYNC_QXSIGNALSTORM_H
