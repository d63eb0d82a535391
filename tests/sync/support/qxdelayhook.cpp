#include "tests/sync/support/qxdelayhook.h"

#include <atomic>

thread_local const char* tl_pszQxTestRole = nullptr;

namespace {
std::atomic<FQxDelayHook*> g_pHook{nullptr};
}

CQxScopedDelayHook::CQxScopedDelayHook(FQxDelayHook in_fnHook) : m_fnHook(std::move(in_fnHook))
{
    g_pHook.store(&m_fnHook, std::memory_order_release);
}

CQxScopedDelayHook::~CQxScopedDelayHook()
{
    g_pHook.store(nullptr, std::memory_order_release);
}

void qxSyncDelayPoint(EQxSyncDelayPoint in_ePoint, const void* in_pObject)
{
    if (FQxDelayHook* pHook = g_pHook.load(std::memory_order_acquire)) (*pHook)(in_ePoint, in_pObject);
}
