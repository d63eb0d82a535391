#include "tests/sync/support/qxsignalstorm.h"

#include <string.h>
#include <time.h>

namespace {
std::atomic<long> g_lHandled{0};
void OnSignal(int)
{
    g_lHandled.fetch_add(1, std::memory_order_relaxed);
}
}  // namespace

CQxSignalStorm::CQxSignalStorm(pthread_t in_oTarget, bool in_bRestart)
{
    struct sigaction sAction;
    memset(&sAction, 0, sizeof(sAction));
    sAction.sa_handler = OnSignal;
    sAction.sa_flags = in_bRestart ? SA_RESTART : 0;
    sigemptyset(&sAction.sa_mask);
    sigaction(SIGUSR1, &sAction, nullptr);
    m_oSender = std::thread([this, in_oTarget] {
        timespec sPause = {0, 200000};
        while (!m_bStop.load()) {
            pthread_kill(in_oTarget, SIGUSR1);
            nanosleep(&sPause, nullptr);
        }
    });
}

CQxSignalStorm::~CQxSignalStorm()
{
    m_bStop = true;
    m_oSender.join();
    // The counting handler stays installed: a signal still pending for the
    // target must not meet the default action, which ends the process.
}

long CQxSignalStorm::Handled()
{
    return g_lHandled.load();
}
