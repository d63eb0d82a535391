// Work queues on libdispatch's global concurrent queues.
#include <qxbase/qxworkqueue.h>

#include <qxbase/qxguids.h>
#include <qxbase/qxregistry.h>

#include "sync/qxsyncdelay.h"

#include <dispatch/dispatch.h>

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define QX_WORKQUEUE_TSAN 1
#endif
#endif

#ifdef QX_WORKQUEUE_TSAN
extern "C" void __tsan_acquire(void* addr);
extern "C" void __tsan_release(void* addr);
#endif

namespace {

// The hand-off to a pool thread happens inside libdispatch, which is not
// instrumented. The sanitizer's libdispatch interceptors make it visible
// when they are active; the annotation makes it visible regardless (a
// release before submission, an acquire when the block starts).
inline void AnnotateSubmit(void* in_pQueue)
{
#ifdef QX_WORKQUEUE_TSAN
    __tsan_release(in_pQueue);
#else
    (void)in_pQueue;
#endif
}

inline void AnnotateStart(void* in_pQueue)
{
#ifdef QX_WORKQUEUE_TSAN
    __tsan_acquire(in_pQueue);
#else
    (void)in_pQueue;
#endif
}

}  // namespace

// --- counting -----------------------------------------------------------------------

CQxWorkQueueImplementation::CQxWorkQueueImplementation(std::function<void(void*)> in_fnTask, int& io_iResult,
                                                       const std::string& in_strName, unsigned long in_ulMaxPending)
    : m_strName(in_strName),
      m_ui64Pending(0),
      m_ui64MaxPending(in_ulMaxPending),
      m_oRoomEvent(true),
      m_oIdleEvent(true)
{
    if (!in_fnTask) io_iResult = QX_E_INVALID_POINTER;
    // Room means pending < maximum: a queue of maximum 0 never has room, and
    // its QueueTask times out as a full queue's does instead of looking for
    // room that is never there.
    if (m_ui64MaxPending > 0) m_oRoomEvent.Set();
    m_oIdleEvent.Set();
    m_fnTask = std::move(in_fnTask);
}

CQxWorkQueueImplementation::~CQxWorkQueueImplementation()
{
    // A _RemoveTask that has already set the idle event may still be
    // setting the room event and unlocking; let it finish before the
    // members go.
    m_oLock.Wait(kulQxInfinite);
    m_oLock.Release();
}

int CQxWorkQueueImplementation::WaitForCompletion(unsigned int in_uiTimeout)
{
    return m_oIdleEvent.Wait(in_uiTimeout) ? S_OK : QX_E_TIMEOUT;
}

bool CQxWorkQueueImplementation::_AddTask(unsigned int in_uiTimeout)
{
    for (;;) {
        if (!m_oRoomEvent.Wait(in_uiTimeout)) return false;
        QX_SYNC_DELAY_POINT(keQxDelayAddTaskRoomSeen, this);
        CQxAutoLock oLock(&m_oLock);
        // Another producer may have taken the last place since the room
        // event was seen: look again (the time-out restarts).
        if (m_ui64Pending >= m_ui64MaxPending) continue;
        if (m_ui64Pending == 0) m_oIdleEvent.Reset();
        if (++m_ui64Pending >= m_ui64MaxPending) m_oRoomEvent.Reset();
        return true;
    }
}

void CQxWorkQueueImplementation::_RemoveTask()
{
    CQxAutoLock oLock(&m_oLock);
    const uint64_t ui64Before = m_ui64Pending;
    if (ui64Before > 0) --m_ui64Pending;
    if (ui64Before <= 1) m_oIdleEvent.Set();
    m_oRoomEvent.Set();
}

// --- libdispatch ----------------------------------------------------------------------

CQxConcurrentWorkQueueLinux::CQxConcurrentWorkQueueLinux(std::function<void(void*)> in_fnTask, int& io_iResult,
                                                         const std::string& in_strName,
                                                         unsigned long in_ulMaxPending)
    : CQxWorkQueueImplementation(std::move(in_fnTask), io_iResult, in_strName, in_ulMaxPending),
      m_pThreadPoolManager(nullptr),
      m_i32Priority(keQxThreadPoolRelativePriorityNormal)
{
    if (io_iResult < 0) return;
    io_iResult = CoCreateInstance(CLSID_QxThreadPoolManager, nullptr, CLSCTX_INPROC_SERVER, IID_IQxThreadPoolManager,
                                  reinterpret_cast<void**>(&m_pThreadPoolManager));
    if (io_iResult >= 0 && !m_pThreadPoolManager) io_iResult = QX_E_NOT_INITIALIZED;
}

CQxConcurrentWorkQueueLinux::~CQxConcurrentWorkQueueLinux()
{
    WaitForCompletion(0xFFFFFFFFu);
    if (m_pThreadPoolManager) {
        m_pThreadPoolManager->Release();
        m_pThreadPoolManager = nullptr;
    }
}

long CQxConcurrentWorkQueueLinux::_GetDispatchQueuePriority(EQxThreadPoolRelativePriority in_ePriority) const
{
    switch (in_ePriority) {
    case keQxThreadPoolRelativePriorityBelowNormal:
        return DISPATCH_QUEUE_PRIORITY_LOW;
    case keQxThreadPoolRelativePriorityAboveNormal:
        return DISPATCH_QUEUE_PRIORITY_HIGH;
    default:
        return DISPATCH_QUEUE_PRIORITY_DEFAULT;
    }
}

int CQxConcurrentWorkQueueLinux::QueueTask(void* in_pItem, unsigned int in_uiTimeout)
{
    if (!m_fnTask) return QX_E_NOT_INITIALIZED;
    int32_t i32Priority;
    if (m_pThreadPoolManager) {
        i32Priority = m_pThreadPoolManager->GetRelativePriority();
        m_i32Priority.store(i32Priority, std::memory_order_relaxed);
    } else {
        i32Priority = m_i32Priority.load(std::memory_order_relaxed);
    }
    dispatch_queue_t pQueue =
        dispatch_get_global_queue(_GetDispatchQueuePriority(static_cast<EQxThreadPoolRelativePriority>(i32Priority)), 0);
    if (!pQueue) return QX_E_OPERATION_FAILED;
    if (!_AddTask(in_uiTimeout)) return QX_E_TIMEOUT;

    CQxConcurrentWorkQueueLinux* pSelf = this;
    AnnotateSubmit(pSelf);
    dispatch_async(pQueue, ^{
      AnnotateStart(pSelf);
      try {
          pSelf->m_fnTask(in_pItem);
      } catch (...) {
          // The item stays counted: its owner learns of the failure only
          // through a WaitForCompletion that times out.
          return;
      }
      pSelf->_RemoveTask();
    });
    return S_OK;
}

// --- facade ------------------------------------------------------------------------------

CQxConcurrentWorkQueue::CQxConcurrentWorkQueue(std::function<void(void*)> in_fnTask, int& io_iResult,
                                               const std::string& in_strName, unsigned long in_ulMaxPending)
    : m_pImplementation(new CQxConcurrentWorkQueueLinux(std::move(in_fnTask), io_iResult, in_strName, in_ulMaxPending))
{
}

CQxConcurrentWorkQueue::~CQxConcurrentWorkQueue()
{
    delete m_pImplementation;
    m_pImplementation = nullptr;
}

int CQxConcurrentWorkQueue::QueueTask(void* in_pItem, unsigned int in_uiTimeout)
{
    if (!m_pImplementation) return QX_E_NOT_INITIALIZED;
    return m_pImplementation->QueueTask(in_pItem, in_uiTimeout);
}

int CQxConcurrentWorkQueue::WaitForCompletion(unsigned int in_uiTimeout)
{
    if (!m_pImplementation) return QX_E_NOT_INITIALIZED;
    return m_pImplementation->WaitForCompletion(in_uiTimeout);
}
