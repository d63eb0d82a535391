#include "tests/sync/support/qxsemnames.h"

#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
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

void UnlinkFromTable()
{
    for (int i = 0; i < g_iNames.load() && i < kiMaxNames; ++i) unlink(g_aszPaths[i]);
}

void OnFatalSignal(int in_iSignal)
{
    UnlinkFromTable();  // unlink is async-signal-safe
    signal(in_iSignal, SIG_DFL);
    raise(in_iSignal);
}

std::string PathOf(const std::string& in_strName)
{
    return "/dev/shm/sem." + in_strName.substr(1);
}

}  // namespace

std::string qxTestSemaphoreName()
{
    std::call_once(g_oInstalled, [] {
        struct sigaction sAction = {};
        sAction.sa_handler = OnFatalSignal;
        sAction.sa_flags = SA_RESETHAND;
        for (int iSignal : {SIGABRT, SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGTERM, SIGINT})
            sigaction(iSignal, &sAction, nullptr);
        atexit(UnlinkFromTable);
    });
    std::string strName = "/qxtest-" + std::to_string(getpid()) + "-" + std::to_string(g_iNext.fetch_add(1));
    if (int iSlot = g_iNames.load(); iSlot < kiMaxNames) {
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
    for (int i = 0; i < g_iNames.load() && i < kiMaxNames; ++i)
        if (access(g_aszPaths[i], F_OK) == 0) {
            ++iLeft;
            unlink(g_aszPaths[i]);
        }
    g_iNames.store(0);
    return iLeft;
}
