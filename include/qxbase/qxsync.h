// The throwing synchronisation layer: the abstract synchronisation object,
// the in-process recursive critical section, the handle-style mutex,
// semaphore and event (each owns one object of the lower layer and forwards
// to it), the scope guards and the exception classes.
//
// Time-outs are unsigned long milliseconds: 0 tries once without blocking;
// INFINITE is exactly 4294967295, compared against the whole 64-bit argument,
// so an all-ones 64-bit value is a very long finite wait, not INFINITE.
//
// Wait returns true when the object was acquired or signalled. Release of
// the handle-style objects returns non-zero on success, while
// CQxCriticalSection::Release returns pthread_mutex_unlock's result (0 on
// success); callers of this layer ignore the value.
#ifndef QXBASE_QXSYNC_H
#define QXBASE_QXSYNC_H

#include <qxbase/qxdefs.h>
#include <qxbase/qxsyncprimitives.h>
#include <qxbase/qxunknown.h>
#include <qxbase/qxunnamedevent.h>

#include <pthread.h>

#include <string>

// --- exceptions ---------------------------------------------------------------
// The message names the class and the method, then an arrow and the fault.

class QXBASE_API CQxAutoLockException : public CQxBaseException {
public:
    using CQxBaseException::CQxBaseException;
    ~CQxAutoLockException() override;
};

class QXBASE_API CQxCriticalSectionException : public CQxBaseException {
public:
    using CQxBaseException::CQxBaseException;
    ~CQxCriticalSectionException() override;
};

class QXBASE_API CQxHandleSyncObjectException : public CQxBaseException {
public:
    using CQxBaseException::CQxBaseException;
    ~CQxHandleSyncObjectException() override;
};

class QXBASE_API CQxMutexException : public CQxHandleSyncObjectException {
public:
    using CQxHandleSyncObjectException::CQxHandleSyncObjectException;
    ~CQxMutexException() override;
};

class QXBASE_API CQxSemaphoreException : public CQxHandleSyncObjectException {
public:
    using CQxHandleSyncObjectException::CQxHandleSyncObjectException;
    ~CQxSemaphoreException() override;
};

class QXBASE_API CQxEventException : public CQxHandleSyncObjectException {
public:
    using CQxHandleSyncObjectException::CQxHandleSyncObjectException;
    ~CQxEventException() override;
};

class QXBASE_API CQxThreadException : public CQxHandleSyncObjectException {
public:
    using CQxHandleSyncObjectException::CQxHandleSyncObjectException;
    ~CQxThreadException() override;
};

// --- the object model ---------------------------------------------------------

// Kind tags, set by the constructors once the object is fully built.
enum EQxSyncObjectType : int32_t {
    keQxSyncObjectOther = 0,  // the base, CQxHandleSyncObject, CQxThread
    keQxSyncObjectCriticalSection = 1,
    keQxSyncObjectMutex = 2,  // named or not
    keQxSyncObjectSemaphore = 3,
    keQxSyncObjectEvent = 4
};

class QXBASE_API CQxSynchronizationObject {
public:
    CQxSynchronizationObject() : m_i32ObjectType(keQxSyncObjectOther) {}
    virtual ~CQxSynchronizationObject();
    virtual bool Wait(unsigned long in_ulMilliseconds) = 0;
    virtual int Release() = 0;

    int32_t GetObjectType() const { return m_i32ObjectType; }

protected:
    int32_t m_i32ObjectType;
};

// In-process recursive lock: the owner may Wait again and must Release as
// many times. Only the time-outs 0 and INFINITE are accepted.
class QXBASE_API CQxCriticalSection : public CQxSynchronizationObject {
public:
    CQxCriticalSection();
    ~CQxCriticalSection() override;
    // Throws CQxCriticalSectionException for any time-out but 0 and INFINITE.
    bool Wait(unsigned long in_ulMilliseconds) override;
    // pthread_mutex_unlock's result: 0 on success.
    int Release() override;

private:
    CQxCriticalSection(const CQxCriticalSection&) = delete;
    CQxCriticalSection& operator=(const CQxCriticalSection&) = delete;

    pthread_mutex_t m_oMutex;
};

// Base of the objects that own one lower-layer object. Used only as a base:
// on its own it cannot be waited on or released.
class QXBASE_API CQxHandleSyncObject : public CQxSynchronizationObject {
public:
    CQxHandleSyncObject();
    // Building from a platform handle, copying and assigning are refused
    // (they throw CQxHandleSyncObjectException).
    explicit CQxHandleSyncObject(void* in_hHandle);
    CQxHandleSyncObject(const CQxHandleSyncObject& in_oOther);
    CQxHandleSyncObject& operator=(const CQxHandleSyncObject& in_oOther);
    ~CQxHandleSyncObject() override;

    // Both always throw CQxHandleSyncObjectException. CQxEvent and CQxThread
    // keep this Release: releasing them throws.
    bool Wait(unsigned long in_ulMilliseconds) override;
    int Release() override;

protected:
    // The owned lower-layer object; a thread keeps its pthread_t here.
    union {
        CQxVirtualSyncObject* m_pSyncObject;
        CQxVirtualEvent* m_pEvent;
        pthread_t m_uiThreadID;
    };
};

// A recursive in-process mutex, or, when named, a process-shared named
// semaphore of count 1 (which is not recursive: a second Wait by the owner
// blocks).
class QXBASE_API CQxMutex : public CQxHandleSyncObject {
public:
    CQxMutex();
    explicit CQxMutex(const std::string& in_strName);
    ~CQxMutex() override;
    bool Wait(unsigned long in_ulMilliseconds) override;
    int Release() override;
};

// A counting semaphore private to the process. The maximum count is accepted
// and ignored: only the platform bounds the count.
class QXBASE_API CQxSemaphore : public CQxHandleSyncObject {
public:
    CQxSemaphore(long in_lInitialCount, long in_lMaximumCount);
    ~CQxSemaphore() override;
    bool Wait(unsigned long in_ulMilliseconds) override;
    int Release() override;
};

// An auto-reset or manual-reset event. Its constructor lets the lower
// event's const char* exception through unchanged. Destroying it sets it
// first, so that no thread stays blocked on it.
class QXBASE_API CQxEvent : public CQxHandleSyncObject {
public:
    explicit CQxEvent(bool in_bManualReset);
    ~CQxEvent() override;
    int Set();
    int Reset();
    bool Wait(unsigned long in_ulMilliseconds) override;
};

// Locks a synchronisation object for the scope (Wait with INFINITE) and
// releases it at the end. Meant for critical sections, mutexes and
// semaphores: over an event the Release at scope exit throws, which ends the
// process.
class QXBASE_API CQxAutoLock {
public:
    explicit CQxAutoLock(CQxSynchronizationObject* in_pObject);
    ~CQxAutoLock();

private:
    CQxAutoLock(const CQxAutoLock&) = delete;
    CQxAutoLock& operator=(const CQxAutoLock&) = delete;

    CQxSynchronizationObject* m_pObject;
};

// Locks a plain pthread mutex for the scope; a null mutex makes it a no-op.
class QXBASE_API CQxLocalAutoLock {
public:
    explicit CQxLocalAutoLock(pthread_mutex_t* in_pMutex);
    ~CQxLocalAutoLock();

private:
    CQxLocalAutoLock(const CQxLocalAutoLock&) = delete;
    CQxLocalAutoLock& operator=(const CQxLocalAutoLock&) = delete;

    pthread_mutex_t* m_pMutex;
};

#endif  // QXBASE_QXSYNC_H
