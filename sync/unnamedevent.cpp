// The unnamed event: waiters bring their own conditions, the event signals
// them. See qxbase/qxunnamedevent.h for the lock order.
#include <qxbase/qxunnamedevent.h>

#include "sync/qxsyncdelay.h"

#include <errno.h>
#include <limits.h>
#include <sys/time.h>

#include <algorithm>
#include <vector>

void GetClockTime(long in_lMilliseconds, timespec* out_psTime)
{
    timeval sNow;
    gettimeofday(&sNow, nullptr);
    out_psTime->tv_sec = sNow.tv_sec + in_lMilliseconds / 1000;
    out_psTime->tv_nsec = sNow.tv_usec * 1000 + (in_lMilliseconds % 1000) * 1000000;
    if (out_psTime->tv_nsec > 999999999) {
        out_psTime->tv_sec += 1;
        out_psTime->tv_nsec -= 1000000000;
    }
}

void g_get_timeout_value(unsigned long in_ulMilliseconds, timespec& out_sTime)
{
    clock_gettime(CLOCK_REALTIME, &out_sTime);
    out_sTime.tv_sec += static_cast<time_t>(in_ulMilliseconds / 1000);
    out_sTime.tv_nsec += static_cast<long>(in_ulMilliseconds % 1000) * 1000000;
    if (out_sTime.tv_nsec > 999999999) {
        out_sTime.tv_sec += 1;
        out_sTime.tv_nsec -= 1000000000;
    }
}

SQxCondition::SQxCondition()
{
    if (pthread_mutex_init(&m_oMutex, nullptr) != 0)
        throw "SQxCondition() - pthread_mutex_init failed\n";
    if (pthread_cond_init(&m_oCondition, nullptr) != 0) {
        pthread_mutex_destroy(&m_oMutex);
        throw "SQxCondition() - pthread_cond_init failed\n";
    }
}

SQxCondition::~SQxCondition()
{
    pthread_cond_destroy(&m_oCondition);
    pthread_mutex_destroy(&m_oMutex);
}

CQxVirtualEvent::~CQxVirtualEvent() {}

namespace {

// Holds the condition mutexes of every registered waiter. They are taken in
// ascending address order, not in list order: two events may list the same
// multi-object waiters in opposite orders, and two Sets locking in list
// order would then deadlock. Signalling still follows the list (oldest
// first); only the locking order is global. A record registered twice, or
// two records sharing a condition, lock its mutex once.
class CWaiterMutexes {
public:
    CWaiterMutexes(const std::list<SQxSynchroObject*>& in_lstWaiters, const void* in_pEvent)
    {
        size_t uiCount = in_lstWaiters.size();
        m_ppMutexes = m_apInline;
        if (uiCount > kuiInline) {
            m_vecMore.resize(uiCount);
            m_ppMutexes = m_vecMore.data();
        }
        m_uiCount = 0;
        for (SQxSynchroObject* pRecord : in_lstWaiters)
            m_ppMutexes[m_uiCount++] = &pRecord->m_pCondition->m_oMutex;
        std::sort(m_ppMutexes, m_ppMutexes + m_uiCount);
        m_uiCount = static_cast<size_t>(std::unique(m_ppMutexes, m_ppMutexes + m_uiCount) - m_ppMutexes);
        for (size_t i = 0; i < m_uiCount; ++i) {
            pthread_mutex_lock(m_ppMutexes[i]);
            if (i == 0) QX_SYNC_DELAY_POINT(keQxDelaySetFirstWaiterLocked, in_pEvent);
        }
        (void)in_pEvent;
    }

    ~CWaiterMutexes()
    {
        for (size_t i = 0; i < m_uiCount; ++i) pthread_mutex_unlock(m_ppMutexes[i]);
    }

private:
    static constexpr size_t kuiInline = 16;
    pthread_mutex_t* m_apInline[kuiInline];
    std::vector<pthread_mutex_t*> m_vecMore;
    pthread_mutex_t** m_ppMutexes;
    size_t m_uiCount;
};

// The event's deadline arithmetic is signed: a time-out beyond LONG_MAX would
// turn negative and expire at once. Such a time-out stays a very long finite
// wait instead (LONG_MAX ms is some 292 million years).
long ClampedMilliseconds(unsigned long in_ulMilliseconds)
{
    return in_ulMilliseconds > static_cast<unsigned long>(LONG_MAX) ? LONG_MAX
                                                                    : static_cast<long>(in_ulMilliseconds);
}

}  // namespace

CQxUnnamedEvent::CQxUnnamedEvent(bool in_bManualReset)
    : m_i32State(0), m_ui64Pulses(0), m_bManualReset(in_bManualReset)
{
    if (pthread_mutex_init(&m_oListMutex, nullptr) != 0)
        throw "CQxUnnamedEvent::CQxUnnamedEvent() -> pthread_mutex_init failed";
    if (pthread_mutex_init(&m_oStateMutex, nullptr) != 0) {
        pthread_mutex_destroy(&m_oListMutex);
        throw "CQxUnnamedEvent::CQxUnnamedEvent() -> pthread_mutex_init failed";
    }
    if (pthread_mutex_init(&m_oPulseMutex, nullptr) != 0) {
        pthread_mutex_destroy(&m_oStateMutex);
        pthread_mutex_destroy(&m_oListMutex);
        throw "CQxUnnamedEvent::CQxUnnamedEvent() -> pthread_mutex_init failed";
    }
    if (pthread_cond_init(&m_oListEmptied, nullptr) != 0) {
        pthread_mutex_destroy(&m_oPulseMutex);
        pthread_mutex_destroy(&m_oStateMutex);
        pthread_mutex_destroy(&m_oListMutex);
        throw "CQxUnnamedEvent::CQxUnnamedEvent() -> pthread_cond_init failed";
    }
}

CQxUnnamedEvent::~CQxUnnamedEvent()
{
    pthread_cond_destroy(&m_oListEmptied);
    pthread_mutex_destroy(&m_oPulseMutex);
    pthread_mutex_destroy(&m_oStateMutex);
    pthread_mutex_destroy(&m_oListMutex);
}

void CQxUnnamedEvent::_StoreState(int32_t in_i32State)
{
    pthread_mutex_lock(&m_oStateMutex);
    m_i32State.store(in_i32State, std::memory_order_release);
    pthread_mutex_unlock(&m_oStateMutex);
}

int CQxUnnamedEvent::Set()
{
    pthread_mutex_lock(&m_oListMutex);
    if (m_lstWaiters.empty()) {
        _StoreState(1);
    } else {
        // The state changes while every waiter's mutex is held, so a waiter
        // testing the state under its own mutex cannot miss the change.
        CWaiterMutexes oLocked(m_lstWaiters, this);
        _StoreState(1);
        for (SQxSynchroObject* pRecord : m_lstWaiters) {
            pthread_cond_signal(&pRecord->m_pCondition->m_oCondition);
            if (!m_bManualReset) break;
        }
    }
    return pthread_mutex_unlock(&m_oListMutex);
}

int CQxUnnamedEvent::Reset()
{
    pthread_mutex_lock(&m_oStateMutex);
    m_i32State.store(0, std::memory_order_relaxed);
    return pthread_mutex_unlock(&m_oStateMutex);
}

bool CQxUnnamedEvent::IsSet()
{
    return m_i32State.load(std::memory_order_acquire) != 0;
}

bool CQxUnnamedEvent::ConsumeSignal()
{
    if (!IsSet()) return false;
    QX_SYNC_DELAY_POINT(keQxDelayWaitSignalSeen, this);
    if (m_bManualReset) return true;
    // Tested again under the state mutex, still through the virtual table:
    // a derived event's own signalled test decides here as well.
    pthread_mutex_lock(&m_oStateMutex);
    bool bTaken = IsSet();
    if (bTaken) m_i32State.store(0, std::memory_order_relaxed);
    pthread_mutex_unlock(&m_oStateMutex);
    return bTaken;
}

bool CQxUnnamedEvent::IsSignalledFor(uint64_t in_ui64PulseCountAtRegistration)
{
    return m_ui64Pulses.load(std::memory_order_relaxed) != in_ui64PulseCountAtRegistration ||
           ConsumeSignal();
}

bool CQxUnnamedEvent::Wait(unsigned long in_ulMilliseconds)
{
    // The common case of a set manual-reset event (a queue with room, an
    // idle queue) needs no condition and no registration: nothing consumes
    // the signal, and a waiter that registered would find it at its first
    // test. Tested through the virtual table, as below.
    if (m_bManualReset && IsSet()) return true;
    SQxCondition sCondition;
    SQxSynchroObject sRecord = {nullptr, nullptr, &sCondition};
    const uint64_t ui64Registered = RegisterWaiter(&sRecord);
    QX_SYNC_DELAY_POINT(keQxDelayWaitRegistered, this);

    const bool bInfinite = in_ulMilliseconds == kulQxInfinite;
    timespec sDeadline = {0, 0};
    if (!bInfinite) GetClockTime(ClampedMilliseconds(in_ulMilliseconds), &sDeadline);

    pthread_mutex_lock(&sCondition.m_oMutex);
    for (;;) {
        if (IsSignalledFor(ui64Registered)) {
            pthread_mutex_unlock(&sCondition.m_oMutex);
            RemoveSynchroObject(&sRecord);
            return true;
        }
        QX_SYNC_DELAY_POINT(keQxDelayWaitSleeping, this);
        int iResult = bInfinite ? pthread_cond_wait(&sCondition.m_oCondition, &sCondition.m_oMutex)
                                : pthread_cond_timedwait(&sCondition.m_oCondition, &sCondition.m_oMutex,
                                                         &sDeadline);
        QX_SYNC_DELAY_POINT(keQxDelayWaitWoken, this);
        if (iResult == ETIMEDOUT) {
            pthread_mutex_unlock(&sCondition.m_oMutex);
            QX_SYNC_DELAY_POINT(keQxDelayWaitTimedOut, this);
            // Only a pulse that found this waiter still registered counts.
            const uint64_t ui64Removed = _Unregister(&sRecord);
            // A Set that came between the time-out and the removal signalled
            // only this (oldest) waiter; consuming it here keeps it from being
            // lost while a later waiter sleeps on a set event. Unregistered
            // now, nothing else can signal this waiter.
            pthread_mutex_lock(&sCondition.m_oMutex);
            bool bReleased = ui64Removed != ui64Registered || ConsumeSignal();
            pthread_mutex_unlock(&sCondition.m_oMutex);
            return bReleased;
        }
        if (iResult != 0) {
            pthread_mutex_unlock(&sCondition.m_oMutex);
            RemoveSynchroObject(&sRecord);
            throw "CQxUnnamedEvent::CQxUnnamedEvent() -> Wait failed. Error with pthread_cond_wait or "
                  "pthread_cond_timedwait";
        }
    }
}

bool CQxUnnamedEvent::Pulse()
{
    if (!m_bManualReset) return false;

    pthread_mutex_lock(&m_oPulseMutex);
    pthread_mutex_lock(&m_oListMutex);
    if (m_lstWaiters.empty()) {
        pthread_mutex_unlock(&m_oListMutex);
        pthread_mutex_unlock(&m_oPulseMutex);
        return true;
    }
    {
        CWaiterMutexes oLocked(m_lstWaiters, this);
        m_ui64Pulses.fetch_add(1, std::memory_order_relaxed);
        _StoreState(1);
        for (SQxSynchroObject* pRecord : m_lstWaiters)
            pthread_cond_signal(&pRecord->m_pCondition->m_oCondition);
    }
    int iResult = 0;
    while (!m_lstWaiters.empty()) {
        iResult = pthread_cond_wait(&m_oListEmptied, &m_oListMutex);
        if (iResult != 0) break;
    }
    Reset();
    pthread_mutex_unlock(&m_oListMutex);
    pthread_mutex_unlock(&m_oPulseMutex);
    if (iResult != 0) throw "CQxUnnamedEvent::CQxUnnamedEvent() -> Pulse failed. Error with pthread_cond_wait";
    return true;
}

void CQxUnnamedEvent::AddSynchroObject(SQxSynchroObject* in_pSynchro)
{
    RegisterWaiter(in_pSynchro);
}

uint64_t CQxUnnamedEvent::RegisterWaiter(SQxSynchroObject* in_pSynchro)
{
    pthread_mutex_lock(&m_oPulseMutex);
    pthread_mutex_lock(&m_oListMutex);
    m_lstWaiters.push_back(in_pSynchro);
    const uint64_t ui64Pulses = m_ui64Pulses.load(std::memory_order_relaxed);
    pthread_mutex_unlock(&m_oListMutex);
    pthread_mutex_unlock(&m_oPulseMutex);
    return ui64Pulses;
}

void CQxUnnamedEvent::RemoveSynchroObject(SQxSynchroObject* in_pSynchro)
{
    _Unregister(in_pSynchro);
}

uint64_t CQxUnnamedEvent::_Unregister(SQxSynchroObject* in_pSynchro)
{
    pthread_mutex_lock(&m_oListMutex);
    m_lstWaiters.remove(in_pSynchro);
    if (m_lstWaiters.empty()) {
        pthread_cond_signal(&m_oListEmptied);
    } else if (!m_bManualReset && IsSet()) {
        // An auto-reset Set signals only the oldest waiter. If that waiter
        // leaves without taking the signal (it timed out, or a multi-object
        // wait was satisfied by another event), the next oldest is woken to
        // test the state, so it never sleeps on while the event is set.
        SQxCondition* pNext = m_lstWaiters.front()->m_pCondition;
        pthread_mutex_lock(&pNext->m_oMutex);
        pthread_cond_signal(&pNext->m_oCondition);
        pthread_mutex_unlock(&pNext->m_oMutex);
    }
    const uint64_t ui64Pulses = m_ui64Pulses.load(std::memory_order_relaxed);
    pthread_mutex_unlock(&m_oListMutex);
    return ui64Pulses;
}
