// The in-process event of the lower synchronisation layer, and the two
// functions that turn a relative time-out into an absolute deadline.
//
// An event does not own a condition variable of its own: every waiter brings
// one (SQxCondition, wrapped in an SQxSynchroObject registration record) and
// the event signals the conditions of the waiters registered with it. One
// waiter may therefore register with several events and sleep until any of
// them fires.
//
// Lock order, respected by every path: pulse mutex -> list mutex -> waiters'
// condition mutexes (in ascending address order) -> state mutex.
#ifndef QXBASE_QXUNNAMEDEVENT_H
#define QXBASE_QXUNNAMEDEVENT_H

#include <qxbase/qxdefs.h>

#include <pthread.h>
#include <time.h>

#include <atomic>
#include <list>

// Time-outs are unsigned milliseconds. 0 polls; only exactly 4294967295 means
// "wait forever": an all-ones 64-bit value is a (very long) finite wait.
#ifndef INFINITE
#define INFINITE 0xFFFFFFFFUL
#endif
constexpr unsigned long kulQxInfinite = 4294967295UL;

// Absolute deadline on the gettimeofday clock, in ms from now (signed).
QXBASE_API void GetClockTime(long in_lMilliseconds, timespec* out_psTime);
// Absolute deadline on clock_gettime(CLOCK_REALTIME), in ms from now
// (unsigned). Used by the semaphore and mutex waits.
QXBASE_API void g_get_timeout_value(unsigned long in_ulMilliseconds, timespec& out_sTime);

class CQxUnnamedEvent;

// A waiter's own condition. Constructed per wait; throws a const char* when
// the mutex or the condition cannot be created.
struct QXBASE_API SQxCondition {
    SQxCondition();
    ~SQxCondition();

    pthread_mutex_t m_oMutex;
    pthread_cond_t m_oCondition;

private:
    SQxCondition(const SQxCondition&) = delete;
    SQxCondition& operator=(const SQxCondition&) = delete;
};
// Waiters built separately bring their own conditions: the layout is binding.
static_assert(sizeof(SQxCondition) == sizeof(pthread_mutex_t) + sizeof(pthread_cond_t),
              "SQxCondition is a mutex followed by a condition");

// The record a waiter registers with each event it waits on. The event reads
// only m_pCondition; the first two fields are the waiter's bookkeeping. The
// record must outlive its registration with every event.
struct SQxSynchroObject {
    void* m_pWaiter;
    void* m_pFiredEvent;
    SQxCondition* m_pCondition;
};

class QXBASE_API CQxVirtualEvent {
public:
    virtual ~CQxVirtualEvent();
    virtual int Set() = 0;
    virtual int Reset() = 0;
    virtual bool IsSet() = 0;
    // true = signalled, false = timed out.
    virtual bool Wait(unsigned long in_ulMilliseconds) = 0;
    virtual bool Pulse() = 0;
};

class QXBASE_API CQxUnnamedEvent : public CQxVirtualEvent {
public:
    // Throws a const char* when a mutex or the condition cannot be created.
    explicit CQxUnnamedEvent(bool in_bManualReset);
    // Wakes nobody: the owner makes sure no thread still waits.
    ~CQxUnnamedEvent() override;

    // Signals the event: an auto-reset event releases exactly one waiter (the
    // oldest), a manual-reset one every waiter. Returns the final unlock's
    // status.
    int Set() override;
    int Reset() override;
    // Unlocked read of the state.
    bool IsSet() override;
    // Throws a const char* when the platform wait fails. A manual-reset event
    // found set returns at once, without registering a waiter.
    bool Wait(unsigned long in_ulMilliseconds) override;
    // Manual-reset only: releases the waiters registered now, returns once
    // they have all left, and leaves the event not signalled. An auto-reset
    // event returns false and nothing changes.
    bool Pulse() override;

    bool IsManualReset() const { return m_bManualReset; }

    void AddSynchroObject(SQxSynchroObject* in_pSynchro);
    // Removes every registration of the record.
    void RemoveSynchroObject(SQxSynchroObject* in_pSynchro);

    // Registers like AddSynchroObject and returns the event's pulse count at
    // that moment, for IsSignalledFor.
    uint64_t RegisterWaiter(SQxSynchroObject* in_pSynchro);

    // For a waiter that holds its condition mutex: true when the event is
    // signalled for it. On an auto-reset event the state is tested and
    // cleared in one step under the state mutex, so two waiters that both saw
    // the event set can never both take the same Set.
    bool ConsumeSignal();
    // The same for a waiter registered with RegisterWaiter: a Pulse since the
    // registration releases it even when the event was reset again before
    // the waiter got to test the state, so a pulse always collects its
    // waiters.
    bool IsSignalledFor(uint64_t in_ui64PulseCountAtRegistration);

private:
    CQxUnnamedEvent(const CQxUnnamedEvent&) = delete;
    CQxUnnamedEvent& operator=(const CQxUnnamedEvent&) = delete;

    void _StoreState(int32_t in_i32State);
    // Removes the record and returns the pulse count at the removal.
    uint64_t _Unregister(SQxSynchroObject* in_pSynchro);

    // Written under the state mutex; read without a lock by IsSet, hence
    // atomic. A Set publishes what came before it to a waiter that sees the
    // state without taking a mutex (a set manual-reset event), hence the
    // release store and acquire read.
    std::atomic<int32_t> m_i32State;
    // Pulses so far; changed under the list mutex while every waiter's
    // condition mutex is held, so a registered waiter reads it safely under
    // its own mutex. Kept in the event, not in the waiters' conditions,
    // whose layout other modules share.
    std::atomic<uint64_t> m_ui64Pulses;
    const bool m_bManualReset;
    std::list<SQxSynchroObject*> m_lstWaiters;
    pthread_mutex_t m_oListMutex;
    pthread_mutex_t m_oStateMutex;
    pthread_mutex_t m_oPulseMutex;
    pthread_cond_t m_oListEmptied;
};

#endif  // QXBASE_QXUNNAMEDEVENT_H
