// Test side of the delay points compiled into the test build of the
// synchronisation sources: a test installs a function that runs at every
// point, typically to hold one thread until another has reached a chosen
// place.
#ifndef QXBASE_TESTS_SYNC_QXDELAYHOOK_H
#define QXBASE_TESTS_SYNC_QXDELAYHOOK_H

#include "sync/qxsyncdelay.h"

#include <functional>

using FQxDelayHook = std::function<void(EQxSyncDelayPoint, const void*)>;

// Installs the hook for its lifetime. Threads that may reach a point must be
// joined before it goes out of scope.
class CQxScopedDelayHook {
public:
    explicit CQxScopedDelayHook(FQxDelayHook in_fnHook);
    ~CQxScopedDelayHook();

private:
    FQxDelayHook m_fnHook;
};

// The role of the current thread in a choreography ("A", "setter" ...), so
// that a hook can tell the threads apart. Null for threads without a role.
extern thread_local const char* tl_pszQxTestRole;

#endif  // QXBASE_TESTS_SYNC_QXDELAYHOOK_H
