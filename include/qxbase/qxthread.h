// Threads with the life cycle of a Win32-style thread object: created
// suspended or running, resumed once, waited on like any synchronisation
// object, with a scheduling priority (SCHED_RR) and a processor affinity
// that may be set before or after the thread exists. Destroying a thread
// object lets a suspended thread run and waits for its procedure to return;
// there is no forced stop.
#ifndef QXBASE_QXTHREAD_H
#define QXBASE_QXTHREAD_H

#include <qxbase/qxdefs.h>
#include <qxbase/qxsync.h>

#include <pthread.h>
#include <sched.h>

#include <atomic>

typedef unsigned int (*PFNQxThreadProc)(void*);

// The POSIX start routine: runs in_pThread's Entry() and returns its
// argument.
QXBASE_API void* ExecuteThread(void* in_pThread);

class QXBASE_API CQxThread : public CQxHandleSyncObject {
public:
    CQxThread();
    // Resumes a thread still held, waits for its procedure and joins it. A
    // failed join ends the process.
    ~CQxThread() override;

    // Starts the thread (once per object). Stack size 0 means 512 KiB; the
    // last flag is not used here. Throws CQxThreadException when a thread
    // already exists or the procedure is null. A failure of pthread_create
    // itself is not detected.
    void Create(PFNQxThreadProc in_pfnThreadProc, void* in_pArgument, bool in_bCreateSuspended,
                unsigned int in_uiStackSize, bool in_bUnused);

    // The body of the new thread.
    void Entry();

    void Resume();
    // Holds back only a thread that has not yet passed WaitOnResume; a
    // running procedure is never suspended.
    void Suspend();
    void WaitOnResume();

    // true once the procedure has returned.
    bool Wait(unsigned long in_ulMilliseconds) override;
    // 1 until the procedure returns, then its result.
    unsigned int GetExitCode() const;

    // priority = min(max(p, -15), 32) * 2 + 31 (1 to 95), applied with
    // SCHED_RR now or when the thread starts. Throws CQxThreadException when
    // a running thread refuses it.
    void SetPriority(int in_iPriority);
    bool _SetPriority();
    // Adds processors 0 to 31 of the mask to the affinity; processors are
    // never removed. Applied now or when the thread starts; throws
    // CQxThreadException when a running thread refuses it.
    void SetAffinityMask(unsigned int in_uiMask);
    bool _SetAffinityMask();

    // Accepted and ignored on this platform.
    void SetPublicThreadName(const char* in_pszName);
    void _setThreadName();

    int GetPriority() const { return m_i32Priority.load(std::memory_order_relaxed); }
    pthread_t GetThreadId() const { return m_uiThreadID; }

protected:
    CQxEvent m_oResumeEvent;    // manual-reset
    CQxEvent m_oFinishedEvent;  // manual-reset
    const int32_t m_i32Policy;
    // The fields below may be written by any thread while the new thread
    // reads them in Entry: atomic, relaxed (the affinity words are updated
    // with atomic operations).
    std::atomic<int32_t> m_i32Priority;
    cpu_set_t m_sAffinity;
    std::atomic<bool> m_bAffinityRequested;
    std::atomic<uint32_t> m_uiExitCode;
    PFNQxThreadProc m_pfnThreadProc;
    void* m_pArgument;

private:
    CQxThread(const CQxThread&) = delete;
    CQxThread& operator=(const CQxThread&) = delete;
};

// For threads that would host component objects; on this platform it
// behaves as CQxThread.
class QXBASE_API CQxCOMThread : public CQxThread {
public:
    CQxCOMThread();
    ~CQxCOMThread() override;
    // CQxThread::Create with the last flag forced to false.
    void Create(PFNQxThreadProc in_pfnThreadProc, void* in_pArgument, bool in_bCreateSuspended,
                unsigned int in_uiStackSize, bool in_bUnused);
};

#endif  // QXBASE_QXTHREAD_H
