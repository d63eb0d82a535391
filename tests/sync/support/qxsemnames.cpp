#include "tests/sync/support/qxsemnames.h"

#include <semaphore.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <mutex>

namespace {

// Fixed storage: the signal handler may only touch memory that exists
// without allocation.
constexpr int kiMaxNames = 256;
char g_aszPaths[kiMaxNames][96];
std::atomic<int> g_iNames{0};
std::atomic<int> g_iNext{0};
std::once_flag g_oInstalled;

const int kaiFatalSignals[] = {SIGABRT, SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGTERM, SIGINT};

void UnlinkFromTable()
{
    int iCount = g_iNames.load();
    for (int i = 0; i < iCount && i < kiMaxNames; ++i) unlink(g_aszPaths[i]);
}

void OnFatalSignal(int in_iSignal)
{
    UnlinkFromTable();  // unlink is async-signal-safe
    signal(in_iSignal, SIG_DFL);
    raise(in_iSignal);
}

void Install()
{
    for (int iSignal : kaiFatalSignals) {
        struct sigaction sAction;
        memset(&sAction, 0, sizeof(sAction));
        sAction.sa_handler = OnFatalSignal;
        sAction.sa_flags = SA_RESETHAND;
        sigaction(iSignal, &sAction, nullptr);
    }
    atexit(UnlinkFromTable);
}

std::string PathOf(const std::string& in_strName)
{
    return "/dev/shm/sem." + in_strName.substr(1);
}

}  // namespace

std::string qxTestSemaphoreName()
{
    std::call_once(g_oInstalled, Install);
    std::string strName =
        "/qxtest-" + std::to_string(static_cast<long>(getpid())) + "-" + std::to_string(g_iNext.fetch_add(1));
    int iSlot = g_iNames.load();
    if (iSlot < kiMaxNames) {
        snprintf(g_aszPaths[iSlot], sizeof(g_aszPaths[iSlot]), "%s", PathOf(strName).c_str());
        g_iNames.store(iSlot + 1);
    }
    return strName;
}

bool qxTestSemaphoreExists(const std::string& in_strName)
{
    return access(PathOf(in_strName).c_str(), F_OK) == 0;
}

int qxTestUnlinkSemaphores()
{
    int iLeft = 0;
    int iCount = g_iNames.load();
    for (int i = 0; i < iCount && i < kiMaxNames; ++i)
        if (access(g_aszPaths[i], F_OK) == 0) {
            ++iLeft;
            unlink(g_aszPaths[i]);
        }
    g_iNames.store(0);
    return iLeft;
}
