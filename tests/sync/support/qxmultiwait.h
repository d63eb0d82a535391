// A wait for any of several events, built on the events' registration
// interface the way an SDK module builds it: one record and one condition,
// registered with every event.
#ifndef QXBASE_TESTS_SYNC_QXMULTIWAIT_H
#define QXBASE_TESTS_SYNC_QXMULTIWAIT_H

#include <qxbase/qxunnamedevent.h>

#include <errno.h>

#include <functional>
#include <vector>

class CQxTestMultiWaiter {
public:
    CQxTestMultiWaiter() : m_sRecord{nullptr, nullptr, &m_sCondition} {}
    ~CQxTestMultiWaiter() { UnregisterAll(); }

    // Registration order decides the waiter's place in each event's list.
    void Register(CQxUnnamedEvent* in_pEvent)
    {
        m_vecRegisteredAt.push_back(in_pEvent->RegisterWaiter(&m_sRecord));
        m_vecEvents.push_back(in_pEvent);
    }

    void UnregisterAll()
    {
        for (CQxUnnamedEvent* pEvent : m_vecEvents) pEvent->RemoveSynchroObject(&m_sRecord);
        m_vecEvents.clear();
        m_vecRegisteredAt.clear();
    }

    // Index (in registration order) of the event that released the waiter,
    // or -1 on time-out; consumes an auto-reset event's signal. Leaves the
    // waiter registered.
    int WaitAny(unsigned long in_ulMilliseconds)
    {
        timespec sDeadline = {0, 0};
        const bool bInfinite = in_ulMilliseconds == kulQxInfinite;
        if (!bInfinite) g_get_timeout_value(in_ulMilliseconds, sDeadline);
        pthread_mutex_lock(&m_sCondition.m_oMutex);
        int iFired = Fired();
        while (iFired < 0) {
            pthread_cond_t* pCondition = &m_sCondition.m_oCondition;
            int iResult = bInfinite ? pthread_cond_wait(pCondition, &m_sCondition.m_oMutex)
                                    : pthread_cond_timedwait(pCondition, &m_sCondition.m_oMutex, &sDeadline);
            iFired = Fired();
            if (iResult == ETIMEDOUT) break;
        }
        pthread_mutex_unlock(&m_sCondition.m_oMutex);
        return iFired;
    }

private:
    int Fired()
    {
        for (size_t i = 0; i < m_vecEvents.size(); ++i)
            if (m_vecEvents[i]->IsSignalledFor(m_vecRegisteredAt[i])) return static_cast<int>(i);
        return -1;
    }

    SQxCondition m_sCondition;
    SQxSynchroObject m_sRecord;
    std::vector<CQxUnnamedEvent*> m_vecEvents;
    std::vector<uint64_t> m_vecRegisteredAt;
};

// The whole wait: register with every event, wait, unregister. in_fnRegistered,
// when given, runs once the waiter is registered; in_fnDecided after the
// decision, before unregistering.
inline int qxWaitAny(const std::vector<CQxUnnamedEvent*>& in_vecEvents, unsigned long in_ulMilliseconds,
                     const std::function<void()>& in_fnRegistered = nullptr,
                     const std::function<void()>& in_fnDecided = nullptr)
{
    CQxTestMultiWaiter oWaiter;
    for (CQxUnnamedEvent* pEvent : in_vecEvents) oWaiter.Register(pEvent);
    if (in_fnRegistered) in_fnRegistered();
    int iFired = oWaiter.WaitAny(in_ulMilliseconds);
    if (in_fnDecided) in_fnDecided();
    return iFired;
}

#endif  // QXBASE_TESTS_SYNC_QXMULTIWAIT_H
