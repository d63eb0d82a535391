// The throwing synchronisation layer over the lower mutex, semaphore and
// event objects.
#include <qxbase/qxsync.h>

CQxAutoLockException::~CQxAutoLockException() {}
CQxCriticalSectionException::~CQxCriticalSectionException() {}
CQxHandleSyncObjectException::~CQxHandleSyncObjectException() {}
CQxMutexException::~CQxMutexException() {}
CQxSemaphoreException::~CQxSemaphoreException() {}
CQxEventException::~CQxEventException() {}
CQxThreadException::~CQxThreadException() {}

CQxSynchronizationObject::~CQxSynchronizationObject() {}

// --- critical section ---------------------------------------------------------

CQxCriticalSection::CQxCriticalSection()
{
    pthread_mutexattr_t sAttributes;
    pthread_mutexattr_init(&sAttributes);
    pthread_mutexattr_settype(&sAttributes, PTHREAD_MUTEX_RECURSIVE);
    pthread_mutex_init(&m_oMutex, &sAttributes);
    pthread_mutexattr_destroy(&sAttributes);
    m_i32ObjectType = keQxSyncObjectCriticalSection;
}

CQxCriticalSection::~CQxCriticalSection()
{
    pthread_mutex_destroy(&m_oMutex);
}

bool CQxCriticalSection::Wait(unsigned long in_ulMilliseconds)
{
    if (in_ulMilliseconds == 0) return pthread_mutex_trylock(&m_oMutex) == 0;
    if (in_ulMilliseconds == kulQxInfinite) {
        pthread_mutex_lock(&m_oMutex);
        return true;
    }
    throw CQxCriticalSectionException("CQxCriticalSection::Wait -> 0 or INFINITE time-outs only");
}

int CQxCriticalSection::Release()
{
    return pthread_mutex_unlock(&m_oMutex);
}

// --- handle-style base ----------------------------------------------------------

CQxHandleSyncObject::CQxHandleSyncObject() : m_pSyncObject(nullptr) {}

CQxHandleSyncObject::CQxHandleSyncObject(void*) : m_pSyncObject(nullptr)
{
    throw CQxHandleSyncObjectException(
        "CQxHandleSyncObject::CQxHandleSyncObject -> Constructor not supported in this version");
}

CQxHandleSyncObject::CQxHandleSyncObject(const CQxHandleSyncObject&)
    : CQxSynchronizationObject(), m_pSyncObject(nullptr)
{
    throw CQxHandleSyncObjectException(
        "CQxHandleSyncObject::CQxHandleSyncObject -> Constructor not supported in this version");
}

CQxHandleSyncObject& CQxHandleSyncObject::operator=(const CQxHandleSyncObject&)
{
    throw CQxHandleSyncObjectException(
        "CQxHandleSyncObject::CQxHandleSyncObject -> Operator not supported in this version");
}

CQxHandleSyncObject::~CQxHandleSyncObject() {}

bool CQxHandleSyncObject::Wait(unsigned long)
{
    throw CQxHandleSyncObjectException("CQxHandleSyncObject::Wait -> object not created yet");
}

int CQxHandleSyncObject::Release()
{
    throw CQxHandleSyncObjectException("CQxHandleSyncObject::Release -> this is not a valid call");
}

// --- mutex ------------------------------------------------------------------------

namespace {

// Adopts a freshly built lower object: on a construction error it is deleted
// before the exception leaves, so a failed constructor leaves nothing behind.
template <class TException>
CQxVirtualSyncObject* AdoptOrThrow(CQxVirtualSyncObject* in_pObject, int in_iError, const char* in_pszMessage)
{
    if (in_iError != 0) {
        delete in_pObject;
        throw TException(in_pszMessage);
    }
    return in_pObject;
}

// The lower object a call forwards to; a missing one throws the caller's
// message.
template <class TException, class TObject>
TObject* Present(TObject* in_pObject, const char* in_pszMessage)
{
    if (!in_pObject) throw TException(in_pszMessage);
    return in_pObject;
}

}  // namespace

CQxMutex::CQxMutex()
{
    int iError = 0;
    CQxVirtualSyncObject* pMutex = new CQxUnnamedMutex(iError);
    m_pSyncObject = AdoptOrThrow<CQxMutexException>(pMutex, iError, "CQxMutex::CQxMutex -> could not create mutex");
    m_i32ObjectType = keQxSyncObjectMutex;
}

CQxMutex::CQxMutex(const std::string& in_strName)
{
    int iError = 0;
    CQxVirtualSyncObject* pMutex = new CQxNamedSemaphore(in_strName, 1, iError);
    m_pSyncObject = AdoptOrThrow<CQxMutexException>(pMutex, iError, "CQxMutex::CQxMutex -> could not create mutex");
    m_i32ObjectType = keQxSyncObjectMutex;
}

CQxMutex::~CQxMutex()
{
    delete m_pSyncObject;
    m_pSyncObject = nullptr;
}

bool CQxMutex::Wait(unsigned long in_ulMilliseconds)
{
    return Present<CQxMutexException>(m_pSyncObject, "CQxMutex::Wait -> object is NULL")->Wait(in_ulMilliseconds);
}

int CQxMutex::Release()
{
    return Present<CQxMutexException>(m_pSyncObject, "CQxMutex::Release -> object is NULL")->Release();
}

// --- semaphore ----------------------------------------------------------------------

CQxSemaphore::CQxSemaphore(long in_lInitialCount, long)
{
    int iError = 0;
    CQxVirtualSyncObject* pSemaphore = new CQxUnnamedSemaphore(static_cast<int>(in_lInitialCount), iError);
    m_pSyncObject = AdoptOrThrow<CQxSemaphoreException>(pSemaphore, iError,
                                                         "CQxSemaphore::CQxSemaphore -> could not create mutex");
    m_i32ObjectType = keQxSyncObjectSemaphore;
}

CQxSemaphore::~CQxSemaphore()
{
    delete m_pSyncObject;
    m_pSyncObject = nullptr;
}

bool CQxSemaphore::Wait(unsigned long in_ulMilliseconds)
{
    return Present<CQxSemaphoreException>(m_pSyncObject, "CQxSemaphore::Wait -> object is NULL")
        ->Wait(in_ulMilliseconds);
}

int CQxSemaphore::Release()
{
    return Present<CQxSemaphoreException>(m_pSyncObject, "CQxSemaphore::Release -> object is NULL")->Release();
}

// --- event --------------------------------------------------------------------------

CQxEvent::CQxEvent(bool in_bManualReset)
{
    m_pEvent = new CQxUnnamedEvent(in_bManualReset);
    m_i32ObjectType = keQxSyncObjectEvent;
}

CQxEvent::~CQxEvent()
{
    Set();
    delete m_pEvent;
    m_pEvent = nullptr;
}

int CQxEvent::Set()
{
    return Present<CQxEventException>(m_pEvent, "CQxEvent::Set() --> failed")->Set();
}

int CQxEvent::Reset()
{
    return Present<CQxEventException>(m_pEvent, "CQxEvent::Reset() --> failed")->Reset();
}

bool CQxEvent::Wait(unsigned long in_ulMilliseconds)
{
    return Present<CQxEventException>(m_pEvent, "CQxEvent::Wait() --> Invalid object")->Wait(in_ulMilliseconds);
}

// --- scope guards ----------------------------------------------------------------------

CQxAutoLock::CQxAutoLock(CQxSynchronizationObject* in_pObject) : m_pObject(in_pObject)
{
    if (!m_pObject)
        throw CQxAutoLockException("CQxAutoLock::CQxAutoLock -> NULL CQxSynchronizationObject pointer");
    m_pObject->Wait(kulQxInfinite);
}

CQxAutoLock::~CQxAutoLock()
{
    m_pObject->Release();
}

CQxLocalAutoLock::CQxLocalAutoLock(pthread_mutex_t* in_pMutex) : m_pMutex(in_pMutex)
{
    if (m_pMutex) pthread_mutex_lock(m_pMutex);
}

CQxLocalAutoLock::~CQxLocalAutoLock()
{
    if (m_pMutex) pthread_mutex_unlock(m_pMutex);
}
