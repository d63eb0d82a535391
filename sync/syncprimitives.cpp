// The lower mutex and semaphore wrappers. Nothing here throws or logs.
#include <qxbase/qxsyncprimitives.h>

#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>

CQxVirtualSyncObject::~CQxVirtualSyncObject() {}

namespace {

// The time-out rule shared by every wait of this layer: 0 tries once, exactly
// 4294967295 blocks, anything else waits until a CLOCK_REALTIME deadline.
// Each argument returns the platform call's result (0 = acquired).
template <class FTry, class FBlock, class FUntil>
bool WaitByTimeout(unsigned long in_ulMilliseconds, FTry in_fnTry, FBlock in_fnBlock, FUntil in_fnUntil)
{
    if (in_ulMilliseconds == 0) return in_fnTry() == 0;
    if (in_ulMilliseconds == kulQxInfinite) return in_fnBlock() == 0;
    timespec sDeadline;
    g_get_timeout_value(in_ulMilliseconds, sDeadline);
    return in_fnUntil(sDeadline) == 0;
}

}  // namespace

// --- unnamed mutex ----------------------------------------------------------

CQxUnnamedMutex::CQxUnnamedMutex(int& out_iError)
{
    out_iError = -1;
    m_pMutex = static_cast<pthread_mutex_t*>(malloc(sizeof(pthread_mutex_t)));
    if (m_pMutex) {
        pthread_mutexattr_t sAttributes;
        pthread_mutexattr_init(&sAttributes);
        pthread_mutexattr_settype(&sAttributes, PTHREAD_MUTEX_RECURSIVE);
        // Not reported: callers have always relied on the construction of
        // this mutex never failing (and pthread_mutex_init cannot fail for a
        // process-private recursive mutex on this platform).
        (void)pthread_mutex_init(m_pMutex, &sAttributes);
        pthread_mutexattr_destroy(&sAttributes);
    }
    out_iError = 0;
}

CQxUnnamedMutex::~CQxUnnamedMutex()
{
    if (m_pMutex) {
        pthread_mutex_destroy(m_pMutex);
        free(m_pMutex);
        m_pMutex = nullptr;
    }
}

bool CQxUnnamedMutex::Wait(unsigned long in_ulMilliseconds)
{
    return WaitByTimeout(
        in_ulMilliseconds, [this] { return pthread_mutex_trylock(m_pMutex); },
        [this] { return pthread_mutex_lock(m_pMutex); },
        [this](const timespec& in_sDeadline) { return pthread_mutex_timedlock(m_pMutex, &in_sDeadline); });
}

bool CQxUnnamedMutex::Release()
{
    if (!m_pMutex) return false;
    return pthread_mutex_unlock(m_pMutex) == 0;
}

// --- unnamed semaphore ------------------------------------------------------

CQxUnnamedSemaphore::CQxUnnamedSemaphore(int in_iInitialCount, int& out_iError)
{
    out_iError = -1;
    m_pSemaphore = static_cast<sem_t*>(malloc(sizeof(sem_t)));
    if (!m_pSemaphore) return;
    if (sem_init(m_pSemaphore, 0, static_cast<unsigned int>(in_iInitialCount)) == -1) {
        free(m_pSemaphore);
        m_pSemaphore = nullptr;
        return;
    }
    out_iError = 0;
}

CQxUnnamedSemaphore::~CQxUnnamedSemaphore()
{
    if (m_pSemaphore) {
        sem_destroy(m_pSemaphore);
        free(m_pSemaphore);
        m_pSemaphore = nullptr;
    }
}

bool CQxUnnamedSemaphore::Wait(unsigned long in_ulMilliseconds)
{
    return WaitByTimeout(
        in_ulMilliseconds, [this] { return sem_trywait(m_pSemaphore); }, [this] { return sem_wait(m_pSemaphore); },
        [this](const timespec& in_sDeadline) { return sem_timedwait(m_pSemaphore, &in_sDeadline); });
}

bool CQxUnnamedSemaphore::Release()
{
    if (!m_pSemaphore) return false;
    return sem_post(m_pSemaphore) == 0;
}

// --- named semaphore --------------------------------------------------------

CQxNamedSemaphore::CQxNamedSemaphore(const std::string& in_strName, int in_iInitialCount, int& out_iError)
    : m_strName(in_strName), m_pSemaphore(nullptr), m_bOwner(false)
{
    out_iError = -1;
    sem_t* pSemaphore = sem_open(m_strName.c_str(), O_CREAT | O_EXCL | O_RDWR, 0666,
                                 static_cast<unsigned int>(in_iInitialCount));
    if (pSemaphore != SEM_FAILED) {
        m_pSemaphore = pSemaphore;
        m_bOwner = true;
        out_iError = 0;
        return;
    }
    pSemaphore = sem_open(m_strName.c_str(), O_RDWR);
    if (pSemaphore != SEM_FAILED) {
        m_pSemaphore = pSemaphore;
        out_iError = 0;
    }
}

CQxNamedSemaphore::~CQxNamedSemaphore()
{
    if (m_pSemaphore) {
        sem_close(m_pSemaphore);
        m_pSemaphore = nullptr;
    }
    if (m_bOwner) {
        sem_unlink(m_strName.c_str());
        m_bOwner = false;
    }
}

bool CQxNamedSemaphore::Wait(unsigned long in_ulMilliseconds)
{
    if (!m_pSemaphore) return false;
    // Signal handlers do not end the wait. The deadline is computed once, so
    // a storm of signals cannot stretch the wait beyond it.
    auto fnRetried = [](auto in_fnCall) {
        int iResult;
        do {
            iResult = in_fnCall();
        } while (iResult != 0 && errno == EINTR);
        return iResult;
    };
    return WaitByTimeout(
        in_ulMilliseconds, [this] { return sem_trywait(m_pSemaphore); },
        [&] { return fnRetried([this] { return sem_wait(m_pSemaphore); }); },
        [&](const timespec& in_sDeadline) {
            return fnRetried([&] { return sem_timedwait(m_pSemaphore, &in_sDeadline); });
        });
}

bool CQxNamedSemaphore::Release()
{
    if (!m_pSemaphore) return false;
    return sem_post(m_pSemaphore) == 0;
}
