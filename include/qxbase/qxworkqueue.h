// Work queues: one fixed task function run on many work items concurrently
// on a system thread pool (libdispatch's global concurrent queues), with a
// bound on the items outstanding and a wait for all of them to finish.
//
// Result codes: 0 success; QX_E_INVALID_POINTER (0x89998045) empty task
// function at construction; QX_E_NOT_INITIALIZED (0x89998047) no
// implementation, no task function, or no thread-pool manager;
// QX_E_TIMEOUT (0x89998048) no room for another item, or the items did not
// finish in time; QX_E_OPERATION_FAILED (0x89998FFF) no dispatch queue for
// the priority. Time-outs are unsigned int milliseconds: 0 polls,
// 4294967295 waits forever. Nothing here throws.
#ifndef QXBASE_QXWORKQUEUE_H
#define QXBASE_QXWORKQUEUE_H

#include <qxbase/qxdefs.h>
#include <qxbase/qxerrors.h>
#include <qxbase/qxinterfaces.h>
#include <qxbase/qxsync.h>

#include <atomic>
#include <functional>
#include <string>

// Counts the items admitted and not yet finished, and lets owners wait for
// room and for idleness. The platform subclass hands the items to threads.
class QXBASE_API CQxWorkQueueImplementation {
public:
    // Writes io_iResult only on failure (an empty task function); the caller
    // sets it to 0 first. Construction goes on regardless.
    CQxWorkQueueImplementation(std::function<void(void*)> in_fnTask, int& io_iResult, const std::string& in_strName,
                               unsigned long in_ulMaxPending);

    virtual int QueueTask(void* in_pItem, unsigned int in_uiTimeout) = 0;
    // 0 once no item is pending, QX_E_TIMEOUT otherwise.
    virtual int WaitForCompletion(unsigned int in_uiTimeout);
    // Lets a _RemoveTask in progress finish; does not wait for outstanding
    // items (the platform subclass does).
    virtual ~CQxWorkQueueImplementation();
    // Admits one item: false when no room came within the time-out.
    virtual bool _AddTask(unsigned int in_uiTimeout);
    // Completes one item.
    virtual void _RemoveTask();

protected:
    std::function<void(void*)> m_fnTask;
    std::string m_strName;
    uint64_t m_ui64Pending;  // guarded by m_oLock
    uint64_t m_ui64MaxPending;
    CQxEvent m_oRoomEvent;  // manual-reset; set while pending < maximum
    CQxEvent m_oIdleEvent;  // manual-reset; set while pending = 0
    CQxCriticalSection m_oLock;

private:
    CQxWorkQueueImplementation(const CQxWorkQueueImplementation&) = delete;
    CQxWorkQueueImplementation& operator=(const CQxWorkQueueImplementation&) = delete;
};

// Runs each item on a global concurrent dispatch queue, at the relative
// priority that the process's thread-pool manager gives (or at normal
// priority when there is no manager).
class QXBASE_API CQxConcurrentWorkQueueLinux : public CQxWorkQueueImplementation {
public:
    // Unless construction already failed, io_iResult receives the status of
    // creating the thread-pool manager (0 on success). Without a manager the
    // queue still works, at the stored priority.
    CQxConcurrentWorkQueueLinux(std::function<void(void*)> in_fnTask, int& io_iResult, const std::string& in_strName,
                                unsigned long in_ulMaxPending);
    // Waits for every admitted item to finish, then releases the manager.
    // Items in flight call _RemoveTask through the virtual table, so a
    // subclass must wait (WaitForCompletion with INFINITE) in its own
    // destructor, before its part of the object is gone.
    ~CQxConcurrentWorkQueueLinux() override;

    // An item that throws is not counted as finished: the owner sees the
    // failure only as a WaitForCompletion that times out.
    int QueueTask(void* in_pItem, unsigned int in_uiTimeout) override;

    // Dispatch priority of a relative priority: below normal -2 (low),
    // above normal 2 (high), anything else 0 (default).
    long _GetDispatchQueuePriority(EQxThreadPoolRelativePriority in_ePriority) const;

protected:
    IQxThreadPoolManager* m_pThreadPoolManager;
    // Refreshed from the manager by concurrent QueueTask calls.
    std::atomic<int32_t> m_i32Priority;
};

// The work-queue facade used by the SDK's services.
class QXBASE_API CQxConcurrentWorkQueue {
public:
    // io_iResult must be 0 on entry; see CQxConcurrentWorkQueueLinux.
    CQxConcurrentWorkQueue(std::function<void(void*)> in_fnTask, int& io_iResult, const std::string& in_strName,
                           unsigned long in_ulMaxPending);
    // Waits for every admitted item to finish.
    virtual ~CQxConcurrentWorkQueue();

    int QueueTask(void* in_pItem, unsigned int in_uiTimeout);
    int WaitForCompletion(unsigned int in_uiTimeout);

protected:
    CQxWorkQueueImplementation* m_pImplementation;

private:
    CQxConcurrentWorkQueue(const CQxConcurrentWorkQueue&) = delete;
    CQxConcurrentWorkQueue& operator=(const CQxConcurrentWorkQueue&) = delete;
};

#endif  // QXBASE_QXWORKQUEUE_H
