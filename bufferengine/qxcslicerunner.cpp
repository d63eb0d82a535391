#include "bufferengine/qxcslicerunner.h"

#include <qxbase/qxerrors.h>
#include <qxbase/qxworkqueue.h>

#include <emmintrin.h>
#include <sched.h>

#include <algorithm>
#include <chrono>
#include <thread>

namespace {

constexpr unsigned int kuiInfinite = 4294967295u;

// The processors this process may run on.
int ProcessorCount()
{
    cpu_set_t sSet;
    CPU_ZERO(&sSet);
    if (sched_getaffinity(0, sizeof(sSet), &sSet) == 0 && CPU_COUNT(&sSet) > 0) return CPU_COUNT(&sSet);
    const unsigned int uiCount = std::thread::hardware_concurrency();
    return uiCount > 0 ? int(uiCount) : 1;
}

// How long the calling thread, out of slices, watches the pool threads
// finish theirs before it blocks: each holds at most one slice, which takes
// some tens of microseconds, far less than going to sleep and being woken.
constexpr std::chrono::microseconds kWatchPool(200);

}  // namespace

CQxcSliceRunner::CQxcSliceRunner(const char* in_pszName)
    : m_pQueue(nullptr),
      m_iMaxHelpers(ProcessorCount() - 1),
      m_pfnSlice(nullptr),
      m_pContext(nullptr),
      m_uiSlices(0),
      m_uiNext(0),
      m_uiItemsDone(0)
{
    int iResult = 0;
    // Without a thread-pool manager (iResult) the queue still runs its items.
    m_pQueue = new CQxConcurrentWorkQueue([](void* in_pItem) { static_cast<CQxcSliceRunner*>(in_pItem)->Help(); },
                                          iResult, in_pszName, 4294967295ul);
}

CQxcSliceRunner::~CQxcSliceRunner() { delete m_pQueue; }

void CQxcSliceRunner::TakeSlices()
{
    for (;;) {
        const uint32_t uiSlice = m_uiNext.fetch_add(1, std::memory_order_relaxed);
        if (uiSlice >= m_uiSlices) return;
        m_pfnSlice(m_pContext, uiSlice);
    }
}

void CQxcSliceRunner::Help()
{
    TakeSlices();
    m_uiItemsDone.fetch_add(1, std::memory_order_release);
}

void CQxcSliceRunner::Run(uint32_t in_uiSlices, PFNSlice in_pfnSlice, void* in_pContext)
{
    // Published to the pool threads by the queue's hand-over.
    m_pfnSlice = in_pfnSlice;
    m_pContext = in_pContext;
    m_uiSlices = in_uiSlices;
    m_uiNext.store(0, std::memory_order_relaxed);
    m_uiItemsDone.store(0, std::memory_order_relaxed);
    // One item for each pool thread that can help: an item beyond those
    // would find nothing to do, and handing it over and draining it would
    // only make the calling thread and a pool thread contend for the queue.
    // An item that fails to go over loses nothing: the calling thread takes
    // whatever nobody has taken.
    const uint32_t uiItems = in_uiSlices > 1 ? std::min<uint32_t>(uint32_t(m_iMaxHelpers), in_uiSlices - 1) : 0;
    uint32_t uiQueued = 0;
    for (uint32_t i = 0; i < uiItems; ++i)
        if (m_pQueue->QueueTask(this, kuiInfinite) == S_OK) ++uiQueued;
    TakeSlices();
    if (uiQueued == 0) return;
    const std::chrono::steady_clock::time_point tGiveUp = std::chrono::steady_clock::now() + kWatchPool;
    while (m_uiItemsDone.load(std::memory_order_acquire) < uiQueued) {
        for (int i = 0; i < 16; ++i) _mm_pause();
        if (std::chrono::steady_clock::now() > tGiveUp) break;
    }
    // Also what makes the pool threads' work visible here.
    m_pQueue->WaitForCompletion(kuiInfinite);
}
