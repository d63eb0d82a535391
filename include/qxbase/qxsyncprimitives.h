// The lower, non-throwing layer under CQxMutex and CQxSemaphore: a recursive
// POSIX mutex, an unnamed POSIX semaphore and a named (process-shared) POSIX
// semaphore behind one interface. Construction reports failure through an
// int& (0 = success, -1 = failure), waits and releases through a bool.
//
// Time-outs are milliseconds: 0 tries once, exactly 4294967295 waits forever,
// anything else is turned into a CLOCK_REALTIME deadline by
// g_get_timeout_value.
#ifndef QXBASE_QXSYNCPRIMITIVES_H
#define QXBASE_QXSYNCPRIMITIVES_H

#include <qxbase/qxdefs.h>
#include <qxbase/qxunnamedevent.h>

#include <pthread.h>
#include <semaphore.h>

#include <string>

class QXBASE_API CQxVirtualSyncObject {
public:
    virtual ~CQxVirtualSyncObject();
    // true = acquired.
    virtual bool Wait(unsigned long in_ulMilliseconds) = 0;
    // true = released.
    virtual bool Release() = 0;
};

// A recursive mutex. Construction always reports success, even when the
// mutex could not be allocated; a Wait on such an object must not be relied
// on.
class QXBASE_API CQxUnnamedMutex : public CQxVirtualSyncObject {
public:
    explicit CQxUnnamedMutex(int& out_iError);
    ~CQxUnnamedMutex() override;
    bool Wait(unsigned long in_ulMilliseconds) override;
    bool Release() override;

private:
    CQxUnnamedMutex(const CQxUnnamedMutex&) = delete;
    CQxUnnamedMutex& operator=(const CQxUnnamedMutex&) = delete;

    pthread_mutex_t* m_pMutex;
};

// A semaphore private to the process. A wait interrupted by a signal handler
// returns false; it is not retried.
class QXBASE_API CQxUnnamedSemaphore : public CQxVirtualSyncObject {
public:
    CQxUnnamedSemaphore(int in_iInitialCount, int& out_iError);
    ~CQxUnnamedSemaphore() override;
    bool Wait(unsigned long in_ulMilliseconds) override;
    bool Release() override;

private:
    CQxUnnamedSemaphore(const CQxUnnamedSemaphore&) = delete;
    CQxUnnamedSemaphore& operator=(const CQxUnnamedSemaphore&) = delete;

    sem_t* m_pSemaphore;
};

// A semaphore shared between processes by its name, which is passed to
// sem_open exactly as given. The object that created it unlinks the name when
// it is destroyed, even while other processes still hold it open. Waits keep
// waiting across signal handlers until their deadline.
class QXBASE_API CQxNamedSemaphore : public CQxVirtualSyncObject {
public:
    CQxNamedSemaphore(const std::string& in_strName, int in_iInitialCount, int& out_iError);
    ~CQxNamedSemaphore() override;
    bool Wait(unsigned long in_ulMilliseconds) override;
    bool Release() override;

    bool IsOwner() const { return m_bOwner; }
    const std::string& GetName() const { return m_strName; }

private:
    CQxNamedSemaphore(const CQxNamedSemaphore&) = delete;
    CQxNamedSemaphore& operator=(const CQxNamedSemaphore&) = delete;

    std::string m_strName;
    sem_t* m_pSemaphore;
    bool m_bOwner;
};

#endif  // QXBASE_QXSYNCPRIMITIVES_H
